#include "globaloptions.h"

#include "safewrite.h"

#include "diskfile.h"
#include "globalsettings.h"
#include "linereader.h"
#include "pathmap.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>
#include <QProcess>
#include <QTranslator>

#include <cstdlib>
#include <cstring>

CGlobalOptions globalOptions;

namespace {

QByteArray g_programDirectory;
QByteArray g_programBaseName;

struct NamedValue
{
    const char *name;
    int value;
};

// Name tables of the coded keys. Both trapezoid names read as 2, and 2 is written back as the
// first of them: the file format has lived with that pair for long.
constexpr NamedValue kStatusTimeFormats[] = {{"msus", 0}, {"mmssus", 1}};
constexpr NamedValue kStatusTimeBases[] = {{"T0c", 0}, {"T0", 1}, {"T1", 2}, {"T1Fixed", 3}};
constexpr NamedValue kDftWindows[] = {{"prev", 0}, {"cent", 1}, {"next", 2}};
constexpr NamedValue kDftMethods[] = {{"rectSin", 0}, {"rectCos", 1}, {"trapSin", 2}, {"trapCos", 2}};
constexpr NamedValue kYesNo[] = {{"YES", 1}, {"NO", 0}};

constexpr NamedValue kStateFlags[] = {{"singleInstance", CGlobalOptions::SingleInstance},
                                      {"autoStatusEvent", CGlobalOptions::AutoStatusEvent},
                                      {"autoHideStatus0", CGlobalOptions::AutoHideStatus0},
                                      {"statusChnAhead", CGlobalOptions::StatusChnAhead},
                                      {"chnNameAhead", CGlobalOptions::ChnNameAhead},
                                      {"autoSaveWaveViewStatus", CGlobalOptions::AutoSaveWaveViewStatus}};

template <size_t N> bool lookUp(const NamedValue (&table)[N], const char *text, int &value)
{
    for (const NamedValue &entry : table) {
        if (qstricmp(entry.name, text) == 0) {
            value = entry.value;
            return true;
        }
    }
    return false;
}

template <size_t N> const char *nameOf(const NamedValue (&table)[N], int value)
{
    for (const NamedValue &entry : table) {
        if (entry.value == value)
            return entry.name;
    }
    return "";
}

template <typename T, size_t N> void takeNamed(const NamedValue (&table)[N], const char *text, T &target)
{
    int value = 0;
    if (lookUp(table, text, value))
        target = static_cast<T>(value);
}

// "800(V),100(V)": two numbers, each read up to its unit suffix. Fewer than two fields leave
// the pair as it was.
void takePair(char *text, float pair[2])
{
    char *fields[8];
    if (SplitTrimmed(text, fields, 8, ',') < 2)
        return;
    pair[0] = static_cast<float>(std::atof(fields[0]));
    pair[1] = static_cast<float>(std::atof(fields[1]));
}

bool is(const char *key, const char *name)
{
    return qstricmp(key, name) == 0;
}

} // namespace

CLangQmFile::CLangQmFile() : translator(new QTranslator) {}

CLangQmFile::~CLangQmFile()
{
    delete translator;
}

CLangInfo::~CLangInfo()
{
    qDeleteAll(qmFiles);
}

CGlobalOptions::~CGlobalOptions()
{
    qDeleteAll(languages);
    languages.clear();
    currentLanguage = nullptr;
    for (QLibrary *library : std::as_const(libraries)) {
        library->unload();
        delete library;
    }
}

void setProgramPath(const char *executablePath)
{
    const QFileInfo info(QString::fromLocal8Bit(executablePath ? executablePath : ""));
    g_programDirectory = info.absolutePath().toLatin1() + '/';
    g_programBaseName = info.baseName().toLocal8Bit();
}

const QByteArray &programDirectory()
{
    return g_programDirectory;
}

const QByteArray &programBaseName()
{
    return g_programBaseName;
}

void CGlobalOptions::load()
{
    loadFrom(programDirectory(), programBaseName());
    // The site folders' settings: plain files, read before any recording opens.
    loadPathMap();
}

namespace {

QByteArray pathMapFile()
{
    return programDirectory() + "TRWKCFGMAP.INI";
}

} // namespace

int loadPathMap()
{
    return LoadPathMapFrom(pathMapFile());
}

int savePathMap()
{
    return SavePathMapTo(pathMapFile());
}

void CGlobalOptions::loadFrom(const QByteArray &directory, const QByteArray &baseName)
{
    m_directory = directory;
    // Without an options file the defaults stand and there are no languages or plug-ins.
    if (!readOptionsFile(directory + baseName + ".INI"))
        return;

    wheelScrollLines = qBound(1, wheelScrollLines, 500);
    // Repairs of the line-test defaults. The last three all land on the voltage transformer's
    // primary value and leave the bad field bad; files in the field depend on that, and a
    // default configuration never reaches it.
    if (!(lineParamLen > 0.0f))
        lineParamLen = 100.0f;
    if (lineParamMxPI <= 0)
        lineParamMxPI = 12;
    if (!(lineParamMxTV[0] > 0.0f))
        lineParamMxTV[0] = 800.0f;
    if (!(lineParamMxTV[1] > 0.0f))
        lineParamMxTV[0] = 100.0f;
    if (!(lineParamMxTA[0] > 0.0f))
        lineParamMxTV[0] = 100.0f;
    if (!(lineParamMxTA[1] > 0.0f))
        lineParamMxTV[0] = 5.0f;

    readLanguageFile(directory + baseName + ".LANG");
    loadLibraries(directory);
}

bool CGlobalOptions::readOptionsFile(const QByteArray &path)
{
    CDiskFile file;
    if (!file.Open(path.constData(), "r"))
        return false;
    char buffer[1024];
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;
    for (;;) {
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        if (kind == KeyLineEnd)
            break;
        if (kind == KeyLineKey)
            takeKey(key, value);
    }
    return true;
}

void CGlobalOptions::takeKey(const char *key, char *value)
{
    if (is(key, "codec")) {
        codec = value;
    } else if (is(key, "style")) {
        style = value;
    } else if (is(key, "font")) {
        font = value;
    } else if (is(key, "language")) {
        language = value;
    } else if (is(key, "TrwkCvtLib")) {
        cvtLib = value;
    } else if (is(key, "TrwkAnaLib")) {
        anaLib = value;
    } else if (is(key, "txtViewExe")) {
        txtViewExe = value;
    } else if (is(key, "colorScheme")) {
        // The remainder keeps the sign of the dividend; a negative scheme stays negative.
        colorScheme = static_cast<int16_t>(static_cast<int16_t>(std::atoi(value)) % 3);
    } else if (is(key, "stateMask")) {
        stateMask = 0;
        for (const NamedValue &flag : kStateFlags) {
            if (std::strstr(value, flag.name))
                stateMask |= static_cast<uint32_t>(flag.value);
        }
    } else if (is(key, "statusTimeFormat")) {
        takeNamed(kStatusTimeFormats, value, statusTimeFormat);
    } else if (is(key, "statusTimeBase")) {
        takeNamed(kStatusTimeBases, value, statusTimeBase);
    } else if (is(key, "dftWin")) {
        takeNamed(kDftWindows, value, dftWin);
    } else if (is(key, "dftMethod")) {
        takeNamed(kDftMethods, value, dftMethod);
    } else if (is(key, "PhComp")) {
        int yes = PhComp ? 1 : 0;
        lookUp(kYesNo, value, yes);
        PhComp = yes != 0;
    } else if (is(key, "statusMinWidth")) {
        statusMinWidth = qBound(0, std::atoi(value), 10);
    } else if (is(key, "wheelScrollLines")) {
        wheelScrollLines = std::atoi(value);
    } else if (is(key, "LineParamMxPI")) {
        lineParamMxPI = std::atoi(value);
    } else if (is(key, "LineParamLen")) {
        lineParamLen = static_cast<float>(std::atof(value));
    } else if (is(key, "LineParamZ1")) {
        takePair(value, lineParamZ1);
    } else if (is(key, "LineParamMxTV")) {
        takePair(value, lineParamMxTV);
    } else if (is(key, "LineParamMxTA")) {
        takePair(value, lineParamMxTA);
    }
}

void CGlobalOptions::readLanguageFile(const QByteArray &path)
{
    CDiskFile file;
    if (!file.Open(path.constData(), "r"))
        return;
    char buffer[1024];
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;
    CLangInfo *current = nullptr;
    for (;;) {
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        if (kind == KeyLineEnd)
            break;
        if (kind == KeyLineSection) {
            current = nullptr;
            if (is(key, "LANGUAGE")) {
                current = new CLangInfo;
                languages.append(current);
            }
            continue;
        }
        if (!current)
            continue;
        if (is(key, "name")) {
            current->name = value;
        } else if (is(key, "qm_file")) {
            auto *qm = new CLangQmFile;
            qm->fileName = value;
            current->qmFiles.append(qm);
        }
    }
}

void CGlobalOptions::loadLibraries(const QByteArray &directory)
{
    const struct
    {
        const QByteArray &file;
        const char *entry;
    } plugins[] = {{cvtLib, "TWREC_CvtToCmtdSimp"}, {anaLib, "AnaCMTD_UseIOFlag"}};
    for (int i = 0; i < 2; ++i) {
        if (plugins[i].file.isEmpty())
            continue;
        auto *library = new QLibrary(QString::fromLocal8Bit(directory + plugins[i].file));
        if (!library->load()) {
            delete library;
            continue;
        }
        QFunctionPointer entry = library->resolve(plugins[i].entry);
        if (i == 0)
            cvtToCmtd = reinterpret_cast<CvtToCmtdFn>(entry);
        else
            anaUseIoFlag = reinterpret_cast<AnaUseIoFlagFn>(entry);
        libraries.append(library);
    }
}

bool CGlobalOptions::save(QString *error) const
{
    return saveTo(programDirectory() + programBaseName() + ".INI", error);
}

bool CGlobalOptions::saveTo(const QByteArray &path, QString *error) const
{
    // Composed whole, then written safely: a full disk leaves the earlier options as they were.
    CTextOutput file;
    file.Printf("%s=%s\n", "codec", codec.constData());
    file.Printf("%s=%s\n", "style", style.constData());
    file.Printf("%s=%s\n", "font", font.constData());
    file.Printf("%s=%s\n", "language", language.constData());
    file.Printf("%s=%d\n", "colorScheme", int(colorScheme));
    file.Printf("%s=", "stateMask");
    for (const NamedValue &flag : kStateFlags) {
        if (stateMask & static_cast<uint32_t>(flag.value))
            file.Printf("%s,", flag.name);
    }
    file.Printf("\n");
    file.Printf("%s=%s\n", "statusTimeFormat", nameOf(kStatusTimeFormats, statusTimeFormat));
    file.Printf("%s=%s\n", "statusTimeBase", nameOf(kStatusTimeBases, statusTimeBase));
    file.Printf("%s=%s\n", "TrwkCvtLib", cvtLib.constData());
    file.Printf("%s=%s\n", "TrwkAnaLib", anaLib.constData());
    file.Printf("%s=%s\n", "txtViewExe", txtViewExe.constData());
    file.Printf("%s=%s\n", "dftWin", nameOf(kDftWindows, dftWin));
    file.Printf("%s=%s\n", "dftMethod", nameOf(kDftMethods, dftMethod));
    file.Printf("%s=%d\n", "statusMinWidth", int(statusMinWidth));
    file.Printf("%s=%s\n", "PhComp", PhComp ? "YES" : "NO");
    file.Printf("%s=%d\n", "wheelScrollLines", int(wheelScrollLines));
    file.Printf("%s=%g(km)\n", "LineParamLen", double(lineParamLen));
    file.Printf("%s=%g,%g\n", "LineParamZ1", double(lineParamZ1[0]), double(lineParamZ1[1]));
    file.Printf("%s=%d\n", "LineParamMxPI", int(lineParamMxPI));
    file.Printf("%s=%g(V),%g(V)\n", "LineParamMxTV", double(lineParamMxTV[0]), double(lineParamMxTV[1]));
    file.Printf("%s=%g(A),%g(A)\n", "LineParamMxTA", double(lineParamMxTA[0]), double(lineParamMxTA[1]));
    return WriteFileSafely(QString::fromLocal8Bit(path), file.bytes(), error);
}

void CGlobalOptions::selectLanguage(const QByteArray &name)
{
    const QByteArray wanted = name.isEmpty() ? language : name;
    CLangInfo *match = nullptr;
    for (CLangInfo *info : std::as_const(languages)) {
        if (qstricmp(info->name.constData(), wanted.constData()) == 0) {
            match = info;
            break;
        }
    }
    if (!match)
        return;
    if (currentLanguage) {
        for (CLangQmFile *qm : std::as_const(currentLanguage->qmFiles))
            QCoreApplication::removeTranslator(qm->translator);
    }
    currentLanguage = match;
    language = wanted;
    for (CLangQmFile *qm : std::as_const(match->qmFiles)) {
        // A translation stays loaded for the process's life; selecting the language again
        // does not read the file again.
        if (qm->translator->isEmpty())
            (void)qm->translator->load(QString::fromLocal8Bit(m_directory + qm->fileName));
        if (qm->translator->isEmpty())
            continue;
        QCoreApplication::installTranslator(qm->translator);
    }
}

int CGlobalOptions::convertRecorderFile(const char *path) const
{
    return cvtToCmtd ? cvtToCmtd(path, 0, 0) : 0;
}

int CGlobalOptions::runLineAnalysis(const char *path, int a, int b) const
{
    return anaUseIoFlag ? anaUseIoFlag(path, 0, a, 0, 0, 0, 0, 0, b) : 0;
}

void CGlobalOptions::openInTextViewer(const char *file) const
{
    QProcess::startDetached(QString::fromLocal8Bit(txtViewExe), {QString::fromLocal8Bit(file)});
}
