#include "harmonicsverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "harmonics.h"
#include "jsonwriter.h"
#include "recordingload.h"

#include <cstdio>
#include <cstring>

namespace {

void usage()
{
    std::fprintf(stderr,
                 "usage: veldrix-cli harmonics --json PATH --channel A<n> --at SAMPLE [--max-order K]\n");
}

} // namespace

int RunHarmonics(int argc, char **argv)
{
    const char *path = nullptr;
    long long channel = -1;
    long long at = -1;
    long long maxOrder = 50;
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--json") == 0)
            continue;
        if (std::strcmp(arg, "--channel") == 0 && hasValue) {
            const char *value = argv[++i];
            if (!ParseAnalogChannel(value, channel)) {
                std::fprintf(stderr, "veldrix-cli harmonics: a channel is A<n>, not \"%s\"\n", value);
                return 2;
            }
        } else if (std::strcmp(arg, "--at") == 0 && hasValue) {
            if (!ReadWholeOption("harmonics", arg, argv[++i], at))
                return 2;
        } else if (std::strcmp(arg, "--max-order") == 0 && hasValue) {
            if (!ReadWholeOption("harmonics", arg, argv[++i], maxOrder) || maxOrder < 1 || maxOrder > 50) {
                std::fprintf(stderr, "veldrix-cli harmonics: --max-order is 1 to 50\n");
                return 2;
            }
        } else if (arg[0] != '-' && !path) {
            path = arg;
        } else {
            usage();
            return 2;
        }
    }
    if (!path || channel < 0 || at < 0) {
        usage();
        return 2;
    }
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("harmonics", path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    const CChnMapAnalog *map = channel <= INT16_MAX ? file.FindAnalogMap(int(channel)) : nullptr;
    if (!map) {
        std::fprintf(stderr, "veldrix-cli harmonics: the recording has no channel A%lld\n", channel);
        return 2;
    }
    if (at >= file.loadedPoints) {
        std::fprintf(stderr, "veldrix-cli harmonics: sample %lld is beyond the %d loaded samples\n", at,
                     file.loadedPoints);
        return 2;
    }
    const HarmonicSpectrum spectrum = HarmonicSpectrumAt(file, *map, int(at), int(maxOrder));
    if (!spectrum.valid) {
        std::fprintf(stderr, "veldrix-cli harmonics: no whole cycle at sample %lld\n", at);
        return 1;
    }
    JsonWriter json;
    json.beginObject();
    json.fieldDouble("fundamentalHz", spectrum.fundamentalHz);
    json.field("windowStart", spectrum.windowStart);
    json.field("n", spectrum.n);
    json.key("orders");
    json.beginArray();
    for (const HarmonicOrder &h : spectrum.orders) {
        json.beginObject();
        json.field("order", h.order);
        json.fieldDouble("re", h.phasor.re);
        json.fieldDouble("im", h.phasor.im);
        json.fieldDouble("effective", h.effective);
        json.fieldDouble("percent", h.percent);
        json.fieldDouble("angleDeg", h.angleDeg);
        json.endObject();
    }
    json.endArray();
    json.fieldDouble("thdPercent", spectrum.thdPercent);
    json.fieldDouble("dcPercent", spectrum.dcPercent);
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
