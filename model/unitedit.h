#pragma once

// Making and changing plant units by hand: the channel roles of each kind (which the setup
// dialog shows as pickers), which channels fit a role, the checks before a unit is taken, the
// "given" bits that the extension-file reader would have set for the same values, and the
// installing of a unit into the recording. A unit made here and written is the same as one
// read from a file with the same keys.

#include "units.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class CCmtd99File;
class CChnMapAnalog;

// What a role asks of its channels.
enum class RoleSignal
{
    Voltage, // AC voltage channels
    Current, // AC current channels
    Any      // any analog channel (exciter voltage, rotor current, ...)
};

// One row of channel pickers: a set of up to four places (phase A, B, C and neutral for a
// set of four, the listed order otherwise) in the unit's own fields.
struct ChannelRole
{
    const char *label = ""; // shown through the translation table ("TA", "TV #1", ...)
    RoleSignal signal = RoleSignal::Any;
    int16_t *places = nullptr;
    int count = 0;
    bool phased = false; // the places are phase A, B, C (and the neutral)
};

// The roles of a unit in the order the dialog shows them; the places point into `unit`.
std::vector<ChannelRole> ChannelRolesOf(CmtdInfTrwk_Unit &unit);

// Whether a channel fits place `place` of `role`: its class (AC voltage or current) and, for a
// phased role, its phase (A, B, C; the neutral place takes neutral and zero-sequence channels).
// A channel of unknown phase fits any phase place, since many recorders leave it out.
bool ChannelFitsRole(const CChnMapAnalog &channel, const ChannelRole &role, int place);

// The kind's name as lists show it ("Line", "Transformer", "Generator", "Exciter", "Channel
// Group"), a key of the translation context "UnitKind"; "" for another number.
const char *UnitKindText(int kind);

// A copy of a unit of any kind.
std::unique_ptr<CmtdInfTrwk_Unit> CloneUnit(const CmtdInfTrwk_Unit &unit);
// Renumbers every channel a unit names (analog roles and lists, status lists) through the
// maps (old number to new; 0 where the channel is gone); false when it names none of them.
bool RemapUnitChannels(CmtdInfTrwk_Unit &unit, const std::function<int(int)> &analog,
                       const std::function<int(int)> &status);
// A new, empty unit of a kind (1 line ... 5 channel group); null for another number.
std::unique_ptr<CmtdInfTrwk_Unit> MakeUnit(int kind);

// The checks before a unit made or changed by hand is taken: an empty list when it can be.
// `replacing` is the unit it takes the place of (its name may stay), null for a new one.
QStringList CheckUnit(const CCmtd99File &file, const CmtdInfTrwk_Unit &unit,
                      const CmtdInfTrwk_Unit *replacing);

// Sets the "given" bits as the reader sets them for the unit's values (numbers above 0, texts
// not empty, sets with a channel), and the line's count of voltage sets.
void SetUnitGivenBits(CmtdInfTrwk_Unit &unit);

// Puts a checked unit into the recording in place of `replacing` (at its place in its list),
// or appends it to the list of its kind; the channel stores find their units again.
CmtdInfTrwk_Unit *InstallUnit(CCmtd99File &file, std::unique_ptr<CmtdInfTrwk_Unit> unit,
                              const CmtdInfTrwk_Unit *replacing);

// A name no unit of the recording has: `base`, else `base (2)`, `base (3)`, ...
QByteArray UniqueUnitName(const CCmtd99File &file, const QByteArray &base);

// Copies of all units of a recording, in list order (lines, transformers, generators, exciters,
// groups), to give back an earlier state of the plant data (undo).
using UnitSnapshot = std::vector<std::unique_ptr<CmtdInfTrwk_Unit>>;
UnitSnapshot TakeUnitSnapshot(const CCmtd99File &file);
// Replaces all units of the recording by copies of the snapshot's; the stores find them again.
void RestoreUnitSnapshot(CCmtd99File &file, const UnitSnapshot &snapshot);
