#pragma once

// `veldrix-cli impedance`: the apparent impedance of the phase loops that the impedance form
// shows, at one sample or as traces over a range of samples.
int RunImpedance(int argc, char **argv);
