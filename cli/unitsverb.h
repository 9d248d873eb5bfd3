#pragma once

// veldrix-cli units --json PATH [--suggest]: the recording's primary device units as stored,
// in the form of info --json's "units"; with --suggest, the units proposed from the channel
// names and monitored components are added to them, each with the reason for it.
int RunUnits(int argc, char **argv);
