#include "saveinfverb.h"

#include "cmtd99file.h"
#include "recordingload.h"

#include <cstdio>

int RunSaveInf(int argc, char **argv)
{
    if (argc != 2 || argv[0][0] == '-' || argv[1][0] == '-') {
        std::fprintf(stderr, "usage: veldrix-cli save-inf PATH OUT.inf\n");
        return 2;
    }
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("save-inf", argv[0], file, false, false);
    if (outcome == LoadOutcome::Missing)
        return 2;
    if (!file.SaveInf(argv[1])) {
        std::fprintf(stderr, "veldrix-cli save-inf: %s\n", file.saveError.toLocal8Bit().constData());
        return 1;
    }
    return 0;
}
