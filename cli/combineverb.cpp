#include "combineverb.h"

#include "cliargs.h"
#include "cmtd99file.h"
#include "cmtdcombin.h"
#include "exactcopy.h"
#include "recordingload.h"

#include <QFile>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

// One file of the command line with what was said of it.
struct CombineFile
{
    const char *path = nullptr;
    const char *channels = nullptr;
    long long align = -1;
    long long baseAlign = -1;
    long long method = CombinHermite;
};

struct CombineOptions
{
    const char *out = nullptr;
    CombineFile base;
    std::vector<CombineFile> others;
    long long from = -1;
    long long to = -1;
    bool ascii = false;
};

int usage()
{
    std::fprintf(stderr, "usage: veldrix-cli combine OUT --base PATH --from N --to M [--channels A1,D1...] "
                         "--other PATH --align OTHER_SAMPLE:BASE_SAMPLE [--method 0..4] [--channels ...] "
                         "[--other ...] [--ascii]\n");
    return 2;
}

bool readAlign(const char *text, CombineFile &file)
{
    const char *colon = std::strchr(text, ':');
    if (!colon)
        return false;
    const QByteArray left(text, int(colon - text));
    return ParseWhole(left.constData(), file.align) && ParseWhole(colon + 1, file.baseAlign) &&
           file.align >= 0 && file.baseAlign >= 0;
}

// 0 when read, else the exit code. --channels and --method speak of the file named last.
int readOptions(int argc, char **argv, CombineOptions &o)
{
    CombineFile *current = nullptr;
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        const bool hasValue = i + 1 < argc;
        const char *value = hasValue ? argv[i + 1] : "";
        if (std::strcmp(arg, "--base") == 0 && hasValue) {
            o.base.path = value;
            current = &o.base;
        } else if (std::strcmp(arg, "--other") == 0 && hasValue) {
            o.others.emplace_back();
            o.others.back().path = value;
            current = &o.others.back();
        } else if ((std::strcmp(arg, "--from") == 0 || std::strcmp(arg, "--to") == 0) && hasValue) {
            if (!ReadWholeOption("combine", arg, value, arg[2] == 'f' ? o.from : o.to))
                return 2;
        } else if (std::strcmp(arg, "--align") == 0 && hasValue && current && current != &o.base) {
            if (!readAlign(value, *current)) {
                std::fprintf(stderr, "veldrix-cli combine: --align expects OTHER_SAMPLE:BASE_SAMPLE\n");
                return 2;
            }
        } else if (std::strcmp(arg, "--method") == 0 && hasValue && current) {
            if (!ReadWholeOption("combine", arg, value, current->method) || current->method < 0 ||
                current->method > 4)
                return usage();
        } else if (std::strcmp(arg, "--channels") == 0 && hasValue && current) {
            current->channels = value;
        } else if (std::strcmp(arg, "--ascii") == 0) {
            o.ascii = true;
            continue;
        } else if (arg[0] != '-' && !o.out) {
            o.out = arg;
            continue;
        } else {
            std::fprintf(stderr, "veldrix-cli combine: unexpected %s\n", arg);
            return usage();
        }
        ++i;
    }
    if (!o.out || !o.base.path || o.others.empty() || o.from < 0 || o.to <= o.from)
        return usage();
    for (const CombineFile &other : o.others) {
        if (other.align < 0) {
            std::fprintf(stderr, "veldrix-cli combine: %s needs --align\n", other.path);
            return 2;
        }
    }
    return 0;
}

// "A1,D1" as the stores of a loaded file; all of them when no list is given.
bool chooseChannels(const CCmtd99File &file, const char *list, CombinItem &item)
{
    if (!list) {
        for (int c = 0; c < file.FileAnalogStoreCount(); ++c)
            item.analogChannels.push_back(file.analogMaps[size_t(c)].get());
        for (const auto &map : file.statusMaps)
            item.statusChannels.push_back(map.get());
        return true;
    }
    for (const QByteArray &piece : QByteArray(list).split(',')) {
        const QByteArray n = piece.trimmed();
        long long index = 0;
        if (ParseAnalogChannel(n.constData(), index) && index >= 1 && index <= file.FileAnalogStoreCount()) {
            item.analogChannels.push_back(file.analogMaps[size_t(index - 1)].get());
        } else if ((n.startsWith('D') || n.startsWith('d')) && ParseWhole(n.constData() + 1, index) &&
                   index >= 1 && index <= qsizetype(file.statusMaps.size())) {
            item.statusChannels.push_back(file.statusMaps[size_t(index - 1)].get());
        } else {
            std::fprintf(stderr, "veldrix-cli combine: no channel %s\n", n.constData());
            return false;
        }
    }
    return true;
}

} // namespace

int RunCombine(int argc, char **argv)
{
    CombineOptions o;
    if (const int code = readOptions(argc, argv, o))
        return code;
    const QString out = QFile::decodeName(o.out);
    if (!out.endsWith(QStringLiteral(".cfg"), Qt::CaseInsensitive)) {
        std::fprintf(stderr, "veldrix-cli combine: the output name must end in .cfg: %s\n", o.out);
        return 2;
    }
    std::vector<CombineFile *> inputs{&o.base};
    for (CombineFile &other : o.others)
        inputs.push_back(&other);
    for (const CombineFile *input : inputs) {
        if (OutputTouchesInput(QFile::decodeName(input->path), out)) {
            std::fprintf(stderr, "veldrix-cli combine: %s would overwrite a file of %s\n", o.out,
                         input->path);
            return 2;
        }
    }
    std::vector<std::unique_ptr<CCmtd99File>> files;
    CCmtd99FileCombin combin;
    for (CombineFile *input : inputs) {
        files.push_back(std::make_unique<CCmtd99File>());
        CCmtd99File &file = *files.back();
        const LoadOutcome outcome = LoadRecording("combine", input->path, file, true, false);
        if (outcome != LoadOutcome::Usable)
            return ExitCodeOf(outcome);
        const bool isBase = input == &o.base;
        CombinItem &item = isBase ? combin.m_base : combin.addOther(&file);
        item.file = &file;
        item.method = int(input->method);
        if (isBase) {
            if (o.to >= file.loadedPoints) {
                std::fprintf(stderr,
                             "veldrix-cli combine: the range %lld..%lld lies outside the %d samples\n",
                             o.from, o.to, file.loadedPoints);
                return 2;
            }
            item.first = int(o.from);
            item.last = int(o.to);
        } else {
            if (input->align >= file.loadedPoints || input->baseAlign >= combin.m_base.file->loadedPoints) {
                std::fprintf(stderr, "veldrix-cli combine: the align points of %s lie outside the samples\n",
                             input->path);
                return 2;
            }
            item.alignPoint = int(input->align);
            item.baseAlignPoint = int(input->baseAlign);
        }
        if (!chooseChannels(file, input->channels, item))
            return 2;
    }
    combin.m_strTitle = QFile::encodeName(out);
    QString error;
    if (!combin.run(out.left(out.size() - 4), error, o.ascii ? "ASCII" : "BINARY")) {
        std::fprintf(stderr, "veldrix-cli combine: %s\n", error.toUtf8().constData());
        return 1;
    }
    return 0;
}
