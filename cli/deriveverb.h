#pragma once

// veldrix-cli derive: the curve that a virtual channel of one source channel gets from the
// worker (delta, average, harmonic, filters, frequencies), with its default name, unit and
// rated frequency.
int RunDerive(int argc, char **argv);
