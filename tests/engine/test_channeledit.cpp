// The engineer's edits of channels: what is refused and why, what the store does at once, and
// that an edit survives a save of the extension file and a reopen.

#include "cfgfixture.h"
#include "channeledit.h"
#include "chnmap.h"
#include "chnvocabulary.h"
#include "cmtd99file.h"

#include <gtest/gtest.h>

namespace {

class ChannelEdit : public RecordingTest
{
protected:
    // Two analog channels without a unit (so of no class), one status channel.
    std::string write()
    {
        dir.write("r.dat",
                  {"1,0,10,20,0", "2,1000,11,21,1", "3,2000,12,22,0", "4,3000,13,23,1", "5,4000,14,24,0"});
        return dir.write("r.cfg",
                         {"S,R,1999", "3,2A,1D", "1,CH1,,Bay 1,,1,0,0,-32767,32767,1,1,S",
                          "2,CH2,,Bay 1,,1,0,0,-32767,32767,1,1,S", "1,Trip,,,0", "60", "1", "1000,5",
                          "01/01/2024,10:00:00.000000", "01/01/2024,10:00:00.000000", "ASCII", "1"});
    }
    bool load(CCmtd99File &file, const std::string &cfg)
    {
        return file.LoadFile(cfg.c_str()) && file.LoadDat(cfg.c_str(), nullptr, nullptr);
    }
};

} // namespace

TEST_F(ChannelEdit, RefusedValuesSayWhyAndChangeNothing)
{
    CCmtd99File file;
    ASSERT_TRUE(load(file, write()));
    QString reason;
    const struct
    {
        bool analog;
        ChannelField field;
        const char *text;
        const char *why;
    } refused[] = {
        {true, ChannelField::Name, "  ", "A channel needs a name"},
        {true, ChannelField::Name, "Ua,Ub", "A channel name holds no comma"},
        {true, ChannelField::Name, "0123456789012345678901234567890123456789012345678901234567890123456789",
         "A channel name has at most 64 bytes"},
        {true, ChannelField::Class, "XYZ", "Unknown signal class: XYZ"},
        {false, ChannelField::Class, "TV", "A status channel has no signal class"},
        {true, ChannelField::RatedFreq, "0.5", "A rated frequency is a number from 1 to 1000 Hz"},
        {true, ChannelField::RatedFreq, "fifty", "A rated frequency is a number from 1 to 1000 Hz"},
        {true, ChannelField::RatedFreq, "nan", "A rated frequency is a number from 1 to 1000 Hz"},
        {true, ChannelField::Phase, "X", "Unknown phase: X (A, B, C, N, L, S0, S1 or S2)"},
        {false, ChannelField::Component, "Bay,1", "A text of the configuration file holds no comma"},
        {true, ChannelField::Unit, "", "A unit is 1 to 11 plain letters, such as V, kV, A, kA or Hz"},
        {true, ChannelField::Unit, "Ω", "A unit is 1 to 11 plain letters, such as V, kV, A, kA or Hz"},
        {true, ChannelField::Primary, "0", "A transformer ratio factor is a number above 0"},
        {true, ChannelField::Secondary, "inf", "A transformer ratio factor is a number above 0"},
        {true, ChannelField::PS, "Q", "P/S is P (primary values) or S (secondary values)"},
        {false, ChannelField::NormalState, "2", "The normal state is 0 or 1"},
        {false, ChannelField::Kind, "Jump_Z", "Unknown status kind: Jump_Z"},
        {false, ChannelField::StatusClass, "Breaker", "Unknown status class: Breaker"},
        {false, ChannelField::Unit, "V", "A status channel has no such field"},
    };
    for (const auto &r : refused) {
        const QString before = ChannelFieldText(file, r.analog, 0, r.field);
        EXPECT_FALSE(SetChannelField(file, r.analog, 0, r.field, QString::fromUtf8(r.text), &reason))
            << r.text;
        EXPECT_EQ(reason.toStdString(), r.why);
        EXPECT_EQ(ChannelFieldText(file, r.analog, 0, r.field), before);
    }
    EXPECT_FALSE(SetChannelField(file, true, 7, ChannelField::Name, QStringLiteral("x"), &reason));
}

TEST_F(ChannelEdit, EditsReachTheStoreAndSurviveASaveAndAReopen)
{
    const std::string cfg = write();
    CCmtd99File file;
    ASSERT_TRUE(load(file, cfg));
    QString reason;
    // Named "Ua" and made a phase voltage: the store is of class ACV now.
    ASSERT_TRUE(SetChannelField(file, true, 0, ChannelField::Name, QStringLiteral("Ua"), &reason));
    ASSERT_TRUE(SetChannelField(file, true, 0, ChannelField::Class, QStringLiteral("tv"), &reason));
    ASSERT_TRUE(SetChannelField(file, true, 0, ChannelField::RatedFreq, QStringLiteral("60"), &reason));
    ASSERT_TRUE(SetChannelField(file, false, 0, ChannelField::Name, QStringLiteral("Trip L1"), &reason));
    // The ratio and the status kind and class live in the extension file as well.
    ASSERT_TRUE(SetChannelField(file, true, 0, ChannelField::Primary, QStringLiteral("110000"), &reason));
    ASSERT_TRUE(SetChannelField(file, true, 0, ChannelField::Secondary, QStringLiteral("100"), &reason));
    ASSERT_TRUE(SetChannelField(file, false, 0, ChannelField::Kind, QStringLiteral("jump_a"), &reason));
    ASSERT_TRUE(
        SetChannelField(file, false, 0, ChannelField::StatusClass, QStringLiteral("Relay_Act"), &reason));
    EXPECT_STREQ(file.analogMaps[0]->Name(), "Ua");
    EXPECT_EQ(file.analogMaps[0]->Class(), ClassACV);
    EXPECT_EQ(file.analogChannels[0]->ch_id, QByteArray("CH1")); // the recorder's name stays
    EXPECT_EQ(file.analogChannels[0]->ratedFreq, 60.0f);
    // Giving back the recorder's own name takes the alias away.
    ASSERT_TRUE(SetChannelField(file, true, 1, ChannelField::Name, QStringLiteral("CH2"), &reason));
    EXPECT_TRUE(file.analogChannels[1]->alias.isEmpty());

    ASSERT_TRUE(file.SaveInf(dir.path("r.inf").c_str())) << file.saveError.toStdString();
    CCmtd99File again;
    ASSERT_TRUE(load(again, cfg));
    EXPECT_EQ(ChannelFieldText(again, true, 0, ChannelField::Name), QStringLiteral("Ua"));
    EXPECT_EQ(ChannelFieldText(again, true, 0, ChannelField::Class), QStringLiteral("TV"));
    EXPECT_EQ(ChannelFieldText(again, true, 0, ChannelField::RatedFreq), QStringLiteral("60"));
    EXPECT_EQ(ChannelFieldText(again, false, 0, ChannelField::Name), QStringLiteral("Trip L1"));
    EXPECT_EQ(again.analogMaps[0]->Class(), ClassACV);
    EXPECT_EQ(ChannelFieldText(again, true, 0, ChannelField::Primary), QStringLiteral("110000"));
    EXPECT_EQ(ChannelFieldText(again, true, 0, ChannelField::Secondary), QStringLiteral("100"));
    EXPECT_FLOAT_EQ(again.analogMaps[0]->TransformRatio(), 1100.0f);
    EXPECT_EQ(ChannelFieldText(again, false, 0, ChannelField::Kind), QStringLiteral("Jump_A"));
    EXPECT_EQ(ChannelFieldText(again, false, 0, ChannelField::StatusClass), QStringLiteral("Relay_Act"));
}

TEST_F(ChannelEdit, ConfigurationFieldsRescaleAtOnceAndOnlyASaveAsKeepsThem)
{
    const std::string cfg = write();
    CCmtd99File file;
    ASSERT_TRUE(load(file, cfg));
    QString reason;
    // CH2 holds 20, 21, ... as written. In kV the stored volts are a thousand times more; as
    // primary values of a 1000:1 transformer they are secondary volts 20, 21, ... again.
    ASSERT_TRUE(SetChannelField(file, true, 1, ChannelField::Unit, QStringLiteral("kV"), &reason));
    EXPECT_EQ(file.analogMaps[1]->Value(0), 20000.0f);
    EXPECT_EQ(file.analogMaps[1]->Value(4), 24000.0f);
    ASSERT_TRUE(SetChannelField(file, true, 1, ChannelField::Primary, QStringLiteral("1000"), &reason));
    EXPECT_EQ(file.analogMaps[1]->Value(0), 20000.0f); // secondary values do not depend on the ratio
    ASSERT_TRUE(SetChannelField(file, true, 1, ChannelField::PS, QStringLiteral("p"), &reason));
    EXPECT_EQ(file.analogMaps[1]->Value(0), 20.0f);
    EXPECT_EQ(file.analogMaps[1]->Value(3), 23.0f);
    ASSERT_TRUE(SetChannelField(file, true, 1, ChannelField::Phase, QStringLiteral("b"), &reason));
    ASSERT_TRUE(SetChannelField(file, false, 0, ChannelField::NormalState, QStringLiteral("1"), &reason));
    EXPECT_EQ(file.analogMaps[1]->Phase(), PhaseB);
    EXPECT_TRUE(ChannelFieldInCfgOnly(ChannelField::Phase));
    EXPECT_FALSE(ChannelFieldInCfgOnly(ChannelField::Primary));

    // The extension file alone does not carry them: the recorder's ".cfg" wins at the reopen.
    ASSERT_TRUE(file.SaveInf(dir.path("r.inf").c_str())) << file.saveError.toStdString();
    CCmtd99File reopened;
    ASSERT_TRUE(load(reopened, cfg));
    EXPECT_EQ(ChannelFieldText(reopened, true, 1, ChannelField::Phase), QString());
    EXPECT_EQ(ChannelFieldText(reopened, false, 0, ChannelField::NormalState), QStringLiteral("0"));

    // A Save As writes them into the new ".cfg".
    const std::string copy = dir.path("copy.cfg");
    ASSERT_TRUE(file.SaveFile(copy.c_str())) << file.saveError.toStdString();
    CCmtd99File saved;
    ASSERT_TRUE(load(saved, copy));
    EXPECT_EQ(ChannelFieldText(saved, true, 1, ChannelField::Phase), QStringLiteral("B"));
    EXPECT_EQ(ChannelFieldText(saved, false, 0, ChannelField::NormalState), QStringLiteral("1"));
    EXPECT_NEAR(saved.analogMaps[1]->Value(2), 22.0f, 0.01f);
}
