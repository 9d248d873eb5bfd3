#include "deriveverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "jsonwriter.h"
#include "recordingload.h"
#include "seriesframe.h"
#include "seriesjob.h"

#include <QCoreApplication>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

void usage()
{
    std::fprintf(stderr, "usage: veldrix-cli derive --json PATH --channel A<n> --job delta --mode 0|1|2\n"
                         "       | --job avg | --job harm --order K --part 0|1|2\n"
                         "       | --job hamming --end-freq F --length L | --job diff | --job freq-x0\n"
                         "       | --job freq-dft\n");
}

// The options a job takes, as bits: an option given to a job that has no use for it is an error.
enum DeriveOption : unsigned
{
    OptMode = 0x1,
    OptOrder = 0x2,
    OptPart = 0x4,
    OptEndFreq = 0x8,
    OptLength = 0x10
};

struct JobName
{
    const char *name;
    int kind;
    unsigned needs;
};

const JobName kJobs[] = {{"delta", SeriesJobDelta, OptMode},
                         {"avg", SeriesJobAverage, 0},
                         {"harm", SeriesJobHarmonic, OptOrder | OptPart},
                         {"hamming", SeriesJobHamming, OptEndFreq | OptLength},
                         {"diff", SeriesJobOnePointDiff, 0},
                         {"freq-x0", SeriesJobFreqZeroCross, 0},
                         {"freq-dft", SeriesJobFreqDft, 0}};

const JobName *findJob(const char *name)
{
    for (const JobName &job : kJobs) {
        if (std::strcmp(job.name, name) == 0)
            return &job;
    }
    return nullptr;
}

struct DeriveOptions
{
    const char *path = nullptr;
    const char *job = nullptr;
    long long channel = -1;
    long long mode = 0;
    long long order = 0;
    long long part = 0;
    double endFreq = 0.0;
    long long length = 0;
    unsigned given = 0;
    bool progress = false;
};

int fail(const char *message, const char *detail = "")
{
    std::fprintf(stderr, "veldrix-cli derive: %s%s\n", message, detail);
    return 2;
}

bool readWholeIn(const char *option, const char *text, long long low, long long high, long long &value)
{
    if (!ReadWholeOption("derive", option, text, value))
        return false;
    if (value >= low && value <= high)
        return true;
    std::fprintf(stderr, "veldrix-cli derive: %s must lie between %lld and %lld\n", option, low, high);
    return false;
}

bool readEndFreq(const char *text, double &value)
{
    char *end = nullptr;
    value = std::strtod(text, &end);
    if (end != text && *end == '\0' && value >= 0.1 && value <= 1000.0)
        return true;
    std::fprintf(stderr, "veldrix-cli derive: --end-freq expects a frequency from 0.1 to 1000 Hz\n");
    return false;
}

// One option with its value; false on a bad value (the message is printed).
bool readValue(const char *arg, const char *value, DeriveOptions &o)
{
    if (std::strcmp(arg, "--channel") == 0) {
        if (!ParseAnalogChannel(value, o.channel)) {
            std::fprintf(stderr, "veldrix-cli derive: a channel is A<n>, not \"%s\"\n", value);
            return false;
        }
        return true;
    }
    if (std::strcmp(arg, "--job") == 0) {
        o.job = value;
        return true;
    }
    if (std::strcmp(arg, "--mode") == 0) {
        o.given |= OptMode;
        return readWholeIn(arg, value, 0, 2, o.mode);
    }
    if (std::strcmp(arg, "--order") == 0) {
        o.given |= OptOrder;
        return readWholeIn(arg, value, 0, 99, o.order);
    }
    if (std::strcmp(arg, "--part") == 0) {
        o.given |= OptPart;
        return readWholeIn(arg, value, 0, 2, o.part);
    }
    if (std::strcmp(arg, "--end-freq") == 0) {
        o.given |= OptEndFreq;
        return readEndFreq(value, o.endFreq);
    }
    o.given |= OptLength;
    return readWholeIn(arg, value, 1, 1024, o.length);
}

bool takesValue(const char *arg)
{
    static const char *const options[] = {"--channel", "--job",      "--mode",  "--order",
                                          "--part",    "--end-freq", "--length"};
    for (const char *option : options) {
        if (std::strcmp(arg, option) == 0)
            return true;
    }
    return false;
}

// -1 when the options are whole, else the exit status of a usage error.
int readOptions(int argc, char **argv, DeriveOptions &o)
{
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        if (std::strcmp(arg, "--json") == 0) {
            continue; // the only output form
        } else if (std::strcmp(arg, "--progress") == 0) {
            o.progress = true;
        } else if (takesValue(arg) && i + 1 < argc) {
            if (!readValue(arg, argv[++i], o))
                return 2;
        } else if (arg[0] == '-' && arg[1] == '-') {
            return fail("unknown or incomplete option ", arg);
        } else if (!o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    if (!o.path || !o.job || o.channel < 0) {
        usage();
        return 2;
    }
    const JobName *job = findJob(o.job);
    if (!job)
        return fail("no such job: ", o.job);
    if ((o.given & ~job->needs) != 0)
        return fail("an option was given that this job does not take: ", o.job);
    if ((job->needs & ~o.given) != 0)
        return fail("the job needs more options: ", o.job);
    return -1;
}

SeriesJobParams paramsOf(const DeriveOptions &o)
{
    SeriesJobParams params;
    params.kind = findJob(o.job)->kind;
    params.mode = static_cast<int32_t>(o.mode);
    params.order = static_cast<int32_t>(o.order);
    params.part = static_cast<int32_t>(o.part);
    params.endFreq = static_cast<float>(o.endFreq);
    params.length = static_cast<int32_t>(o.length);
    return params;
}

void writeCurve(const CCmtd99File &file, const CChnMapAnalog &source, const SeriesJobParams &params,
                const float *y, int count)
{
    const SeriesJobTraits traits = SeriesJobResultTraits(source, params);
    JsonWriter json;
    json.beginObject();
    json.field("name", SeriesJobDefaultName(file.Text(source.Name()), params));
    json.field("unit", file.Text(source.config ? source.config->uu : QByteArray()));
    json.fieldFloat("ratedFreq", traits.ratedFreq);
    json.key("values");
    json.beginArray();
    for (int i = 0; i < count; ++i)
        json.valueFloat(y[i]);
    json.endArray();
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
}

} // namespace

int RunDerive(int argc, char **argv)
{
    DeriveOptions o;
    if (const int code = readOptions(argc, argv, o); code >= 0)
        return code;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("derive", o.path, file, true, o.progress);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    const CChnMapAnalog *source =
        o.channel <= INT16_MAX ? file.FindAnalogMap(static_cast<int>(o.channel)) : nullptr;
    if (!source) {
        std::fprintf(stderr, "veldrix-cli derive: the recording has no channel A%lld\n", o.channel);
        return 2;
    }
    const SeriesJobParams params = paramsOf(o);
    const int count = SeriesLength(file, SourceOf(*source));
    const std::unique_ptr<float[]> y(new (std::nothrow) float[size_t(count) + 1]);
    if (!y || !RunSeriesJob(file, *source, params, y.get())) {
        std::fprintf(
            stderr, "veldrix-cli derive: %s\n",
            QCoreApplication::translate("CVirChnDlg", "Memory is not enough to create virtual channel!")
                .toLocal8Bit()
                .constData());
        return 1;
    }
    writeCurve(file, *source, params, y.get(), count);
    return 0;
}
