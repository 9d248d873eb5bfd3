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

} // namespace

int RunPhasors(int argc, char **argv)
{
    static const char *const methods[] = {"rectSin", "rectCos", "trapSin", "trapCos"};
    static const char *const windows[] = {"prev", "cent", "next"};
    const char *path = nullptr;
    long long at = -1;
    bool primary = false;
    bool progress = false;
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--json") == 0) {
            continue;
        } else if (std::strcmp(arg, "--at") == 0 && hasValue) {
            if (!ReadWholeOption("phasors", arg, argv[++i], at))
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
            primary = true;
        } else if (std::strcmp(arg, "--progress") == 0) {
            progress = true;
        } else if (arg[0] == '-' && arg[1] == '-') {
            std::fprintf(stderr, "veldrix-cli phasors: unknown or incomplete option %s\n", arg);
            return 2;
        } else if (!path) {
            path = arg;
        } else {
            usage();
            return 2;
        }
    }
    if (!path || at < 0) {
        usage();
        return 2;
    }

    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("phasors", path, file, true, progress);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    if (at >= file.loadedPoints) {
        std::fprintf(stderr, "veldrix-cli phasors: sample %lld is beyond the %d loaded samples\n", at,
                     file.loadedPoints);
        return 2;
    }
    const int cursor = static_cast<int>(at);
    const uint32_t flags = DisplayBaseEffective | (primary ? DisplayPrimary : 0u);

    JsonWriter json;
    json.beginObject();
    json.key("at");
    json.value(cursor);
    json.key("time");
    json.value(static_cast<long long>(file.sampleTimes[cursor]));
    json.key("channels");
    json.beginArray();
    for (const auto &map : file.analogMaps) {
        const ChnCursorValue value = ChnCursorValueAt(file, *map, cursor);
        json.beginObject();
        json.key("index");
        json.value(map->Index());
        json.key("name");
        json.value(file.Text(map->Name()));
        json.key("windowStart");
        json.value(value.windowStart);
        json.key("n");
        json.value(value.n);
        json.key("step");
        json.value(value.step);
        json.key("code");
        json.value(value.code);
        json.key("re");
        json.valueDouble(value.phasor.re);
        json.key("im");
        json.valueDouble(value.phasor.im);
        json.key("effective");
        if (value.flags & ChnCursorValue::HasPhasor)
            json.valueDouble(Effective(value.phasor));
        else
            json.null();
        json.key("realEffective");
        if (value.flags & ChnCursorValue::HasValue)
            json.valueDouble(value.effective);
        else
            json.null();
        json.key("mean");
        if (value.flags & ChnCursorValue::HasMean)
            json.valueDouble(value.phasor.re);
        else
            json.null();
        json.key("angleDeg");
        if (value.flags & ChnCursorValue::HasPhasor)
            json.valueDouble(std::atan2(value.phasor.im, value.phasor.re) * 57.29577957855229);
        else
            json.null();
        json.key("text");
        json.value(file.Text(ValueText(*map, value, cursor, flags)));
        json.endObject();
    }
    json.endArray();
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
