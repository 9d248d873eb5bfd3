#pragma once

// `veldrix-cli harmonics`: the harmonic content of one channel at a sample, as the harmonic
// charts show it.
int RunHarmonics(int argc, char **argv);
