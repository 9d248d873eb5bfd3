#pragma once

// `veldrix-cli sequences`: the positive, negative and zero sequence of three channels at one
// sample, from the phasors the name column and the sequence form show.
int RunSequences(int argc, char **argv);
