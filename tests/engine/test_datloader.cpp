// The sample file: what a load puts into the stores, how the recorder's time stamps become
// microseconds from the trigger, and what is written back.

#include "cfgfixture.h"
#include "cmtd99file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

struct Record
{
    int32_t stamp;
    std::vector<int16_t> analog;
    uint16_t status;
};

const char *kPlainChannel = "1,UA,,,V,1,0,0,-32767,32767,1,1,S";

// Binary records numbered on from `number`: number, stamp, the analog values, one status word.
std::string Binary(const std::vector<Record> &records, int32_t number = 1)
{
    std::string out;
    for (const Record &r : records) {
        PutLE(out, number++);
        PutLE(out, r.stamp);
        for (int16_t value : r.analog)
            PutLE(out, value);
        PutLE(out, r.status);
    }
    return out;
}

// One analog value and one status word per record, stamps at a fixed step from `first`.
std::vector<Record> Ramp(int count, int32_t first, int32_t step, int16_t value0 = 0)
{
    std::vector<Record> records;
    for (int n = 0; n < count; ++n)
        records.push_back(Record{first + n * step, {static_cast<int16_t>(value0 + n)}, 0});
    return records;
}

std::vector<int64_t> Times(const CCmtd99File &file)
{
    return std::vector<int64_t>(file.sampleTimes, file.sampleTimes + file.loadedPoints);
}

using DatLoad = RecordingTest;

class Recording
{
public:
    explicit Recording(const std::string &cfg) { ok = LoadRecording(file, cfg); }
    CCmtd99File file;
    bool ok = false;
};

} // namespace

TEST_F(DatLoad, ScalesToSecondaryUnitsWithoutPrefixAndKeepsTheLoadersExtremes)
{
    // kV in primary values through 110 kV / 100 V: stored as secondary volts.
    const std::string cfg = dir.write("r.cfg", RecordingConfig({"1,UA,A,,kV,0.5,1,0,-32767,32767,110,0.1,P",
                                                                "2,IB,,,A,2,0,0,-32767,32767,600,1,S"},
                                                               1, {"1000,6"}));
    std::vector<Record> records;
    const int16_t ua[] = {10, 20, -5, 30, -40, 0};
    const int16_t ib[] = {1, 2, 3, 4, 5, 6}; // steadily rising
    for (int n = 0; n < 6; ++n)
        records.push_back(Record{n * 1000, {ua[n], ib[n]}, 0});
    dir.writeBytes("r.dat", Binary(records));

    Recording r(cfg);
    ASSERT_TRUE(r.ok);
    EXPECT_TRUE(r.file.datMessages.isEmpty());
    const CChnMapAnalog &u = *r.file.analogMaps[0];
    const double gain = 0.5 * (0.1 / 110.0) * 1000.0; // a × secondary/primary × prefix
    const double offset = 1.0 * (0.1 / 110.0) * 1000.0;
    for (int n = 0; n < 6; ++n)
        EXPECT_EQ(u.Value(n), static_cast<float>(ua[n] * gain + offset)) << n;
    EXPECT_EQ(u.unit.prefix, 'k');
    EXPECT_STREQ(u.unit.text, "V");
    EXPECT_EQ(u.Class(), ClassACV);
    EXPECT_EQ(u.Phase(), PhaseA);
    const CChnMapAnalog &i = *r.file.analogMaps[1];
    // Scale groups are built at the end of a normal load, one per class and unit.
    EXPECT_EQ(r.file.scaleGroups.size(), 2u);
    EXPECT_EQ(i.Value(-1), 0.0f);
    EXPECT_EQ(i.Value(6), 0.0f);
}

TEST_F(DatLoad, LongBinaryChannelExtremesAndReportsAfterWholeSamples)
{
    // 1000 samples: a rise over the first 300, then values that jump about; the extremes follow
    // the rule walked here sample by sample.
    constexpr int kCount = 1000;
    const std::string cfg = dir.write("r.cfg", RecordingConfig({"1,UA,,,V,0.5,0,0,-32767,32767,1,1,S"}, 1,
                                                               {"1000," + std::to_string(kCount)}));
    std::vector<Record> records;
    std::vector<float> expected;
    float high = -9999999.0f;
    float low = 9999999.0f;
    for (int n = 0; n < kCount; ++n) {
        const auto raw = static_cast<int16_t>(n < 300 ? n * 5 : (n * 7919) % 6001 - 3000);
        records.push_back(Record{n * 1000 - 100000, {raw}, 0});
        expected.push_back(static_cast<float>(raw * 0.5));
        if (expected.back() > high)
            high = expected.back();
        else if (expected.back() < low)
            low = expected.back();
    }
    dir.writeBytes("r.dat", Binary(records));

    // Every report of samples done comes where n % step is step - 1, with the samples before n
    // already in the store: the frame draws them at once.
    struct Watch
    {
        CCmtd99File *file = nullptr;
        const std::vector<float> *expected = nullptr;
        std::vector<int> reports;
        int wrong = 0;
        static int fn(void *context, int code, int, int current)
        {
            auto *self = static_cast<Watch *>(context);
            if (code == 8)
                return 7;
            if (code == 10) {
                self->reports.push_back(current);
                const float *values = self->file->analogMaps[0]->Values();
                for (int n = 0; n < current; ++n)
                    self->wrong += values[n] != (*self->expected)[size_t(n)];
            }
            return 0;
        }
    };
    CCmtd99File file;
    ASSERT_TRUE(file.LoadFile(cfg.c_str()));
    Watch watch;
    watch.file = &file;
    watch.expected = &expected;
    ASSERT_TRUE(file.LoadDat(cfg.c_str(), Watch::fn, &watch));
    EXPECT_EQ(file.loadedPoints, kCount);
    ASSERT_EQ(watch.reports.size(), 142u); // 6, 13, ..., 993
    for (size_t i = 0; i < watch.reports.size(); ++i)
        EXPECT_EQ(watch.reports[i], int(i) * 7 + 6);
    EXPECT_EQ(watch.wrong, 0);

    const CChnMapAnalog &u = *file.analogMaps[0];
    for (int n = 0; n < kCount; ++n)
        ASSERT_EQ(u.Value(n), expected[size_t(n)]) << n;
    EXPECT_EQ(u.maxValue, high);
    EXPECT_EQ(u.minValue, low);
    // The walk is not trivial: the maximum rises again after the ramp (to 747.5), in a later run
    // of records, and the minimum comes from the samples that raised nothing.
    EXPECT_GT(high, 747.5f);
    EXPECT_LT(low, -1000.0f);
}

TEST_F(DatLoad, LengthOfTheDataFileAgainstThePromisedCount)
{
    const std::string cfg = dir.write("r.cfg", RecordingConfig({kPlainChannel}, 1, {"1000,10"}));

    dir.writeBytes("r.dat", Binary(Ramp(11, -100000, 1000)));
    Recording longer(cfg);
    ASSERT_TRUE(longer.ok);
    EXPECT_EQ(longer.file.loadedPoints, 10);
    ASSERT_EQ(longer.file.datMessages.size(), 1);
    EXPECT_EQ(longer.file.datMessages[0].text,
              "DAT file length great than the sampling-points number in config file(frm=10)!");
    EXPECT_TRUE(longer.file.scaleGroups.empty()); // left to the caller's closing step

    dir.writeBytes("r.dat", Binary(Ramp(7, -100000, 1000)));
    Recording shorter(cfg);
    ASSERT_TRUE(shorter.ok);
    EXPECT_TRUE(shorter.file.datMessages.isEmpty());
    EXPECT_EQ(shorter.file.loadedPoints, 7);
    ASSERT_EQ(shorter.file.segments.size(), 1u);
    EXPECT_EQ(shorter.file.segments[0].end, 7);

    dir.writeBytes("r.dat", Binary(Ramp(4, -100000, 1000)));
    Recording tooShort(cfg);
    EXPECT_FALSE(tooShort.ok);
    EXPECT_EQ(tooShort.file.loadedPoints, 4);
    EXPECT_EQ(tooShort.file.analogMaps[0]->Value(3), 3.0f); // the stores still hold them
}

TEST_F(DatLoad, TimeStampsCountFromTheTriggerWhicheverWayTheRecorderCounted)
{
    const std::string cfg = dir.write("r.cfg", RecordingConfig({kPlainChannel}, 1, {"1000,6"}));
    // From the start of the recording: shifted by start minus trigger (100 ms).
    dir.writeBytes("r.dat", Binary(Ramp(6, 0, 1000)));
    Recording fromStart(cfg);
    EXPECT_EQ(Times(fromStart.file), (std::vector<int64_t>{-100000, -99000, -98000, -97000, -96000, -95000}));
    EXPECT_EQ(fromStart.file.triggerIndex, -1);

    // Already relative to the trigger: taken as they stand.
    dir.writeBytes("r.dat", Binary(Ramp(6, -2000, 1000)));
    Recording fromTrigger(cfg);
    EXPECT_EQ(Times(fromTrigger.file), (std::vector<int64_t>{-2000, -1000, 0, 1000, 2000, 3000}));
    EXPECT_EQ(fromTrigger.file.triggerIndex, 2);

    // All stamps equal: unusable, the times follow the rates from start minus trigger.
    const std::string twoRates = dir.write("q.cfg", RecordingConfig({kPlainChannel}, 1, {"1000,3", "500,6"}));
    dir.writeBytes("q.dat", Binary(Ramp(6, 0, 0)));
    Recording fromRates(twoRates);
    EXPECT_EQ(Times(fromRates.file), (std::vector<int64_t>{-100000, -99000, -98000, -97000, -95000, -93000}));

    // The multiplier scales the stamps, rounded half away from zero.
    const std::string scaled =
        dir.write("m.cfg", RecordingConfig({kPlainChannel}, 1, {"1000,6"}, "BINARY", "0.5"));
    dir.writeBytes("m.dat", Binary(Ramp(6, -3, 1)));
    Recording halves(scaled);
    EXPECT_EQ(Times(halves.file), (std::vector<int64_t>{-2, -1, -1, 0, 1, 1}));
}

TEST_F(DatLoad, StatusChangesPulsesAndColours)
{
    const std::string cfg = dir.write("r.cfg", RecordingConfig({kPlainChannel}, 3, {"1000,10"}));
    std::vector<Record> records = Ramp(10, -5000, 1000);
    // D1 rises at 3 and stays; D2 has a one-sample pulse at 6; D3 never changes.
    for (int n = 0; n < 10; ++n)
        records[size_t(n)].status = static_cast<uint16_t>((n >= 3 ? 1 : 0) | (n == 6 ? 2 : 0));
    dir.writeBytes("r.dat", Binary(records));
    Recording r(cfg);
    ASSERT_TRUE(r.ok);
    const CChnMapStatus &rise = *r.file.statusMaps[0];
    const CChnMapStatus &pulse = *r.file.statusMaps[1];
    const CChnMapStatus &still = *r.file.statusMaps[2];
    ASSERT_EQ(rise.changes.size(), 1u);
    EXPECT_EQ(rise.changes[0].sample, 3);
    EXPECT_EQ(rise.changes[0].value, 1);
    EXPECT_EQ(rise.colour, CChnMapStatus::kShiftColour);
    // The pulse is removed from the bits and from the list, and the channel no longer shifts.
    EXPECT_TRUE(pulse.changes.empty());
    EXPECT_EQ(pulse.Bit(6), 0);
    EXPECT_EQ(pulse.flags & CChnMapBase::FlagShifts, 0u);
    EXPECT_EQ(still.flags & CChnMapBase::FlagShifts, 0u);
    EXPECT_EQ(still.colour, CChnMapStatus::kDefaultColour);
    // Reads outside the store clamp to its ends.
    EXPECT_EQ(rise.Bit(-5), 0);
    EXPECT_EQ(rise.Bit(500), 1);
}

TEST_F(DatLoad, AsciiFormSkipsShortLinesAndCanBeCancelled)
{
    const std::string cfg = dir.write("r.cfg", RecordingConfig({kPlainChannel}, 1, {"1000,8"}, "ASCII"));
    dir.write("r.dat", {"1,-2000,10,0", "", "// a comment line", "2,-1000,+0011,1", "3,0", "3,0,12,1",
                        "4,1000,-13,0", "5,2000,14,0", "6,3000,15,0", "7,4000,16,1", "8,5000,17,0"});
    Recording r(cfg);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.file.loadedPoints, 8);
    EXPECT_EQ(r.file.analogMaps[0]->Value(1), 11.0f);
    EXPECT_EQ(r.file.analogMaps[0]->Value(3), -13.0f);
    EXPECT_EQ(r.file.statusMaps[0]->Bit(1), 1);
    EXPECT_EQ(r.file.triggerIndex, 2);

    // Cancelled at the first poll after two samples: the samples so far are kept.
    struct Poll
    {
        static int fn(void *, int code, int, int)
        {
            if (code == 8)
                return 3;
            return code == 0 ? -1 : 0;
        }
    };
    CCmtd99File cancelled;
    ASSERT_TRUE(cancelled.LoadFile(cfg.c_str()));
    EXPECT_FALSE(cancelled.LoadDat(cfg.c_str(), Poll::fn, nullptr));
    EXPECT_EQ(cancelled.loadedPoints, 2);
    ASSERT_FALSE(cancelled.datMessages.isEmpty());
    EXPECT_EQ(cancelled.datMessages.back().text, "Cancel this processing by user!");
}

TEST_F(DatLoad, FindsTheFormAndThePartsOfASplitFile)
{
    // A type line that lies: a first int32 of 1 (the first sample number) means binary.
    const std::string cfg = dir.write("r.cfg", RecordingConfig({kPlainChannel}, 1, {"1000,6"}, "xyz"));
    const std::vector<Record> records = Ramp(6, -1000, 1000);
    dir.writeBytes("r.d00", Binary({records.begin(), records.begin() + 4}));
    std::vector<Record> tail(records.begin() + 4, records.end());
    std::ofstream part(dir.path("r.d01"), std::ios::binary);
    int32_t number = 5;
    for (const Record &rec : tail) {
        part.write(reinterpret_cast<const char *>(&number), 4);
        part.write(reinterpret_cast<const char *>(&rec.stamp), 4);
        part.write(reinterpret_cast<const char *>(rec.analog.data()), 2);
        part.write(reinterpret_cast<const char *>(&rec.status), 2);
        ++number;
    }
    part.close();
    Recording r(cfg);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.file.loadedPoints, 6);
    EXPECT_EQ(r.file.analogMaps[0]->Value(5), 5.0f);
    EXPECT_TRUE(std::ifstream(dir.path("r.dat")).good()); // the joined file stays beside its parts

    const std::string none = dir.write("n.cfg", RecordingConfig({kPlainChannel}, 1, {"1000,6"}));
    Recording missing(none);
    EXPECT_FALSE(missing.ok);
    EXPECT_EQ(missing.file.datMessages.back().text, "(.dat) file not exist!");
}

TEST_F(DatLoad, WritingBackRoundTripsWithinTheQuantisation)
{
    const std::string cfg = dir.write("r.cfg", RecordingConfig({"1,UA,,,V,0.01,0,0,-32767,32767,1,1,S",
                                                                "2,IA,,,A,0.001,0.5,0,-32767,32767,1,1,S"},
                                                               2, {"1000,6"}, "ASCII"));
    dir.write("r.dat", {"1,-2000,100,-200,0,1", "2,-1000,-32000,32000,1,1", "3,0,5,7,1,0", "4,1000,0,0,0,0",
                        "5,2000,1,-1,0,1", "6,3000,2,2,1,1"});
    Recording ascii(cfg);
    ASSERT_TRUE(ascii.ok);
    const std::string binaryOut = dir.path("b.cfg");
    ascii.file.fileDesc.fileType = "BINARY";
    ASSERT_TRUE(ascii.file.SaveFile(binaryOut.c_str()));
    Recording binary(binaryOut);
    ASSERT_TRUE(binary.ok);
    binary.file.fileDesc.fileType = "ASCII";
    const std::string asciiOut = dir.path("a.cfg");
    ASSERT_TRUE(binary.file.SaveFile(asciiOut.c_str()));
    Recording back(asciiOut);
    ASSERT_TRUE(back.ok);
    for (int c = 0; c < 2; ++c) {
        for (int n = 0; n < 6; ++n) {
            EXPECT_EQ(back.file.analogMaps[size_t(c)]->Value(n), ascii.file.analogMaps[size_t(c)]->Value(n));
            EXPECT_EQ(back.file.statusMaps[size_t(c)]->Bit(n), ascii.file.statusMaps[size_t(c)]->Bit(n));
        }
    }
    EXPECT_EQ(Times(back.file), Times(ascii.file));
    EXPECT_EQ(dir.read("a.dat").substr(0, 20), "1,-2000,100,-200,0,1");

    // A stored value carries the unit prefix inside it, so a kV channel comes out of the file
    // scaled by 1000, and the multiplier is widened until its extreme fits 16 bits.
    const std::string kilo = dir.write(
        "k.cfg", RecordingConfig({"1,UA,,,kV,0.01,0,0,-32767,32767,1,1,S"}, 0, {"1000,5"}, "ASCII"));
    dir.write("k.dat", {"1,0,100", "2,1,-100", "3,2,0", "4,3,50", "5,4,1"});
    Recording k(kilo);
    ASSERT_TRUE(k.ok);
    ASSERT_TRUE(k.file.SaveDat(dir.path("k2.dat").c_str()));
    EXPECT_FLOAT_EQ(k.file.analogChannels[0]->a, 0.01f * (1000.0f / 0.01f / 32766.0f));
    EXPECT_EQ(dir.read("k2.dat").substr(0, 16), "1,-100000,32766\n");
}

TEST(ChannelVocabulary, ClassesPhasesAndUnitsFromTheRecords)
{
    struct Case
    {
        const char *name, *ph, *uu, *typeCode;
        int chnClass, phase;
        char prefix;
        const char *unit;
    };
    const Case cases[] = {
        {"UA1", "", "kV", nullptr, ClassACV, PhaseA, 'k', "V"},
        {"I dc", "", "mA", nullptr, ClassDCC, PhaseUnknown, 'm', "A"},
        {"P", "", "MW", nullptr, ClassPower, PhaseUnknown, 'M', "W"},
        {"len", "", "m", nullptr, ClassOther, PhaseUnknown, 0, "m"},
        {"HF1", "", "V", "HF", ClassHighFreq, PhaseUnknown, 0, "V"},
        {"UA", "L", "V", nullptr, ClassACV, PhaseLine, 0, "V"},
        {"UA", "x", "V", nullptr, ClassACV, PhaseUnknown, 0, "V"},
        {"UBC", "", "V", nullptr, ClassACV, PhaseLine, 0, "V"},
        {"3I0", "", "A", nullptr, ClassACC, PhaseNeutral, 0, "A"},
        {"LINE A", "", "A", nullptr, ClassACC, PhaseNeutral, 0, "A"}, // "IN" inside the name
        {"f", "", "Hz", nullptr, ClassFreq, PhaseUnknown, 0, "Hz"},
    };
    for (const Case &c : cases) {
        CmtdChn_Analog record;
        record.Reset(1);
        record.ch_id = c.name;
        record.uu = c.uu;
        if (*c.ph) {
            record.ph = c.ph;
            record.flags |= CmtdChn_Analog::PhaseGiven;
        }
        if (c.typeCode) {
            record.typeCode = c.typeCode;
            record.flags |= CmtdChn_Analog::TypeCodeGiven;
        }
        const CChnMapAnalog map(&record);
        EXPECT_EQ(map.Class(), c.chnClass) << c.name << " " << c.uu;
        EXPECT_EQ(map.Phase(), c.phase) << c.name << " " << c.ph;
        EXPECT_EQ(map.unit.prefix, c.prefix) << c.uu;
        EXPECT_STREQ(map.unit.text, c.unit);
    }
    EXPECT_EQ(StatusKindFromCode("jump_abc"), 4);
    EXPECT_EQ(StatusKindFromCode("nothing"), 0);
    EXPECT_EQ(StatusClassFromCode("BREAKER_POS"), 2);
    EXPECT_FLOAT_EQ(UnitFactor("V", "kV"), 0.001f);
}

TEST(ChannelVocabulary, RatiosNamesAndAliases)
{
    CCmtd99File file;
    auto record = std::make_unique<CmtdChn_Analog>();
    record->Reset(1);
    record->ch_id = "U\"A\"";
    record->uu = "V";
    record->primary = 220000.0f;
    record->secondary = 100.0f;
    record->ps = 'P';
    record->flags |= CmtdChn_Analog::IdGiven | CmtdChn_Analog::PrimaryGiven | CmtdChn_Analog::SecondaryGiven |
                     CmtdChn_Analog::PsGiven;
    record->alias = "Bus voltage";
    file.analogChannels.push_back(std::move(record));
    file.firstFreeChannelIndex = 2;
    file.analogMaps.push_back(std::make_unique<CChnMapAnalog>(file.analogChannels[0].get()));
    const CChnMapAnalog &map = *file.analogMaps[0];
    EXPECT_FLOAT_EQ(map.TransformRatio(), 2200.0f);
    EXPECT_FLOAT_EQ(map.PrimaryFactor("kV"), 220.0f);
    EXPECT_FLOAT_EQ(map.SecondaryFactor(), 100.0f);
    // The store makes names safe for expressions; the alias is what the engineer sees.
    EXPECT_EQ(file.analogChannels[0]->ch_id, "U_A_");
    EXPECT_STREQ(map.Name(), "Bus voltage");
    EXPECT_EQ(file.FindMapByName("bus VOLTAGE"), &map);
    EXPECT_EQ(file.FindMapByName("u_a_"), &map);
    // Ratings, where all four are given, go before the ratio of the channel line.
    CmtdChn_Analog &rated = *file.analogChannels[0];
    rated.primaryRating = 110.0f;
    rated.primaryUnit = "kV";
    rated.secondaryRating = 100.0f;
    rated.secondaryUnit = "V";
    rated.flags |= CmtdChn_Analog::PrimaryRatingGiven | CmtdChn_Analog::PrimaryUnitGiven |
                   CmtdChn_Analog::SecondaryRatingGiven | CmtdChn_Analog::SecondaryUnitGiven;
    EXPECT_FLOAT_EQ(map.TransformRatio(), 1100.0f);
}
