#pragma once

// `veldrix-cli zones`: an impedance boundary file as the program reads it, and which of its
// zones hold an impedance.
int RunZones(int argc, char **argv);
