#pragma once

// Suggested plant units for a recording that came without an extension file: the channels are
// grouped by bay (their monitored component, or their name without its phase and quantity) and
// each bay's voltages and currents are put into the phase A, B, C and neutral places of a line;
// a bay whose channels name two or three winding sides ("HV"/"LV", "高压侧"/"低压侧") becomes a
// transformer. The engineer accepts, edits or rejects each proposal.

#include "units.h"

#include <QString>

#include <memory>
#include <vector>

class CCmtd99File;

struct UnitSuggestion
{
    std::unique_ptr<CmtdInfTrwk_Unit> unit;
    int16_t kind = CmtdInfTrwk_Unit::KindLine; // the unit's kind, for lists that show it
    QString reason;                            // one line: which channels and why
};

// Proposals for the channels that no existing unit uses, in the order of the bays' first
// channels. Names are unique among themselves and among the recording's units.
std::vector<UnitSuggestion> SuggestUnits(const CCmtd99File &file);
