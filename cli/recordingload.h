#pragma once

#include <functional>

class CCmtd99File;

enum class LoadOutcome
{
    Usable,
    Refused,
    Missing
};

// Loads a recording as the program does: description, then the samples. Prints a one-line
// reason on standard error when the recording is missing or refused, and a progress bar
// there when `progress` is set.
// `beforeSamples` runs on the usable description, before the samples are read, as the frame's
// open applies the settings of the path map.
LoadOutcome LoadRecording(const char *verb, const char *path, CCmtd99File &file, bool withSamples,
                          bool progress, const std::function<void(CCmtd99File &)> &beforeSamples = {});

// Exit status of a verb for an outcome: 0 usable, 1 refused, 2 missing.
int ExitCodeOf(LoadOutcome outcome);
