#pragma once

// veldrix-cli eval: a script of the expression language compiled and run against a recording,
// with its messages, its result log and the samples of each new virtual channel.
int RunEval(int argc, char **argv);
