#include "impedanceverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "jsonwriter.h"
#include "recordingload.h"
#include "rxobject.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void usage()
{
    std::fprintf(
        stderr,
        "usage: veldrix-cli impedance --json PATH --kind 0|1|2|3 --u A1,A2,A3 --i A4,A5,A6 [--i2 ...]\n"
        "       [--i3 ...] [--coef 1,1,1] [--line R1,X1,R0,X0] [--r An --x An]\n"
        "       (--at SAMPLE | --from N --to M)\n");
}

// The comma-separated parts of an option value, empty parts kept.
std::vector<std::string> parts(const char *text)
{
    std::vector<std::string> out(1);
    for (const char *c = text; *c; ++c) {
        if (*c == ',')
            out.emplace_back();
        else
            out.back() += *c;
    }
    return out;
}

// "A<n>" as the channel's map; an empty part or "-" is no channel. False with a message.
bool readChannel(const CCmtd99File &file, const std::string &text, const CChnMapAnalog *&chn)
{
    chn = nullptr;
    if (text.empty() || text == "-")
        return true;
    long long number = -1;
    if (!ParseAnalogChannel(text.c_str(), number) || number > INT16_MAX ||
        !(chn = file.FindAnalogMap(int(number)))) {
        std::fprintf(stderr, "veldrix-cli impedance: the recording has no channel \"%s\"\n", text.c_str());
        return false;
    }
    return true;
}

bool readPhases(const CCmtd99File &file, const char *option, const char *text, const CChnMapAnalog *chn[3])
{
    if (!text)
        return true;
    const std::vector<std::string> list = parts(text);
    if (list.size() != 3) {
        std::fprintf(stderr, "veldrix-cli impedance: %s expects three channels A<n>,A<n>,A<n>\n", option);
        return false;
    }
    for (int p = 0; p < 3; ++p) {
        if (!readChannel(file, list[size_t(p)], chn[p]))
            return false;
    }
    return true;
}

// `count` numbers separated by commas, each read whole.
bool readNumbers(const char *option, const char *text, double *values, int count)
{
    const std::vector<std::string> list = parts(text);
    bool ok = int(list.size()) == count;
    for (int i = 0; ok && i < count; ++i) {
        char *end = nullptr;
        values[i] = std::strtod(list[size_t(i)].c_str(), &end);
        ok = !list[size_t(i)].empty() && *end == 0;
    }
    if (!ok)
        std::fprintf(stderr, "veldrix-cli impedance: %s expects %d numbers separated by commas\n", option,
                     count);
    return ok;
}

struct Options
{
    const char *path = nullptr;
    long long kind = -1;
    const char *u = nullptr;
    const char *i[3] = {};
    const char *coef = nullptr;
    const char *line = nullptr;
    const char *r = nullptr;
    const char *x = nullptr;
    long long at = -1;
    long long from = -1;
    long long to = -1;
};

// 0 when the options are read, else the exit status.
int readOptions(int argc, char **argv, Options &o)
{
    for (int a = 0; a < argc; ++a) {
        const char *arg = argv[a];
        const bool hasValue = a + 1 < argc;
        const auto is = [arg, hasValue](const char *name) { return hasValue && std::strcmp(arg, name) == 0; };
        if (std::strcmp(arg, "--json") == 0)
            continue;
        if (is("--kind")) {
            if (!ReadWholeOption("impedance", arg, argv[++a], o.kind))
                return 2;
        } else if (is("--at") || is("--from") || is("--to")) {
            long long &target = arg[2] == 'a' ? o.at : arg[2] == 'f' ? o.from : o.to;
            if (!ReadWholeOption("impedance", arg, argv[++a], target))
                return 2;
        } else if (is("--u")) {
            o.u = argv[++a];
        } else if (is("--i") || is("--i2") || is("--i3")) {
            o.i[arg[3] ? arg[3] - '1' : 0] = argv[++a];
        } else if (is("--coef")) {
            o.coef = argv[++a];
        } else if (is("--line")) {
            o.line = argv[++a];
        } else if (is("--r")) {
            o.r = argv[++a];
        } else if (is("--x")) {
            o.x = argv[++a];
        } else if (arg[0] != '-' && !o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    const bool atSample = o.at >= 0 && o.from < 0 && o.to < 0;
    const bool range = o.at < 0 && o.from >= 0 && o.to >= 0;
    if (!o.path || o.kind < 0 || o.kind > 3 || !(atSample || range)) {
        usage();
        return 2;
    }
    return 0;
}

// The object as the dialog of its kind leaves it; 0 or the exit status.
int buildObject(const CCmtd99File &file, const Options &o, RxObject &object)
{
    object.nKind = int32_t(o.kind);
    object.pRecording = &file;
    if (!readPhases(file, "--u", o.u, object.chnU))
        return 2;
    for (int g = 0; g < 3; ++g) {
        if (!readPhases(file, g == 0 ? "--i" : g == 1 ? "--i2" : "--i3", o.i[g], object.chnI[g]))
            return 2;
    }
    if (!readChannel(file, o.r ? o.r : "", object.chnR) || !readChannel(file, o.x ? o.x : "", object.chnX))
        return 2;
    double values[4] = {};
    if (o.coef) {
        if (!readNumbers("--coef", o.coef, values, 3))
            return 2;
        for (int g = 0; g < 3; ++g)
            object.nCoef[g] = values[g] < 0 ? -1 : 1;
    }
    if (o.line) {
        if (!readNumbers("--line", o.line, values, 4))
            return 2;
        object.fR1 = values[0];
        object.fX1 = values[1];
        object.fR0 = values[2];
        object.fX0 = values[3];
    }
    QString message;
    if (!RxApplyChoice(object, message)) {
        std::fprintf(stderr, "veldrix-cli impedance: %s\n", message.toLocal8Bit().constData());
        return 2;
    }
    RxFinishObject(object);
    return 0;
}

void writeRowsAt(JsonWriter &json, const RxObject &object, int at)
{
    const int window = RxWindowSample(object, at);
    json.field("at", at);
    json.field("window", window);
    json.key("rows");
    json.beginArray();
    for (int row = 0; row < 3; ++row) {
        if (!(object.nMask & (1u << row)))
            continue;
        ComplexD z;
        RxComputeRow(object, row, window, nullptr, z);
        json.beginObject();
        json.field("name", RxRowName(object, row));
        json.fieldDouble("r", z.re);
        json.fieldDouble("x", z.im);
        json.fieldDouble("z", std::sqrt(z.re * z.re + z.im * z.im));
        json.fieldDouble("angleDeg", std::atan2(z.im, z.re) * 57.29577957855229);
        json.endObject();
    }
    json.endArray();
}

void writeTraces(JsonWriter &json, RxObject &object, int from, int to)
{
    RxComputeTraces(object, from, to, nullptr, nullptr);
    json.field("from", object.nFrom);
    json.field("to", object.nTo);
    json.key("rows");
    json.beginArray();
    for (int row = 0; row < 3; ++row) {
        if (!(object.nMask & (1u << row)))
            continue;
        json.beginObject();
        json.field("name", RxRowName(object, row));
        for (const char *part : {"r", "x"}) {
            json.key(part);
            json.beginArray();
            for (const RxPoint &p : object.trace[row])
                json.valueFloat(part[0] == 'r' ? p.r : p.x);
            json.endArray();
        }
        json.endObject();
    }
    json.endArray();
}

} // namespace

int RunImpedance(int argc, char **argv)
{
    Options o;
    if (const int status = readOptions(argc, argv, o))
        return status;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("impedance", o.path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    const long long last = std::max(o.at, o.to);
    if (last >= file.loadedPoints || o.from > o.to) {
        std::fprintf(stderr,
                     "veldrix-cli impedance: the samples must lie within the %d loaded samples, in order\n",
                     file.loadedPoints);
        return 2;
    }
    RxObject object;
    if (const int status = buildObject(file, o, object))
        return status;

    JsonWriter json;
    json.beginObject();
    json.field("kind", RxObjectName(object.nKind));
    if (object.nKind == RxObject::KindUxIxK) {
        json.fieldDouble("kRe", object.kRe);
        json.fieldDouble("kIm", object.kIm);
    }
    if (o.at >= 0)
        writeRowsAt(json, object, int(o.at));
    else
        writeTraces(json, object, int(o.from), int(o.to));
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
