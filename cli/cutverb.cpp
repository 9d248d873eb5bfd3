#include "cutverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "exactcopy.h"
#include "recordingload.h"

#include <QFile>

#include <cstdio>
#include <cstring>

namespace {

struct CutOptions
{
    const char *paths[2] = {nullptr, nullptr};
    long long from = -1;
    long long to = -1;
    double maxRate = 0.0;
    const char *channels = nullptr;
    const char *form = "BINARY"; // or "ASCII", or "CSV"
};

int usage()
{
    std::fprintf(stderr, "usage: veldrix-cli cut PATH OUT --from N --to M [--channels A1,A2,D1...] "
                         "[--max-rate HZ] [--ascii|--binary|--csv]\n");
    return 2;
}

// 0 when read, else the exit code.
int readOptions(int argc, char **argv, CutOptions &o)
{
    int named = 0;
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const char *value = i + 1 < argc ? argv[i + 1] : "";
        if (std::strcmp(arg, "--from") == 0 || std::strcmp(arg, "--to") == 0) {
            if (!ReadWholeOption("cut", arg, value, arg[2] == 'f' ? o.from : o.to))
                return 2;
            ++i;
        } else if (std::strcmp(arg, "--max-rate") == 0) {
            char *end = nullptr;
            o.maxRate = std::strtod(value, &end);
            if (!*value || *end || !(o.maxRate >= 0.0)) {
                std::fprintf(stderr, "veldrix-cli cut: --max-rate expects a rate in Hz\n");
                return 2;
            }
            ++i;
        } else if (std::strcmp(arg, "--channels") == 0) {
            o.channels = value;
            ++i;
        } else if (std::strcmp(arg, "--ascii") == 0 || std::strcmp(arg, "--binary") == 0 ||
                   std::strcmp(arg, "--csv") == 0) {
            o.form = arg[2] == 'a' ? "ASCII" : (arg[2] == 'b' ? "BINARY" : "CSV");
        } else if (arg[0] == '-' && arg[1] == '-') {
            std::fprintf(stderr, "veldrix-cli cut: unknown option %s\n", arg);
            return 2;
        } else if (named < 2) {
            o.paths[named++] = arg;
        } else {
            return usage();
        }
    }
    return named == 2 && o.from >= 0 && o.to >= 0 ? 0 : usage();
}

// "A1,A2,D1": analog channels by A<n>, status channels by D<n>; all channels when none given.
bool chooseChannels(const CCmtd99File &file, const char *list, std::vector<const CChnMapAnalog *> &analogs,
                    std::vector<const CChnMapStatus *> &statuses)
{
    if (!list) {
        for (int c = 0; c < file.FileAnalogStoreCount(); ++c)
            analogs.push_back(file.analogMaps[size_t(c)].get());
        for (const auto &map : file.statusMaps)
            statuses.push_back(map.get());
        return true;
    }
    for (const QByteArray &name : QByteArray(list).split(',')) {
        const QByteArray n = name.trimmed();
        long long index = 0;
        if (ParseAnalogChannel(n.constData(), index) && index >= 1 && index <= file.FileAnalogStoreCount()) {
            analogs.push_back(file.analogMaps[size_t(index - 1)].get());
        } else if ((n.startsWith('D') || n.startsWith('d')) && ParseWhole(n.constData() + 1, index) &&
                   index >= 1 && index <= qsizetype(file.statusMaps.size())) {
            statuses.push_back(file.statusMaps[size_t(index - 1)].get());
        } else {
            std::fprintf(stderr, "veldrix-cli cut: no channel %s\n", n.constData());
            return false;
        }
    }
    return true;
}

} // namespace

int RunCut(int argc, char **argv)
{
    CutOptions o;
    if (const int code = readOptions(argc, argv, o))
        return code;
    const QString in = QFile::decodeName(o.paths[0]);
    const QString out = QFile::decodeName(o.paths[1]);
    const bool csv = std::strcmp(o.form, "CSV") == 0;
    if (csv ? !out.endsWith(QStringLiteral(".csv"), Qt::CaseInsensitive)
            : !out.endsWith(QStringLiteral(".cfg"), Qt::CaseInsensitive)) {
        std::fprintf(stderr, "veldrix-cli cut: the output name must end in %s: %s\n", csv ? ".csv" : ".cfg",
                     o.paths[1]);
        return 2;
    }
    if (OutputTouchesInput(in, out)) {
        std::fprintf(stderr, "veldrix-cli cut: %s would overwrite a file of the recording being read\n",
                     o.paths[1]);
        return 2;
    }
    CCmtd99File file;
    const LoadOutcome outcome = LoadRecording("cut", o.paths[0], file, true, false);
    if (outcome != LoadOutcome::Usable)
        return ExitCodeOf(outcome);
    if (o.to < o.from || o.from >= file.loadedPoints) {
        std::fprintf(stderr, "veldrix-cli cut: the range %lld..%lld lies outside the %d samples\n", o.from,
                     o.to, file.loadedPoints);
        return 2;
    }
    std::vector<const CChnMapAnalog *> analogs;
    std::vector<const CChnMapStatus *> statuses;
    if (!chooseChannels(file, o.channels, analogs, statuses))
        return 2;
    if (analogs.empty() && statuses.empty()) {
        std::fprintf(stderr, "veldrix-cli cut: no channel to cut\n");
        return 2;
    }
    QString error;
    if (csv) {
        if (!file.SaveCsv(out, int(o.from), int(o.to), analogs, statuses, error)) {
            std::fprintf(stderr, "veldrix-cli cut: %s\n", error.toUtf8().constData());
            return 1;
        }
        return 0;
    }
    CCmtd99File cut;
    if (!cut.CutFrom(file, int(o.from), int(o.to), analogs, statuses, QFile::encodeName(out),
                     float(o.maxRate), error)) {
        std::fprintf(stderr, "veldrix-cli cut: %s\n", error.toUtf8().constData());
        return 1;
    }
    // The exact-copy writer keeps every value as read (primary channels, unit prefixes), which
    // the plain data writer would not; the extension file carries the plant units.
    ExactCopyFormat format;
    format.fileType = o.form;
    format.revision = 1999;
    const ExactCopyResult written = SaveExactCopy(cut, out, format, &error);
    if (written != ExactCopyResult::Written) {
        std::fprintf(stderr, "veldrix-cli cut: %s\n", error.toUtf8().constData());
        return written == ExactCopyResult::Refused ? 2 : 1;
    }
    const QByteArray inf = QFile::encodeName(out.left(out.size() - 4) + QStringLiteral(".inf"));
    if (!cut.SaveInf(inf.constData())) {
        std::fprintf(stderr, "veldrix-cli cut: %s\n", cut.saveError.toUtf8().constData());
        return 1;
    }
    return 0;
}
