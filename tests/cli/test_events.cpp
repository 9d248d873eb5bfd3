// veldrix-cli events: the status event list as JSON, its base points and formats, and the
// refusal of a base the recording lacks.

#include "clirun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(CliEvents, ListWithBasePointsAndFormats)
{
    QTemporaryDir dir;
    // Stamps 1 ms apart from the start, trigger at sample 100; Trip falls at 50, 150, 250, 350
    // and rises at 100, 200, 300.
    const QString path = writeRecording(dir.path());
    const CliRun run = cli({"events", "--json", path});
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const QJsonArray events = QJsonDocument::fromJson(run.out).array();
    ASSERT_EQ(events.size(), 7);
    const QJsonObject first = events[0].toObject();
    EXPECT_EQ(first.value("sample").toInt(), 50);
    EXPECT_EQ(first.value("timeUs").toInteger(), 50000);
    EXPECT_EQ(first.value("delta").toString(), "-0:00.05");
    EXPECT_EQ(first.value("channel").toInt(), 1);
    EXPECT_EQ(first.value("name").toString(), "Trip");
    EXPECT_EQ(first.value("state").toInt(), 0);
    EXPECT_EQ(events[1].toObject().value("delta").toString(), "0:00.0");

    const CliRun ms = cli({"events", "--json", path, "--base", "10", "--format", "msus"});
    ASSERT_EQ(ms.code, 0) << ms.err.constData();
    EXPECT_EQ(QJsonDocument::fromJson(ms.out).array()[2].toObject().value("delta").toString(), "140.000ms");

    for (const char *base : {"t0c", "400", "first"}) {
        const CliRun refused = cli({"events", "--json", path, "--base", base});
        EXPECT_NE(refused.code, 0) << base;
        EXPECT_TRUE(refused.out.isEmpty()) << base;
        EXPECT_TRUE(refused.err.contains("veldrix-cli events:")) << base;
    }
}
