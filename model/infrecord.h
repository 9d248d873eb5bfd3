#pragma once

// The records of the extension file that have no place in the ".cfg": what the recorder says of
// the recording as a whole, the status events it marked, the engineer's commentaries on the
// waves, and sections kept as text because this system does not read them.

#include "cmtdtypes.h"

#include <QByteArray>

#include <cstdint>

// Section "Public Record_Information". A field whose bit is set is final.
struct InfRecordInfo
{
    enum : uint32_t
    {
        SourceGiven = 1u << 0,
        TagGiven = 1u << 1,
        RecordInfoGiven = 1u << 2,
        LocationGiven = 1u << 3,
        MaxCurrentGiven = 1u << 4,
        MinCurrentGiven = 1u << 5,
        MaxVoltageGiven = 1u << 6,
        MinVoltageGiven = 1u << 7,
        EventNoteCountGiven = 1u << 8
    };
    uint32_t flags = 0;
    QByteArray source;
    QByteArray versionTag;
    QByteArray recordInfo;
    QByteArray location;
    float maxCurrent = 0.0f;
    float minCurrent = 0.0f;
    float maxVoltage = 0.0f;
    float minVoltage = 0.0f;
    int32_t eventNoteCount = 0;
    InfKeyValueList otherKeys;
};

// A status channel's change of state that the recorder marked, with the sample and time of it.
struct InfStatusEvent
{
    enum : uint32_t
    {
        ChannelGiven = 1u << 0,
        NameGiven = 1u << 1,
        StatusGiven = 1u << 2,
        TripPointGiven = 1u << 3,
        TripTimeGiven = 1u << 4,
        TripFracGiven = 1u << 5
    };
    uint32_t flags = 0;
    int16_t channelIndex = 0;
    QByteArray channelName;
    QByteArray status;
    int32_t tripPoint = 0;
    int32_t tripTimeMs = 0;
    int32_t tripTimeFrac = 0;
    InfKeyValueList otherKeys;
};

// The engineer's note at one sample of one channel, drawn at a place of the wave view.
struct InfCommentary
{
    enum : uint32_t
    {
        TypeGiven = 1u << 0,
        IndexGiven = 1u << 1,
        SampleGiven = 1u << 2,
        TextGiven = 1u << 3,
        PositionGiven = 1u << 4
    };
    uint32_t flags = 0;
    int16_t channelType = 'A'; // 'A' analog, 'D' status
    int16_t channelIndex = 0;
    int32_t sampleIndex = 0; // from 0
    int32_t posX = 0;
    int32_t posY = 0;
    QByteArray text;
    InfKeyValueList otherKeys;
};

// A section kept as it stood, to be written back in its place of the order.
struct InfRawSection
{
    uint32_t flags = 0x80000000u;
    QByteArray head; // the text between the brackets
    InfKeyValueList keys;
};

// Keeps one entry per key (compared without regard to case): a repeated key replaces the value
// of the first, which keeps its place.
void SetInfKey(InfKeyValueList &list, const QByteArray &key, const QByteArray &value);
