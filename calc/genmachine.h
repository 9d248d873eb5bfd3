#pragma once

// The nameplate of a generator as its protection diagrams use it: rating, rated voltage, the
// no-load field voltage and the reactances in per unit of the machine's own rating, with the
// rotor kind. The three generator diagrams (loss of excitation, pole slip, capability) share
// it and their base values.

#include <QString>
#include <QStringList>

class CmtdInfTrwk_UnitPwr;

struct GenMachine
{
    double ratedMw = 0.0; // rated active power, MW
    double pf = 1.0;      // rated power factor
    double ratedKv = 0.0; // rated terminal voltage, kV
    double uf0 = 0.0;     // no-load field voltage, V
    double xd = 0.0;      // synchronous reactance, direct axis
    double xq = 0.0;      // synchronous reactance, quadrature axis
    double xdT = 0.0;     // transient reactance, direct axis
    double xs = 0.0;      // reactance of the system behind the terminals
    bool salient = false; // a water-turbine machine has salient poles
};

// The values of a generator unit of the ".inf" file; its capacity is read as the rated output.
GenMachine GenMachineOf(const CmtdInfTrwk_UnitPwr &unit);

// Rated apparent power in MVA: rated output over power factor (the output itself where the
// power factor is not above 0).
double GenRatedMva(const GenMachine &m);
// Base impedance in primary ohm: Un² / Sn (0 without a rating).
double GenBaseOhms(const GenMachine &m);

// One edit of a generator boundary dialog: its inclusive limits and the complaint.
struct GenEditRule
{
    float lo;
    float hi;
    const char *message; // untranslated, in the dialog's context
};
// The dialog's check on the texts of its edits, one complaint per press in the edits' order.
// On success the values go into `fields`; else `error` holds the complaint, fields unchanged.
bool GenStoreEdits(const char *context, const GenEditRule *rules, float *const *fields, int count,
                   const QString *edits, QString &error);
// Every complaint the values of `fields` would raise.
QStringList GenEditProblems(const char *context, const GenEditRule *rules, const float *const *fields,
                            int count);
