#pragma once

// One end of a faulted line as the two-ended location sees it: the recording, its voltage and
// current channels with their instrument-transformer ratings, and the data window from which
// the fault phasors are taken. Also the search for the fault's current edge that places that
// window automatically, and the phasors by first differences.

#include "complexd.h"
#include "phasor.h"

#include <QString>
#include <QStringList>

#include <cstdint>

class CCmtd99File;
class CChnMapAnalog;
class CmtdInfTrwk_UnitLine;

// The record of one end (End M or End N), filled from the first page of the location wizard or
// from the command line. It borrows the recording and its channels; the caller keeps them alive
// for as long as the record is used.
struct FaultEnd
{
    enum Group
    {
        Acc1 = 0, // the first current group, always complete
        Acc2 = 1  // an optional second group (the other breaker of a one-and-a-half bay)
    };

    QString title;    // "End M" or "End N", used in every message of this end
    QString fileName; // the recording's path, for the report
    const CCmtd99File *file = nullptr;
    const CmtdInfTrwk_UnitLine *line = nullptr; // the plant line chosen in the recording, or none
    const CChnMapAnalog *voltage[3] = {};       // phases A, B, C
    const CChnMapAnalog *current[2][3] = {};    // [group][phase]
    int16_t weight[2] = {1, 1};                 // multiplies each group's samples
    float tvPrimary = 220000.0f;                // V (entered in kV)
    float tvSecondary = 100.0f;                 // V
    float taPrimary = 1250.0f;                  // A
    float taSecondary = 5.0f;                   // A
    float Kf = 0.15f;                           // pick-up factor of the automatic window search
    RateSegment segment;                        // the rate segment that holds the data window
    int32_t StartPoint = 0;                     // first sample of the data window
};

// The line data entered beside the two ends. Only the positive sequence takes part in the
// two-ended search; the zero-sequence values serve the single-ended estimates where given (0: not
// given).
struct FaultLine
{
    double length = 0.0; // km
    double R1 = 0.0;     // ohm/km
    double X1 = 0.0;     // ohm/km
    double C1 = 0.0;     // microfarad/km
    double G1 = 0.0;     // S/km
    double R0 = 0.0;
    double X0 = 0.0;
    double C0 = 0.0;
    double G0 = 0.0;
};

// Error codes of one end's phasors.
enum FaultEndCode
{
    EndOk = 0,
    EndNoMemory = 1,
    EndWindowInvalid = 2
};

// A message of the location, from its translation key filled like printf (%s takes UTF-8).
QString FaultText(const char *key, ...);

// The checks of the entries of one end and of the line, in the order the wizard runs them; the
// first that fails adds its message and gives false.
bool CheckFaultEnd(const FaultEnd &end, QStringList &messages);
bool CheckFaultLine(const FaultLine &line, QStringList &messages);

// Samples of one cycle at the rated frequency of the end's first voltage channel (50 Hz below
// 1 Hz) in its segment; a negative quotient rounds away from zero as well.
int PointsPerWindow(const FaultEnd &end);
int PointsPerWindow(const FaultEnd &end, float rate);

// Takes `startPoint` as the end's data window when its segment is sampled fast enough and holds
// a whole cycle and two samples behind it. A start on the segment's first sample moves one on,
// so that the first difference has a predecessor. Unless `quiet`, a refusal adds its message.
bool CheckWindow(FaultEnd &end, int startPoint, bool quiet, QStringList *messages = nullptr);

// The first sample from `from` on (at least the segment's first cycle) where the change against
// the sample one cycle before stays at |thr| or more for `count` samples in a row; the result is
// the sample before the run. -1 when there is none or the segment is too short.
int FirstJump(const CChnMapAnalog &chn, const RateSegment &segment, float thr, int count, int from);
// Where the fault's transient has settled, looked for within `cycles` cycles of `start`: the run
// of `count` samples whose change against one cycle before stays within |thr|.
int FindFaultEnd(const CChnMapAnalog &chn, const RateSegment &segment, int start, float thr, int count,
                 int cycles);
// The first jump whose effective value also rises by |thr| over the cycle before it, and its
// settling point in `faultEnd`; -1 for both when the channel shows no fault.
int FindFaultEdge(const CChnMapAnalog &chn, const RateSegment &segment, float thr, int count, int from,
                  int cycles, int &faultEnd);

// The earliest fault edge and the earliest settling point over the first current group's
// phases in `segment`; false when no phase shows a fault.
bool FaultEdgeOfEnd(const FaultEnd &end, const RateSegment &segment, int &edge, int &settled);
// Places the end's data window automatically: a cycle before the settling point of the fault
// current (two when the transient is long), or the trigger point when no current jumps. Sets
// the segment and StartPoint through a quiet CheckWindow and gives the start chosen.
int AutoDataWindow(FaultEnd &end);

// The three voltage and three current phasors of the end (secondary values, peak) from the
// window of PointsPerWindow samples at `start`, by the fundamental of the first differences:
// the difference takes any DC offset out, and dividing by 2·sin(π/N) restores the amplitude.
// Gives an FaultEndCode.
int EndPhasors(const FaultEnd &end, int start, ComplexD voltage[3], ComplexD current[3]);
