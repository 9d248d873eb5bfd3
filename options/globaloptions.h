#pragma once

#include <QByteArray>
#include <QList>

#include <cstdint>

class QLibrary;
class QTranslator;

// One translation file of a language, loaded on first use and kept for the process's life.
struct CLangQmFile
{
    CLangQmFile();
    ~CLangQmFile();
    CLangQmFile(const CLangQmFile &) = delete;
    CLangQmFile &operator=(const CLangQmFile &) = delete;

    QByteArray fileName;
    QTranslator *translator;
};

// A language that the language file offers: its name and its translation files, in order.
struct CLangInfo
{
    CLangInfo() = default;
    ~CLangInfo();
    CLangInfo(const CLangInfo &) = delete;
    CLangInfo &operator=(const CLangInfo &) = delete;

    QByteArray name;
    QList<CLangQmFile *> qmFiles;
};

// The process's one options object. All settings live in a plain text file beside the program
// (base name + ".INI"), read before the application object exists and written back when the
// event loop ends. It also owns the languages of the language file and the two optional
// plug-in libraries; every caller goes on when a plug-in entry point is null.
class CGlobalOptions
{
public:
    // Bits of `stateMask`; each is written to the file by its name.
    enum StateFlag : uint32_t
    {
        SingleInstance = 0x1,
        AutoStatusEvent = 0x1000,
        AutoHideStatus0 = 0x2000,
        StatusChnAhead = 0x4000,
        ChnNameAhead = 0x8000,
        AutoSaveWaveViewStatus = 0x10000
    };

    using CvtToCmtdFn = int (*)(const char *, int, int);
    using AnaUseIoFlagFn = int (*)(const char *, int, int, int, int, int, int, int, int);

    CGlobalOptions() = default;
    ~CGlobalOptions();
    CGlobalOptions(const CGlobalOptions &) = delete;
    CGlobalOptions &operator=(const CGlobalOptions &) = delete;

    // Reads the options file beside the program, then the language file, then the libraries.
    void load();
    // The same from an explicit directory (with trailing "/") and program base name.
    void loadFrom(const QByteArray &directory, const QByteArray &baseName);
    // The options file is written whole or not at all; false with the file and the system's
    // reason in `error` when the disk refused it.
    bool save(QString *error = nullptr) const;
    bool saveTo(const QByteArray &path, QString *error = nullptr) const;
    // Makes a language current; an empty name means `language`. Unknown names change nothing.
    void selectLanguage(const QByteArray &name = QByteArray());

    int convertRecorderFile(const char *path) const;
    int runLineAnalysis(const char *path, int a, int b) const;
    void openInTextViewer(const char *file) const;

    uint32_t stateMask = SingleInstance;
    int32_t statusTimeFormat = 0;
    int32_t statusTimeBase = 0;
    QByteArray codec;
    QByteArray style;
    QByteArray font;
    QByteArray language;
    QList<CLangInfo *> languages;
    QByteArray txtViewExe;
    QByteArray cvtLib;
    QByteArray anaLib;
    int32_t wheelScrollLines = 50;
    float lineParamLen = 100.0f;
    float lineParamZ1[2] = {0.0f, 0.0f};
    int32_t lineParamMxPI = 12;
    float lineParamMxTV[2] = {800.0f, 100.0f};
    float lineParamMxTA[2] = {100.0f, 5.0f};
    QList<QLibrary *> libraries;
    CvtToCmtdFn cvtToCmtd = nullptr;
    AnaUseIoFlagFn anaUseIoFlag = nullptr;
    CLangInfo *currentLanguage = nullptr;

private:
    bool readOptionsFile(const QByteArray &path);
    void readLanguageFile(const QByteArray &path);
    void loadLibraries(const QByteArray &directory);
    void takeKey(const char *key, char *value);

    QByteArray m_directory; // where the translation files and libraries are looked for
};

// The process-wide options object.
extern CGlobalOptions globalOptions;

// The program's own directory (with a trailing "/") and base name, from its path.
void setProgramPath(const char *executablePath);
const QByteArray &programDirectory();
const QByteArray &programBaseName();

// The settings path map beside the program ("TRWKCFGMAP.INI"): read at start-up with the options,
// written by the map's dialogs. Each gives the number of entries (0 when the file cannot be
// written).
int loadPathMap();
int savePathMap();
