// veldrix-cli run as a script would run it: exit codes, the JSON keys and values it prints.

#include <QJsonArray>
#include <QTemporaryDir>

#include "tolerance.h"

#include "clirun.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(Cli, ExitCodesTellUsableRefusedAndMissing)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    EXPECT_EQ(cli({"info", "--json", path}).code, 0);
    const CliRun missing = cli({"info", dir.filePath("none.cfg")});
    EXPECT_EQ(missing.code, 2);
    EXPECT_TRUE(missing.err.contains("no such recording"));
    EXPECT_EQ(cli({"info"}).code, 2);
    EXPECT_EQ(cli({"frobnicate"}).code, 2);
    // A count line that does not add up refuses the recording, with the reader's words.
    const CliRun refused = cli({"info", "--json", writeRecording(dir.path(), "bad", 400, 1000, "5,3A,3D")});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("Channel number error! [5, 3A, 3D]")) << refused.err.constData();
    EXPECT_FALSE(refused.json().value("loadOk").toBool());
    // A count beyond what the reader holds: refused, naming the file and the line.
    const CliRun wrapped =
        cli({"info", writeRecording(dir.path(), "wrapped", 400, 1000, "4294967299,2A,1D")});
    EXPECT_EQ(wrapped.code, 1);
    EXPECT_TRUE(wrapped.err.contains("line 2: 4294967299 channels is out of range"))
        << wrapped.err.toStdString();
    EXPECT_TRUE(wrapped.err.contains("wrapped.cfg")) << wrapped.err.toStdString();
}

TEST(Cli, InfoDescribesTheRecording)
{
    QTemporaryDir dir;
    // Any of the recording's files may be named.
    const QString dat = writeRecording(dir.path()).replace(".cfg", ".dat");
    const QJsonObject info = cli({"info", "--json", dat}).json();
    EXPECT_TRUE(info.value("loadOk").toBool());
    EXPECT_EQ(info.value("station").toString(), "Station");
    EXPECT_EQ(info.value("encoding").toString(), "UTF-8");
    EXPECT_EQ(info.value("pointCount").toInt(), 400);
    EXPECT_EQ(info.value("loadedPoints").toInt(), 400);
    EXPECT_EQ(info.value("triggerIndex").toInt(), 100);
    EXPECT_EQ(info.value("startTime").toString(), "2024-02-01T10:00:00.000000");
    const QJsonArray analog = info.value("analog").toArray();
    ASSERT_EQ(analog.size(), 2);
    const QJsonObject ub = analog[1].toObject();
    EXPECT_EQ(ub.value("uu").toString(), "kV");
    EXPECT_EQ(ub.value("ps").toString(), "P");
    EXPECT_EQ(ub.value("class").toInt(), 1);
    EXPECT_EQ(ub.value("phase").toInt(), 2);
    EXPECT_TRUE(info.value("status").toArray()[0].toObject().value("changed").toBool());
    for (const char *key : {"file", "validationMask", "device", "revYear", "lineFreq", "totalChannels",
                            "analogCount", "statusCount", "rateCount", "rawSegments", "segments",
                            "triggerTime", "fileType", "timeMult", "messages"})
        EXPECT_TRUE(info.contains(QLatin1String(key))) << key;
    // A 60 Hz recording without an extension file: phasors still use 50 Hz windows, and the
    // JSON says so under "notices"; a 50 Hz recording has none.
    ASSERT_TRUE(info.value("notices").isArray());
    EXPECT_TRUE(info.value("notices").toArray().isEmpty());
    put(dir.filePath("rec.cfg"), fileBytes(dir.filePath("rec.cfg")).replace("0\n50\n1\n", "0\n60\n1\n"));
    const CliRun sixty = cli({"info", "--json", dat});
    ASSERT_EQ(sixty.code, 0);
    const QJsonArray notices = sixty.json().value("notices").toArray();
    ASSERT_EQ(notices.size(), 1);
    EXPECT_EQ(notices[0].toString().toStdString(),
              "Phasors use 50 Hz windows; the recording's line frequency is 60 Hz");
}

TEST(Cli, SamplesPhasorsAndConvert)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    const QJsonObject samples =
        cli({"samples", "--json", path, "--from", "99", "--to", "101", "--channel", "A2", "--channel", "D1"})
            .json();
    const QJsonArray times = samples.value("times").toArray();
    ASSERT_EQ(times.size(), 3);
    EXPECT_EQ(times[1].toInteger(), 0); // the trigger sample
    // Primary kV values held as secondary volts: raw × 0.001 × (0.1 / 110) × 1000.
    const double ub = samples.value("analog").toObject().value("2").toArray()[2].toDouble();
    EXPECT_TRUE(NearRelative(ub, 101 * 0.001 * (0.1 / 110) * 1000, 1e-5));
    EXPECT_FALSE(samples.value("analog").toObject().contains("1"));
    EXPECT_EQ(cli({"samples", "--json", path, "--channel", "A9"}).code, 2);

    const QJsonObject phasors = cli({"phasors", "--json", path, "--at", "300"}).json();
    const QJsonObject ua = phasors.value("channels").toArray()[0].toObject();
    EXPECT_EQ(ua.value("code").toInt(), 1);
    EXPECT_EQ(ua.value("n").toInt(), 20);
    EXPECT_TRUE(NearRelative(ua.value("effective").toDouble(), 100.0 / std::sqrt(2.0), 7e-4));
    EXPECT_EQ(ua.value("text").toString().left(5), "70.71");

    // ASCII to binary to a single .cff and back to ASCII: the samples come back.
    const QString binary = dir.filePath("b.cfg");
    const QString cff = dir.filePath("c.cff");
    const QString back = dir.filePath("d.cfg");
    ASSERT_EQ(cli({"convert", path, binary, "--binary"}).code, 0);
    ASSERT_EQ(cli({"convert", binary, cff}).code, 0);
    ASSERT_EQ(cli({"convert", cff, back, "--ascii"}).code, 0);
    EXPECT_EQ(cli({"samples", "--json", path}).json(), cli({"samples", "--json", back}).json());
}

TEST(Cli, NumbersThatAreNoNumbersStopTheToolAndGapsPrintAsNull)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    const struct
    {
        QStringList arguments;
        const char *message;
    } cases[] = {
        {{"samples", "--json", path, "--from", "abc"}, "--from expects a whole number"},
        {{"samples", "--json", path, "--from", "12x"}, "--from expects a whole number"},
        {{"samples", "--json", path, "--from", ""}, "--from expects a whole number"},
        {{"samples", "--json", path, "--to", "1.5"}, "--to expects a whole number"},
        {{"samples", "--json", path, "--to", "99999999999999999999"}, "--to expects a whole number"},
        {{"samples", "--json", path, "--channel", "A1x"}, "a channel is A<n> or D<n>"},
        {{"phasors", "--json", path, "--at", "ten"}, "--at expects a whole number"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.arguments.join(QLatin1Char(' ')).toStdString());
        const CliRun run = cli(c.arguments);
        EXPECT_EQ(run.code, 2);
        EXPECT_TRUE(run.err.contains(c.message)) << run.err.toStdString();
        EXPECT_TRUE(run.out.isEmpty());
    }
    // A good number still works: samples 3 to 4 only.
    EXPECT_EQ(
        cli({"samples", "--json", path, "--from", "3", "--to", "4"}).json().value("times").toArray().size(),
        2);

    // A 2013 ASCII recording with an empty field: that sample is a gap, printed as null.
    put(dir.filePath("gap.cfg"),
        "S,R,2013\n1,1A,0D\n1,IA,A,,A,1,0,0,-99999,99999,1,1,S\n50\n1\n1000,6\n"
        "01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.000000\nASCII\n1\n0,0\n0,0\n");
    put(dir.filePath("gap.dat"), "1,0,5\n2,1000,\n3,2000,7\n4,3000,8\n5,4000,9\n6,5000,10\n");
    const QJsonArray ia = cli({"samples", "--json", dir.filePath("gap.cfg")})
                              .json()
                              .value("analog")
                              .toObject()
                              .value("1")
                              .toArray();
    ASSERT_EQ(ia.size(), 6);
    EXPECT_TRUE(ia[1].isNull());
    EXPECT_EQ(ia[2].toDouble(), 7.0);
}
