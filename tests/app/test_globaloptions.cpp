// The options file beside the program: what an engineer's hand-edited file turns into, and
// what the program writes back.

#include "globaloptions.h"
#include "globalsettings.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// The free settings are process-wide; every test starts from their defaults.
class OptionsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        colorScheme = 1;
        dftWin = 0;
        dftMethod = 0;
        PhComp = false;
        statusMinWidth = 2;
    }

    QByteArray directory() const { return dir.path().toLocal8Bit() + '/'; }

    void write(const char *name, const QByteArray &text)
    {
        QFile file(dir.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QByteArray read(const char *name)
    {
        QFile file(dir.filePath(QString::fromLatin1(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
};

TEST_F(OptionsTest, MissingFilesKeepDefaults)
{
    CGlobalOptions options;
    options.loadFrom(directory(), "absent");
    EXPECT_EQ(options.stateMask, CGlobalOptions::SingleInstance);
    EXPECT_EQ(options.wheelScrollLines, 50);
    EXPECT_FLOAT_EQ(options.lineParamMxTV[0], 800.0f);
    EXPECT_TRUE(options.languages.isEmpty());
    EXPECT_EQ(options.cvtToCmtd, nullptr);
    EXPECT_EQ(options.convertRecorderFile("x"), 0);
    EXPECT_EQ(options.runLineAnalysis("x", 1, 0), 0);
    // Plug-in libraries that are not there stay absent.
    write("p.INI", "TrwkCvtLib=libnot_there.so\nTrwkAnaLib=libnor_this.so\n");
    options.loadFrom(directory(), "p");
    EXPECT_TRUE(options.libraries.isEmpty());
    EXPECT_EQ(options.cvtToCmtd, nullptr);
    EXPECT_EQ(options.anaUseIoFlag, nullptr);
}

TEST_F(OptionsTest, KeysAreReadAsTheFileFormatSays)
{
    write("p.INI", "[anything]\n"
                   "CODEC = GB18030\n"
                   "style=Fusion\n"
                   "stateMask=\n"        // empty value: dropped, mask kept
                   "colorScheme=4\n"     // remainder of 3
                   "statusMinWidth=11\n" // clamped to 10
                   "dftWin=CENT\n"       // names compare without case
                   "dftMethod=trapCos\n" // both trapezoid names read as 2
                   "statusTimeBase=T1Fixed\n"
                   "statusTimeFormat=unknown\n" // unknown name keeps the old value
                   "PhComp=yes\n"
                   "LineParamLen=250(km)\n"      // read up to the unit suffix
                   "LineParamZ1=0.3\n"           // one field is not enough
                   "txtViewExe=/usr//bin/view\n" // a doubled slash starts a comment
                   "ab\n"                        // too short to be a line
                   "wheelScrollLines=0\n");
    CGlobalOptions options;
    options.loadFrom(directory(), "p");
    EXPECT_EQ(options.codec, "GB18030");
    EXPECT_EQ(options.style, "Fusion");
    EXPECT_EQ(options.stateMask, CGlobalOptions::SingleInstance);
    EXPECT_EQ(colorScheme, 1);
    EXPECT_EQ(statusMinWidth, 10);
    EXPECT_EQ(dftWin, 1);
    EXPECT_EQ(dftMethod, 2);
    EXPECT_EQ(options.statusTimeBase, 3);
    EXPECT_EQ(options.statusTimeFormat, 0);
    EXPECT_TRUE(PhComp);
    EXPECT_FLOAT_EQ(options.lineParamLen, 250.0f);
    EXPECT_FLOAT_EQ(options.lineParamZ1[0], 0.0f);
    EXPECT_FLOAT_EQ(options.lineParamZ1[1], 0.0f);
    EXPECT_EQ(options.txtViewExe, "/usr");
    EXPECT_EQ(options.wheelScrollLines, 1);
}

TEST_F(OptionsTest, StateMaskIsRebuiltFromNamesAndLastKeyWins)
{
    write("p.INI",
          "stateMask=singleInstance,autoHideStatus0,\n"
          "stateMask=chnNameAhead,autoSaveWaveViewStatus,SINGLEINSTANCE\n" // names are case sensitive
          "colorScheme=-1\n"
          "wheelScrollLines=501\n");
    CGlobalOptions options;
    options.loadFrom(directory(), "p");
    EXPECT_EQ(options.stateMask, CGlobalOptions::ChnNameAhead | CGlobalOptions::AutoSaveWaveViewStatus);
    EXPECT_EQ(colorScheme, -1); // the remainder keeps the dividend's sign
    EXPECT_EQ(options.wheelScrollLines, 500);
}

TEST_F(OptionsTest, LineParameterRepairsLandOnTheVoltagePrimary)
{
    // Each repair of a bad secondary or current value writes the voltage transformer's primary
    // and leaves the bad field as it was.
    write("a.INI", "LineParamMxTV=800(V),0(V)\n");
    CGlobalOptions a;
    a.loadFrom(directory(), "a");
    EXPECT_FLOAT_EQ(a.lineParamMxTV[0], 100.0f);
    EXPECT_FLOAT_EQ(a.lineParamMxTV[1], 0.0f);

    write("b.INI", "LineParamMxTA=0(A),0(A)\nLineParamLen=-3\nLineParamMxPI=0\n");
    CGlobalOptions b;
    b.loadFrom(directory(), "b");
    EXPECT_FLOAT_EQ(b.lineParamMxTV[0], 5.0f);
    EXPECT_FLOAT_EQ(b.lineParamMxTA[0], 0.0f);
    EXPECT_FLOAT_EQ(b.lineParamMxTA[1], 0.0f);
    EXPECT_FLOAT_EQ(b.lineParamLen, 100.0f);
    EXPECT_EQ(b.lineParamMxPI, 12);
}

TEST_F(OptionsTest, SaveWritesEveryKeyAndReadsBack)
{
    CGlobalOptions options;
    options.codec = "UTF-8";
    options.stateMask = CGlobalOptions::SingleInstance | CGlobalOptions::StatusChnAhead;
    options.statusTimeBase = 2;
    options.lineParamMxTV[0] = 220000.0f;
    dftMethod = 2;
    dftWin = 2;
    PhComp = true;
    options.saveTo(directory() + "out.INI");
    const QByteArray text = read("out.INI");
    EXPECT_EQ(text, "codec=UTF-8\n"
                    "style=\n"
                    "font=\n"
                    "language=\n"
                    "colorScheme=1\n"
                    "stateMask=singleInstance,statusChnAhead,\n"
                    "statusTimeFormat=msus\n"
                    "statusTimeBase=T1\n"
                    "TrwkCvtLib=\n"
                    "TrwkAnaLib=\n"
                    "txtViewExe=\n"
                    "dftWin=next\n"
                    "dftMethod=trapSin\n"
                    "statusMinWidth=2\n"
                    "PhComp=YES\n"
                    "wheelScrollLines=50\n"
                    "LineParamLen=100(km)\n"
                    "LineParamZ1=0,0\n"
                    "LineParamMxPI=12\n"
                    "LineParamMxTV=220000(V),100(V)\n"
                    "LineParamMxTA=100(A),5(A)\n");

    // A method without a name is written empty, and an empty value reads as no key at all.
    dftMethod = 3;
    options.saveTo(directory() + "three.INI");
    EXPECT_TRUE(read("three.INI").contains("\ndftMethod=\n"));

    dftMethod = 0;
    PhComp = false;
    CGlobalOptions again;
    again.loadFrom(directory(), "out");
    EXPECT_EQ(again.stateMask, options.stateMask);
    EXPECT_EQ(again.statusTimeBase, 2);
    EXPECT_FLOAT_EQ(again.lineParamMxTV[0], 220000.0f);
    EXPECT_EQ(dftMethod, 2);
    EXPECT_TRUE(PhComp);
}

TEST_F(OptionsTest, LanguageFileSectionsAndSelection)
{
    write("p.INI", "language=Deutsch\n");
    write("p.LANG", "[LANGUAGE]\nname=English\n"
                    "[other]\nname=Ignored\nqm_file=nothing.qm\n"
                    "[language]\nname=Draft\nname=Deutsch\nqm_file=missing_de.qm\nqm_file=more_de.qm\n");
    CGlobalOptions options;
    options.loadFrom(directory(), "p");
    ASSERT_EQ(options.languages.size(), 2);
    EXPECT_EQ(options.languages[0]->name, "English");
    EXPECT_EQ(options.languages[1]->name, "Deutsch");
    ASSERT_EQ(options.languages[1]->qmFiles.size(), 2);
    EXPECT_EQ(options.languages[1]->qmFiles[1]->fileName, "more_de.qm");

    // Missing translation files are silently skipped; the language still becomes current.
    options.selectLanguage();
    EXPECT_EQ(options.currentLanguage, options.languages[1]);
    options.selectLanguage("english");
    EXPECT_EQ(options.currentLanguage, options.languages[0]);
    EXPECT_EQ(options.language, "english");
    // An unknown name changes nothing.
    options.selectLanguage("Klingon");
    EXPECT_EQ(options.currentLanguage, options.languages[0]);
    EXPECT_EQ(options.language, "english");
}

} // namespace
