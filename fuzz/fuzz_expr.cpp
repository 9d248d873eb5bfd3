// The expression language on any script text: compiled against a small recording of two rate
// segments, evaluated even where the compile reported faults (the form would refuse to run; the
// evaluator must still hold), and its results taken into the recording. Nothing may crash,
// hang or grow without bound, however deep the nesting.
#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"
#include "expanamulti.h"
#include "expfunctions.h"

#include <QString>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace {

// 80 samples at 1 kHz, then 40 at 500 Hz, with their times; three voltages, a current and a
// channel without unit.
void buildRecording(CCmtd99File &file)
{
    SampleSegment fast;
    fast.index = 1;
    fast.rate = 1000.0f;
    fast.end = 80;
    SampleSegment slow = fast;
    slow.index = 2;
    slow.rate = 500.0f;
    slow.start = 80;
    slow.end = 120;
    file.segments = {fast, slow};
    file.pointCount = file.loadedPoints = 120;
    file.sampleTimes = static_cast<int64_t *>(std::malloc(sizeof(int64_t) * 120));
    for (int i = 0; i < 120; ++i)
        file.sampleTimes[i] = i < 80 ? i * 1000 : 80000 + (i - 80) * 2000;
    const struct
    {
        const char *name;
        const char *unit;
        double amplitude;
        double degrees;
    } channels[] = {{"UA", "V", 100.0, 0.0},
                    {"UB", "V", 100.0, -120.0},
                    {"UC", "V", 100.0, 120.0},
                    {"IA", "A", 5.0, -30.0},
                    {"X", "", 1.0, 0.0}};
    for (const auto &c : channels) {
        auto record = std::make_unique<CmtdChn_Analog>();
        record->Reset(int(file.analogChannels.size()) + 1);
        record->ch_id = c.name;
        record->uu = c.unit;
        file.analogChannels.push_back(std::move(record));
        auto map = std::make_unique<CChnMapAnalog>(file.analogChannels.back().get());
        map->allocate(120);
        for (int i = 0; i < 120; ++i) {
            const double t = double(file.sampleTimes[i]) * 1e-6;
            map->Values()[i] = float(c.amplitude * std::sin(2 * M_PI * 50.0 * t + c.degrees * M_PI / 180));
        }
        file.analogMaps.push_back(std::move(map));
    }
    file.firstFreeChannelIndex = file.firstFreeChannelIndex2 = 6;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const bool filled = (FillExpFunctionTable(), true);
    (void)filled;
    CCmtd99File file;
    buildRecording(file);
    CExpAnaMulti program;
    program.Compile(file, QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size)));
    program.Evaluate();
    program.TakeResults();
    // A second run over the channels the first one left: names taken again are replaced.
    program.Compile(file, QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size)));
    program.Evaluate();
    program.TakeResults();
    return 0;
}
