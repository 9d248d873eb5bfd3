#include "differentialverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "idblocking.h"
#include "idboundfile.h"
#include "idobject.h"
#include "jsonwriter.h"
#include "recordingload.h"
#include "units.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

void usage()
{
    std::fprintf(stderr,
                 "usage: veldrix-cli differential --json PATH --unit NAME [--mode 1..4] [--bounds FILE.tdb]\n"
                 "       (--at SAMPLE | --from N --to M)\n");
}

struct Options
{
    const char *path = nullptr;
    const char *unit = nullptr;
    const char *bounds = nullptr;
    long long mode = IdModSum;
    long long at = -1;
    long long from = -1;
    long long to = -1;
};

int readOptions(int argc, char **argv, Options &o)
{
    for (int a = 0; a < argc; ++a) {
        const char *arg = argv[a];
        const bool hasValue = a + 1 < argc;
        const auto is = [arg, hasValue](const char *name) { return hasValue && std::strcmp(arg, name) == 0; };
        if (std::strcmp(arg, "--json") == 0)
            continue;
        if (is("--mode")) {
            if (!ReadWholeOption("differential", arg, argv[++a], o.mode))
                return 2;
        } else if (is("--at") || is("--from") || is("--to")) {
            long long &target = arg[2] == 'a' ? o.at : arg[2] == 'f' ? o.from : o.to;
            if (!ReadWholeOption("differential", arg, argv[++a], target))
                return 2;
        } else if (is("--unit")) {
            o.unit = argv[++a];
        } else if (is("--bounds")) {
            o.bounds = argv[++a];
        } else if (arg[0] != '-' && !o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    const bool atSample = o.at >= 0 && o.from < 0 && o.to < 0;
    const bool range = o.at < 0 && o.from >= 0 && o.to >= 0;
    if (!o.path || !o.unit || o.mode < 1 || o.mode > 4 || !(atSample || range)) {
        usage();
        return 2;
    }
    return 0;
}

// The object of the unit as its form's dialog would set it up: a transformer's windings, a
// generator's terminal and neutral groups (complete when the neutral group has channels).
int buildObject(const CCmtd99File &file, const Options &o, IdObject &object)
{
    object.pRecording = &file;
    object.nMode = int32_t(o.mode);
    const CmtdInfTrwk_Unit *unit = file.FindUnitByName(QByteArray(o.unit));
    QString message;
    bool ok = false;
    if (unit && unit->kind == CmtdInfTrwk_Unit::KindTransformer) {
        ok = IdBuildFromTrm(object, *static_cast<const CmtdInfTrwk_UnitTrm *>(unit), IdKindTrmLongitudinal,
                            message);
    } else if (unit && unit->kind == CmtdInfTrwk_Unit::KindPower) {
        const auto *pwr = static_cast<const CmtdInfTrwk_UnitPwr *>(unit);
        const bool complete = pwr->taZm[0] > 0 || pwr->taZm[1] > 0 || pwr->taZm[2] > 0;
        ok = IdBuildFromPwr(object, *pwr, complete ? IdKindGenComplete : IdKindGenIncomplete, message);
    } else {
        std::fprintf(stderr,
                     "veldrix-cli differential: the recording has no transformer or generator \"%s\"\n",
                     o.unit);
        return 2;
    }
    object.nMode = int32_t(o.mode);
    if (!ok) {
        std::fprintf(stderr, "veldrix-cli differential: %s\n", message.toLocal8Bit().constData());
        return 2;
    }
    return 0;
}

void writePhasesAt(JsonWriter &json, const IdObject &object, const IdBounds &bounds, int at)
{
    const CCmtd99File &file = *object.pRecording;
    const int window = ChnWindowStart(file, IdObjectFreq(object), at);
    double id[3], ir[3], id2[3];
    IdComputeAt(object, window, id, ir, id2);
    double ratios[3][3];
    for (int mode = 0; mode < 3; ++mode)
        IdHarmonicRatios(mode, object.nMask, id, id2, ratios[mode]);
    RateSegment segment;
    int n = 0;
    if (FindRateSegment(file, window, segment) && SegmentUsable(segment))
        n = PointsPerCycle(segment.rate, IdObjectFreq(object));
    std::vector<float> cycle(size_t(std::max(n, 0)));
    json.field("at", at);
    json.field("window", window);
    json.field("mode", IdBrakingName(object.nMode));
    json.key("phases");
    json.beginArray();
    for (int p = 0; p < 3; ++p) {
        if (!(object.nMask & (1u << p)))
            continue;
        IdInstantSamples(object, p, window, n, cycle.data());
        const double dead = IdDeadAngle(cycle.data(), n, bounds.fa[1]);
        const double width = IdWaveWidth(cycle.data(), n, bounds.fb[1], true);
        json.beginObject();
        json.field("name", IdRowName(object, p));
        json.fieldDouble("id", id[p]);
        json.fieldDouble("ir", ir[p]);
        json.fieldDouble("harmByPhase", 100.0 * ratios[IdHarmByPhase][p]);
        json.fieldDouble("harmMaxPhase", 100.0 * ratios[IdHarmMaxPhase][p]);
        json.fieldDouble("harmComposite", 100.0 * ratios[IdHarmComposite][p]);
        json.fieldDouble("deadAngle", dead);
        json.fieldDouble("waveWidth", width);
        json.field("blockedByDeadAngle", IdBlockedByDeadAngle(bounds, dead));
        json.field("blockedByWaveWidth", IdBlockedByWaveWidth(bounds, width));
        json.field("operate", IdInOperateArea(bounds, ir[p], id[p]));
        json.endObject();
    }
    json.endArray();
}

void writeTraces(JsonWriter &json, IdObject &object, int from, int to)
{
    IdComputeSeries(object, nullptr, nullptr);
    IdComputeTraces(object, from, to, nullptr, nullptr);
    json.field("mode", IdBrakingName(object.nMode));
    json.field("from", object.nFrom);
    json.field("to", object.nTo);
    json.key("phases");
    json.beginArray();
    for (int p = 0; p < 3; ++p) {
        if (!(object.nMask & (1u << p)))
            continue;
        json.beginObject();
        json.field("name", IdRowName(object, p));
        for (const char *part : {"ir", "id"}) {
            json.key(part);
            json.beginArray();
            for (float v : part[1] == 'r' ? object.traceIr[p] : object.traceId[p])
                json.valueFloat(v);
            json.endArray();
        }
        json.endObject();
    }
    json.endArray();
}

} // namespace

int RunDifferential(int argc, char **argv)
{
    Options o;
    if (const int status = readOptions(argc, argv, o))
        return status;
    IdBounds bounds;
    if (o.bounds) {
        QString message;
        if (!loadIdBounds(bounds, QString::fromLocal8Bit(o.bounds), message)) {
            std::fprintf(stderr, "veldrix-cli differential: %s\n", message.toLocal8Bit().constData());
            return 2;
        }
    }
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("differential", o.path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    const long long last = std::max(o.at, o.to);
    if (last >= file.loadedPoints || o.from > o.to) {
        std::fprintf(
            stderr, "veldrix-cli differential: the samples must lie within the %d loaded samples, in order\n",
            file.loadedPoints);
        return 2;
    }
    // Held on the heap: 32 branches and the per-sample series.
    auto object = std::make_unique<IdObject>();
    if (const int status = buildObject(file, o, *object))
        return status;

    JsonWriter json;
    json.beginObject();
    json.field("unit", object->name);
    json.field("branches", object->nBranches);
    if (o.at >= 0)
        writePhasesAt(json, *object, bounds, int(o.at));
    else
        writeTraces(json, *object, int(o.from), int(o.to));
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
