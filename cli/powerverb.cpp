#include "powerverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "jsonwriter.h"
#include "plantjobs.h"
#include "recordingload.h"

#include <QByteArray>
#include <QList>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

void usage()
{
    std::fprintf(stderr, "usage: veldrix-cli power --json PATH --u A1,A2,A3 --i A4,A5,A6 [--primary]\n"
                         "       [--from N --to M]\n");
}

struct PowerOptions
{
    const char *path = nullptr;
    const char *u = nullptr;
    const char *i = nullptr;
    long long from = -1;
    long long to = -1;
    bool primary = false;
};

// 0 when the options are read, else the exit status.
int readOptions(int argc, char **argv, PowerOptions &o)
{
    for (int a = 0; a < argc; ++a) {
        const char *arg = argv[a];
        const bool hasValue = a + 1 < argc;
        if (std::strcmp(arg, "--json") == 0) {
            continue;
        } else if (std::strcmp(arg, "--primary") == 0) {
            o.primary = true;
        } else if (hasValue && (std::strcmp(arg, "--from") == 0 || std::strcmp(arg, "--to") == 0)) {
            if (!ReadWholeOption("power", arg, argv[++a], arg[2] == 'f' ? o.from : o.to))
                return 2;
        } else if (hasValue && std::strcmp(arg, "--u") == 0) {
            o.u = argv[++a];
        } else if (hasValue && std::strcmp(arg, "--i") == 0) {
            o.i = argv[++a];
        } else if (arg[0] != '-' && !o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    if (!o.path || !o.u || !o.i) {
        usage();
        return 2;
    }
    return 0;
}

// Three channels "A<n>" of phases A, B, C; an empty place is a phase without a channel.
bool readPhases(const CCmtd99File &file, const char *option, const char *text, const CChnMapAnalog *out[3])
{
    const QList<QByteArray> list = QByteArray(text).split(',');
    if (list.size() != 3) {
        std::fprintf(stderr, "veldrix-cli power: %s expects three channels A<n>,A<n>,A<n>\n", option);
        return false;
    }
    for (int p = 0; p < 3; ++p) {
        const QByteArray name = list[p].trimmed();
        long long number = -1;
        out[p] = nullptr;
        if (name.isEmpty())
            continue;
        if (!ParseAnalogChannel(name.constData(), number) || number > INT16_MAX ||
            !(out[p] = file.FindAnalogMap(int(number)))) {
            std::fprintf(stderr, "veldrix-cli power: the recording has no channel \"%s\"\n",
                         name.constData());
            return false;
        }
    }
    return true;
}

void writeArray(JsonWriter &json, const char *name, const float *y, long long from, long long to)
{
    json.key(name);
    json.beginArray();
    for (long long n = from; n <= to; ++n)
        json.valueFloat(y[n]);
    json.endArray();
}

} // namespace

int RunPower(int argc, char **argv)
{
    PowerOptions o;
    if (const int status = readOptions(argc, argv, o))
        return status;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("power", o.path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    PowerJobParams params;
    params.primary = o.primary;
    if (!readPhases(file, "--u", o.u, params.u) || !readPhases(file, "--i", o.i, params.i))
        return 2;
    const PowerInputs in = PowerJobInputs(params);
    const int total = PowerCurveLength(file, in);
    if (total < 1) {
        std::fprintf(stderr, "veldrix-cli power: no phase has both a voltage and a current with samples\n");
        return 2;
    }
    const long long from = o.from < 0 ? 0 : o.from;
    const long long to = o.to < 0 ? total - 1 : o.to;
    if (from > to || to >= total) {
        std::fprintf(
            stderr, "veldrix-cli power: the samples must lie within the %d samples of the curves, in order\n",
            total);
        return 2;
    }
    const std::unique_ptr<float[]> curves(new (std::nothrow) float[size_t(total) * 3]);
    if (!curves) {
        std::fprintf(stderr, "veldrix-cli power: not enough memory for %d samples\n", total);
        return 1;
    }
    PowerOutputs out;
    out.p[kPowerTotal] = curves.get();
    out.q[kPowerTotal] = curves.get() + total;
    out.s[kPowerTotal] = curves.get() + 2 * size_t(total);
    PowerCurves(file, in, out, std::numeric_limits<float>::quiet_NaN());

    JsonWriter json;
    json.beginObject();
    json.field("from", from);
    json.field("to", to);
    json.field("primary", o.primary);
    writeArray(json, "p", out.p[kPowerTotal], from, to);
    writeArray(json, "q", out.q[kPowerTotal], from, to);
    writeArray(json, "s", out.s[kPowerTotal], from, to);
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
