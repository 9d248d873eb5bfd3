#pragma once

// `veldrix-cli convert`: writes a recording under a new name, in ASCII or binary form.
int RunConvert(int argc, char **argv);
