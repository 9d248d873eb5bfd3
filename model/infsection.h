#pragma once

// What the section walk of the extension file hands to the readers of its private sections:
// the key lines of one section as they stood.

#include <QByteArray>

#include <cstdint>
#include <vector>

// One key line of a section: repeated keys stay, in file order (a line unit's "TV_CHNS" is
// one line per set), with the line number for messages.
struct InfKeyLine
{
    QByteArray key;
    QByteArray value;
    int32_t line = 0;
};
using InfKeyLines = std::vector<InfKeyLine>;

// The bits of `infSectionsSeen`, which are also the section mask of the writer.
enum InfSectionBit : uint32_t
{
    InfRecordInformation = 0x1,
    InfFileDescription = 0x2,
    InfAnalogChannel = 0x4,
    InfStatusChannel = 0x8,
    InfAnalogChannelsParameter = 0x10,
    InfStatusChannelsParameter = 0x20,
    InfStatusEvents = 0x40,
    InfReport = 0x80,
    InfLine = 0x100,
    InfTransformer = 0x200,
    InfPower = 0x400,
    InfExcitation = 0x800,
    InfCommentaries = 0x1000,
    InfExpression = 0x2000,
    InfSettings = 0x4000,
    InfChannelsGroup = 0x8000,
    InfOtherPrivate = 0x80000000u
};

// The private sections that hold primary device units, and the report record.
enum class InfUnitSection
{
    Line,
    Transformer,
    Power,
    Excitation,
    ChannelsGroup,
    Report
};
