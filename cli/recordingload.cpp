#include "recordingload.h"

#include "cfffile.h"
#include "cmtd99file.h"
#include "cmtdtext.h"

#include <QFileInfo>

#include <cstdio>

namespace {

// A bar of 40 cells on standard error, redrawn at each percent.
int progressBar(void *, int code, int total, int current)
{
    if (code == 8)
        return total > 100 ? total / 100 : 1;
    if (code == 10 && total > 0) {
        const int percent = static_cast<int>(100LL * (current + 1) / total);
        const int cells = percent * 40 / 100;
        std::fprintf(stderr, "\r[%.*s%*s] %3d%%", cells, "########################################",
                     40 - cells, "", percent);
        std::fflush(stderr);
    }
    return 0;
}

// The reason names the file, since the message names only the line.
void printReason(const char *verb, const char *what, const char *path, const LoadMessageList &messages)
{
    std::fprintf(stderr, "veldrix-cli %s: %s: %s%s%s\n", verb, what, path, messages.isEmpty() ? "" : ": ",
                 messages.isEmpty() ? "" : CmtdText(messages.first().text).toUtf8().constData());
}

} // namespace

LoadOutcome LoadRecording(const char *verb, const char *path, CCmtd99File &file, bool withSamples,
                          bool progress, const std::function<void(CCmtd99File &)> &beforeSamples)
{
    const QByteArray base = CmtdBasePath(path);
    const QByteArray cfg = CmtdSiblingPath(base, ".cfg");
    const QByteArray inf = CmtdSiblingPath(base, ".inf");
    const bool cff = IsCffPath(QByteArray(path)) && QFileInfo::exists(QString::fromLocal8Bit(path));
    if (!cff && !QFileInfo::exists(QString::fromLocal8Bit(cfg)) &&
        !QFileInfo::exists(QString::fromLocal8Bit(inf))) {
        std::fprintf(stderr, "veldrix-cli %s: no such recording: %s\n", verb, cfg.constData());
        return LoadOutcome::Missing;
    }
    if (!file.LoadFile(path)) {
        // A refused configuration says why in its own list; a refused check of the counts in the
        // data list.
        const LoadMessageList &reasons = file.datMessages.isEmpty() ? file.cfgMessages : file.datMessages;
        printReason(verb, "recording refused", cff ? path : cfg.constData(), reasons);
        return LoadOutcome::Refused;
    }
    if (beforeSamples)
        beforeSamples(file);
    if (!withSamples)
        return LoadOutcome::Usable;
    const qsizetype before = file.datMessages.size();
    const bool loaded = file.LoadDat(path, progress ? progressBar : nullptr, nullptr);
    if (progress)
        std::fputc('\n', stderr);
    if (!loaded) {
        LoadMessageList reasons = file.datMessages.mid(before);
        if (reasons.isEmpty())
            reasons.append(
                LoadMessage{0, QByteArray::number(file.loadedPoints) + " usable samples in the data file"});
        printReason(verb, "samples not loaded", path, reasons);
        return LoadOutcome::Refused;
    }
    return LoadOutcome::Usable;
}

int ExitCodeOf(LoadOutcome outcome)
{
    switch (outcome) {
    case LoadOutcome::Usable:
        return 0;
    case LoadOutcome::Refused:
        return 1;
    case LoadOutcome::Missing:
        break;
    }
    return 2;
}
