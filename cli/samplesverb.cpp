#include "samplesverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "jsonwriter.h"
#include "recordingload.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

void usage()
{
    std::fprintf(stderr,
                 "usage: veldrix-cli samples --json PATH [--from N] [--to M] [--channel A<n>|D<n>]... "
                 "[--progress]\n");
}

struct ChannelChoice
{
    char kind; // 'A' or 'D'
    int index;
};

struct SamplesOptions
{
    const char *path = nullptr;
    long long from = 0;
    long long to = -1;
    bool progress = false;
    std::vector<ChannelChoice> chosen;
};

// -1 when the options are whole, else the exit status of a usage error.
int readOptions(int argc, char **argv, SamplesOptions &o)
{
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--json") == 0) {
            continue; // the only output form
        } else if (std::strcmp(arg, "--progress") == 0) {
            o.progress = true;
        } else if (std::strcmp(arg, "--from") == 0 && hasValue) {
            if (!ReadWholeOption("samples", arg, argv[++i], o.from))
                return 2;
        } else if (std::strcmp(arg, "--to") == 0 && hasValue) {
            if (!ReadWholeOption("samples", arg, argv[++i], o.to))
                return 2;
        } else if (std::strcmp(arg, "--channel") == 0 && hasValue) {
            const char *choice = argv[++i];
            const char kind = static_cast<char>(choice[0] & ~0x20);
            long long index = 0;
            if ((kind != 'A' && kind != 'D') || !ParseWhole(choice + 1, index) || index < INT_MIN ||
                index > INT_MAX) {
                std::fprintf(stderr, "veldrix-cli samples: a channel is A<n> or D<n>, not \"%s\"\n", choice);
                return 2;
            }
            o.chosen.push_back(ChannelChoice{kind, static_cast<int>(index)});
        } else if (arg[0] == '-' && arg[1] == '-') {
            std::fprintf(stderr, "veldrix-cli samples: unknown or incomplete option %s\n", arg);
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

// Every channel when none was chosen; false when a chosen one is not in the recording.
bool selectChannels(const CCmtd99File &file, const std::vector<ChannelChoice> &chosen,
                    std::vector<const CChnMapAnalog *> &analogs, std::vector<const CChnMapStatus *> &statuses)
{
    if (chosen.empty()) {
        for (const auto &map : file.analogMaps)
            analogs.push_back(map.get());
        for (const auto &map : file.statusMaps)
            statuses.push_back(map.get());
    }
    for (const ChannelChoice &choice : chosen) {
        if (choice.kind == 'A') {
            if (const CChnMapAnalog *map = file.FindAnalogMap(choice.index)) {
                analogs.push_back(map);
                continue;
            }
        } else if (const CChnMapStatus *map = file.FindStatusMap(choice.index)) {
            statuses.push_back(map);
            continue;
        }
        std::fprintf(stderr, "veldrix-cli samples: the recording has no channel %c%d\n", choice.kind,
                     choice.index);
        return false;
    }
    return true;
}

void writeSamples(const CCmtd99File &file, long long from, long long to,
                  const std::vector<const CChnMapAnalog *> &analogs,
                  const std::vector<const CChnMapStatus *> &statuses)
{
    JsonWriter json;
    json.beginObject();
    json.key("times");
    json.beginArray();
    for (long long n = from; n <= to; ++n)
        json.value(static_cast<long long>(file.sampleTimes[n]));
    json.endArray();
    json.key("analog");
    json.beginObject();
    for (const CChnMapAnalog *map : analogs) {
        json.key(QByteArray::number(map->Index()).constData());
        json.beginArray();
        for (long long n = from; n <= to; ++n)
            json.valueFloat(map->Value(static_cast<int>(n)));
        json.endArray();
    }
    json.endObject();
    json.key("status");
    json.beginObject();
    for (const CChnMapStatus *map : statuses) {
        json.key(QByteArray::number(map->Index()).constData());
        json.beginArray();
        for (long long n = from; n <= to; ++n)
            json.value(map->Bit(static_cast<int>(n)));
        json.endArray();
    }
    json.endObject();
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
}

} // namespace

int RunSamples(int argc, char **argv)
{
    SamplesOptions o;
    if (const int code = readOptions(argc, argv, o); code >= 0)
        return code;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("samples", o.path, file, true, o.progress);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    std::vector<const CChnMapAnalog *> analogs;
    std::vector<const CChnMapStatus *> statuses;
    if (!selectChannels(file, o.chosen, analogs, statuses))
        return 2;
    const long long last = file.loadedPoints - 1;
    const long long to = o.to < 0 || o.to > last ? last : o.to;
    const long long from = o.from < 0 ? 0 : o.from;
    writeSamples(file, from, to, analogs, statuses);
    return 0;
}
