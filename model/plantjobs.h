#pragma once

// The worker's side of the curves of a plant unit in operation (jobs 10 to 12): the record that
// each dialog fills and hands to the worker, its prefill from a line, transformer or generator
// unit, the virtual channels it makes and how they are described, and the job itself with the
// outer form of the derived-channel jobs (extent reset, curve written, extent recomputed).

#include "cmtd99file.h"
#include "powercurves.h"

#include <QString>

#include <cstdint>

class CmtdInfTrwk_Unit;
class CmtdInfTrwk_UnitPwr;

// Job numbers of the worker.
enum PlantJobKind
{
    PlantJobVoltsPerHertz = 10,
    PlantJobPower = 11,
    PlantJobLoadAngle = 12
};

// Power curves P, Q, S of three phases and their total. The currents' sign makes power that
// leaves the bus into the plant (export) positive: -1 for transformers that point the other
// way. Primary values are the secondary ones times each channel's transformer ratio.
struct PowerJobParams
{
    const CChnMapAnalog *u[3] = {};   // phase-to-earth voltages A, B, C
    const CChnMapAnalog *i[3] = {};   // phase currents
    const CChnMapAnalog *i2[3] = {};  // a second branch whose currents add (none: null)
    float currentSign = 1.0f;         // of `i`
    float currentSign2 = 1.0f;        // of `i2`
    bool primary = false;             // values (and unit sizes) on the primary side
    uint32_t curves = PowerAllCurves; // PowerCurveBit: kinds times places
    QString namePrefix;               // put before the curves' names, with a blank
};

// The channels a power job writes, by kind and place (phases A, B, C, total); null where the
// curve is not wanted or its phase has no channels. `unitSize` is the W (var, VA) of one stored
// value: 1e3 for channels in kW, 1e6 for MW.
struct PowerJobChannels
{
    CChnMapAnalog *p[kPowerPlaces] = {};
    CChnMapAnalog *q[kPowerPlaces] = {};
    CChnMapAnalog *s[kPowerPlaces] = {};
    double unitSize = 1000.0;
};

// Voltage over frequency of one winding. The rated voltage is that of the winding, line to
// line in primary kV, and is turned into the channel's stored volts through its ratio (phase to
// earth unless the channel's phase says line to line); `ratedVolts` above 0 gives that number
// directly instead.
struct UfJobParams
{
    const CChnMapAnalog *u = nullptr;
    float ratedKv = 0.0f;
    float ratedFreq = 50.0f; // Hz
    float ratedVolts = 0.0f;
    QString namePrefix;
};

// Load angle of a generator from its terminal voltages and stator currents. Xq is in per unit
// of the machine's rating (ratedKv line to line, ratedMva); see LoadAngleJobInputs.
struct LoadAngleJobParams
{
    const CChnMapAnalog *u[3] = {};
    const CChnMapAnalog *i[3] = {};
    float xq = 0.0f;
    float ratedKv = 0.0f;
    float ratedMva = 0.0f;
    float currentSign = 1.0f; // -1 where the current transformers measure into the machine
    QString namePrefix;
};

// Prefill of the dialogs from a unit: its voltage and current sets (`side` 0, 1, 2 is the high,
// middle and low winding of a transformer; other units have one), ratings and current
// direction. False when the unit has no voltage with a current (power, load angle) or no
// voltage (U/f) on that side.
bool PowerJobFromUnit(const CCmtd99File &file, const CmtdInfTrwk_Unit &unit, int side,
                      PowerJobParams &params);
bool UfJobFromUnit(const CCmtd99File &file, const CmtdInfTrwk_Unit &unit, int side, UfJobParams &params);
bool LoadAngleJobFromUnit(const CCmtd99File &file, const CmtdInfTrwk_UnitPwr &unit,
                          LoadAngleJobParams &params);

// The inputs of the curves as the records describe them.
PowerInputs PowerJobInputs(const PowerJobParams &params);
double UfRatedVoltage(const UfJobParams &params);
// Xq in per unit becomes the ohm of the stored values: with base impedance Zb = kV² / MVA in
// primary ohm and the voltage and current ratios of the phase A channels, X = Xq · Zb · ratioI /
// ratioU. The load angle is a ratio of voltages, so any consistent base gives the same angle;
// the channels' own ohm avoid turning every sample to per unit.
LoadAngleInputs LoadAngleJobInputs(const LoadAngleJobParams &params);

// 'M' when the three phases at the channels' peak values carry a megawatt or more on the chosen
// side, else 'k': the curves' units are then MW, Mvar, MVA or kW, kvar, kVA. The samples are held
// in that unit, the unit's text whole (no prefix split off), so that the name column, the scales
// and written files show the numbers as they stand.
char PowerUnitPrefix(const PowerJobParams &params);
QByteArray PowerUnitText(uint32_t kind, char prefix);

// Default names: "P A", "Q B", "S C" per phase and "P", "Q", "S" for the total; "U/f"; "Delta";
// each behind the record's prefix.
QString PowerChannelName(const PowerJobParams &params, uint32_t kind, int place);
QString UfChannelName(const UfJobParams &params);
QString LoadAngleChannelName(const LoadAngleJobParams &params);

// Make (MakeVirtualChannel) and describe the channels of a job: the power class ("PW") with the
// unit by size, U/f in "p.u.", the load angle in "Deg" of the angle class; all are curves whose
// samples are the values shown, with the input's rated frequency and the phase of their place.
// Null (false) with the message where a channel cannot be had, or where a name would take one of
// the job's own inputs.
bool MakePowerChannels(CCmtd99File &file, const PowerJobParams &params, PowerJobChannels &out,
                       QString &message);
CChnMapAnalog *MakeUfChannel(CCmtd99File &file, const UfJobParams &params, QString &message);
CChnMapAnalog *MakeLoadAngleChannel(CCmtd99File &file, const LoadAngleJobParams &params, QString &message);

// The jobs on the worker, with report/owner as LoadDat gets them. False when stopped (what was
// computed stays). The caller redoes the recording's channel ordering on the interface thread.
bool RunPowerJob(CCmtd99File &file, const PowerJobParams &params, const PowerJobChannels &channels,
                 ProgressFn report, void *owner);
bool RunUfJob(CCmtd99File &file, const UfJobParams &params, CChnMapAnalog &target, ProgressFn report,
              void *owner);
bool RunLoadAngleJob(CCmtd99File &file, const LoadAngleJobParams &params, CChnMapAnalog &target,
                     ProgressFn report, void *owner);
