// veldrix-cli locate over two recordings of a fault computed from the long line's equations.

#include "../engine/linefault.h"

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

constexpr int kPoints = 2000;
constexpr int kFaultAt = 1000;

// One end as a 2013 recording of 32-bit float samples (secondary values) at 10 kHz; the trigger
// at the fault's inception.
QString writeEnd(const QTemporaryDir &dir, const char *name, const linefault::End &e)
{
    const QString base = dir.filePath(QLatin1String(name));
    QByteArray cfg = QByteArray(name) + ",Relay,2013\n6,6A,0D\n";
    const char *ids[6] = {"UA", "UB", "UC", "IA", "IB", "IC"};
    for (int c = 0; c < 6; ++c)
        cfg += QByteArray::number(c + 1) + "," + ids[c] + ",,," + (c < 3 ? "V" : "A") +
               ",1,0,0,-1000000,1000000,1,1,S\n";
    cfg += "50\n1\n10000,2000\n01/01/2025,10:00:00.000000\n01/01/"
           "2025,10:00:00.100000\nFLOAT32\n1\n+0h00,+0h00\n0,0\n";
    put(base + ".cfg", cfg);
    std::vector<float> waves[6];
    for (int p = 0; p < 3; ++p) {
        waves[p] = linefault::Wave(e.preU[p], e.u[p], 2200, 10000.0, kPoints, kFaultAt);
        waves[3 + p] = linefault::Wave(e.preI[p], e.i[p], 250, 10000.0, kPoints, kFaultAt);
    }
    QByteArray dat;
    for (int k = 0; k < kPoints; ++k) {
        const uint32_t head[2] = {uint32_t(k + 1), uint32_t(k * 100)};
        dat.append(reinterpret_cast<const char *>(head), sizeof head);
        for (const std::vector<float> &w : waves)
            dat.append(reinterpret_cast<const char *>(&w[size_t(k)]), sizeof(float));
    }
    put(base + ".dat", dat);
    return base + ".cfg";
}

// The arguments of one end: channels by name and by index, 220 kV / 100 V, 1250 A / 5 A.
QStringList endArguments(const char *prefix, const QString &path, const char *start = nullptr)
{
    const QString p = QLatin1String(prefix);
    QStringList args{p,         path,      p + "-channels", "ua,UB,A3,IA,ib,A6",
                     p + "-tv", "220,100", p + "-ta",       "1250,5"};
    if (start)
        args << p + "-start" << QLatin1String(start);
    return args;
}

struct Recordings
{
    Recordings()
    {
        linefault::Case c;
        c.x = 64.2L;
        c.kind = linefault::Kind::BCG;
        c.rf = 3;
        linefault::End m, n;
        linefault::Solve(c, m, n);
        pathM = writeEnd(dir, "m", m);
        pathN = writeEnd(dir, "n", n);
    }
    QStringList arguments(const char *line, const char *start = nullptr) const
    {
        return QStringList{"locate", "--json", "--line", QLatin1String(line)} +
               endArguments("--m", pathM, start) + endArguments("--n", pathN, start);
    }
    QTemporaryDir dir;
    QString pathM, pathN;
};

} // namespace

TEST(CliLocate, FindsTheComputedFault)
{
    const Recordings r;
    const CliRun run = cli(r.arguments("100,0.03,0.3,0.012,0.25,1.0", "1100"));
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const QJsonObject out = run.json();
    EXPECT_EQ(out.value("code").toInt(), 0);
    EXPECT_NEAR(out.value("positionKm").toDouble(), 64.2, 0.01);
    const QJsonObject m = out.value("m").toObject();
    EXPECT_EQ(m.value("start").toInt(), 1100);
    EXPECT_EQ(m.value("ppw").toInt(), 200);
    EXPECT_EQ(m.value("rate").toDouble(), 10000.0);
    const QJsonArray report = out.value("report").toArray();
    ASSERT_EQ(report.size(), 8);
    EXPECT_EQ(report[2].toString(), "\tStation: m");
    const QJsonObject single = out.value("singleEnded").toObject();
    EXPECT_NEAR(single.value("n").toObject().value("reactanceKm").toDouble(), 35.8, 3.0);

    // The automatic windows: a cycle before the fault current settles, which for a change without
    // transient is the inception itself, so the first difference still reaches back before it.
    const CliRun automatic = cli(r.arguments("100,0.03,0.3,0.012"));
    ASSERT_EQ(automatic.code, 0) << automatic.err.constData();
    EXPECT_NEAR(automatic.json().value("m").toObject().value("start").toInt(), 1000, 5);
    EXPECT_NEAR(automatic.json().value("n").toObject().value("start").toInt(), 1000, 5);
    EXPECT_NEAR(automatic.json().value("positionKm").toDouble(), 64.2, 1.0);
}

TEST(CliLocate, RefusalsAndFailedLocations)
{
    const Recordings r;
    const CliRun shortLine = cli(r.arguments("0.2,0.03,0.3,0.012", "1100"));
    EXPECT_EQ(shortLine.code, 1);
    const QJsonObject out = shortLine.json();
    EXPECT_EQ(out.value("code").toInteger(), 0x30000009);
    EXPECT_TRUE(out.value("positionKm").isNull());
    EXPECT_EQ(out.value("report").toArray()[0].toString(), "Analising failed:");

    CliRun refused = cli(r.arguments("100,0.03,0.3,0.012", "1990"));
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("End M: Points Not enough! (StartPoint=1991, EndPoint=2000, PPW=200)"))
        << refused.err.constData();

    EXPECT_EQ(cli({"locate", "--json"}).code, 2);
}
