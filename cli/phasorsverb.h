#pragma once

// `veldrix-cli phasors`: the fundamental phasor and effective values of every analog channel
// at one sample, as the name column shows them.
int RunPhasors(int argc, char **argv);
