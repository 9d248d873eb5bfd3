#pragma once

// `veldrix-cli differential`: the differential and braking currents of a transformer or
// generator unit per phase at one sample (with the inrush-blocking quantities and whether the
// point trips the characteristic), or the Ir-Id traces over a range of samples.
int RunDifferential(int argc, char **argv);
