#pragma once

// `veldrix-cli locate`: the distance to a short circuit from two recordings of the same fault, one
// from each end of the line, with each end's single-ended estimates beside it.
int RunLocate(int argc, char **argv);
