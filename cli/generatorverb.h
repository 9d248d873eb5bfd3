#pragma once

// `veldrix-cli generator`: the loss-of-excitation, pole-slip or capability reading of a
// generator unit at a sample (the table rows in per unit and in named values), or over a range
// the trajectory in per unit and, for the pole slip, the slip counts.
int RunGenerator(int argc, char **argv);
