#include "locateverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "faultend.h"
#include "faultsolver.h"
#include "jsonwriter.h"
#include "recordingload.h"
#include "singleended.h"

#include <QByteArray>
#include <QList>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

void usage()
{
    std::fprintf(
        stderr,
        "usage: veldrix-cli locate --json --line LENGTH,R1,X1,C1[,R0,X0] --m PATH --m-channels "
        "UA,UB,UC,IA,IB,IC [--m-channels2 IA2,IB2,IC2] [--m-weights W1,W2] --m-tv PRIMARY_KV,SECONDARY_V "
        "--m-ta PRIMARY_A,SECONDARY_A [--m-kf KF] [--m-start SAMPLE] --n PATH ... (the same with --n-)\n");
}

// What the command line says about one end, before its recording is read.
struct EndOptions
{
    const char *path = nullptr;
    QList<QByteArray> channels;
    QList<QByteArray> channels2;
    long long weights[2] = {1, 1};
    double tv[2] = {0, 0};
    double ta[2] = {0, 0};
    double kf = 0.15;
    long long start = -1; // -1: the automatic data window
    bool hasTv = false;
    bool hasTa = false;
};

struct LocateOptions
{
    double line[6] = {0, 0, 0, 0, 0, 0};
    bool hasLine = false;
    EndOptions ends[2];
};

// A whole text as a finite decimal number.
bool ParseReal(const QByteArray &text, double &value)
{
    if (text.isEmpty())
        return false;
    errno = 0;
    char *end = nullptr;
    value = std::strtod(text.constData(), &end);
    return errno != ERANGE && end && *end == '\0' && std::isfinite(value);
}

// Between `least` and `most` comma-separated numbers; the rest stay as they were.
bool ReadReals(const char *option, const char *text, double *values, int least, int most)
{
    const QList<QByteArray> fields = QByteArray(text).split(',');
    bool good = fields.size() >= least && fields.size() <= most;
    for (qsizetype i = 0; good && i < fields.size(); ++i)
        good = ParseReal(fields[i].trimmed(), values[i]);
    if (!good)
        std::fprintf(stderr, "veldrix-cli locate: %s expects %d to %d numbers separated by commas\n", option,
                     least, most);
    return good;
}

bool ReadWeights(const char *option, const char *text, long long weights[2])
{
    const QList<QByteArray> fields = QByteArray(text).split(',');
    bool good = fields.size() == 2;
    for (qsizetype i = 0; good && i < 2; ++i)
        good = ParseWhole(fields[i].trimmed().constData(), weights[i]) && weights[i] >= -32768 &&
               weights[i] <= 32767;
    if (!good)
        std::fprintf(stderr, "veldrix-cli locate: %s expects two whole numbers from -32768 to 32767\n",
                     option);
    return good;
}

// One "--m-..." or "--n-..." option; 1 taken, 0 not an end's option, 2 a bad value.
int readEndOption(const char *name, const char *value, const char *arg, EndOptions &o)
{
    if (std::strcmp(name, "") == 0) {
        o.path = value;
    } else if (std::strcmp(name, "-channels") == 0) {
        o.channels = QByteArray(value).split(',');
    } else if (std::strcmp(name, "-channels2") == 0) {
        o.channels2 = QByteArray(value).split(',');
    } else if (std::strcmp(name, "-weights") == 0) {
        return ReadWeights(arg, value, o.weights) ? 1 : 2;
    } else if (std::strcmp(name, "-tv") == 0) {
        o.hasTv = true;
        return ReadReals(arg, value, o.tv, 2, 2) ? 1 : 2;
    } else if (std::strcmp(name, "-ta") == 0) {
        o.hasTa = true;
        return ReadReals(arg, value, o.ta, 2, 2) ? 1 : 2;
    } else if (std::strcmp(name, "-kf") == 0) {
        return ReadReals(arg, value, &o.kf, 1, 1) ? 1 : 2;
    } else if (std::strcmp(name, "-start") == 0) {
        if (!ParseWhole(value, o.start) || o.start < 0 || o.start > INT32_MAX) {
            std::fprintf(stderr, "veldrix-cli locate: %s expects a sample number from 0\n", arg);
            return 2;
        }
    } else {
        return 0;
    }
    return 1;
}

// -1 when the options are whole, else the exit status of a usage error.
int readOptions(int argc, char **argv, LocateOptions &o)
{
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--json") == 0)
            continue;
        if (std::strcmp(arg, "--line") == 0 && hasValue) {
            o.hasLine = true;
            if (!ReadReals(arg, argv[++i], o.line, 4, 6))
                return 2;
            continue;
        }
        const bool endOption = (std::strncmp(arg, "--m", 3) == 0 || std::strncmp(arg, "--n", 3) == 0);
        if (endOption && hasValue) {
            EndOptions &end = o.ends[arg[2] == 'm' ? 0 : 1];
            const int taken = readEndOption(arg + 3, argv[i + 1], arg, end);
            if (taken == 2)
                return 2;
            if (taken == 1) {
                ++i;
                continue;
            }
        }
        std::fprintf(stderr, "veldrix-cli locate: unknown or incomplete option %s\n", arg);
        return 2;
    }
    for (const EndOptions &end : o.ends) {
        if (!end.path || end.channels.size() != 6 || !end.hasTv || !end.hasTa ||
            (!end.channels2.isEmpty() && end.channels2.size() != 3)) {
            usage();
            return 2;
        }
    }
    if (!o.hasLine) {
        usage();
        return 2;
    }
    return -1;
}

// A channel by its name (without regard to case) or as A<index>.
const CChnMapAnalog *FindChannel(const CCmtd99File &file, const QByteArray &choice)
{
    const QByteArray name = choice.trimmed();
    long long index = 0;
    if (name.size() > 1 && (name[0] == 'A' || name[0] == 'a') && ParseWhole(name.constData() + 1, index) &&
        index > 0 && index <= INT32_MAX) {
        if (const CChnMapAnalog *map = file.FindAnalogMap(static_cast<int>(index)))
            return map;
    }
    const CChnMapBase *map = file.FindMapByName(name.constData());
    return map && map->chnType == CChnMapBase::TypeAnalog ? static_cast<const CChnMapAnalog *>(map) : nullptr;
}

bool FillEnd(const EndOptions &o, const CCmtd99File &file, const char *title, FaultEnd &end)
{
    end.title = QString::fromLatin1(title);
    end.fileName = QString::fromLocal8Bit(o.path);
    end.file = &file;
    QList<QByteArray> names = o.channels;
    names += o.channels2;
    for (qsizetype k = 0; k < names.size(); ++k) {
        const CChnMapAnalog *map = FindChannel(file, names[k]);
        if (!map) {
            std::fprintf(stderr, "veldrix-cli locate: %s: no analog channel \"%s\" in %s\n", title,
                         names[k].constData(), o.path);
            return false;
        }
        if (k < 3)
            end.voltage[k] = map;
        else
            end.current[(k - 3) / 3][(k - 3) % 3] = map;
    }
    end.weight[0] = static_cast<int16_t>(o.weights[0]);
    end.weight[1] = static_cast<int16_t>(o.weights[1]);
    end.tvPrimary = static_cast<float>(o.tv[0] * 1000.0);
    end.tvSecondary = static_cast<float>(o.tv[1]);
    end.taPrimary = static_cast<float>(o.ta[0]);
    end.taSecondary = static_cast<float>(o.ta[1]);
    end.Kf = static_cast<float>(o.kf);
    return true;
}

void PrintMessages(const QStringList &messages)
{
    for (const QString &message : messages)
        std::fprintf(stderr, "veldrix-cli locate: %s\n", message.toUtf8().constData());
}

// The given data window, or the automatic one; false with the reason printed.
bool PlaceWindow(const EndOptions &o, FaultEnd &end)
{
    const int start = o.start >= 0 ? static_cast<int>(o.start) : AutoDataWindow(end);
    QStringList messages;
    if (CheckWindow(end, start, false, &messages))
        return true;
    PrintMessages(messages);
    return false;
}

void writeEnd(JsonWriter &json, const FaultEnd &end)
{
    json.beginObject();
    json.field("start", end.StartPoint);
    json.field("ppw", PointsPerWindow(end));
    json.fieldFloat("rate", end.segment.rate);
    json.endObject();
}

void writeEstimate(JsonWriter &json, const SingleEndedEstimate &estimate)
{
    json.beginObject();
    json.fieldDouble("reactanceKm", estimate.reactanceKm);
    json.fieldDouble("takagiKm", estimate.takagiKm);
    json.endObject();
}

void writeResult(const FaultEnd ends[2], const FaultLine &line, int code, const FaultSolver &solver)
{
    JsonWriter json;
    json.beginObject();
    json.field("code", code);
    json.fieldDouble("positionKm", code == 0 ? solver.position : std::numeric_limits<double>::quiet_NaN());
    json.key("fDelta");
    if (!solver.passes.empty()) // the search ran, with or without a solution
        json.valueFloat(solver.fDelta);
    else
        json.null();
    json.key("quality");
    if (code == 0)
        json.value(solver.quality);
    else
        json.null();
    json.key("m");
    writeEnd(json, ends[0]);
    json.key("n");
    writeEnd(json, ends[1]);
    json.key("report");
    json.beginArray();
    for (const QString &text : FaultReport(code, ends[0], ends[1], solver))
        json.value(text);
    json.endArray();
    json.key("singleEnded");
    json.beginObject();
    json.key("m");
    writeEstimate(json, EstimateEnd(ends[0], line));
    json.key("n");
    writeEstimate(json, EstimateEnd(ends[1], line));
    json.endObject();
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
}

} // namespace

int RunLocate(int argc, char **argv)
{
    LocateOptions o;
    if (const int code = readOptions(argc, argv, o); code >= 0)
        return code;
    static const char *const titles[2] = {"End M", "End N"};
    CCmtd99File files[2];
    FaultEnd ends[2];
    QStringList messages;
    for (int k = 0; k < 2; ++k) {
        const LoadOutcome outcome = LoadRecording("locate", o.ends[k].path, files[k], true, false);
        if (outcome != LoadOutcome::Usable)
            return ExitCodeOf(outcome);
        if (!FillEnd(o.ends[k], files[k], titles[k], ends[k]))
            return 2;
        if (!CheckFaultEnd(ends[k], messages)) {
            PrintMessages(messages);
            return 2;
        }
    }
    FaultLine line;
    line.length = o.line[0];
    line.R1 = o.line[1];
    line.X1 = o.line[2];
    line.C1 = o.line[3];
    line.R0 = o.line[4];
    line.X0 = o.line[5];
    if (!CheckFaultLine(line, messages)) {
        PrintMessages(messages);
        return 2;
    }
    for (int k = 0; k < 2; ++k) {
        if (!PlaceWindow(o.ends[k], ends[k]))
            return 1;
    }
    FaultSolver solver;
    const int code = LocateFault(ends[0], ends[1], line, solver);
    writeResult(ends, line, code, solver);
    return code == 0 ? 0 : 1;
}
