#include "phasorsverb.h"

#include "chntext.h"
#include "cliargs.h"
#include "cmtd99file.h"
#include "cmtdtext.h"
#include "cursorvalue.h"
#include "globalsettings.h"
#include "jsonwriter.h"
#include "phasor.h"
#include "recordingload.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int lookUp(const char *text, const char *const names[], int count)
{
    for (int i = 0; i < count; ++i) {
        if (std::strcmp(text, names[i]) == 0)
            return i;
    }
    return -1;
}

void usage()
{
    std::fprintf(stderr,
                 "usage: veldrix-cli phasors --json PATH --at SAMPLE [--dft-method rectSin|rectCos|trapSin|"
                 "trapCos] [--dft-win prev|cent|next] [--phcomp] [--primary]\n");
}

struct PhasorsOptions
{
    const char *path = nullptr;
    long long at = -1;
    bool primary = false;
    bool progress = false;
};

// -1 when the options are whole, else the exit status of a usage error. The method, window
// and phase compensation are the program-wide switches the name column uses too.
int readOptions(int argc, char **argv, PhasorsOptions &o)
{
    static const char *const methods[] = {"rectSin", "rectCos", "trapSin", "trapCos"};
    static const char *const windows[] = {"prev", "cent", "next"};
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--json") == 0) {
            continue;
        } else if (std::strcmp(arg, "--at") == 0 && hasValue) {
            if (!ReadWholeOption("phasors", arg, argv[++i], o.at))
                return 2;
        } else if (std::strcmp(arg, "--dft-method") == 0 && hasValue) {
            const int method = lookUp(argv[++i], methods, 4);
            if (method < 0) {
                usage();
                return 2;
            }
            dftMethod = method;
        } else if (std::strcmp(arg, "--dft-win") == 0 && hasValue) {
            const int window = lookUp(argv[++i], windows, 3);
            if (window < 0) {
                usage();
                return 2;
            }
            dftWin = window;
        } else if (std::strcmp(arg, "--phcomp") == 0) {
            PhComp = true;
        } else if (std::strcmp(arg, "--primary") == 0) {
            o.primary = true;
        } else if (std::strcmp(arg, "--progress") == 0) {
            o.progress = true;
        } else if (arg[0] == '-' && arg[1] == '-') {
            std::fprintf(stderr, "veldrix-cli phasors: unknown or incomplete option %s\n", arg);
            return 2;
        } else if (!o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    if (!o.path || o.at < 0) {
        usage();
        return 2;
    }
    return -1;
}

void writeNumberOrNull(JsonWriter &json, const char *key, bool present, double value)
{
    json.key(key);
    if (present)
        json.valueDouble(value);
    else
        json.null();
}

void writeChannel(JsonWriter &json, const CCmtd99File &file, const CChnMapAnalog &map, int cursor,
                  uint32_t flags)
{
    const ChnCursorValue value = ChnCursorValueAt(file, map, cursor);
    const bool phasor = value.flags & ChnCursorValue::HasPhasor;
    json.beginObject();
    json.field("index", map.Index());
    json.field("name", file.Text(map.Name()));
    json.field("windowStart", value.windowStart);
    json.field("n", value.n);
    json.field("step", value.step);
    json.field("code", value.code);
    json.fieldDouble("re", value.phasor.re);
    json.fieldDouble("im", value.phasor.im);
    writeNumberOrNull(json, "effective", phasor, phasor ? Effective(value.phasor) : 0.0);
    writeNumberOrNull(json, "realEffective", value.flags & ChnCursorValue::HasValue, value.effective);
    writeNumberOrNull(json, "mean", value.flags & ChnCursorValue::HasMean, value.phasor.re);
    writeNumberOrNull(json, "angleDeg", phasor,
                      std::atan2(value.phasor.im, value.phasor.re) * 57.29577957855229);
    json.field("text", file.Text(ValueText(map, value, cursor, flags)));
    json.endObject();
}

} // namespace

int RunPhasors(int argc, char **argv)
{
    PhasorsOptions o;
    if (const int code = readOptions(argc, argv, o); code >= 0)
        return code;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("phasors", o.path, file, true, o.progress);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    if (o.at >= file.loadedPoints) {
        std::fprintf(stderr, "veldrix-cli phasors: sample %lld is beyond the %d loaded samples\n", o.at,
                     file.loadedPoints);
        return 2;
    }
    const int cursor = static_cast<int>(o.at);
    const uint32_t flags = DisplayBaseEffective | (o.primary ? DisplayPrimary : 0u);
    JsonWriter json;
    json.beginObject();
    json.field("at", cursor);
    json.field("time", static_cast<long long>(file.sampleTimes[cursor]));
    json.key("channels");
    json.beginArray();
    for (const auto &map : file.analogMaps)
        writeChannel(json, file, *map, cursor, flags);
    json.endArray();
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
