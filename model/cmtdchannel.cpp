#include "cmtdchannel.h"

#include <cstdio>

CmtdChn_Base::~CmtdChn_Base() = default;

void CmtdChn_Base::Assign(const CmtdChn_Base &other)
{
    flags = other.flags;
    ch_id = other.ch_id;
    ph = other.ph;
    ccbm = other.ccbm;
    otherKeys = other.otherKeys;
    index = other.index;
    deviceIndex = other.deviceIndex;
    alias = other.alias;
    typeCode = other.typeCode;
}

char *CmtdChn_Base::FormatLabel(char *buffer) const
{
    std::sprintf(buffer, "%3d:%s", index, ch_id.constData());
    return buffer;
}

void CmtdChn_Analog::Copy(const CmtdChn_Base &other)
{
    Assign(other);
    if (const auto *analog = dynamic_cast<const CmtdChn_Analog *>(&other)) {
        uu = analog->uu;
        a = analog->a;
        b = analog->b;
        skew = analog->skew;
        min = analog->min;
        max = analog->max;
        primary = analog->primary;
        secondary = analog->secondary;
        ps = analog->ps;
        ratedFreq = analog->ratedFreq;
        primaryRating = analog->primaryRating;
        primaryUnit = analog->primaryUnit;
        secondaryRating = analog->secondaryRating;
        secondaryUnit = analog->secondaryUnit;
        slopeA = analog->slopeA;
        distanceB = analog->distanceB;
        physicalUnit = analog->physicalUnit;
        angleCount = analog->angleCount;
        for (int i = 0; i < 3; ++i)
            compAngle[i] = analog->compAngle[i];
    }
}

void CmtdChn_Analog::Reset(int newIndex)
{
    *this = CmtdChn_Analog();
    index = static_cast<int16_t>(newIndex);
    if (newIndex > 0)
        flags |= IndexGiven;
}

void CmtdChn_Status::Copy(const CmtdChn_Base &other)
{
    Assign(other);
    if (const auto *status = dynamic_cast<const CmtdChn_Status *>(&other)) {
        normalState = status->normalState;
        signalClass = status->signalClass;
        channelFlag = status->channelFlag;
    }
}

void CmtdChn_Status::Reset(int newIndex)
{
    *this = CmtdChn_Status();
    index = static_cast<int16_t>(newIndex);
    if (newIndex > 0)
        flags |= IndexGiven;
}
