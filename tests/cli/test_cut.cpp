// The cut verb: a thinned range of chosen channels read back as a recording, the ".csv" form,
// and the refusals (an output over the input, a range outside the samples, a channel that is
// not there).

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

TEST(CliCut, RangeChannelsRateAndRefusals)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    const QString out = dir.filePath("cut.cfg");
    const CliRun run = cli({"cut", path, out, "--from", "100", "--to", "299", "--channels", "A2,D1",
                            "--max-rate", "500", "--ascii"});
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const CliRun info = cli({"info", "--json", out});
    ASSERT_EQ(info.code, 0) << info.err.constData();
    const QJsonObject json = info.json();
    EXPECT_EQ(json["analogCount"].toInt(), 1);
    EXPECT_EQ(json["statusCount"].toInt(), 1);
    EXPECT_EQ(json["fileType"].toString(), QStringLiteral("ASCII"));
    const QJsonArray segments = json["segments"].toArray();
    ASSERT_EQ(segments.size(), 1);
    // 1 kHz thinned by 2: 100 samples at 500 Hz.
    EXPECT_EQ(segments[0].toObject()["rate"].toDouble(), 500.0);
    EXPECT_EQ(json["loadedPoints"].toInt(), 100);
    // Its second sample is sample 102 of the source's second channel.
    const CliRun cutSamples = cli({"samples", "--json", out, "--channel", "A1", "--from", "1", "--to", "1"});
    const CliRun sourceSamples =
        cli({"samples", "--json", path, "--channel", "A2", "--from", "102", "--to", "102"});
    ASSERT_EQ(cutSamples.code, 0) << cutSamples.err.constData();
    EXPECT_EQ(cutSamples.json()["analog"].toObject()["1"].toArray()[0].toDouble(),
              sourceSamples.json()["analog"].toObject()["2"].toArray()[0].toDouble());

    const QString csv = dir.filePath("cut.csv");
    ASSERT_EQ(cli({"cut", path, csv, "--from", "0", "--to", "9", "--csv"}).code, 0);
    const QList<QByteArray> lines = fileBytes(csv).split('\n');
    EXPECT_TRUE(lines[0].startsWith("Index,Relating time(microsecond),"));
    EXPECT_EQ(lines.size(), 12); // head, ten samples, the empty piece behind the last line end

    EXPECT_EQ(cli({"cut", path, path, "--from", "0", "--to", "9"}).code, 2);
    EXPECT_EQ(cli({"cut", path, out, "--from", "0", "--to", "100000"}).code, 0);
    EXPECT_EQ(cli({"cut", path, out, "--from", "5000", "--to", "6000"}).code, 2);
    EXPECT_EQ(cli({"cut", path, out, "--from", "0", "--to", "9", "--channels", "A99"}).code, 2);
}

TEST(CliCombine, AnotherFileAtItsAlignPointAndRefusals)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    // The other file is a cut of the same recording from sample 50: its sample 10 is sample 60.
    const QString other = dir.filePath("other.cfg");
    ASSERT_EQ(cli({"cut", path, other, "--from", "50", "--to", "349", "--channels", "A1,D1"}).code, 0);
    const QString out = dir.filePath("both.cfg");
    const CliRun run = cli({"combine", out, "--base", path, "--from", "100", "--to", "299", "--channels",
                            "A1", "--other", other, "--align", "10:60", "--method", "3"});
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const CliRun info = cli({"info", "--json", out});
    ASSERT_EQ(info.code, 0) << info.err.constData();
    EXPECT_EQ(info.json()["analogCount"].toInt(), 2);
    EXPECT_EQ(info.json()["statusCount"].toInt(), 1);
    // Both analog channels are UA over the same samples.
    const QJsonObject samples =
        cli({"samples", "--json", out, "--channel", "A1", "--channel", "A2", "--from", "0", "--to", "199"})
            .json()["analog"]
            .toObject();
    EXPECT_EQ(samples["1"].toArray().size(), 200);
    EXPECT_EQ(samples["1"].toArray(), samples["2"].toArray());

    EXPECT_EQ(cli({"combine", path, "--base", path, "--from", "0", "--to", "99", "--other", other, "--align",
                   "0:0"})
                  .code,
              2);
    EXPECT_EQ(cli({"combine", out, "--base", path, "--from", "0", "--to", "99", "--other", other}).code, 2);
}
