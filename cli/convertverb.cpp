#include "convertverb.h"

#include "cmtd99file.h"
#include "recordingload.h"

#include <cstdio>
#include <cstring>

int RunConvert(int argc, char **argv)
{
    const char *paths[2] = {nullptr, nullptr};
    const char *form = nullptr;
    bool progress = false;
    int named = 0;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--ascii") == 0) {
            form = "ASCII";
        } else if (std::strcmp(argv[i], "--binary") == 0) {
            form = "BINARY";
        } else if (std::strcmp(argv[i], "--progress") == 0) {
            progress = true;
        } else if (argv[i][0] == '-' && argv[i][1] == '-') {
            std::fprintf(stderr, "veldrix-cli convert: unknown option %s\n", argv[i]);
            return 2;
        } else if (named < 2) {
            paths[named++] = argv[i];
        } else {
            named = 3;
        }
    }
    if (named != 2) {
        std::fprintf(stderr, "usage: veldrix-cli convert PATH OUT [--ascii|--binary] [--progress]\n");
        return 2;
    }

    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("convert", paths[0], file, true, progress);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    if (form)
        file.fileDesc.fileType = form;
    if (!file.SaveFile(paths[1])) {
        std::fprintf(stderr, "veldrix-cli convert: could not write %s\n", paths[1]);
        return 1;
    }
    return 0;
}
