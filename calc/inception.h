#pragma once

// Where a disturbance begins in a recording: the first sample at which a channel departs from
// what it did one cycle before. Recordings of one fault by different recorders are lined up at
// this instant.

#include <vector>

class CCmtd99File;
class CChnMapAnalog;

// The first sample at or after `from` + one cycle where any channel's value differs from the
// value one cycle (of its rated frequency, at the sample's rate) earlier by more than a fifth
// of the largest magnitude of its first cycle from `from`, and by more than a twentieth of its
// largest magnitude overall; -1 when none does.
int FirstJumpSample(const CCmtd99File &file, const std::vector<const CChnMapAnalog *> &channels, int from);
