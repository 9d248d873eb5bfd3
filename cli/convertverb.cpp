#include "convertverb.h"

#include "cmtd99file.h"
#include "exactcopy.h"
#include "recordingload.h"

#include <QFile>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

int RunConvert(int argc, char **argv)
{
    const char *paths[2] = {nullptr, nullptr};
    ExactCopyFormat format;
    bool progress = false;
    int named = 0;
    for (int i = 0; i < argc; ++i) {
        const char *forms[][2] = {{"--ascii", "ASCII"},
                                  {"--binary", "BINARY"},
                                  {"--binary32", "BINARY32"},
                                  {"--float32", "FLOAT32"}};
        const auto form = std::find_if(std::begin(forms), std::end(forms),
                                       [&](const auto &f) { return std::strcmp(argv[i], f[0]) == 0; });
        if (form != std::end(forms)) {
            format.fileType = (*form)[1];
        } else if (std::strcmp(argv[i], "--revision") == 0) {
            const QByteArray year = i + 1 < argc ? QByteArray(argv[++i]) : QByteArray();
            if (year != "1991" && year != "1999" && year != "2013") {
                std::fprintf(stderr, "veldrix-cli convert: --revision expects 1991, 1999 or 2013\n");
                return 2;
            }
            format.revision = year.toInt();
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
        std::fprintf(stderr, "usage: veldrix-cli convert PATH OUT [--ascii|--binary|--binary32|--float32] "
                             "[--revision 1991|1999|2013] [--progress]\n");
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
    QString error;
    switch (SaveExactCopy(file, out, format, &error)) {
    case ExactCopyResult::Written:
        // The engineer's work (plant units, events, settings) goes with the copy when the
        // input had an extension file; a single file carries it inside already.
        if (out.endsWith(QStringLiteral(".cfg"), Qt::CaseInsensitive) &&
            (file.infSectionsSeen != 0 || !file.foreignSections.isEmpty() ||
             !file.publicExtraSections.isEmpty() || !file.privateExtraSections.isEmpty())) {
            const QByteArray inf = QFile::encodeName(out.left(out.size() - 4) + QStringLiteral(".inf"));
            if (!file.SaveInf(inf.constData())) {
                std::fprintf(stderr, "veldrix-cli convert: %s\n", file.saveError.toUtf8().constData());
                return 1;
            }
        }
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
