#pragma once

// veldrix-cli save-inf PATH OUT.inf: writes the recording's extension file alone, as a save of
// the workstation does.
int RunSaveInf(int argc, char **argv);
