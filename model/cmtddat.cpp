// Reading and writing the sample file of a recording: binary and ASCII forms, the numbered
// parts of a split file, the conversion of the file's time stamps to microseconds from the
// trigger, and the status change lists.

#include "cmtd99file.h"
#include "diskfile.h"
#include "linereader.h"
#include "safewrite.h"
#include "virtualchannel.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

constexpr int kMaxBlock = 4 << 20;    // largest read of the binary loader
constexpr int kFirstBlock = 64 << 10; // first read: the first waves need only a few records
constexpr int kCopyBuffer = 2 << 20;  // piece size when joining numbered parts
constexpr int kSaveRecords = 1024;    // records per write of the binary writer
constexpr int kAsciiLine = 128 << 10;
constexpr int kAsciiBlock = 1 << 20; // lines gathered per write of the ASCII writer
constexpr int kRun = 256;            // records decoded together, small enough for the cache

inline int32_t readInt32(const unsigned char *p)
{
    return static_cast<int32_t>(static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
                                (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24));
}

inline int16_t readInt16(const unsigned char *p)
{
    return static_cast<int16_t>(static_cast<uint16_t>(p[0] | (p[1] << 8)));
}

inline uint16_t readUInt16(const unsigned char *p)
{
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

inline void putInt32(unsigned char *p, int32_t value)
{
    const auto v = static_cast<uint32_t>(value);
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
    p[2] = static_cast<unsigned char>(v >> 16);
    p[3] = static_cast<unsigned char>(v >> 24);
}

inline void putInt16(unsigned char *p, int value)
{
    const auto v = static_cast<uint16_t>(value);
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
}

// A time in microseconds from a double, held where later sums of two of them cannot overflow
// (2^60 µs is some 36,000 years; no recording gets near it, only a broken multiplier or rate).
int64_t heldMicroseconds(double value)
{
    constexpr double kLimit = double(int64_t(1) << 60);
    if (!(value > -kLimit))
        return value != value ? 0 : -(int64_t(1) << 60);
    if (!(value < kLimit))
        return int64_t(1) << 60;
    return static_cast<int64_t>(value);
}

// A scaled sample as a 32-bit float: beyond the float's range it is an infinity of its sign
// rather than an undefined conversion.
inline float heldFloat(double value)
{
    if (std::fabs(value) <= double(FLT_MAX))
        return static_cast<float>(value);
    return value > 0.0 ? HUGE_VALF : (value < 0.0 ? -HUGE_VALF : std::numeric_limits<float>::quiet_NaN());
}

bool fileExists(const QByteArray &path)
{
    return QFileInfo(QString::fromLocal8Bit(path)).isFile();
}

// Raw file value of a stored value: rounded half away from zero, held within what the
// destination can take.
int rawValue(float value, float a, float b)
{
    double raw = (double(value) - double(b)) / double(a);
    raw += raw < 0.0 ? -0.5 : 0.5;
    if (!(raw > double(INT_MIN)) || !(raw < double(INT_MAX)))
        return raw > 0.0 ? INT_MAX : INT_MIN;
    return static_cast<int>(raw);
}

} // namespace

// The state of one sample load: the stores to fill, and the conversion of the file's time
// stamps. The first five stamps decide how the recorder counted time; they are kept raw until
// then and converted at once.
class CDatLoader
{
public:
    CDatLoader(CCmtd99File &file, ProgressFn fn, void *context) : m_file(file), m_fn(fn), m_context(context)
    {}

    // `capacity`: the samples that the stores hold, no more than the data file can.
    bool prepare(int capacity);
    // `width` 2 for 16-bit values, 4 for 32-bit integers or (`floats`) IEEE floats.
    int loadBinary(CDiskFile &dat, int width = 2, bool floats = false);
    int loadAscii(CDiskFile &dat);

private:
    enum Mode
    {
        ModeUndecided = 0,
        ModeStamps = 1,
        ModeRates = 2,
        ModeShift = 3,
        ModeDerived = 4
    };

    int startProgress();
    bool cancelled();
    void reportAt(int n);
    bool tooLong();
    bool full(int n) const { return n >= m_capacity; }
    void takeTime(int n, int32_t stamp);
    void decideMode();
    void convert(int n);
    void takeStatus(int channel, int n, int bit);
    void markShifting(int channel);
    void takeAnalogRun(int c, const unsigned char *first, int stride, int n0, int count, int width,
                       bool floats);
    void takeShortRun(int c, const unsigned char *first, int stride, int n0, int count);
    enum BlockEnd
    {
        BlockDone,
        StoresFull,  // the file grew while it was read: the stores hold what it had
        FileTooLong, // more records than the description promised
    };
    BlockEnd takeBlock(const unsigned char *block, int records);
    void takeRun(const unsigned char *run, int n0, int count);
    void takeStatusWords(const unsigned char *status, int words, int statuses, int n, uint16_t *lastWords);
    void takeAsciiValue(int c, int n, const char *field);
    void storeExtremes();
    void finish();

    int64_t scaled(int64_t stamp) const
    {
        const double value = double(stamp) * double(m_file.fileDesc.timeMult);
        return heldMicroseconds(std::round(value));
    }

    CCmtd99File &m_file;
    ProgressFn m_fn;
    void *m_context;
    int m_step = INT_MAX;
    int64_t m_nextReport = INT_MAX; // the next sample before which the binary loader reports
    int m_capacity = 0;
    // A 2013 recording marks a missing value (the most negative integer, a NaN float, an
    // empty ASCII field); those samples are gaps, not readings.
    bool m_gaps = false;

    // Per channel, prepared before the loop so that nothing is looked up per sample.
    std::vector<float *> m_values;
    std::vector<double> m_gain;
    std::vector<double> m_offset;
    std::vector<float> m_max; // running extremes, stored back into the maps at the end
    std::vector<float> m_min;
    // Whether every 16-bit value of the channel scales to a finite float other than -0, so that
    // its runs need neither the float's range test nor the sign of zero in the extremes.
    std::vector<uint8_t> m_plain;
    std::vector<uint32_t *> m_bits;
    std::vector<uint8_t> m_lastBit;

    // The record of a binary file: 16- or 32-bit values, integers or floats.
    int m_width = 2;
    bool m_floats = false;
    int m_recordSize = 0;
    int m_words = 0;
    std::vector<uint16_t> m_lastWords;

    Mode m_mode = ModeUndecided;
    bool m_shift = false;
    int64_t m_delay = 0;
    // Rates mode: the current segment and where its time base lies.
    size_t m_segment = 0;
    int64_t m_base = 0;
    int m_segStart = 0;
    // Derived mode: the rate seen so far and the segments found.
    double m_rate = 0.0;
    std::vector<SampleSegment> m_derived;
};

bool CDatLoader::prepare(int capacity)
{
    const int count = m_file.pointCount;
    m_capacity = capacity;
    m_gaps = m_file.fileDesc.is2013();
    for (const auto &map : m_file.analogMaps) {
        m_values.push_back(map->Values());
        m_gain.push_back(map->gain);
        m_offset.push_back(map->offset);
        m_max.push_back(map->maxValue);
        m_min.push_back(map->minValue);
        const double reach = std::fabs(map->gain) * 32768.0 + std::fabs(map->offset);
        const bool negativeZero = map->offset == 0.0 && std::signbit(map->offset);
        m_plain.push_back(reach < double(FLT_MAX) * 0.5 && !negativeZero);
    }
    for (const auto &map : m_file.statusMaps)
        m_bits.push_back(map->Words());
    m_lastBit.assign(m_file.statusMaps.size(), 0);
    m_delay = m_file.fileDesc.triggerTime.ToMicroseconds() - m_file.fileDesc.startTime.ToMicroseconds();
    return count >= 0;
}

int CDatLoader::startProgress()
{
    m_step = m_fn ? m_fn(m_context, 8, m_capacity, 0) : INT_MAX;
    if (m_step < 1)
        m_step = 1; // a step of 0 would divide by zero; the caller must give a positive one
    m_nextReport = int64_t(m_step) - 1;
    return m_step;
}

bool CDatLoader::cancelled()
{
    if (m_fn && m_fn(m_context, 0, 0, 0) < 0) {
        m_file.AddDatMessage(CmtdMessage("Cancel this processing by user!"));
        return true;
    }
    return false;
}

void CDatLoader::reportAt(int n)
{
    // Every `step` samples, before sample n with n % step == step - 1. The binary loader calls
    // this where a run of records starts, and its runs end at these samples, so that all the
    // samples before n are in the stores when the frame draws them.
    if (n != m_nextReport)
        return;
    m_nextReport += m_step;
    if (m_fn)
        m_fn(m_context, 10, m_capacity, n);
}

bool CDatLoader::tooLong()
{
    if (m_file.loadedPoints < m_file.pointCount)
        return false;
    m_file.AddDatMessage(CmtdMessage(
        "DAT file length great than the sampling-points number in config file(frm=%d)!", m_file.pointCount));
    return true;
}

void CDatLoader::takeTime(int n, int32_t stamp)
{
    m_file.sampleTimes[n] = stamp;
    if (n < 4)
        return;
    if (n == 4) {
        decideMode();
        for (int i = 0; i <= 4; ++i)
            convert(i);
        return;
    }
    convert(n);
}

void CDatLoader::decideMode()
{
    const int64_t *raw = m_file.sampleTimes;
    bool rateless = false;
    for (const SampleSegment &segment : m_file.segments) {
        if (!(segment.rate > 0.0f))
            rateless = true;
    }
    if (rateless) {
        // The recorder relies on its stamps; the rates follow from them.
        m_mode = ModeDerived;
        m_shift = raw[0] >= 0;
        return;
    }
    if (raw[0] == raw[1] && raw[0] == raw[2] && raw[0] == raw[3] && raw[0] == raw[4]) {
        m_mode = ModeRates; // the stamps are unusable
        m_base = -m_delay;
        return;
    }
    const int64_t first = scaled(raw[0]);
    // Counting from the start of the recording rather than from the trigger.
    m_mode = first >= 0 && first != -m_delay ? ModeShift : ModeStamps;
}

void CDatLoader::convert(int n)
{
    int64_t *times = m_file.sampleTimes;
    switch (m_mode) {
    case ModeStamps:
        times[n] = scaled(times[n]);
        break;
    case ModeShift:
        times[n] = scaled(times[n]) - m_delay;
        break;
    case ModeRates: {
        const std::vector<SampleSegment> &segments = m_file.segments;
        // A segment that ends at or before the first sample (an end of 0 in a broken
        // description) has no sample before it to count on from.
        if (n > 0 && m_segment < segments.size() && n >= segments[m_segment].end &&
            m_segment + 1 < segments.size()) {
            m_base = times[n - 1] + heldMicroseconds(1000000.0 / double(segments[m_segment].rate) + 0.5);
            m_segStart = n;
            ++m_segment;
        }
        const double period = 1000000.0 / double(segments[m_segment].rate);
        // Both parts are held to 2^60, so their sum cannot overflow; it is held again.
        const int64_t limit = int64_t(1) << 60;
        times[n] =
            std::clamp<int64_t>(m_base + heldMicroseconds(period * (n - m_segStart) + 0.5), -limit, limit);
        break;
    }
    case ModeDerived: {
        times[n] = scaled(times[n]) - (m_shift ? m_delay : 0);
        if (n >= 1) {
            const int64_t dt = times[n] - times[n - 1];
            if (dt > 0) {
                const double r = 1000000.0 / double(dt);
                if (m_rate == 0.0) {
                    m_rate = r;
                } else if (std::fabs(r - m_rate) / m_rate > 0.05) {
                    // Jitter within 5 % is one rate; a larger jump starts a segment.
                    SampleSegment segment;
                    segment.index = static_cast<int16_t>(m_derived.size() + 1);
                    segment.rate = static_cast<float>(m_rate);
                    segment.end = n;
                    m_derived.push_back(segment);
                    m_rate = r;
                }
            }
        }
        break;
    }
    case ModeUndecided:
        break;
    }
    if (m_file.triggerIndex < 0 && times[n] >= 0)
        m_file.triggerIndex = n;
}

void CDatLoader::markShifting(int channel)
{
    CChnMapStatus &map = *m_file.statusMaps[channel];
    if (!(map.flags & CChnMapBase::FlagShifts)) {
        map.flags |= CChnMapBase::FlagShifts;
        map.colour = CChnMapStatus::kShiftColour;
    }
}

inline void CDatLoader::takeStatus(int channel, int n, int bit)
{
    if (bit)
        m_bits[channel][n >> 5] |= 1u << (n & 31);
    if (n > 0 && bit != m_lastBit[channel])
        markShifting(channel);
    m_lastBit[channel] = static_cast<uint8_t>(bit);
}

void CDatLoader::takeAnalogRun(int c, const unsigned char *first, int stride, int n0, int count, int width,
                               bool floats)
{
    const double gain = m_gain[c];
    const double offset = m_offset[c];
    float high = m_max[c];
    float low = m_min[c];
    float *out = m_values[c] + n0;
    constexpr float kGap = std::numeric_limits<float>::quiet_NaN();
    if (width == 2 && m_plain[c]) {
        takeShortRun(c, first, stride, n0, count);
        return;
    }
    auto take = [&](int r, double raw) {
        const float v = heldFloat(raw * gain + offset);
        out[r] = v;
        // Values beyond the float's range stay in the store but not in the extremes.
        if (!std::isfinite(v))
            return;
        if (v > high)
            high = v;
        else if (v < low)
            low = v;
    };
    // One loop per value type, so that the type is not asked per sample.
    if (width == 2) {
        for (int r = 0; r < count; ++r, first += stride) {
            const int16_t raw = readInt16(first);
            if (m_gaps && raw == INT16_MIN)
                out[r] = kGap;
            else
                take(r, raw);
        }
    } else if (!floats) {
        for (int r = 0; r < count; ++r, first += stride) {
            const int32_t raw = readInt32(first);
            if (m_gaps && raw == INT32_MIN)
                out[r] = kGap;
            else
                take(r, raw);
        }
    } else {
        for (int r = 0; r < count; ++r, first += stride) {
            const uint32_t bits = static_cast<uint32_t>(readInt32(first));
            float value;
            std::memcpy(&value, &bits, sizeof value);
            // FLOAT32 exists in 2013 recordings only, where a NaN marks a missing value.
            if (std::isnan(value))
                out[r] = kGap;
            else
                take(r, value);
        }
    }
    m_max[c] = high;
    m_min[c] = low;
}

namespace {

// The largest and least of `count` values, NaN (a gap) taken by neither; four of each are kept
// apart so that the comparisons of neighbouring samples do not wait on each other.
void runExtremes(const float *values, int count, float &high, float &low)
{
    float h0 = -FLT_MAX, h1 = -FLT_MAX, h2 = -FLT_MAX, h3 = -FLT_MAX;
    float l0 = FLT_MAX, l1 = FLT_MAX, l2 = FLT_MAX, l3 = FLT_MAX;
    int r = 0;
    for (; r + 4 <= count; r += 4) {
        const float v0 = values[r], v1 = values[r + 1], v2 = values[r + 2], v3 = values[r + 3];
        h0 = v0 > h0 ? v0 : h0;
        h1 = v1 > h1 ? v1 : h1;
        h2 = v2 > h2 ? v2 : h2;
        h3 = v3 > h3 ? v3 : h3;
        l0 = v0 < l0 ? v0 : l0;
        l1 = v1 < l1 ? v1 : l1;
        l2 = v2 < l2 ? v2 : l2;
        l3 = v3 < l3 ? v3 : l3;
    }
    for (; r < count; ++r) {
        h0 = values[r] > h0 ? values[r] : h0;
        l0 = values[r] < l0 ? values[r] : l0;
    }
    h0 = h1 > h0 ? h1 : h0;
    h2 = h3 > h2 ? h3 : h2;
    high = h2 > h0 ? h2 : h0;
    l0 = l1 < l0 ? l1 : l0;
    l2 = l3 < l2 ? l3 : l2;
    low = l2 < l0 ? l2 : l0;
}

} // namespace

// A run of 16-bit values that scale within the float's range: first all the values, then their
// extremes. The minimum follows only the samples that did not raise the maximum; over a run
// that raises no maximum these are all of them, and the least of the run is found without
// a branch per sample. A run that does raise one is walked sample by sample.
void CDatLoader::takeShortRun(int c, const unsigned char *first, int stride, int n0, int count)
{
    const double gain = m_gain[c];
    const double offset = m_offset[c];
    float *out = m_values[c] + n0;
    const unsigned char *in = first;
    if (m_gaps) {
        for (int r = 0; r < count; ++r, in += stride) {
            const double raw = readInt16(in);
            out[r] = raw == INT16_MIN ? std::numeric_limits<float>::quiet_NaN()
                                      : static_cast<float>(raw * gain + offset);
        }
    } else {
        for (int r = 0; r < count; ++r, in += stride) {
            const double raw = readInt16(in);
            out[r] = static_cast<float>(raw * gain + offset);
        }
    }
    float runHigh;
    float runLow;
    runExtremes(out, count, runHigh, runLow);
    if (!(runHigh > m_max[c])) {
        if (runLow < m_min[c])
            m_min[c] = runLow;
        return;
    }
    float hi = m_max[c];
    float lo = m_min[c];
    for (int r = 0; r < count; ++r) {
        const float v = out[r];
        if (v > hi)
            hi = v;
        else if (v < lo)
            lo = v;
    }
    m_max[c] = hi;
    m_min[c] = lo;
}

void CDatLoader::takeStatusWords(const unsigned char *status, int words, int statuses, int n,
                                 uint16_t *lastWords)
{
    // Only the bits that are on are set, and only channels whose bit differs from the sample
    // before are looked at for the change flag.
    for (int w = 0; w < words; ++w) {
        const uint16_t word = readUInt16(status + w * 2);
        for (uint32_t on = word; on; on &= on - 1) {
            const int c = w * 16 + std::countr_zero(on);
            if (c < statuses)
                m_bits[c][n >> 5] |= 1u << (n & 31);
        }
        if (n > 0) {
            for (uint32_t changed = word ^ lastWords[w]; changed; changed &= changed - 1) {
                const int c = w * 16 + std::countr_zero(changed);
                if (c < statuses)
                    markShifting(c);
            }
        }
        lastWords[w] = word;
    }
}

void CDatLoader::takeAsciiValue(int c, int n, const char *field)
{
    constexpr int kAsciiMissing = 99999;
    if (m_gaps) {
        const char *p = field;
        while (*p == ' ' || *p == '\t' || *p == '\r')
            ++p;
        if (!*p) {
            m_values[c][n] = std::numeric_limits<float>::quiet_NaN(); // an empty field is a gap
            return;
        }
    }
    const int raw = std::atoi(field);
    if (m_gaps && raw == kAsciiMissing) {
        m_values[c][n] = std::numeric_limits<float>::quiet_NaN(); // the ASCII marker of a missing value
        return;
    }
    const float v = heldFloat(raw * m_gain[c] + m_offset[c]);
    m_values[c][n] = v;
    if (!std::isfinite(v))
        return;
    if (v > m_max[c])
        m_max[c] = v;
    else if (v < m_min[c])
        m_min[c] = v;
}

void CDatLoader::storeExtremes()
{
    for (size_t c = 0; c < m_max.size() && c < m_file.analogMaps.size(); ++c) {
        m_file.analogMaps[c]->maxValue = m_max[c];
        m_file.analogMaps[c]->minValue = m_min[c];
    }
}

void CDatLoader::finish()
{
    storeExtremes();
    if (m_file.loadedPoints < 1)
        return;
    if (m_mode == ModeDerived) {
        SampleSegment last;
        last.index = static_cast<int16_t>(m_derived.size() + 1);
        last.rate = static_cast<float>(m_rate);
        last.end = m_file.loadedPoints;
        m_derived.push_back(last);
        m_file.segments = m_derived;
    }
    m_file.BuildScaleGroups();
}

int CDatLoader::loadBinary(CDiskFile &dat, int width, bool floats)
{
    CCmtd99File &file = m_file;
    const int analogs = static_cast<int>(file.analogMaps.size());
    const int statuses = static_cast<int>(file.statusMaps.size());
    m_width = width;
    m_floats = floats;
    m_words = (statuses + 15) / 16;
    m_recordSize = 8 + analogs * width + m_words * 2;
    m_lastWords.assign(static_cast<size_t>(m_words), 0);
    const int recordSize = m_recordSize;

    int64_t blockSize = std::min<int64_t>(kMaxBlock, int64_t(std::max(m_capacity, 1)) * recordSize);
    std::unique_ptr<unsigned char[]> block;
    while (blockSize >= recordSize) {
        block.reset(new (std::nothrow) unsigned char[static_cast<size_t>(blockSize)]);
        if (block)
            break;
        blockSize /= 2; // under memory pressure a smaller block still does the job
    }
    if (!block) {
        file.AddDatMessage(CmtdMessage("Memory is not enough to load [DAT] file!"));
        return 0;
    }
    blockSize = blockSize / recordSize * recordSize;

    startProgress();
    // The first read is small so that the first report, and with it the first waves, come after
    // a few records; each next read is twice as large, up to the whole block.
    int64_t readSize = std::min<int64_t>(blockSize, std::max(kFirstBlock / recordSize, 1) * recordSize);
    for (;;) {
        if (cancelled())
            break;
        const int got = dat.ReadSome(block.get(), static_cast<int>(readSize));
        const int records = got > 0 ? got / recordSize : 0;
        const BlockEnd end = takeBlock(block.get(), records);
        if (end == FileTooLong) {
            tooLong();
            storeExtremes();
            return file.loadedPoints; // the closing step is left to the caller's job
        }
        if (end == StoresFull || (full(file.loadedPoints) && m_capacity < file.pointCount))
            break;
        if (got < readSize) {
            // Recorders pad the file (a DOS end-of-file byte, a half record); a 2013 recording
            // says so in its messages.
            const int rest = got > 0 ? got % recordSize : 0;
            if (rest > 0 && file.fileDesc.is2013())
                file.AddDatMessage(
                    CmtdMessage("%d bytes behind the last whole record of the data file are ignored", rest));
            break;
        }
        readSize = std::min(readSize * 2, blockSize);
    }
    finish();
    return file.loadedPoints;
}

// The block is decoded in runs of records small enough to stay in the cache. A run ends where a
// report is due, so the report follows whole samples.
CDatLoader::BlockEnd CDatLoader::takeBlock(const unsigned char *block, int records)
{
    CCmtd99File &file = m_file;
    for (int first = 0; first < records;) {
        const int n0 = file.loadedPoints;
        reportAt(n0);
        if (full(n0))
            return m_capacity < file.pointCount ? StoresFull : FileTooLong;
        const int64_t room = std::min<int64_t>(m_nextReport, m_capacity) - n0;
        const int count = static_cast<int>(std::min<int64_t>(std::min(kRun, records - first), room));
        takeRun(block + static_cast<size_t>(first) * m_recordSize, n0, count);
        file.loadedPoints = n0 + count;
        first += count;
    }
    return BlockDone;
}

// First the times and states record by record, then each analog channel over the whole run, so
// that every store is written in one sequential stretch.
void CDatLoader::takeRun(const unsigned char *run, int n0, int count)
{
    const int analogs = static_cast<int>(m_values.size());
    const int statuses = static_cast<int>(m_bits.size());
    const int statusOffset = 8 + analogs * m_width;
    for (int r = 0; r < count; ++r) {
        const unsigned char *record = run + static_cast<size_t>(r) * m_recordSize;
        takeTime(n0 + r, readInt32(record + 4));
        takeStatusWords(record + statusOffset, m_words, statuses, n0 + r, m_lastWords.data());
    }
    for (int c = 0; c < analogs; ++c)
        takeAnalogRun(c, run + 8 + m_width * c, m_recordSize, n0, count, m_width, m_floats);
}

int CDatLoader::loadAscii(CDiskFile &dat)
{
    CCmtd99File &file = m_file;
    const int analogs = static_cast<int>(file.analogMaps.size());
    const int statuses = static_cast<int>(file.statusMaps.size());
    const int total = file.fileDesc.totalChannels;
    const int needed = total + 2;
    const int lineSize = (total + 2) * 32;
    std::unique_ptr<char[]> line(new (std::nothrow) char[static_cast<size_t>(lineSize)]);
    std::unique_ptr<char *[]> fields(new (std::nothrow) char *[static_cast<size_t>(total + 6)]);
    if (!line || !fields) {
        file.AddDatMessage(CmtdMessage("Memory is not enough to load [DAT] file!"));
        return 0;
    }
    startProgress();
    int counter = 0;
    char *text = nullptr;
    for (;;) {
        const int n = file.loadedPoints;
        if (n % m_step == m_step - 1) {
            if (m_fn)
                m_fn(m_context, 10, m_capacity, n);
            if (cancelled())
                break;
        }
        const int length = ReadDataLine(dat, counter, line.get(), lineSize, text);
        if (length == 0)
            break;
        if (length < needed)
            continue;
        const int count = SplitFields(text, fields.get(), total + 6, ',');
        if (count < needed)
            continue;
        if (full(n)) {
            if (m_capacity < file.pointCount)
                break; // the file grew while it was read: the stores hold what it had
            tooLong();
            storeExtremes();
            return file.loadedPoints;
        }
        takeTime(n, std::atoi(fields[1]));
        for (int c = 0; c < analogs; ++c)
            takeAsciiValue(c, n, fields[2 + c]);
        for (int c = 0; c < statuses; ++c)
            takeStatus(c, n, std::atoi(fields[2 + analogs + c]) & 1);
        ++file.loadedPoints;
    }
    finish();
    return file.loadedPoints;
}

bool CCmtd99File::MergeDatParts(const QByteArray &base, const QByteArray &datPath)
{
    std::unique_ptr<char[]> buffer(new (std::nothrow) char[kCopyBuffer]);
    if (!buffer)
        return false;
    if (!fileExists(CmtdSiblingPath(base, ".d00")))
        return false;
    // The joined ".dat" stays beside its parts and is read by later loads: it appears whole
    // or not at all, never cut short by a full disk.
    CSafeWriteSet set;
    QIODevice *out = set.Begin(QString::fromLocal8Bit(datPath));
    if (!out)
        return false;
    for (int n = 0; n < 100; ++n) {
        char extension[8];
        std::snprintf(extension, sizeof extension, ".d%02d", n);
        const QByteArray part = CmtdSiblingPath(base, extension);
        if (!fileExists(part))
            return n > 0 && set.Commit();
        CDiskFile in;
        if (!in.Open(part.constData(), "rb"))
            return false;
        int64_t left = in.GetLength();
        if (left < 0)
            return false;
        while (left > 0) {
            const int piece = static_cast<int>(std::min<int64_t>(left, kCopyBuffer));
            if (!in.Read(buffer.get(), piece) || out->write(buffer.get(), piece) != piece)
                return false;
            left -= piece;
        }
    }
    return set.Commit();
}

std::unique_ptr<CDiskFile> CCmtd99File::OpenDataSource(const char *path)
{
    if (!cffPath.isEmpty()) {
        const CffSection &dat = cffLayout.dat;
        if (!dat.present) {
            AddDatMessage(CmtdMessage("The recording holds no data section"));
            return nullptr;
        }
        std::unique_ptr<CDiskSection> section(dat.encoding == "base64" ? new CBase64Section
                                                                       : new CDiskSection);
        if (!section->OpenSection(cffPath.constData(), dat.begin, dat.length())) {
            AddDatMessage(CmtdMessage("Failed to open (.DAT) file!"));
            return nullptr;
        }
        return section;
    }
    const QByteArray base = CmtdBasePath(path);
    QByteArray datPath = CmtdSiblingPath(base, ".dat");
    if (!fileExists(datPath)) {
        datPath = base + ".dat";
        if (!MergeDatParts(base, datPath)) {
            AddDatMessage(CmtdMessage("(.dat) file not exist!"));
            return nullptr;
        }
    }
    auto file = std::make_unique<CDiskFile>();
    bool notFile = false;
    if (!file->OpenRegular(datPath.constData(), &notFile)) {
        AddDatMessage(notFile ? CmtdMessage("%s is not a regular file", datPath.constData())
                              : CmtdMessage("Failed to open (.DAT) file!"));
        return nullptr;
    }
    return file;
}

bool CCmtd99File::LoadDat(const char *path, ProgressFn fn, void *context)
{
    // Channels derived from the samples go with them; the data file has no column for them.
    RemoveAllVirtualChannels(*this);
    loadedPoints = 0;
    if (pointCount < 5) {
        AddDatMessage(CmtdMessage("Invalid [sampling-points number] int config file!"));
        return false;
    }
    std::unique_ptr<CDiskFile> source = OpenDataSource(path);
    if (!source)
        return false;

    bool binary = false;
    int width = 2;
    bool floats = false;
    if (qstricmp(fileDesc.fileType.constData(), "BINARY") == 0) {
        binary = true;
    } else if (fileDesc.is2013() && qstricmp(fileDesc.fileType.constData(), "BINARY32") == 0) {
        binary = true;
        width = 4;
    } else if (fileDesc.is2013() && qstricmp(fileDesc.fileType.constData(), "FLOAT32") == 0) {
        binary = true;
        width = 4;
        floats = true;
    } else if (qstricmp(fileDesc.fileType.constData(), "ASCII") != 0) {
        // The type line lies or is missing: a binary file starts with sample number 1. The
        // probe reads from a source of its own, so the loader starts at the beginning.
        std::unique_ptr<CDiskFile> probe = OpenDataSource(path);
        if (!probe)
            return false;
        unsigned char head[4] = {};
        binary = probe->Read(head, 4) && readInt32(head) == 1;
    }

    // The stores hold what the file can hold, never more than promised: a header that
    // promises two thousand million samples over a few hundred bytes costs those bytes.
    const int64_t bytes = std::max<int64_t>(source->GetLength(), 0);
    const int64_t analogs = static_cast<int64_t>(analogChannels.size());
    const int64_t statuses = static_cast<int64_t>(statusChannels.size());
    const int64_t recordSize = 8 + analogs * width + (statuses + 15) / 16 * 2;
    // An ASCII sample line has at least a character per field and its line end.
    const int64_t held = binary ? bytes / recordSize : bytes / (fileDesc.totalChannels + 2) + 1;
    const int capacity = static_cast<int>(std::min<int64_t>(held, pointCount));

    std::free(sampleTimes);
    sampleTimes = static_cast<int64_t *>(AllocateSamples(static_cast<size_t>(capacity), sizeof(int64_t)));
    if (!sampleTimes) {
        AddDatMessage(CmtdMessage("Memory is not enough to load [DAT] file!"));
        return false;
    }
    if (!BuildStores(capacity))
        return false;

    CDatLoader loader(*this, fn, context);
    loader.prepare(capacity);
    loadedPoints = binary ? loader.loadBinary(*source, width, floats) : loader.loadAscii(*source);

    if (loadedPoints >= 5) {
        // A file shorter than promised is no error: the segments end where the samples end.
        for (size_t i = 0; i < segments.size(); ++i) {
            if (segments[i].end > loadedPoints) {
                segments[i].end = loadedPoints;
                segments.resize(i + 1);
                break;
            }
        }
    }
    for (const auto &map : statusMaps)
        map->BuildChangeList(loadedPoints);
    return loadedPoints >= 5;
}

bool CCmtd99File::BuildStores(int capacity)
{
    analogMaps.clear();
    statusMaps.clear();
    for (const auto &channel : analogChannels) {
        auto map = std::unique_ptr<CChnMapAnalog>(new (std::nothrow) CChnMapAnalog(channel.get()));
        if (!map || !map->allocate(capacity)) {
            AddDatMessage(CmtdMessage("Memory is not enough to load [DAT] file!"));
            return false;
        }
        analogMaps.push_back(std::move(map));
    }
    for (const auto &channel : statusChannels) {
        auto map = std::unique_ptr<CChnMapStatus>(new (std::nothrow) CChnMapStatus(channel.get()));
        if (!map || !map->allocate(capacity)) {
            AddDatMessage(CmtdMessage("Memory is not enough to load [DAT] file!"));
            return false;
        }
        statusMaps.push_back(std::move(map));
    }
    LinkStoresToUnits();
    return true;
}

void CCmtd99File::BuildScaleGroups()
{
    scaleGroups.clear();
    for (const auto &map : analogMaps) {
        const float peak = std::max(std::fabs(map->maxValue), std::fabs(map->minValue));
        if (peak > map->absMax)
            map->absMax = peak;
        auto group = std::find_if(scaleGroups.begin(), scaleGroups.end(), [&](const ScaleGroup &g) {
            return g.chnClass == map->chnClass && g.unit.prefix == map->unit.prefix &&
                   qstricmp(g.unit.text, map->unit.text) == 0;
        });
        if (group == scaleGroups.end()) {
            scaleGroups.push_back(ScaleGroup{map.get(), map->unit, map->chnClass, peak});
        } else if (peak > group->peak) {
            group->store = map.get();
            group->peak = peak;
        }
    }
}

namespace {

// The multiplier rule of the writer: where the extreme value would not fit the raw values (16
// bits, or 32 for the 2013 integers), the channel's `a` is widened in place; the configuration
// is written afterwards and carries it.
void widenMultipliers(CCmtd99File &file, bool wide)
{
    const int analogs = file.FileAnalogStoreCount();
    for (int i = 0; i < analogs; ++i) {
        const CChnMapAnalog *map = file.analogMaps[size_t(i)].get();
        CmtdChn_Analog *c = map->config;
        const float peak = std::max(std::fabs(map->maxValue), std::fabs(map->minValue));
        const float r = (peak - c->b) / c->a / (wide ? 2147483000.0f : 32766.0f);
        if (r > 1.0f)
            c->a *= r;
    }
}

int32_t stampOf(const CCmtd99File &file, int n)
{
    const float timeMult = file.fileDesc.timeMult > 0.0f ? file.fileDesc.timeMult : 1.0f;
    const double stamp = double(file.sampleTimes ? file.sampleTimes[n] : 0) / double(timeMult);
    return static_cast<int32_t>(std::clamp(stamp, double(INT32_MIN), double(INT32_MAX)));
}

// One line per sample, "n,stamp,A1,...,D1,...", each line written as soon as it is built.
bool writeAsciiRecords(const CCmtd99File &file, QIODevice &out)
{
    std::unique_ptr<char[]> line(new (std::nothrow) char[kAsciiLine]);
    if (!line)
        return false;
    const int analogs = file.FileAnalogStoreCount();
    const int statuses = static_cast<int>(file.statusMaps.size());
    // Lines are gathered into blocks, so that the disk sees large writes.
    QByteArray block;
    block.reserve(kAsciiBlock + kAsciiLine);
    for (int n = 0; n < file.loadedPoints; ++n) {
        int used = std::snprintf(line.get(), kAsciiLine, "%d,%d", n + 1, stampOf(file, n));
        for (int c = 0; c < analogs && used < kAsciiLine - 16; ++c) {
            const CChnMapAnalog &map = *file.analogMaps[c];
            used += std::snprintf(line.get() + used, static_cast<size_t>(kAsciiLine - used), ",%d",
                                  rawValue(map.Value(n), map.config->a, map.config->b));
        }
        for (int c = 0; c < statuses && used < kAsciiLine - 16; ++c)
            used += std::snprintf(line.get() + used, static_cast<size_t>(kAsciiLine - used), ",%d",
                                  file.statusMaps[c]->Bit(n));
        line[used++] = '\n';
        block.append(line.get(), used);
        if (block.size() >= kAsciiBlock || n + 1 == file.loadedPoints) {
            if (out.write(block) != block.size())
                return false;
            block.clear();
        }
    }
    return true;
}

// The analog values of one binary record: 16-bit or 32-bit integers, or IEEE floats.
void putAnalogValues(const CCmtd99File &file, int n, unsigned char *first, int width, bool floats)
{
    const int analogs = file.FileAnalogStoreCount();
    for (int c = 0; c < analogs; ++c) {
        const CChnMapAnalog &map = *file.analogMaps[c];
        unsigned char *value = first + width * c;
        if (floats) {
            const auto raw =
                static_cast<float>((double(map.Value(n)) - double(map.config->b)) / double(map.config->a));
            uint32_t bits;
            std::memcpy(&bits, &raw, sizeof bits);
            putInt32(value, static_cast<int32_t>(bits));
            continue;
        }
        const int raw = rawValue(map.Value(n), map.config->a, map.config->b);
        if (width == 4)
            putInt32(value, raw);
        else
            putInt16(value, std::clamp(raw, -32768, 32767));
    }
}

// Records assembled 1024 at a time, status words zeroed before each block, one write per block.
bool writeBinaryRecords(const CCmtd99File &file, QIODevice &out, int width, bool floats)
{
    const int analogs = file.FileAnalogStoreCount();
    const int statuses = static_cast<int>(file.statusMaps.size());
    const int words = (statuses + 15) / 16;
    const int recordSize = 8 + analogs * width + words * 2;
    std::unique_ptr<unsigned char[]> block(
        new (std::nothrow) unsigned char[static_cast<size_t>(recordSize) * kSaveRecords]);
    if (!block)
        return false;
    for (int first = 0; first < file.loadedPoints; first += kSaveRecords) {
        const int count = std::min(kSaveRecords, file.loadedPoints - first);
        std::memset(block.get(), 0, static_cast<size_t>(recordSize) * static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            const int n = first + i;
            unsigned char *record = block.get() + static_cast<size_t>(i) * recordSize;
            putInt32(record, n + 1);
            putInt32(record + 4, stampOf(file, n));
            putAnalogValues(file, n, record + 8, width, floats);
            unsigned char *status = record + 8 + width * analogs;
            for (int c = 0; c < statuses; ++c) {
                if (file.statusMaps[c]->Bit(n))
                    status[(c >> 4) * 2 + ((c & 15) >> 3)] |= static_cast<unsigned char>(1u << (c & 7));
            }
        }
        const qint64 bytes = qint64(recordSize) * count;
        if (out.write(reinterpret_cast<const char *>(block.get()), bytes) != bytes)
            return false;
    }
    return true;
}

QString saveText(const char *text)
{
    return QCoreApplication::translate("CCmtd99File", text);
}

} // namespace

bool CCmtd99File::WriteDat(QIODevice &out)
{
    const bool ascii = qstricmp(fileDesc.fileType.constData(), "ASCII") == 0;
    const bool wide = fileDesc.is2013() && qstricmp(fileDesc.fileType.constData(), "BINARY32") == 0;
    const bool floats = fileDesc.is2013() && qstricmp(fileDesc.fileType.constData(), "FLOAT32") == 0;
    if (!floats)
        widenMultipliers(*this, wide);
    if (ascii)
        return writeAsciiRecords(*this, out);
    return writeBinaryRecords(*this, out, wide || floats ? 4 : 2, floats);
}

bool CCmtd99File::SaveDat(const char *datPath, int, int)
{
    saveError.clear();
    CSafeWriteSet set;
    QIODevice *out = set.Begin(QString::fromLocal8Bit(datPath));
    if (out && loadedPoints < 1)
        set.Fail(saveText("No samples to write to %1").arg(QString::fromLocal8Bit(datPath)));
    if (out && !set.Failed() && !WriteDat(*out))
        set.WriteFailed(out);
    if (!out || !set.Commit()) {
        saveError = set.ErrorText();
        return false;
    }
    return true;
}

bool CCmtd99File::SaveFile(const char *path)
{
    // The pair is one set: both files complete on disk before either takes its name, ".dat"
    // first. A name given with its ".cfg" (in any case) is kept as given.
    saveError.clear();
    const QByteArray given(path);
    const QByteArray extension = given.mid(given.lastIndexOf('.'));
    const bool named = given.lastIndexOf('.') > given.lastIndexOf('/') && qstricmp(extension, ".cfg") == 0;
    const QByteArray base = CmtdBasePath(path);
    const QByteArray cfgPath = named ? given : base + ".cfg";
    const QByteArray datPath = base + (named && extension == ".CFG" ? ".DAT" : ".dat");
    CSafeWriteSet set;
    QIODevice *dat = set.Begin(QString::fromLocal8Bit(datPath));
    QIODevice *cfg = dat ? set.Begin(QString::fromLocal8Bit(cfgPath)) : nullptr;
    if (cfg && loadedPoints < 1)
        set.Fail(saveText("No samples to write to %1").arg(QString::fromLocal8Bit(datPath)));
    if (cfg && !set.Failed() && !WriteDat(*dat))
        set.WriteFailed(dat);
    if (cfg && !set.Failed() && !WriteCfg(*cfg))
        set.WriteFailed(cfg);
    if (!cfg || !set.Commit()) {
        saveError = set.ErrorText();
        return false;
    }
    // The extension file follows the pair: what COMTRADE has no place for.
    return SaveInf((base + (named && extension == ".CFG" ? ".INF" : ".inf")).constData());
}
