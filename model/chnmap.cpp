#include "chnmap.h"

#include "cmtdchannel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

void *AllocateSamples(size_t count, size_t size)
{
    if (count == 0)
        count = 1;
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    // An array of 2 MiB or more starts on a huge page, so that filling it costs one page fault
    // per 2 MiB rather than one per 4 KiB: for a long recording that was most of the load's time
    // in the kernel.
    constexpr size_t kHuge = size_t(2) << 20;
    if (size > 0 && count <= (SIZE_MAX - kHuge) / size && count * size >= kHuge) {
        // Up to whole huge pages where that adds at most an eighth, so that the last one is
        // huge too; a recording's samples then take at most 1.125 times their own size.
        const size_t needed = count * size;
        const size_t padded = (needed + kHuge - 1) & ~(kHuge - 1);
        const size_t bytes = padded - needed <= needed / 8 ? padded : needed;
        void *memory = nullptr;
        if (posix_memalign(&memory, kHuge, bytes) != 0)
            return nullptr;
        // Dropping the whole pages zeroes them as they are first touched rather than all at
        // once here: memory fresh from the system costs nothing, reused memory is given back.
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t whole = bytes / page * page;
        if (madvise(memory, whole, MADV_DONTNEED) != 0)
            std::memset(memory, 0, whole);
        std::memset(static_cast<char *>(memory) + whole, 0, bytes - whole);
        madvise(memory, whole, MADV_HUGEPAGE);
        return memory;
    }
#endif
    return std::calloc(count, size);
}

CChnMapBase::~CChnMapBase()
{
    std::free(samples);
}

void CChnMapBase::destroy()
{
    std::free(samples);
    samples = nullptr;
    sampleCount = 0;
}

void CChnMapBase::copyFrom(const CChnMapBase &other)
{
    channelKey = other.channelKey;
    chnType = other.chnType;
    phase = other.phase;
    kindCode = other.kindCode;
    flags = other.flags;
    colour = other.colour;
}

const char *CChnMapBase::Name() const
{
    const CmtdChn_Base *record = Record();
    if (!record)
        return "";
    if (!record->alias.isEmpty() && !isVirtual)
        return record->alias.constData();
    return record->ch_id.constData();
}

int CChnMapBase::Index() const
{
    const CmtdChn_Base *record = Record();
    return record ? record->index : 0;
}

CChnMapAnalog::CChnMapAnalog(CmtdChn_Analog *record, bool isVirtualChannel) : config(record)
{
    chnType = TypeAnalog;
    isVirtual = isVirtualChannel;
    if (!record)
        return;
    channelKey = static_cast<uint32_t>(record->index);
    record->ch_id.replace('"', '_');
    unit = ParseUnit(record->uu);
    kindCode = ClassFromUnit(unit);
    if (record->flags & CmtdChn_Analog::TypeCodeGiven)
        chnClass = ClassFromCode(record->typeCode);
    else
        chnClass = kindCode;
    if (chnClass == ClassACV || chnClass == ClassACC) {
        if (record->flags & CmtdChn_Analog::PhaseGiven)
            phase = static_cast<uint16_t>(PhaseFromText(record->ph));
        else
            phase = static_cast<uint16_t>(PhaseFromName(record->ch_id));
        // A rated frequency counts only where the extension file gave one.
        if (!(record->flags & CmtdChn_Analog::RatedFreqGiven))
            record->ratedFreq = 50.0f;
    } else if (record->flags & CmtdChn_Analog::PhaseGiven) {
        phase = static_cast<uint16_t>(PhaseFromText(record->ph));
    }

    // The pen follows the phase colours of a switchboard, so that a phase reads the same in
    // every row and form; channels without a phase take a quiet colour by their index.
    static const uint32_t phaseColours[] = {0,           0xFFD4A000u, 0xFF00A040u, 0xFFD01818u, 0xFF1E5AD0u,
                                            0xFF9A30B0u, 0xFF1E5AD0u, 0xFFD4A000u, 0xFF00A040u};
    static const uint32_t otherColours[] = {0xFF6B3FA0u, 0xFF008B8Bu, 0xFF8B4513u, 0xFF2F4F4Fu, 0xFFB8860Bu};
    colour =
        phase > 0 && phase < 9 ? phaseColours[phase] : otherColours[static_cast<unsigned>(record->index) % 5];

    // Values are held in secondary quantities and without the unit's prefix.
    const double k = unit.factor;
    if (record->ps == 'P' || record->ps == 'p') {
        const double toSecondary = double(record->secondary) / double(record->primary);
        gain = double(record->a) * toSecondary * k;
        offset = double(record->b) * toSecondary * k;
    } else {
        gain = double(record->a) * k;
        offset = double(record->b) * k;
    }
    rangeMin = static_cast<float>(double(record->min) * gain + offset);
    rangeMax = static_cast<float>(double(record->max) * gain + offset);
}

const CmtdChn_Base *CChnMapAnalog::Record() const
{
    return config;
}

bool CChnMapAnalog::allocate(int points)
{
    destroy();
    if (points < 0)
        return false;
    samples = AllocateSamples(static_cast<size_t>(points), sizeof(float));
    if (!samples)
        return false;
    sampleCount = points;
    return true;
}

float CChnMapAnalog::Value(int sample) const
{
    if (!samples || sample < 0 || sample >= sampleCount)
        return 0.0f;
    return Values()[sample];
}

bool CChnMapAnalog::CopyValues(float *target, int targetIndex, int first, int count) const
{
    if (!samples || !target || first < 0 || count < 0 || first > sampleCount - count)
        return false;
    const float *source = Values() + first;
    for (int i = 0; i < count; ++i)
        target[targetIndex + i] = source[i];
    return true;
}

void CChnMapAnalog::updateExtent()
{
    if (!samples || sampleCount < 1)
        return;
    const float *v = Values();
    float high = v[0];
    float low = v[0];
    for (int i = 1; i < sampleCount; ++i) {
        if (v[i] > high)
            high = v[i];
        if (v[i] < low)
            low = v[i];
    }
    maxValue = high;
    minValue = low;
    absMax = std::max(std::fabs(high), std::fabs(low));
}

void CChnMapAnalog::RecalcExtremes()
{
    if (!samples || sampleCount < 1)
        return;
    const float *v = Values();
    maxValue = v[0];
    minValue = v[0];
    for (int i = 1; i < sampleCount; ++i)
        takeExtreme(v[i]);
    absMax = std::max(std::fabs(maxValue), std::fabs(minValue));
}

float CChnMapAnalog::TransformRatio() const
{
    if (!config)
        return 1.0f;
    if (config->HasRatings()) {
        return UnitFactor(config->primaryUnit.constData(), config->secondaryUnit.constData()) *
               config->primaryRating / config->secondaryRating;
    }
    if (config->HasLineRatio())
        return config->primary / config->secondary;
    return 1.0f;
}

namespace {

float sideFactor(const CmtdChn_Analog *config, const char *target, bool primary)
{
    if (!config)
        return 1.0f;
    const char *to = target ? target : config->uu.constData();
    if (config->HasRatings()) {
        return primary ? UnitFactor(config->primaryUnit.constData(), to) * config->primaryRating
                       : UnitFactor(config->secondaryUnit.constData(), to) * config->secondaryRating;
    }
    if (config->HasLineRatio())
        return UnitFactor(config->uu.constData(), to) * (primary ? config->primary : config->secondary);
    return 1.0f;
}

} // namespace

float CChnMapAnalog::PrimaryFactor(const char *targetUnit) const
{
    return sideFactor(config, targetUnit, true);
}

float CChnMapAnalog::SecondaryFactor(const char *targetUnit) const
{
    return sideFactor(config, targetUnit, false);
}

CChnMapStatus::CChnMapStatus(CmtdChn_Status *record) : config(record)
{
    chnType = TypeStatus;
    colour = kDefaultColour;
    if (!record)
        return;
    channelKey = static_cast<uint32_t>(record->index);
    record->ch_id.replace('"', '_');
    if (record->flags & CmtdChn_Status::PhaseGiven)
        phase = static_cast<uint16_t>(PhaseFromText(record->ph));
}

const CmtdChn_Base *CChnMapStatus::Record() const
{
    return config;
}

bool CChnMapStatus::allocate(int points)
{
    destroy();
    if (points < 0)
        return false;
    const size_t words = (static_cast<size_t>(points) + 31) / 32;
    samples = AllocateSamples(words, sizeof(uint32_t));
    if (!samples)
        return false;
    sampleCount = points;
    return true;
}

int CChnMapStatus::Bit(int sample) const
{
    if (!samples || sampleCount < 1)
        return 0;
    if (sample < 0)
        sample = 0;
    if (sample >= sampleCount)
        sample = sampleCount - 1;
    return (Words()[sample >> 5] >> (sample & 31)) & 1u;
}

void CChnMapStatus::SetBit(int sample, int value)
{
    if (!samples || sample < 0 || sample >= sampleCount)
        return;
    uint32_t &word = Words()[sample >> 5];
    const uint32_t mask = 1u << (sample & 31);
    word = value ? (word | mask) : (word & ~mask);
}

bool CChnMapStatus::CopyBits(uint32_t *target, int first, int count) const
{
    if (!samples || !target || first < 0 || count < 0 || first > sampleCount - count)
        return false;
    for (int i = 0; i < count; ++i) {
        const uint32_t mask = 1u << (i & 31);
        if (Bit(first + i))
            target[i >> 5] |= mask;
        else
            target[i >> 5] &= ~mask;
    }
    return true;
}

void CChnMapStatus::BuildChangeList(int points)
{
    if (changeListBuilt || !(flags & FlagShifts))
        return;
    changeListBuilt = true;
    changes.clear();
    const int last = std::min(points, sampleCount);
    // Changes are found a word at a time: a bit differs from the one before it where the word
    // and the word shifted by one sample differ.
    const uint32_t *words = Words();
    uint32_t carry = words ? (words[0] & 1u) : 0u;
    for (int w = 0; words && w * 32 < last && static_cast<int>(changes.size()) < kMaxChanges; ++w) {
        uint32_t word = words[w];
        const int valid = std::min(32, last - w * 32);
        if (valid < 32)
            word &= (1u << valid) - 1u;
        uint32_t changed = word ^ ((word << 1) | carry);
        if (valid < 32)
            changed &= (1u << valid) - 1u;
        if (w == 0)
            changed &= ~1u; // the first sample has nothing before it
        carry = (word >> 31) & 1u;
        if (valid < 32)
            carry = (word >> (valid - 1)) & 1u;
        for (; changed && static_cast<int>(changes.size()) < kMaxChanges; changed &= changed - 1) {
            const int bit = std::countr_zero(changed);
            changes.push_back(StatusChange{w * 32 + bit, static_cast<uint8_t>((word >> bit) & 1u)});
        }
    }

    // A pulse shorter than two samples is a contact bounce or a converter glitch: fill it in
    // with the state from before it and drop both of its edges.
    std::vector<bool> removed(changes.size(), false);
    for (size_t i = 1; i < changes.size(); ++i) {
        const StatusChange &previous = changes[i - 1];
        if (changes[i].sample - previous.sample < 2) {
            // The state before the pulse, as the bits stand now: an earlier pulse of a burst
            // has already been filled in.
            const int restore = Bit(previous.sample - 1);
            for (int n = previous.sample; n < changes[i].sample; ++n)
                SetBit(n, restore);
            removed[i - 1] = true;
            removed[i] = true;
        }
    }
    std::vector<StatusChange> kept;
    for (size_t i = 0; i < changes.size(); ++i) {
        if (!removed[i])
            kept.push_back(changes[i]);
    }
    changes.swap(kept);
    if (changes.empty())
        flags &= ~static_cast<uint32_t>(FlagShifts);
}
