#pragma once

#include "chnvocabulary.h"

#include <cstdint>
#include <vector>

class CmtdInfTrwk_Unit;
class CmtdChn_Analog;
class CmtdChn_Base;

// Zeroed memory for a sample array (free with std::free). Large arrays are marked for huge
// pages where the system offers them, so that filling 400 MB of samples costs a few hundred
// page faults rather than a hundred thousand.
void *AllocateSamples(size_t count, size_t size);
class CmtdChn_Status;

// The sample store and display record of one channel. The recording holds one per channel,
// built when the data file is read; views and forms ask the store, never the configuration
// record, for what to show. The store points to its record, which outlives it.
class CChnMapBase
{
public:
    enum Type : uint16_t
    {
        TypeAnalog = 1,
        TypeStatus = 2
    };
    enum Flag : uint32_t
    {
        FlagDots = 0x1,       // drawn as dots
        FlagVertExtend = 0x2, // scaled by its own largest value
        FlagShifts = 0x4,     // a status channel with at least one change of state
        FlagReversed = 0x4,   // an analog channel drawn reversed (the same bit, on the other kind)
        FlagHidden = 0x8,
        FlagRelated = 0x80,       // a channel of the analysis form on show
        FlagJobMask = 0xFFFFFF80u // cleared when a job has filled the channel
    };

    CChnMapBase() = default;
    CChnMapBase(const CChnMapBase &) = delete;
    CChnMapBase &operator=(const CChnMapBase &) = delete;

    // Frees the sample array.
    virtual void destroy();
    virtual void copyFrom(const CChnMapBase &other);
    // Orders analog before status where stores of both kinds are listed together.
    virtual int typeRank() const = 0;
    virtual ~CChnMapBase();

    // The name shown everywhere: the user's alias of a real channel, else the channel name.
    const char *Name() const;
    virtual const CmtdChn_Base *Record() const = 0;
    int Index() const;

    void *samples = nullptr;
    int32_t sampleCount = 0;
    uint32_t channelKey = 0;
    uint16_t chnType = 0;
    uint16_t phase = 0;
    int16_t kindCode = 0;
    uint32_t flags = 0;
    uint32_t colour = 0xFF000000u;
    // The primary unit that the channel's `ccbm` names, looked up when the store is built;
    // null when none does. Owned by the recording.
    const CmtdInfTrwk_Unit *plantUnit = nullptr;
    bool isVirtual = false;
};

// Samples of an analog channel as scaled 32-bit floats, in secondary quantities and in the
// unit without prefix (V, not kV).
class CChnMapAnalog : public CChnMapBase
{
public:
    // Builds the store of a record: class, phase and unit from the record, and the scale of
    // raw file values. Changes every '"' of the channel name to '_' so names are safe in
    // expressions.
    explicit CChnMapAnalog(CmtdChn_Analog *record, bool isVirtual = false);

    int typeRank() const override { return 1; }
    const CmtdChn_Base *Record() const override;

    bool allocate(int points);
    float *Values() const { return static_cast<float *>(samples); }
    // The value at a sample; 0 outside the store.
    float Value(int sample) const;
    // Copies nothing unless [first, first + count) lies wholly in the store.
    bool CopyValues(float *target, int targetIndex, int first, int count) const;
    // Extent of the samples: maxValue, minValue and absMax.
    void updateExtent();
    // The same either-or scan as the loader's, starting from the first sample.
    void RecalcExtremes();
    // The running extremes' rule of the loader, for one new value.
    void takeExtreme(float value)
    {
        if (value > maxValue)
            maxValue = value;
        else if (value < minValue)
            minValue = value;
    }

    int16_t Class() const { return chnClass; }
    // AC voltage and current, and virtual channels that are periodic, have phasors.
    bool IsAC() const { return chnClass == ClassACV || chnClass == ClassACC || periodic; }
    int16_t Phase() const { return static_cast<int16_t>(phase); }
    const ChnUnit &Unit() const { return unit; }

    // Primary over secondary: from the ratings where all four are given, else from the
    // ".cfg" ratio where it is fully given, else 1.
    float TransformRatio() const;
    // Factor from the stored value to a primary (secondary) value in `targetUnit` (the
    // channel's own unit when null).
    float PrimaryFactor(const char *targetUnit = nullptr) const;
    float SecondaryFactor(const char *targetUnit = nullptr) const;

    float rangeMin = 0.0f;
    float rangeMax = 0.0f;
    CmtdChn_Analog *config = nullptr;
    ChnUnit unit;
    float maxValue = -9999999.0f;
    float minValue = 9999999.0f;
    float absMax = 0.0f;
    float vScale = 1.0f;
    int16_t chnClass = 0;
    bool periodic = false; // a virtual channel whose curve is periodic
    bool direct = false;   // a virtual channel whose samples already are the values shown
    // raw × gain + offset, in double precision, gives the stored value.
    double gain = 1.0;
    double offset = 0.0;
};

// One change of state of a status channel.
struct StatusChange
{
    int32_t sample = 0;
    uint8_t value = 0;
};

// Samples of a status channel, one bit per sample in 32-bit words, lowest bit first.
class CChnMapStatus : public CChnMapBase
{
public:
    static constexpr uint32_t kDefaultColour = 0xFF009696u; // -16738666 as ARGB
    static constexpr uint32_t kShiftColour = 0xFFFF007Fu;   // a channel that changes
    static constexpr int kMaxChanges = 512;

    explicit CChnMapStatus(CmtdChn_Status *record);

    int typeRank() const override { return 2; }
    const CmtdChn_Base *Record() const override;

    bool allocate(int points);
    uint32_t *Words() const { return static_cast<uint32_t *>(samples); }
    // The bit at a sample; below 0 reads sample 0, at or past the end reads the last.
    int Bit(int sample) const;
    void SetBit(int sample, int value);
    // Copies bits [first, first + count) packed from bit 0 of `target`; nothing unless the range
    // lies wholly in the store.
    bool CopyBits(uint32_t *target, int first, int count) const;
    // Builds the list of changes once, removing pulses shorter than two samples; clears the
    // change flag when nothing is left.
    void BuildChangeList(int points);

    CmtdChn_Status *config = nullptr;
    std::vector<StatusChange> changes;
    bool changeListBuilt = false;
};
