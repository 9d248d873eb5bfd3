#include "eventsverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "jsonwriter.h"
#include "recordingload.h"
#include "statusevents.h"

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

void usage()
{
    std::fprintf(stderr,
                 "usage: veldrix-cli events --json PATH [--base t0|t0c|SAMPLE] [--format mmssus|msus]\n");
}

struct EventsOptions
{
    const char *path = nullptr;
    const char *base = "t0";
    StatusTimeFormat format = StatusTimeMinSecUs;
};

// -1 when the options are whole, else the exit status of a usage error.
int readOptions(int argc, char **argv, EventsOptions &o)
{
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--json") == 0) {
            continue; // the only output form
        } else if (std::strcmp(arg, "--base") == 0 && hasValue) {
            o.base = argv[++i];
        } else if (std::strcmp(arg, "--format") == 0 && hasValue) {
            const char *format = argv[++i];
            if (std::strcmp(format, "mmssus") == 0) {
                o.format = StatusTimeMinSecUs;
            } else if (std::strcmp(format, "msus") == 0) {
                o.format = StatusTimeMsUs;
            } else {
                std::fprintf(stderr, "veldrix-cli events: the format is mmssus or msus, not \"%s\"\n",
                             format);
                return 2;
            }
        } else if (arg[0] == '-' && arg[1] == '-') {
            std::fprintf(stderr, "veldrix-cli events: unknown or incomplete option %s\n", arg);
            return 2;
        } else if (!o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    if (!o.path) {
        usage();
        return 2;
    }
    return -1;
}

// The base as the option names it: "t0", "t0c" or a sample number. False with a message when it
// is none of these.
bool readBase(const char *text, StatusTimeBase &base, int &sample)
{
    long long number = 0;
    if (std::strcmp(text, "t0") == 0) {
        base = StatusBaseTripT0;
    } else if (std::strcmp(text, "t0c") == 0) {
        base = StatusBaseCustomT0;
    } else if (ParseWhole(text, number) && number >= INT_MIN && number <= INT_MAX) {
        base = StatusBaseT1Fixed;
        sample = static_cast<int>(number);
    } else {
        std::fprintf(stderr, "veldrix-cli events: the base is t0, t0c or a sample number, not \"%s\"\n",
                     text);
        return false;
    }
    return true;
}

void reportMissingBase(const CCmtd99File &file, StatusTimeBase base, int sample)
{
    if (base == StatusBaseCustomT0)
        std::fprintf(stderr, "veldrix-cli events: the recording has no custom trip time (T0')\n");
    else if (base == StatusBaseTripT0)
        std::fprintf(stderr, "veldrix-cli events: the recording has no samples to count from\n");
    else
        std::fprintf(stderr, "veldrix-cli events: sample %d is not among the %d loaded samples\n", sample,
                     file.loadedPoints);
}

void writeEvents(const CCmtd99File &file, const std::vector<StatusEvent> &events, int64_t baseUs,
                 StatusTimeFormat format)
{
    JsonWriter json;
    json.beginArray();
    for (const StatusEvent &event : events) {
        json.beginObject();
        json.field("sample", event.sample);
        json.field("timeUs", static_cast<long long>(event.timeUs));
        json.field("delta", StatusDeltaText(event.timeUs - baseUs, format).constData());
        json.field("channel", event.index);
        json.field("name", file.Text(event.name));
        json.field("state", int(event.state));
        json.endObject();
    }
    json.endArray();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
}

} // namespace

int RunEvents(int argc, char **argv)
{
    EventsOptions o;
    if (const int code = readOptions(argc, argv, o); code >= 0)
        return code;
    StatusTimeBase base = StatusBaseTripT0;
    int sample = 0;
    if (!readBase(o.base, base, sample))
        return 2;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("events", o.path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    int64_t baseUs = 0;
    if (!StatusBaseTime(file, base, sample, baseUs)) {
        reportMissingBase(file, base, sample);
        return 2;
    }
    writeEvents(file, CollectStatusEvents(file), baseUs, o.format);
    return 0;
}
