#include "convertverb.h"

#include "cmtd99file.h"
#include "exactcopy.h"
#include "recordingload.h"

#include <QFile>

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

    const QString in = QFile::decodeName(paths[0]);
    const QString out = QFile::decodeName(paths[1]);
    if (!IsRecordingOutputName(out)) {
        std::fprintf(stderr, "veldrix-cli convert: the output name must end in .cfg or .cff: %s\n", paths[1]);
        return 2;
    }
    if (OutputTouchesInput(in, out)) {
        std::fprintf(stderr, "veldrix-cli convert: %s would overwrite a file of the recording being read\n",
                     paths[1]);
        return 2;
    }

    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("convert", paths[0], file, true, progress);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    ExactCopyFormat format;
    if (form)
        format.fileType = form;
    QString error;
    switch (SaveExactCopy(file, out, format, &error)) {
    case ExactCopyResult::Written:
        return 0;
    case ExactCopyResult::Refused:
        std::fprintf(stderr, "veldrix-cli convert: %s\n", error.toUtf8().constData());
        return 2;
    case ExactCopyResult::WriteFailed:
        break;
    }
    std::fprintf(stderr, "veldrix-cli convert: %s\n", error.toUtf8().constData());
    return 1;
}
