#include "sequencesverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "cursorvalue.h"
#include "jsonwriter.h"
#include "phasor.h"
#include "recordingload.h"

#include <QByteArray>
#include <QList>

#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

void usage()
{
    std::fprintf(stderr, "usage: veldrix-cli sequences --json PATH --channels A<n>,A<n>,A<n> --at SAMPLE\n");
}

// "A1,A2,A3" as three channel numbers; false (with a message) otherwise.
bool readChannels(const char *text, long long numbers[3])
{
    const QList<QByteArray> parts = QByteArray(text).split(',');
    if (parts.size() != 3) {
        std::fprintf(stderr, "veldrix-cli sequences: --channels expects three channels A<n>,A<n>,A<n>\n");
        return false;
    }
    for (int i = 0; i < 3; ++i) {
        if (!ParseAnalogChannel(parts[i].constData(), numbers[i])) {
            std::fprintf(stderr, "veldrix-cli sequences: a channel is A<n>, not \"%s\"\n",
                         parts[i].constData());
            return false;
        }
    }
    return true;
}

void writePart(JsonWriter &json, const char *key, const ComplexD &part)
{
    json.key(key);
    json.beginObject();
    json.fieldDouble("re", part.re);
    json.fieldDouble("im", part.im);
    json.fieldDouble("effective", Effective(part));
    json.fieldDouble("angleDeg", std::atan2(part.im, part.re) * 57.29577957855229);
    json.endObject();
}

} // namespace

int RunSequences(int argc, char **argv)
{
    const char *path = nullptr;
    const char *channels = nullptr;
    long long at = -1;
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--json") == 0)
            continue;
        if (std::strcmp(arg, "--channels") == 0 && hasValue) {
            channels = argv[++i];
        } else if (std::strcmp(arg, "--at") == 0 && hasValue) {
            if (!ReadWholeOption("sequences", arg, argv[++i], at))
                return 2;
        } else if (arg[0] != '-' && !path) {
            path = arg;
        } else {
            usage();
            return 2;
        }
    }
    long long numbers[3] = {};
    if (!path || !channels || at < 0) {
        usage();
        return 2;
    }
    if (!readChannels(channels, numbers))
        return 2;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("sequences", path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    if (at >= file.loadedPoints) {
        std::fprintf(stderr, "veldrix-cli sequences: sample %lld is beyond the %d loaded samples\n", at,
                     file.loadedPoints);
        return 2;
    }
    // A phase without a phasor at the sample counts as zero, as in the sequence form.
    ComplexD phases[3];
    for (int i = 0; i < 3; ++i) {
        const CChnMapAnalog *map = numbers[i] <= INT16_MAX ? file.FindAnalogMap(int(numbers[i])) : nullptr;
        if (!map) {
            std::fprintf(stderr, "veldrix-cli sequences: the recording has no channel A%lld\n", numbers[i]);
            return 2;
        }
        const ChnCursorValue value = ChnCursorValueAt(file, *map, int(at));
        if (value.flags & ChnCursorValue::HasPhasor)
            phases[i] = value.phasor;
    }
    ComplexD zero, positive, negative;
    SymmetricalParts(phases[0], phases[1], phases[2], zero, positive, negative);
    JsonWriter json;
    json.beginObject();
    json.field("at", int(at));
    writePart(json, "positive", positive);
    writePart(json, "negative", negative);
    writePart(json, "zero", zero);
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
