// veldrix-cli run as a script would run it: exit codes, the JSON keys and values it prints.

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include "tolerance.h"

#include "clirun.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Two analog channels at 1 kHz — a 50 Hz sine of 100 V peak and a ramp in kV through 110 kV /
// 100 V given as primary values — and one status channel; the trigger at sample 100.
QString writeRecording(const QTemporaryDir &dir, const char *count = "3,2A,1D", int points = 400)
{
    const QString base = dir.filePath(QStringLiteral("rec"));
    QFile cfg(base + QStringLiteral(".cfg"));
    cfg.open(QIODevice::WriteOnly);
    cfg.write(QByteArray("Station,Device,1999\n") + count + "\n");
    cfg.write("1,UA,A,Bay 1,V,0.1,0,0,-32767,32767,1,1,S\n"
              "2,UB,B,Bay 1,kV,0.001,0,0,-32767,32767,110,0.1,P\n"
              "1,Trip,,,0\n50\n1\n");
    cfg.write(QByteArray::number(1000) + "," + QByteArray::number(points) + "\n");
    cfg.write("01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.100000\nASCII\n1\n");
    cfg.close();
    QFile dat(base + QStringLiteral(".dat"));
    dat.open(QIODevice::WriteOnly);
    for (int n = 0; n < points; ++n) {
        const int ua = int(std::lround(1000.0 * std::sin(2 * M_PI * 50.0 * n / 1000.0)));
        dat.write(QByteArray::number(n + 1) + "," + QByteArray::number(n * 1000) + "," +
                  QByteArray::number(ua) + "," + QByteArray::number(n % 2 ? n : -n) + "," +
                  QByteArray::number(n >= 200 ? 1 : 0) + "\n");
    }
    return base + QStringLiteral(".cfg");
}

} // namespace

TEST(Cli, ExitCodesTellUsableRefusedAndMissing)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir);
    EXPECT_EQ(cli({QStringLiteral("info"), QStringLiteral("--json"), path}).code, 0);
    const CliRun missing = cli({QStringLiteral("info"), dir.filePath(QStringLiteral("none.cfg"))});
    EXPECT_EQ(missing.code, 2);
    EXPECT_TRUE(missing.err.contains("no such recording"));
    EXPECT_EQ(cli({QStringLiteral("info")}).code, 2);
    EXPECT_EQ(cli({QStringLiteral("frobnicate")}).code, 2);
    // A count line that does not add up refuses the recording, with the reader's words.
    QTemporaryDir other;
    const CliRun refused =
        cli({QStringLiteral("info"), QStringLiteral("--json"), writeRecording(other, "5,3A,3D")});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("Channel number error! [5, 3A, 3D]")) << refused.err.constData();
    EXPECT_FALSE(refused.json().value(QStringLiteral("loadOk")).toBool());
}

TEST(Cli, InfoDescribesTheRecording)
{
    QTemporaryDir dir;
    // Any of the recording's files may be named.
    const QString dat = QString(writeRecording(dir)).replace(QStringLiteral(".cfg"), QStringLiteral(".dat"));
    const QJsonObject info = cli({QStringLiteral("info"), QStringLiteral("--json"), dat}).json();
    EXPECT_TRUE(info.value(QStringLiteral("loadOk")).toBool());
    EXPECT_EQ(info.value(QStringLiteral("station")).toString(), QStringLiteral("Station"));
    EXPECT_EQ(info.value(QStringLiteral("encoding")).toString(), QStringLiteral("UTF-8"));
    EXPECT_EQ(info.value(QStringLiteral("pointCount")).toInt(), 400);
    EXPECT_EQ(info.value(QStringLiteral("loadedPoints")).toInt(), 400);
    EXPECT_EQ(info.value(QStringLiteral("triggerIndex")).toInt(), 100);
    EXPECT_EQ(info.value(QStringLiteral("startTime")).toString(),
              QStringLiteral("2024-02-01T10:00:00.000000"));
    const QJsonArray analog = info.value(QStringLiteral("analog")).toArray();
    ASSERT_EQ(analog.size(), 2);
    const QJsonObject ub = analog[1].toObject();
    EXPECT_EQ(ub.value(QStringLiteral("uu")).toString(), QStringLiteral("kV"));
    EXPECT_EQ(ub.value(QStringLiteral("ps")).toString(), QStringLiteral("P"));
    EXPECT_EQ(ub.value(QStringLiteral("class")).toInt(), 1);
    EXPECT_EQ(ub.value(QStringLiteral("phase")).toInt(), 2);
    EXPECT_TRUE(info.value(QStringLiteral("status"))
                    .toArray()[0]
                    .toObject()
                    .value(QStringLiteral("changed"))
                    .toBool());
    for (const char *key : {"file", "validationMask", "device", "revYear", "lineFreq", "totalChannels",
                            "analogCount", "statusCount", "rateCount", "rawSegments", "segments",
                            "triggerTime", "fileType", "timeMult", "messages"})
        EXPECT_TRUE(info.contains(QLatin1String(key))) << key;
}

TEST(Cli, SamplesPhasorsAndConvert)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir);
    const QJsonObject samples =
        cli({QStringLiteral("samples"), QStringLiteral("--json"), path, QStringLiteral("--from"),
             QStringLiteral("99"), QStringLiteral("--to"), QStringLiteral("101"), QStringLiteral("--channel"),
             QStringLiteral("A2"), QStringLiteral("--channel"), QStringLiteral("D1")})
            .json();
    const QJsonArray times = samples.value(QStringLiteral("times")).toArray();
    ASSERT_EQ(times.size(), 3);
    EXPECT_EQ(times[1].toInteger(), 0); // the trigger sample
    // Primary kV values held as secondary volts: raw × 0.001 × (0.1 / 110) × 1000.
    const double ub =
        samples.value(QStringLiteral("analog")).toObject().value(QStringLiteral("2")).toArray()[2].toDouble();
    EXPECT_TRUE(NearRelative(ub, 101 * 0.001 * (0.1 / 110) * 1000, 1e-5));
    EXPECT_FALSE(samples.value(QStringLiteral("analog")).toObject().contains(QStringLiteral("1")));
    EXPECT_EQ(cli({QStringLiteral("samples"), QStringLiteral("--json"), path, QStringLiteral("--channel"),
                   QStringLiteral("A9")})
                  .code,
              2);

    const QJsonObject phasors = cli({QStringLiteral("phasors"), QStringLiteral("--json"), path,
                                     QStringLiteral("--at"), QStringLiteral("300")})
                                    .json();
    const QJsonObject ua = phasors.value(QStringLiteral("channels")).toArray()[0].toObject();
    EXPECT_EQ(ua.value(QStringLiteral("code")).toInt(), 1);
    EXPECT_EQ(ua.value(QStringLiteral("n")).toInt(), 20);
    EXPECT_TRUE(NearRelative(ua.value(QStringLiteral("effective")).toDouble(), 100.0 / std::sqrt(2.0), 7e-4));
    EXPECT_EQ(ua.value(QStringLiteral("text")).toString().left(5), QStringLiteral("70.71"));

    // ASCII to binary to a single .cff and back to ASCII: the samples come back.
    const QString binary = dir.filePath(QStringLiteral("b.cfg"));
    const QString cff = dir.filePath(QStringLiteral("c.cff"));
    const QString back = dir.filePath(QStringLiteral("d.cfg"));
    ASSERT_EQ(cli({QStringLiteral("convert"), path, binary, QStringLiteral("--binary")}).code, 0);
    ASSERT_EQ(cli({QStringLiteral("convert"), binary, cff}).code, 0);
    ASSERT_EQ(cli({QStringLiteral("convert"), cff, back, QStringLiteral("--ascii")}).code, 0);
    const QByteArray before = cli({QStringLiteral("samples"), QStringLiteral("--json"), path}).out;
    const QByteArray after = cli({QStringLiteral("samples"), QStringLiteral("--json"), back}).out;
    EXPECT_EQ(QJsonDocument::fromJson(before), QJsonDocument::fromJson(after));
}

TEST(Cli, InfoListsNoticesBesideTheNumbers)
{
    // A 60 Hz recording without an extension file: phasors still use 50 Hz windows, and the
    // JSON says so under "notices"; a 50 Hz recording has none.
    QTemporaryDir dir;
    const QString path = writeRecording(dir);
    const CliRun fifty = cli({QStringLiteral("info"), QStringLiteral("--json"), path});
    ASSERT_EQ(fifty.code, 0);
    ASSERT_TRUE(fifty.json().value(QStringLiteral("notices")).isArray());
    EXPECT_TRUE(fifty.json().value(QStringLiteral("notices")).toArray().isEmpty());
    QFile cfg(path);
    ASSERT_TRUE(cfg.open(QIODevice::ReadOnly));
    QByteArray text = cfg.readAll();
    cfg.close();
    text.replace("0\n50\n1\n", "0\n60\n1\n");
    ASSERT_TRUE(cfg.open(QIODevice::WriteOnly | QIODevice::Truncate));
    cfg.write(text);
    cfg.close();
    const CliRun sixty = cli({QStringLiteral("info"), QStringLiteral("--json"), path});
    ASSERT_EQ(sixty.code, 0);
    const QJsonArray notices = sixty.json().value(QStringLiteral("notices")).toArray();
    ASSERT_EQ(notices.size(), 1);
    EXPECT_EQ(notices[0].toString().toStdString(),
              "Phasors use 50 Hz windows; the recording's line frequency is 60 Hz");
}

TEST(Cli, NumbersThatAreNoNumbersStopTheToolAndGapsPrintAsNull)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = writeRecording(dir);
    struct Case
    {
        QStringList arguments;
        const char *message;
    };
    const QString samples = QStringLiteral("samples");
    const QString phasors = QStringLiteral("phasors");
    const QString json = QStringLiteral("--json");
    const Case cases[] = {
        {{samples, json, path, QStringLiteral("--from"), QStringLiteral("abc")},
         "--from expects a whole number"},
        {{samples, json, path, QStringLiteral("--from"), QStringLiteral("12x")},
         "--from expects a whole number"},
        {{samples, json, path, QStringLiteral("--from"), QString()}, "--from expects a whole number"},
        {{samples, json, path, QStringLiteral("--to"), QStringLiteral("1.5")}, "--to expects a whole number"},
        {{samples, json, path, QStringLiteral("--to"), QStringLiteral("99999999999999999999")},
         "--to expects a whole number"},
        {{samples, json, path, QStringLiteral("--channel"), QStringLiteral("A1x")},
         "a channel is A<n> or D<n>"},
        {{phasors, json, path, QStringLiteral("--at"), QStringLiteral("ten")}, "--at expects a whole number"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.arguments.join(QLatin1Char(' ')).toStdString());
        const CliRun run = cli(c.arguments);
        EXPECT_EQ(run.code, 2);
        EXPECT_TRUE(run.err.contains(c.message)) << run.err.toStdString();
        EXPECT_TRUE(run.out.isEmpty());
    }
    // A good number still works: samples 3 to 4 only.
    const QJsonObject two = cli({samples, json, path, QStringLiteral("--from"), QStringLiteral("3"),
                                 QStringLiteral("--to"), QStringLiteral("4")})
                                .json();
    EXPECT_EQ(two.value(QStringLiteral("times")).toArray().size(), 2);

    // A count beyond what the reader holds: refused, naming the file and the line.
    const QString wrapped = writeRecording(dir, "4294967299,2A,1D");
    const CliRun refused = cli({QStringLiteral("info"), wrapped});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("line 2: 4294967299 channels is out of range"))
        << refused.err.toStdString();
    EXPECT_TRUE(refused.err.contains("rec.cfg")) << refused.err.toStdString();

    // A 2013 ASCII recording with an empty field: that sample is a gap, printed as null.
    const QString base = dir.filePath(QStringLiteral("gap"));
    QFile cfg(base + QStringLiteral(".cfg"));
    ASSERT_TRUE(cfg.open(QIODevice::WriteOnly));
    cfg.write("S,R,2013\n1,1A,0D\n1,IA,A,,A,1,0,0,-99999,99999,1,1,S\n50\n1\n1000,6\n"
              "01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.000000\nASCII\n1\n0,0\n0,0\n");
    cfg.close();
    QFile dat(base + QStringLiteral(".dat"));
    ASSERT_TRUE(dat.open(QIODevice::WriteOnly));
    dat.write("1,0,5\n2,1000,\n3,2000,7\n4,3000,8\n5,4000,9\n6,5000,10\n");
    dat.close();
    const QJsonObject gaps = cli({samples, json, base + QStringLiteral(".cfg")}).json();
    const QJsonArray ia =
        gaps.value(QStringLiteral("analog")).toObject().value(QStringLiteral("1")).toArray();
    ASSERT_EQ(ia.size(), 6);
    EXPECT_TRUE(ia[1].isNull());
    EXPECT_EQ(ia[2].toDouble(), 7.0);
}
