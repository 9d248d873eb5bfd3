#pragma once

// `veldrix-cli convert`: writes an exact copy of a recording under a new name (".cfg" or
// ".cff"), in ASCII or binary form. Exit 2 for a name that is no recording's, an output that
// would overwrite a file being read, or values the target form cannot hold; 1 when the disk
// refused the write, with the system's reason.
int RunConvert(int argc, char **argv);
