#include "convertverb.h"

#include "cfffile.h"
#include "cmtd99file.h"

#include "recordingload.h"
#include <QFile>
#include <QTemporaryDir>

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
    // The stores hold secondary values without unit prefix, while the writer divides by the
    // channel's own multiplier only. Bring each store back to the file's own quantities first,
    // so that a converted recording reads back with the values it had.
    // The loader's running extremes leave the minimum of a steadily rising channel at its
    // start value, which the writer would take as the channel's peak; scan them anew.
    for (const auto &map : file.analogMaps) {
        const CmtdChn_Analog &c = *map->config;
        const double fileScale = c.a != 0.0f ? map->gain / double(c.a) : 1.0;
        if (fileScale != 1.0 && fileScale != 0.0) {
            float *values = map->Values();
            for (int n = 0; n < map->sampleCount; ++n)
                values[n] = static_cast<float>(double(values[n]) / fileScale);
        }
        map->RecalcExtremes();
    }
    // The segment lines come from the effective segments, which a recording relying on its
    // stamps has derived from them; the count line must announce as many.
    file.fileDesc.rateCount = static_cast<int16_t>(file.segments.size());
    // The writer keeps stamps relative to the trigger. Where the recording starts at or after
    // its trigger, such stamps would read back as counted from the start and shift by start
    // minus trigger; count them from the start instead, which reads back to the same times.
    if (file.loadedPoints > 0 && file.sampleTimes[0] >= 0) {
        const int64_t delay =
            file.fileDesc.triggerTime.ToMicroseconds() - file.fileDesc.startTime.ToMicroseconds();
        for (int n = 0; n < file.loadedPoints; ++n)
            file.sampleTimes[n] += delay;
    }
    const QByteArray out(paths[1]);
    if (IsCffPath(out)) {
        // The single-file form: written as its parts beside each other, then joined.
        QTemporaryDir folder;
        const QByteArray base = QFile::encodeName(folder.filePath(QStringLiteral("part")));
        if (!folder.isValid() || !file.SaveFile(base.constData()) ||
            !JoinCff(base, file.fileDesc.fileType, out)) {
            std::fprintf(stderr, "veldrix-cli convert: could not write %s\n", paths[1]);
            return 1;
        }
        return 0;
    }
    if (!file.SaveFile(paths[1])) {
        std::fprintf(stderr, "veldrix-cli convert: could not write %s\n", paths[1]);
        return 1;
    }
    return 0;
}
