#include "genmachine.h"

#include "units.h"

#include <QCoreApplication>

GenMachine GenMachineOf(const CmtdInfTrwk_UnitPwr &unit)
{
    GenMachine m;
    m.ratedMw = unit.capacity;
    m.pf = unit.factor;
    m.ratedKv = unit.v1;
    m.uf0 = unit.ufe[1];
    m.xd = unit.xd;
    m.xq = unit.xq;
    m.xdT = unit.xdTransient;
    m.xs = unit.xs;
    // The second entry of the type list, a water turbine, drives a salient-pole rotor.
    m.salient = unit.objectType == "WATER_TURBINE";
    return m;
}

double GenRatedMva(const GenMachine &m)
{
    return m.pf > 0.0 ? m.ratedMw / m.pf : m.ratedMw;
}

double GenBaseOhms(const GenMachine &m)
{
    const double sn = GenRatedMva(m);
    return sn > 0.0 ? m.ratedKv * m.ratedKv / sn : 0.0;
}

bool GenStoreEdits(const char *context, const GenEditRule *rules, float *const *fields, int count,
                   const QString *edits, QString &error)
{
    constexpr int kMaxEdits = 16;
    float values[kMaxEdits];
    for (int i = 0; i < count && i < kMaxEdits; ++i) {
        bool ok = false;
        values[i] = edits[i].trimmed().toFloat(&ok);
        if (!ok || !(values[i] >= rules[i].lo && values[i] <= rules[i].hi)) {
            error = QCoreApplication::translate(context, rules[i].message);
            return false;
        }
    }
    for (int i = 0; i < count && i < kMaxEdits; ++i)
        *fields[i] = values[i];
    error.clear();
    return true;
}

QStringList GenEditProblems(const char *context, const GenEditRule *rules, const float *const *fields,
                            int count)
{
    QStringList problems;
    for (int i = 0; i < count; ++i) {
        const float v = *fields[i];
        if (!(v >= rules[i].lo && v <= rules[i].hi))
            problems << QCoreApplication::translate(context, rules[i].message);
    }
    return problems;
}
