// How a recording's names are read: the codec found from its bytes, and the engineer's choice.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "textcodec.h"

#include <QTextCodec>

#include <gtest/gtest.h>

namespace {

QByteArray encoded(const char *codec, const QString &text)
{
    return QTextCodec::codecForName(codec)->fromUnicode(text);
}

} // namespace

TEST(TextCodec, FoundFromTheBytes)
{
    const QString chinese = QStringLiteral("220kV母线电压 Ua,线路保护跳闸");
    const QString russian = QStringLiteral("Резерв вх._1_1,1СШ-110_ТН_110кВ");
    const QString portuguese = QStringLiteral("Estação de Medição,Oscilógrafo");
    EXPECT_EQ(DetectTextCodec("plain ASCII,IA,IB", ""), "UTF-8");
    EXPECT_EQ(DetectTextCodec("\xEF\xBB\xBFSE COXIP\xC3\x93", ""), "UTF-8");
    EXPECT_EQ(DetectTextCodec(encoded("GB18030", chinese), ""), "GB18030");
    EXPECT_EQ(DetectTextCodec(encoded("windows-1251", russian), ""), "windows-1251");
    EXPECT_EQ(DetectTextCodec(encoded("windows-1252", portuguese), ""), "windows-1252");
    // The options' codec goes before any guess, but not before valid UTF-8.
    EXPECT_EQ(DetectTextCodec(encoded("windows-1251", russian), "KOI8-R"), "KOI8-R");
    EXPECT_EQ(DetectTextCodec("ASCII", "KOI8-R"), "UTF-8");
    EXPECT_EQ(DecodeText(encoded("GB18030", chinese), "GB18030"), chinese);
}

using RecordingCodec = RecordingTest;

TEST_F(RecordingCodec, NamesReadInTheDetectedOrChosenCodec)
{
    const QByteArray station = encoded("windows-1251", QStringLiteral("Подстанция"));
    const std::string cfg = dir.write(
        "r.cfg", {station.toStdString() + ",R,1999", "1,1A,0D", "1,Ua,A,,V,1,0,0,-1,1,1,1,S", "50", "1",
                  "1000,10", "01/01/2020,00:00:00.000000", "01/01/2020,00:00:00.000000", "ASCII", "1"});
    CCmtd99File file;
    ASSERT_TRUE(file.LoadFile(cfg.c_str()));
    EXPECT_EQ(file.codecName, "windows-1251");
    EXPECT_EQ(file.Text(file.fileDesc.stationName), QStringLiteral("Подстанция"));
    EXPECT_EQ(file.fileDesc.stationName, station); // the bytes stay as written
    file.codecOverride = "KOI8-R";
    ASSERT_TRUE(file.LoadFile(cfg.c_str()));
    EXPECT_EQ(file.codecName, "KOI8-R");
}
