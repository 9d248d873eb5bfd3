#pragma once

#include <array>

class CCmtd99File;
class CChnMapAnalog;

// The three phases of a voltage or current group, given the channel an engineer chose for
// phase A: phases B and C of the same class from the plant unit that uses that channel, else
// from the channels that follow it in the recording. Channels whose phase is not known are
// taken in their order. A phase that cannot be found stays null.
std::array<CChnMapAnalog *, 3> ThreePhaseGroup(const CCmtd99File &file, CChnMapAnalog *first);
