#pragma once

// `veldrix-cli power`: the total active, reactive and apparent power of three phases at every
// sample, as the power curves of a unit show them.
int RunPower(int argc, char **argv);
