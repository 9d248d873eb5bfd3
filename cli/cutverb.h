#pragma once

// veldrix-cli cut PATH OUT --from N --to M [--channels A1,A2,D1...] [--max-rate HZ]
//                [--ascii|--binary|--csv]
int RunCut(int argc, char **argv);
