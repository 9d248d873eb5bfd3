#include "generatorverb.h"

#include "chnmap.h"
#include "cliargs.h"
#include "cmtd99file.h"
#include "genboundfile.h"
#include "genseries.h"
#include "jsonwriter.h"
#include "recordingload.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr double kRadToDeg = 57.29577951308232;

void usage()
{
    std::fprintf(stderr, "usage: veldrix-cli generator --json PATH --unit NAME --analysis exci|step|pq\n"
                         "       [--bounds FILE] (--at SAMPLE | --from N --to M)\n");
}

enum class Analysis
{
    None,
    Exci,
    Step,
    PQ
};

struct GenOptions
{
    const char *path = nullptr;
    const char *unit = nullptr;
    const char *bounds = nullptr;
    Analysis analysis = Analysis::None;
    long long at = -1;
    long long from = -1;
    long long to = -1;
};

Analysis analysisOf(const char *text)
{
    if (std::strcmp(text, "exci") == 0)
        return Analysis::Exci;
    if (std::strcmp(text, "step") == 0)
        return Analysis::Step;
    if (std::strcmp(text, "pq") == 0)
        return Analysis::PQ;
    return Analysis::None;
}

bool readNumber(const char *option, const char *text, GenOptions &o)
{
    long long &target = std::strcmp(option, "--at") == 0     ? o.at
                        : std::strcmp(option, "--from") == 0 ? o.from
                                                             : o.to;
    return ReadWholeOption("generator", option, text, target);
}

int readOptions(int argc, char **argv, GenOptions &o)
{
    for (int a = 0; a < argc; ++a) {
        const char *arg = argv[a];
        const bool hasValue = a + 1 < argc;
        if (std::strcmp(arg, "--json") == 0) {
            continue;
        } else if (hasValue && std::strcmp(arg, "--unit") == 0) {
            o.unit = argv[++a];
        } else if (hasValue && std::strcmp(arg, "--analysis") == 0) {
            o.analysis = analysisOf(argv[++a]);
        } else if (hasValue && std::strcmp(arg, "--bounds") == 0) {
            o.bounds = argv[++a];
        } else if (hasValue && (std::strcmp(arg, "--at") == 0 || std::strcmp(arg, "--from") == 0 ||
                                std::strcmp(arg, "--to") == 0)) {
            if (!readNumber(arg, argv[a + 1], o))
                return 2;
            ++a;
        } else if (arg[0] != '-' && !o.path) {
            o.path = arg;
        } else {
            usage();
            return 2;
        }
    }
    const bool point = o.at >= 0 && o.from < 0 && o.to < 0;
    const bool range = o.at < 0 && o.from >= 0 && o.to >= o.from;
    if (!o.path || !o.unit || o.analysis == Analysis::None || !(point || range)) {
        usage();
        return 2;
    }
    return 0;
}

const CChnMapAnalog *channelOf(const CCmtd99File &file, int16_t index)
{
    return index > 0 ? file.FindAnalogMap(index) : nullptr;
}

// The unit's channels, ratios and series; everything the three readings share.
struct GenCase
{
    const CmtdInfTrwk_UnitPwr *unit = nullptr;
    GenMachine machine;
    GenTerminal terminal;
    const CChnMapAnalog *uf[3] = {}; // Uf, Uf+, Uf-
    bool ufDifference = false;
    ExciScales scales;
    double zb = 0.0;
    double sn = 0.0;
    int total = 0;
    std::unique_ptr<float[]> store;
    float *r = nullptr, *x = nullptr, *p = nullptr, *q = nullptr;
};

double absMaxOf(const float *y, int count)
{
    double m = 0.0;
    for (int i = 0; i < count; ++i)
        m = std::max(m, double(std::fabs(y[i])));
    return m;
}

double ratioOfFirst(const CChnMapAnalog *const chns[3])
{
    for (int k = 0; k < 3; ++k) {
        if (chns[k])
            return chns[k]->TransformRatio();
    }
    return 1.0;
}

bool setUp(const CCmtd99File &file, const CmtdInfTrwk_UnitPwr &unit, GenCase &c)
{
    c.unit = &unit;
    c.machine = GenMachineOf(unit);
    for (int k = 0; k < 3; ++k) {
        c.terminal.chnU[k] = channelOf(file, unit.tvChns[size_t(k)]);
        c.terminal.chnI[k] = channelOf(file, unit.taChns[size_t(k)]);
        c.uf[k] = channelOf(file, unit.ufeChns[size_t(k)]);
    }
    c.ufDifference = c.uf[1] && c.uf[2];
    c.terminal.freq = GenTerminalFreq(c.terminal);
    c.scales.ratioU = ratioOfFirst(c.terminal.chnU);
    c.scales.ratioI = ratioOfFirst(c.terminal.chnI);
    c.zb = GenBaseOhms(c.machine);
    c.sn = GenRatedMva(c.machine);
    c.total = file.loadedPoints;
    if (c.total < 1)
        return false;
    c.store.reset(new (std::nothrow) float[size_t(c.total) * 4]());
    if (!c.store)
        return false;
    c.r = c.store.get();
    c.x = c.r + c.total;
    c.p = c.x + c.total;
    c.q = c.p + c.total;
    GenSeriesOut out{c.r, c.x, c.p, c.q, c.total};
    GenTerminalSeries(file, c.terminal, out, nullptr, nullptr);
    c.scales.hasRx = c.scales.hasP = true;
    c.scales.rFull = absMaxOf(c.r, c.total);
    c.scales.xFull = absMaxOf(c.x, c.total);
    c.scales.pFull = absMaxOf(c.p, c.total);
    const CChnMapAnalog *field = c.ufDifference ? c.uf[1] : c.uf[0];
    c.scales.ufFull = field ? double(field->absMax) * field->PrimaryFactor() : 0.0;
    return true;
}

// Primary field voltage at a sample: one channel, or the difference of Uf+ and Uf-.
double fieldAt(const GenCase &c, int i)
{
    if (c.ufDifference)
        return std::fabs(double(c.uf[1]->Value(i)) * c.uf[1]->PrimaryFactor() -
                         double(c.uf[2]->Value(i)) * c.uf[2]->PrimaryFactor());
    return c.uf[0] ? std::fabs(double(c.uf[0]->Value(i)) * c.uf[0]->PrimaryFactor()) : 0.0;
}

QString complexText(double re, double im, const char *unit)
{
    return QString::asprintf("%.2f%s%.2f%s", re, im < 0.0 ? "-j" : "+j", std::fabs(im), unit);
}

// One table row: its label, the per-unit text and the named (primary) text.
struct Row
{
    const char *label;
    QString pu;
    QString named;
};
using Rows = std::vector<Row>;

void impedanceRows(Rows &rows, const GenCase &c, int i)
{
    const double k = c.scales.ratioU / c.scales.ratioI;
    const double r = c.r[i] * k, x = c.x[i] * k;
    const double pr = c.zb > 0.0 ? r / c.zb : 0.0, px = c.zb > 0.0 ? x / c.zb : 0.0;
    rows.push_back({"Z(Rm+jXm)", complexText(pr, px, ""), complexText(r, x, "(omh)")});
    rows.push_back(
        {"Z(|Zm|(Ang)Fai)",
         QString::asprintf("%.2f(Ang)%.2f(Deg)", std::hypot(pr, px), std::atan2(px, pr) * kRadToDeg),
         QString::asprintf("%.2f(omh)(Ang)%.2f(Deg)", std::hypot(r, x), std::atan2(x, r) * kRadToDeg)});
}

double puPower(const GenCase &c, double value)
{
    return c.sn > 0.0 ? value * c.scales.ratioU * c.scales.ratioI * 0.000001 / c.sn : 0.0;
}

double megaPower(const GenCase &c, double value)
{
    return value * c.scales.ratioU * c.scales.ratioI * 0.000001;
}

void exciRows(Rows &rows, const GenCase &c, int i)
{
    impedanceRows(rows, c, i);
    const double uf = fieldAt(c, i);
    rows.push_back({"Excitation Vol.(Uf)",
                    QString::asprintf("%.3f", c.machine.uf0 > 0.0 ? uf / c.machine.uf0 : 0.0),
                    QString::asprintf("%.3fV", uf)});
    rows.push_back({"Treminal Measure Power", QString::asprintf("%.3f", puPower(c, c.p[i])),
                    QString::asprintf("%.3fMW", megaPower(c, c.p[i]))});
}

void pqRows(Rows &rows, const GenCase &c, int i)
{
    const double p = puPower(c, c.p[i]), q = puPower(c, c.q[i]);
    rows.push_back({"P", QString::asprintf("%.3f", p), QString::asprintf("%.3fMW", megaPower(c, c.p[i]))});
    rows.push_back({"Q", QString::asprintf("%.3f", q), QString::asprintf("%.3fMVar", megaPower(c, c.q[i]))});
    // The load angle behind Xq at a terminal voltage of 1 per unit, and the power factor angle.
    const double xq = c.machine.salient ? c.machine.xq : c.machine.xd;
    const QString delta = QString::asprintf("%.3f(Deg)", std::atan2(p * xq, 1.0 + q * xq) * kRadToDeg);
    const QString fai = QString::asprintf("%.3f(Deg)", std::atan2(q, p) * kRadToDeg);
    rows.push_back({"Delta", delta, delta});
    rows.push_back({"Fai", fai, fai});
}

void trajectory(JsonWriter &json, const GenCase &c, Analysis analysis, int from, int to)
{
    const double k = c.zb > 0.0 ? c.scales.ratioU / c.scales.ratioI / c.zb : 0.0;
    const bool power = analysis == Analysis::PQ;
    const float *a = power ? c.p : c.r;
    const float *b = power ? c.q : c.x;
    json.key("trajectory");
    json.beginArray();
    for (int i = from; i <= to; ++i) {
        json.beginArray();
        json.valueDouble(power ? puPower(c, a[i]) : a[i] * k);
        json.valueDouble(power ? puPower(c, b[i]) : b[i] * k);
        json.endArray();
    }
    json.endArray();
}

bool loadBounds(const GenOptions &o, ExciBounds &e, StepBounds &s, PQGBounds &g)
{
    if (!o.bounds)
        return true;
    QString message;
    const QString path = QString::fromLocal8Bit(o.bounds);
    const bool ok = o.analysis == Analysis::Exci   ? loadExciBounds(e, path, message)
                    : o.analysis == Analysis::Step ? loadStepBounds(s, path, message)
                                                   : loadPQGBounds(g, path, message);
    if (!ok)
        std::fprintf(stderr, "veldrix-cli generator: %s\n", message.toLocal8Bit().constData());
    return ok;
}

void writeBounds(JsonWriter &json, Analysis analysis, const ExciBounds &e, const StepBounds &s,
                 const PQGBounds &g)
{
    json.key("bounds");
    json.beginObject();
    if (analysis == Analysis::Exci) {
        json.fieldDouble("fPs", e.fPs);
        json.fieldDouble("fUfsetPu", e.fUfsetPu);
        json.fieldDouble("fPtPu", e.fPtPu);
        json.fieldDouble("fSalient", e.fSalient);
    } else if (analysis == Analysis::Step) {
        json.fieldDouble("fRadius", s.fRadius);
    } else {
        json.fieldDouble("fPc", g.fPc);
        json.fieldDouble("fQc", g.fQc);
        json.fieldDouble("fSmax", g.fSmax);
    }
    json.endObject();
}

void writeRange(JsonWriter &json, const GenCase &c, const GenOptions &o, const StepBounds &s)
{
    const int from = int(o.from), to = int(o.to);
    json.field("from", from);
    json.field("to", to);
    trajectory(json, c, o.analysis, from, to);
    if (o.analysis != Analysis::Step)
        return;
    GenSlipCounts counts;
    const double k = c.zb > 0.0 ? c.scales.ratioU / c.scales.ratioI / c.zb : 0.0;
    GenCountSlips(s, c.r, c.x, from, to, k, counts, nullptr, nullptr);
    json.field("Slipping Times Inner System", counts.nSlipSystem);
    json.field("Slipping Times Inner G&T", counts.nSlipGT);
}

void writeAt(JsonWriter &json, const GenCase &c, const GenOptions &o, const StepBounds &s)
{
    const int i = int(o.at);
    Rows rows;
    if (o.analysis == Analysis::Exci) {
        exciRows(rows, c, i);
    } else if (o.analysis == Analysis::Step) {
        impedanceRows(rows, c, i);
        const double k = c.zb > 0.0 ? c.scales.ratioU / c.scales.ratioI / c.zb : 0.0;
        const QString angle = QString::asprintf("(Ang)%.2f(Deg)", StepPowerAngle(s, c.r[i] * k, c.x[i] * k));
        rows.push_back({"Power Angle of Step-Lossing", angle, angle});
    } else {
        pqRows(rows, c, i);
    }
    json.field("sample", i);
    json.key("rows");
    json.beginArray();
    for (const Row &row : rows) {
        json.beginObject();
        json.field("row", row.label);
        json.field("pu", row.pu);
        json.field("named", row.named);
        json.endObject();
    }
    json.endArray();
}

const CmtdInfTrwk_UnitPwr *findGenerator(const CCmtd99File &file, const char *name)
{
    for (const auto &unit : file.powerUnits) {
        if (unit->name == QByteArray(name))
            return unit.get();
    }
    return nullptr;
}

} // namespace

int RunGenerator(int argc, char **argv)
{
    GenOptions o;
    if (const int status = readOptions(argc, argv, o))
        return status;
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("generator", o.path, file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    const CmtdInfTrwk_UnitPwr *unit = findGenerator(file, o.unit);
    if (!unit) {
        std::fprintf(stderr, "veldrix-cli generator: the recording has no generator unit \"%s\"\n", o.unit);
        return 2;
    }
    GenCase c;
    if (!setUp(file, *unit, c)) {
        std::fprintf(stderr, "veldrix-cli generator: the recording has no samples to work on\n");
        return 1;
    }
    if ((o.at >= 0 && o.at >= c.total) || (o.to >= 0 && o.to >= c.total)) {
        std::fprintf(stderr, "veldrix-cli generator: the samples must lie within the %d samples\n", c.total);
        return 2;
    }
    ExciBounds exci;
    StepBounds step;
    PQGBounds pq;
    if (!loadBounds(o, exci, step, pq))
        return 2;
    ExciRecalc(exci, c.machine, c.scales);
    StepRecalc(step, c.machine, c.scales);
    PQGRecalc(pq, c.machine);

    JsonWriter json;
    json.beginObject();
    json.field("unit", QString::fromLocal8Bit(unit->name));
    json.field("salient", c.machine.salient);
    writeBounds(json, o.analysis, exci, step, pq);
    if (o.at >= 0)
        writeAt(json, c, o, step);
    else
        writeRange(json, c, o, step);
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
