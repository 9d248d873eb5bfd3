// A cut of a recording: its rate segments (thinned, joined), its samples taken at the right
// source samples, its units with renumbered channels, the ".csv" table, and a cut of each field
// recording written and read back with the samples of its range. The combination of recordings
// on the base's time axis: exact copies, interpolations, the head before the other file's
// start, status held to the end.

#include "cmtd99file.h"
#include "cmtdcombin.h"
#include "exactcopy.h"
#include "inception.h"
#include "memoryrecording.h"
#include "units.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Samples numbered by their own index, so that a cut shows where each came from.
std::vector<float> Ramp(int count)
{
    std::vector<float> x(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        x[size_t(i)] = float(i);
    return x;
}

void SetTimes(CCmtd99File &file, int64_t offset = 0)
{
    file.sampleTimes = static_cast<int64_t *>(std::malloc(sizeof(int64_t) * size_t(file.loadedPoints)));
    int64_t t = offset;
    for (const SampleSegment &s : file.segments) {
        for (int n = s.start; n < s.end; ++n) {
            file.sampleTimes[n] = t;
            t += int64_t(1e6 / s.rate);
        }
    }
}

std::vector<const CChnMapAnalog *> AllAnalogs(const CCmtd99File &file)
{
    std::vector<const CChnMapAnalog *> list;
    for (const auto &map : file.analogMaps)
        list.push_back(map.get());
    return list;
}

} // namespace

TEST(Cut, SegmentsThinnedJoinedAndSampledAtTheirSource)
{
    // 10 kHz for 1000 samples, then 2 kHz for 400: cut 500 .. 1199 at 2 kHz at most.
    MemoryRecording r({{10000.0f, 1000}, {2000.0f, 1400}});
    r.add(Ramp(1400));
    SetTimes(r.file);
    CCmtd99File cut;
    QString error;
    ASSERT_TRUE(cut.CutFrom(r.file, 500, 1199, AllAnalogs(r.file), {}, "cut", 2000.0f, error));
    ASSERT_EQ(cut.segments.size(), 1u);
    EXPECT_EQ(cut.segments[0].rate, 2000.0f);
    // 500 samples thinned by 5, then the 200 slow ones.
    EXPECT_EQ(cut.loadedPoints, 100 + 200);
    const float *x = cut.analogMaps[0]->Values();
    EXPECT_EQ(x[0], 500.0f);
    EXPECT_EQ(x[1], 505.0f);
    EXPECT_EQ(x[99], 995.0f);
    EXPECT_EQ(x[100], 1000.0f);
    EXPECT_EQ(x[299], 1199.0f);
    EXPECT_EQ(cut.sampleTimes[0], 0);
    EXPECT_EQ(cut.sampleTimes[100], r.file.sampleTimes[1000] - r.file.sampleTimes[500]);
    EXPECT_EQ(cut.fileDesc.revYear, QByteArray("1999"));

    // 3 kHz under a limit of 2.5 kHz: a factor of 1 is raised to 2, so 1.5 kHz.
    MemoryRecording fast({{3000.0f, 300}});
    fast.add(Ramp(300));
    SetTimes(fast.file);
    CCmtd99File half;
    ASSERT_TRUE(half.CutFrom(fast.file, 0, 299, AllAnalogs(fast.file), {}, "half", 2500.0f, error));
    EXPECT_EQ(half.segments[0].rate, 1500.0f);
    EXPECT_EQ(half.loadedPoints, 150);
    EXPECT_EQ(half.analogMaps[0]->Values()[149], 298.0f);
}

TEST(Cut, UnitsFollowTheirChannelsAndTheTableReads)
{
    MemoryRecording r({{1000.0f, 50}});
    for (int c = 0; c < 5; ++c)
        r.add(Sine(50, 1000.0, 1.0 + c));
    SetTimes(r.file);
    auto line = std::make_unique<CmtdInfTrwk_UnitLine>();
    line->name = "L1";
    line->taChns = {3, 4, 5, 0};
    r.file.lineUnits.push_back(std::move(line));
    auto other = std::make_unique<CmtdInfTrwk_UnitLine>();
    other->name = "L2";
    other->taChns = {1, 0, 0, 0};
    r.file.lineUnits.push_back(std::move(other));
    // Channels 5 and 3, in this order: 5 becomes 1, 3 becomes 2, 4 is gone; L2 stays behind.
    CCmtd99File cut;
    QString error;
    ASSERT_TRUE(cut.CutFrom(r.file, 10, 19, {r.file.analogMaps[4].get(), r.file.analogMaps[2].get()}, {}, "u",
                            0.0f, error));
    ASSERT_EQ(cut.lineUnits.size(), 1u);
    EXPECT_EQ(cut.lineUnits[0]->name, QByteArray("L1"));
    EXPECT_EQ(cut.lineUnits[0]->taChns, (ChannelSet{2, 0, 1, 0}));
    EXPECT_EQ(cut.analogMaps[0]->Values()[0], r.file.analogMaps[4]->Values()[10]);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("t.csv"));
    ASSERT_TRUE(r.file.SaveCsv(path, 10, 11, {r.file.analogMaps[1].get()}, {}, error));
    QFile csv(path);
    ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = csv.readAll().split('\n');
    EXPECT_EQ(lines[0], QByteArray("Index,Relating time(microsecond),UA(V)"));
    char expected[64];
    std::snprintf(expected, sizeof expected, "11,10000.000,%.6f", double(r.file.analogMaps[1]->Values()[10]));
    EXPECT_EQ(lines[1], QByteArray(expected));
}

// Every field recording: a cut of its middle third, written and read back, holds the same
// samples (within the rounding of the written floats) as the source over the range.
TEST(Cut, FieldRecordingsReadBackOverTheirRange)
{
    const QString root = QStringLiteral(VELDRIX_SAMPLES_DIR);
    if (!QFileInfo(root).isDir())
        GTEST_SKIP() << "no field recordings at " << VELDRIX_SAMPLES_DIR;
    QTemporaryDir dir;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    int cuts = 0;
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        if (info.suffix().compare(QLatin1String("cfg"), Qt::CaseInsensitive) != 0)
            continue;
        SCOPED_TRACE(info.filePath().toStdString());
        CCmtd99File source;
        const QByteArray path = QFile::encodeName(info.filePath());
        if (!source.LoadFile(path.constData()) || !source.LoadDat(path.constData(), nullptr, nullptr) ||
            source.analogMaps.empty() || source.loadedPoints < 30)
            continue;
        const int first = source.loadedPoints / 3;
        const int last = 2 * source.loadedPoints / 3;
        std::vector<const CChnMapStatus *> statuses;
        for (const auto &map : source.statusMaps)
            statuses.push_back(map.get());
        std::vector<const CChnMapAnalog *> analogs;
        for (int c = 0; c < source.FileAnalogStoreCount(); ++c)
            analogs.push_back(source.analogMaps[size_t(c)].get());
        CCmtd99File cut;
        QString error;
        ASSERT_TRUE(cut.CutFrom(source, first, last, analogs, statuses, "cut", 0.0f, error));
        const QString outName = dir.filePath(QStringLiteral("cut%1.cfg").arg(cuts++));
        const QByteArray out = QFile::encodeName(outName);
        ExactCopyFormat format;
        format.fileType = "FLOAT32";
        format.revision = 2013;
        ASSERT_EQ(SaveExactCopy(cut, outName, format, &error), ExactCopyResult::Written)
            << error.toStdString();
        CCmtd99File back;
        ASSERT_TRUE(back.LoadFile(out.constData()));
        ASSERT_TRUE(back.LoadDat(out.constData(), nullptr, nullptr));
        ASSERT_EQ(back.loadedPoints, last - first + 1);
        for (size_t c = 0; c < analogs.size(); ++c) {
            for (int n = first; n <= last; ++n) {
                const float want = analogs[c]->Value(n);
                const float got = back.analogMaps[c]->Value(n - first);
                if (std::isnan(want))
                    continue;
                // Written as floats through the channel's a and b: rounding of a float, scaled.
                const double scale =
                    std::max({1.0, std::fabs(double(want)), std::fabs(double(analogs[c]->config->b))});
                ASSERT_NEAR(got, want, 1e-4 * scale) << "channel " << c << " sample " << n;
            }
        }
        // Status bits: the cut holds the source's; read back, a short recording loses its
        // one-sample pulses as every load does, so the cut is compared after the same rule.
        for (size_t c = 0; c < statuses.size(); ++c) {
            for (int n = first; n <= last; ++n)
                ASSERT_EQ(cut.statusMaps[c]->Bit(n - first), statuses[c]->Bit(n))
                    << "channel " << c << " sample " << n;
            cut.statusMaps[c]->BuildChangeList(cut.loadedPoints);
            for (int n = 0; n < cut.loadedPoints; ++n)
                ASSERT_EQ(back.statusMaps[c]->Bit(n), cut.statusMaps[c]->Bit(n))
                    << "channel " << c << " sample " << n;
        }
    }
    EXPECT_GT(cuts, 0);
}

TEST(Combin, ExactCopiesInterpolationsHeadsAndHeldStates)
{
    // Base: 1 kHz, 400 samples. Other: 1 kHz too, a ramp and a status that is on at its end;
    // other sample 0 lies on base sample 150, so its head is empty.
    MemoryRecording base({{1000.0f, 400}});
    base.add(Sine(400, 1000.0, 10.0));
    SetTimes(base.file);
    MemoryRecording other({{1000.0f, 200}});
    other.add(Ramp(200), "A");
    SetTimes(other.file);
    auto record = std::make_unique<CmtdChn_Status>();
    record->Reset(1);
    other.file.statusChannels.push_back(std::move(record));
    auto status = std::make_unique<CChnMapStatus>(other.file.statusChannels.back().get());
    status->allocate(200);
    for (int n = 0; n < 200; ++n)
        status->SetBit(n, n >= 190);
    other.file.statusMaps.push_back(std::move(status));

    CCmtd99FileCombin combin;
    combin.m_base.file = &base.file;
    combin.m_base.first = 100;
    combin.m_base.last = 399;
    combin.m_base.analogChannels = AllAnalogs(base.file);
    CombinItem &item = combin.addOther(&other.file);
    item.alignPoint = 0;
    item.baseAlignPoint = 150;
    item.method = CombinHermite;
    item.analogChannels = AllAnalogs(other.file);
    item.statusChannels = {other.file.statusMaps[0].get()};
    QString error;
    ASSERT_TRUE(combin.build(error));
    const CCmtd99File &result = *combin.m_result;
    ASSERT_EQ(result.analogMaps.size(), 2u);
    EXPECT_EQ(result.analogChannels[1]->index, 2);
    const float *x = result.analogMaps[1]->Values();
    // Result sample r is base sample 100 + r: the other file begins at result sample 50.
    EXPECT_EQ(x[49], 0.0f);
    for (int r = 50; r < 250; ++r)
        ASSERT_EQ(x[r], float(r - 50)) << r; // same rate, samples on samples: copied
    EXPECT_EQ(x[250], 0.0f);                 // behind the other file's end
    const CChnMapStatus &held = *result.statusMaps[0];
    EXPECT_EQ(held.Bit(239), 0);
    EXPECT_EQ(held.Bit(240), 1);
    EXPECT_EQ(held.Bit(299), 1); // on at the other's end: held to the result's end
    EXPECT_EQ(combin.removeOther(&other.file), 0);
    EXPECT_EQ(combin.removeOther(&other.file), -1);

    // A ramp at 800 Hz: result sample 10 (10 ms) meets its sample 8 exactly, sample 11 (11 ms)
    // lies between its samples 8 (10 ms) and 9 (11.25 ms). Every method is the ramp itself
    // there (8.8); the carried value repeats what was written last (8).
    MemoryRecording slow({{800.0f, 200}});
    slow.add(Ramp(200), "A");
    SetTimes(slow.file);
    for (int method : {CombinHermite, CombinLagrange1, CombinLagrange2, CombinNewton, CombinKriging}) {
        CCmtd99FileCombin c;
        c.m_base = combin.m_base;
        CombinItem &it = c.addOther(&slow.file);
        it.alignPoint = 0;
        it.baseAlignPoint = 100;
        it.method = method;
        it.analogChannels = AllAnalogs(slow.file);
        ASSERT_TRUE(c.build(error));
        const float *y = c.m_result->analogMaps[1]->Values();
        EXPECT_EQ(y[10], 8.0f) << method;
        EXPECT_NEAR(y[11], method == CombinKriging ? 8.0f : 8.8f, 1e-5) << method;
    }
}

TEST(Combin, FaultInceptionIsTheFirstJumpOfAnyChannel)
{
    // A 50 Hz current of 1 A peak at 1 kHz that rises to 8 A from sample 230 on, beside a
    // steady voltage; from sample 250 on nothing jumps any more.
    MemoryRecording r({{1000.0f, 400}});
    std::vector<float> current = Sine(400, 1000.0, 1.0, 30.0);
    for (int n = 230; n < 400; ++n)
        current[size_t(n)] *= 8.0f;
    r.add(Sine(400, 1000.0, 100.0));
    r.add(current, "A");
    SetTimes(r.file);
    for (const auto &map : r.file.analogMaps)
        map->updateExtent(); // as a load leaves them
    const std::vector<const CChnMapAnalog *> both = AllAnalogs(r.file);
    EXPECT_EQ(FirstJumpSample(r.file, both, 0), 230);
    EXPECT_EQ(FirstJumpSample(r.file, {both[0]}, 0), -1);
    EXPECT_EQ(FirstJumpSample(r.file, both, 250), -1);
}
