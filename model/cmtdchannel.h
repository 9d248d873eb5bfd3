#pragma once

#include "cmtdtypes.h"

#include <QByteArray>

#include <cstdint>

// The description of one recorded channel: what the ".cfg" says of it, what the extension
// file adds, and in `flags` which of those values were really given. A record holds no
// samples; the channel store that points to it does. Records are owned by the recording.
class CmtdChn_Base
{
public:
    virtual ~CmtdChn_Base();
    // Copies the fields that every channel has.
    virtual void Assign(const CmtdChn_Base &other);
    // Writes "%3d:%s" (index and name) into `buffer` and returns it.
    virtual char *FormatLabel(char *buffer) const;

    uint32_t flags = 0;
    QByteArray ch_id;
    QByteArray ph;
    QByteArray ccbm;
    InfKeyValueList otherKeys;
    int16_t index = 0;
    int16_t deviceIndex = -1;
    QByteArray alias;
    QByteArray typeCode;
};

// An analog channel. Field bits: see the enum; a set bit means that no later source may
// replace the field (".cfg" first, then the extension file, then the older extension).
class CmtdChn_Analog : public CmtdChn_Base
{
public:
    enum : uint32_t
    {
        IdGiven = 1u << 0,
        PhaseGiven = 1u << 1,
        CcbmGiven = 1u << 2,
        UnitGiven = 1u << 3,
        AGiven = 1u << 4,
        BGiven = 1u << 5,
        SkewGiven = 1u << 6,
        MinGiven = 1u << 7,
        MaxGiven = 1u << 8,
        PrimaryGiven = 1u << 9,
        SecondaryGiven = 1u << 10,
        PsGiven = 1u << 11,
        IndexGiven = 1u << 12,
        DeviceIndexGiven = 1u << 13,
        AliasGiven = 1u << 14,
        TypeCodeGiven = 1u << 15,
        RatedFreqGiven = 1u << 16,
        PrimaryRatingGiven = 1u << 17,
        PrimaryUnitGiven = 1u << 18,
        SecondaryRatingGiven = 1u << 19,
        SecondaryUnitGiven = 1u << 20,
        SlopeAGiven = 1u << 21,
        DistanceBGiven = 1u << 22,
        PhysicalUnitGiven = 1u << 23,
        CompAngleGiven = 1u << 24
    };

    CmtdChn_Analog() = default;
    virtual void Copy(const CmtdChn_Base &other);
    // The transformer ratio is given by ratings (all four fields) or by the channel line
    // (primary, secondary and P/S); the ratings go first where both are given.
    bool HasRatings() const
    {
        constexpr uint32_t bits =
            PrimaryRatingGiven | PrimaryUnitGiven | SecondaryRatingGiven | SecondaryUnitGiven;
        return (flags & bits) == bits;
    }
    bool HasLineRatio() const
    {
        constexpr uint32_t bits = PrimaryGiven | SecondaryGiven | PsGiven;
        return (flags & bits) == bits;
    }
    // Clears the record to its defaults under a new index.
    void Reset(int newIndex);

    QByteArray uu;
    float a = 1.0f;
    float b = 0.0f;
    float skew = 0.0f;
    float min = -1000000000.0f;
    float max = 1000000000.0f;
    float primary = 1.0f;
    float secondary = 1.0f;
    char ps = 'S';
    float ratedFreq = 0.0f;
    float primaryRating = 1.0f;
    QByteArray primaryUnit;
    float secondaryRating = 1.0f;
    QByteArray secondaryUnit;
    float slopeA = 1.0f;
    float distanceB = 0.0f;
    QByteArray physicalUnit;
    int32_t angleCount = 0;
    float compAngle[3] = {0.0f, 0.0f, 0.0f};
};

// A status (digital) channel; `typeCode` holds the status kind ("Jump_A" and so on).
class CmtdChn_Status : public CmtdChn_Base
{
public:
    enum : uint32_t
    {
        IdGiven = 1u << 0,
        PhaseGiven = 1u << 1,
        CcbmGiven = 1u << 2,
        NormalStateGiven = 1u << 3,
        IndexGiven = 1u << 4,
        DeviceIndexGiven = 1u << 5,
        AliasGiven = 1u << 6,
        TypeCodeGiven = 1u << 7,
        SignalClassGiven = 1u << 8,
        ChannelFlagGiven = 1u << 9
    };

    CmtdChn_Status() { index = -1; }
    virtual void Copy(const CmtdChn_Base &other);
    void Reset(int newIndex);

    uint8_t normalState = 0;
    QByteArray signalClass;
    QByteArray channelFlag;
};
