#pragma once

// `veldrix-cli samples`: the loaded samples of a recording, as stored.
int RunSamples(int argc, char **argv);
