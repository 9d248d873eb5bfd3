// veldrix-cli units: the units as stored, and with --suggest those proposed beside them.

#include <QJsonArray>
#include <QTemporaryDir>

#include "clirun.h"

#include <gtest/gtest.h>

namespace {

QJsonArray ints(std::initializer_list<int> values)
{
    QJsonArray out;
    for (int v : values)
        out.append(v);
    return out;
}

} // namespace

TEST(CliUnits, StoredUnitsAndProposalsBesideThem)
{
    QTemporaryDir dir;
    // A bus voltage set that the extension file already gives to "Feeder A", and two lines of
    // currents named by their bay number.
    QByteArray cfg = "S,R,1999\r\n11,10A,1D\r\n";
    const char *names[] = {"Ua", "Ub", "Uc", "IA1", "IB1", "IC1", "IA2", "IB2", "IC2", "3I02"};
    for (int i = 0; i < 10; ++i)
        cfg += QByteArray::number(i + 1) + "," + names[i] + ",,," + (i < 3 ? "kV" : "A") +
               ",1,0,0,-32767,32767,1,1,S\r\n";
    cfg += "1,Trip,,,0\r\n50\r\n1\r\n1000,10\r\n01/02/2024,10:00:00.000000\r\n01/02/2024,10:00:00.005000\r\n"
           "ASCII\r\n1\r\n";
    put(dir.filePath("rec.cfg"), cfg);
    QByteArray dat;
    for (int n = 0; n < 10; ++n)
        dat += QByteArray::number(n + 1) + "," + QByteArray::number(n * 1000) + ",1,2,3,4,5,6,7,8,9,10,0\r\n";
    put(dir.filePath("rec.dat"), dat);
    put(dir.filePath("rec.inf"), "[TRWK Line_#1]\r\nDEV_ID=4,Feeder A\r\nTV_CHNS=1,2,3,0\r\n");

    const CliRun stored = cli({"units", "--json", dir.filePath("rec.cfg")});
    ASSERT_EQ(stored.code, 0) << stored.err.constData();
    const QJsonObject storedJson = stored.json();
    EXPECT_FALSE(storedJson.contains("reasons"));
    const QJsonArray storedLines = storedJson.value("units").toObject().value("lines").toArray();
    ASSERT_EQ(storedLines.size(), 1);
    EXPECT_EQ(storedLines[0].toObject().value("name").toString(), "Feeder A");
    // The same form as info --json gives.
    const CliRun info = cli({"info", "--json", dir.filePath("rec.cfg")});
    EXPECT_EQ(info.json().value("units"), storedJson.value("units"));

    const CliRun suggested = cli({"units", "--json", dir.filePath("rec.cfg"), "--suggest"});
    ASSERT_EQ(suggested.code, 0) << suggested.err.constData();
    const QJsonObject json = suggested.json();
    const QJsonArray lines = json.value("units").toObject().value("lines").toArray();
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0].toObject().value("name").toString(), "Feeder A");
    const QJsonObject line1 = lines[1].toObject();
    EXPECT_EQ(line1.value("name").toString(), "Line 1");
    EXPECT_EQ(line1.value("taChns").toArray(), ints({4, 5, 6, 0}));
    EXPECT_EQ(line1.value("tvChns").toArray(), QJsonArray()); // the bus is Feeder A's
    const QJsonObject line2 = lines[2].toObject();
    EXPECT_EQ(line2.value("name").toString(), "Line 2");
    EXPECT_EQ(line2.value("taChns").toArray(), ints({7, 8, 9, 10}));
    const QJsonArray reasons = json.value("reasons").toArray();
    ASSERT_EQ(reasons.size(), 2);
    EXPECT_EQ(reasons[1].toObject().value("name").toString(), "Line 2");
    EXPECT_EQ(reasons[1].toObject().value("kind").toInt(), 1);
    EXPECT_TRUE(reasons[1].toObject().value("reason").toString().contains("3I02"));

    EXPECT_EQ(cli({"units", "--json"}).code, 2);
    EXPECT_EQ(cli({"units", "--bogus", dir.filePath("rec.cfg")}).code, 2);
    EXPECT_EQ(cli({"units", "--json", dir.filePath("none.cfg")}).code, 2);
}
