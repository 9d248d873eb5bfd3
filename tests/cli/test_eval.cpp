// veldrix-cli eval: a script's messages, result log and new channels as JSON; a script with any
// message does not run.

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(CliEval, RunsAScriptOrListsWhatKeepsItFromRunning)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    put(dir.path() + "/script.txt", "// doubled voltage\n\"U2\" = \"UA\" * 2; k = 3 ^ 2\n");
    const CliRun ran = cli({"eval", "--json", path, "--script-file", dir.path() + "/script.txt"});
    ASSERT_EQ(ran.code, 0) << ran.err.constData();
    const QJsonObject result = ran.json();
    EXPECT_TRUE(result.value("messages").toArray().isEmpty());
    EXPECT_EQ(result.value("log").toArray(), QJsonArray({"No Error!", "[U2] Out a new Virtual Channel [U2]!",
                                                         "[k] Result = 9.000000, Stored in [k]"}));
    const QJsonArray channels = result.value("channels").toArray();
    ASSERT_EQ(channels.size(), 1);
    const QJsonObject u2 = channels[0].toObject();
    EXPECT_EQ(u2.value("name").toString(), "U2");
    EXPECT_EQ(u2.value("unit").toString(), "V");
    const QJsonArray values = u2.value("values").toArray();
    ASSERT_EQ(values.size(), 400);
    // UA is 1000 steps of 0.1 V: 100 V peak, doubled.
    EXPECT_NEAR(values[5].toDouble(), 2 * 0.1 * std::lround(1000 * std::sin(2 * M_PI * 50.0 * 5 / 1000.0)),
                1e-4);

    // A warning is enough to refuse the run: nothing is computed and the exit status is 1.
    const CliRun refused = cli({"eval", "--json", path, "--script", "x = 1; \"Y\" = UA * 2"});
    EXPECT_EQ(refused.code, 1);
    const QJsonArray messages = refused.json().value("messages").toArray();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].toObject().value("pos").toInt(), 13);
    EXPECT_EQ(messages[0].toObject().value("text").toString(), "Error: Unknown variant name [UA]!");
    EXPECT_EQ(refused.json().value("log").toArray(),
              QJsonArray({"***** [1] Errors and Warnings *****", "Error: Unknown variant name [UA]!"}));
    EXPECT_TRUE(refused.json().value("channels").toArray().isEmpty());

    EXPECT_EQ(cli({"eval", "--json", path}).code, 2);
    EXPECT_EQ(cli({"eval", "--json", dir.path() + "/none.cfg", "--script", "1"}).code, 2);
}
