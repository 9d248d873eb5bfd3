#pragma once

// veldrix-cli combine OUT --base PATH --from N --to M [--channels ...]
//                    --other PATH --align OTHER_SAMPLE:BASE_SAMPLE [--method 0..4] [--channels ...]
//                    [--other ...] [--ascii]
int RunCombine(int argc, char **argv);
