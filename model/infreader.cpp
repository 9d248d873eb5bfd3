// The reader of the extension file: the walk over its sections and the readers of the public
// part and of the private sections that are not plant units. Every field is guarded by its bit,
// so the ".cfg" goes first, the first section of a kind goes before later ones, and a settings
// import into a loaded recording only fills gaps.

#include "cmtd99file.h"

#include "cfffile.h"
#include "diskfile.h"
#include "linereader.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr int kInfLineSize = 4096;
constexpr int kHeadWords = 8;
constexpr int kParameterFields = 32;
constexpr float kDegreesToRadians = 0.017453292f;

bool same(const QByteArray &a, const char *b)
{
    return qstricmp(a.constData(), b) == 0;
}

int16_t toInt16(long value)
{
    return static_cast<int16_t>(value < INT16_MIN ? INT16_MIN : value > INT16_MAX ? INT16_MAX : value);
}

int32_t toInt32(long long value)
{
    return static_cast<int32_t>(value < INT32_MIN ? INT32_MIN : value > INT32_MAX ? INT32_MAX : value);
}

int32_t atol32(const char *text)
{
    return toInt32(std::strtoll(text, nullptr, 10));
}

// atof into a float; what a float cannot hold reads as 0, as rubbish does.
float atofFloat(const char *text)
{
    const double number = std::atof(text);
    if (!std::isfinite(number) || std::fabs(number) > double(FLT_MAX))
        return 0.0f;
    return static_cast<float>(number);
}

// A name or key cut behind its "#": "Sample_Rate_#2" gives "sample_rate_#" and 2.
struct NumberedName
{
    QByteArray name; // lower case
    int number = 0;
};

NumberedName cutNumber(const QByteArray &text)
{
    NumberedName result;
    const qsizetype hash = text.indexOf('#');
    if (hash < 0) {
        result.name = text.toLower();
        return result;
    }
    result.name = text.left(hash + 1).toLower();
    result.number = atol32(text.constData() + hash + 1);
    return result;
}

// Splits a section head at runs of blanks into at most `capacity` words.
int splitBlanks(QByteArray text, QList<QByteArray> &words, int capacity)
{
    words.clear();
    text.replace('\t', ' ');
    const QList<QByteArray> parts = text.split(' ');
    for (const QByteArray &part : parts) {
        if (part.isEmpty())
            continue;
        if (words.size() == capacity)
            break;
        words.append(part);
    }
    return static_cast<int>(words.size());
}

// Splits a value at commas, each field trimmed; the fields stay valid as long as `buffer`.
int splitValue(const QByteArray &value, QByteArray &buffer, char *fields[], int capacity, char separator)
{
    buffer = value;
    return SplitTrimmed(buffer.data(), fields, capacity, separator);
}

bool takeText(QByteArray &target, uint32_t &flags, uint32_t bit, const QByteArray &value)
{
    if (flags & bit)
        return false;
    target = value;
    flags |= bit;
    return true;
}

void takeFloat(float &target, uint32_t &flags, uint32_t bit, const QByteArray &value)
{
    if (flags & bit)
        return;
    target = atofFloat(value.constData());
    flags |= bit;
}

bool isExpressionHead(const QByteArray &head)
{
    QList<QByteArray> words;
    if (splitBlanks(head.toLower(), words, kHeadWords) != 2)
        return false;
    return (words[0] == "trwk" || words[0] == "ksgl") && words[1] == "expression";
}

InfRawSection rawSection(const QByteArray &head, const InfKeyLines &keys)
{
    InfRawSection section;
    section.head = head;
    for (const InfKeyLine &line : keys)
        SetInfKey(section.keys, line.key, line.value);
    return section;
}

} // namespace

void SetInfKey(InfKeyValueList &list, const QByteArray &key, const QByteArray &value)
{
    for (InfKeyValue &entry : list) {
        if (qstricmp(entry.key.constData(), key.constData()) == 0) {
            entry.value = value;
            return;
        }
    }
    list.append(InfKeyValue{0x80000000u, key, value});
}

int CCmtd99File::LoadInf(const char *path)
{
    CDiskSection section;
    CDiskFile plain;
    CDiskFile *file = OpenInfSource(path, section, plain);
    if (!file)
        return ReadDone;
    cursor = Cursor();
    infMessages.clear();

    char buffer[kInfLineSize];
    int counter = 0;
    bool haveHead = false;
    bool expression = false;
    QByteArray head;
    int32_t headLine = 0;
    InfKeyLines keys;
    QList<QByteArray> rawLines;
    for (;;) {
        char *key = nullptr;
        char *value = nullptr;
        int kind = 0;
        if (expression) {
            // Expressions are text of their own, "=" and all: lines as they stand, up to a head.
            char *line = nullptr;
            if (ReadDataLine(*file, counter, buffer, sizeof buffer, line) == 0) {
                kind = KeyLineEnd;
            } else if (line[0] != '[') {
                rawLines.append(QByteArray(line));
                continue;
            } else if ((kind = ParseKeyLine(line, key, value)) != KeyLineSection) {
                continue;
            }
        } else {
            kind = ReadKeyLine(*file, counter, buffer, sizeof buffer, key, value);
        }
        cursor.line = counter;
        if (kind == KeyLineKey) {
            if (haveHead)
                keys.push_back(InfKeyLine{QByteArray(key), QByteArray(value), counter});
            continue;
        }
        if (haveHead && readInfSection(head, headLine, keys, rawLines) == ReadNoMemory)
            return ReadNoMemory;
        if (kind == KeyLineEnd) {
            // A file of another kind under the name (a recorder's own channel list, say): said,
            // so the engineer knows why nothing of it shows.
            if (!haveHead && counter > 0)
                AddInfMessage(
                    1, CmtdMessage("No section in the extension file: its %d lines are not read", counter));
            return ReadDone;
        }
        head = QByteArray(key);
        cursor.text = head;
        headLine = counter;
        haveHead = true;
        keys.clear();
        rawLines.clear();
        expression = isExpressionHead(head);
    }
}

int CCmtd99File::readInfSection(const QByteArray &head, int32_t headLine, const InfKeyLines &keys,
                                const QList<QByteArray> &rawLines)
{
    QList<QByteArray> words;
    const int count = splitBlanks(head.toLower(), words, kHeadWords);
    const bool isPublic = count == 2 && words[0] == "public";
    const bool isPrivate = count == 2 && (words[0] == "trwk" || words[0] == "ksgl");
    if (!isPublic && !isPrivate) {
        foreignSections.append(rawSection(head, keys));
        return ReadDone;
    }
    const NumberedName section = cutNumber(words[1]);
    const QByteArray &name = section.name;
    if (isPublic) {
        if (name == "record_information") {
            infSectionsSeen |= InfRecordInformation;
            return readInfRecordInfo(keys);
        }
        if (name == "file_description") {
            infSectionsSeen |= InfFileDescription;
            return readInfFileDescription(keys);
        }
        if (name == "analog_channel_#") {
            infSectionsSeen |= InfAnalogChannel;
            cursor.line = headLine;
            return readInfAnalogChannel(section.number, keys);
        }
        if (name == "status_channel_#") {
            infSectionsSeen |= InfStatusChannel;
            cursor.line = headLine;
            return readInfStatusChannel(section.number, keys);
        }
        return OnUnknownPublicSection(head, keys);
    }
    return readInfPrivateSection(name, head, headLine, keys, rawLines);
}

int CCmtd99File::readInfPrivateSection(const QByteArray &name, const QByteArray &head, int32_t headLine,
                                       const InfKeyLines &keys, const QList<QByteArray> &rawLines)
{
    struct UnitName
    {
        const char *name;
        InfUnitSection kind;
        uint32_t bit;
    };
    static const UnitName units[] = {{"line_#", InfUnitSection::Line, InfLine},
                                     {"transformer_#", InfUnitSection::Transformer, InfTransformer},
                                     {"power_#", InfUnitSection::Power, InfPower},
                                     {"excitation_#", InfUnitSection::Excitation, InfExcitation},
                                     {"channels_group_#", InfUnitSection::ChannelsGroup, InfChannelsGroup}};
    for (const UnitName &unit : units) {
        if (name == unit.name) {
            infSectionsSeen |= unit.bit;
            return ReadInfUnitSection(*this, unit.kind, head, keys);
        }
    }
    if (name.startsWith("report_")) {
        infSectionsSeen |= InfReport;
        return ReadInfUnitSection(*this, InfUnitSection::Report, head, keys);
    }
    if (name == "analog_channels_parameter") {
        infSectionsSeen |= InfAnalogChannelsParameter;
        return readInfAnalogParameters(keys);
    }
    if (name == "status_channels_parameter") {
        infSectionsSeen |= InfStatusChannelsParameter;
        return readInfStatusParameters(keys);
    }
    if (name == "status_event_#") {
        infSectionsSeen |= InfStatusEvents;
        return readInfStatusEvent(headLine, keys);
    }
    if (name == "commentary_#") {
        infSectionsSeen |= InfCommentaries;
        return readInfCommentary(keys);
    }
    if (name == "expression") {
        infSectionsSeen |= InfExpression;
        // The first section of expressions stands; a later one, or an import, adds nothing.
        if (expressionLines.isEmpty())
            expressionLines = rawLines;
        return ReadDone;
    }
    if (name == "settings") {
        infSectionsSeen |= InfSettings;
        return readInfSettings(keys);
    }
    return OnUnknownPrivateSection(head, keys);
}

int CCmtd99File::OnUnknownPublicSection(const QByteArray &head, const InfKeyLines &keys)
{
    publicExtraSections.append(rawSection(head, keys));
    return ReadDone;
}

int CCmtd99File::OnUnknownPrivateSection(const QByteArray &head, const InfKeyLines &keys)
{
    infSectionsSeen |= InfOtherPrivate;
    privateExtraSections.append(rawSection(head, keys));
    return ReadDone;
}

int CCmtd99File::readInfRecordInfo(const InfKeyLines &keys)
{
    InfRecordInfo &info = recordInfo;
    uint32_t &flags = info.flags;
    for (const InfKeyLine &line : keys) {
        const QByteArray &key = line.key;
        if (same(key, "Source")) {
            if (flags & InfRecordInfo::SourceGiven)
                continue;
            QByteArray buffer;
            char *fields[4];
            const int count = splitValue(line.value, buffer, fields, 4, ',');
            const QByteArray tag = count >= 2 ? QByteArray(fields[1]).toUpper() : QByteArray();
            const char *known = tag.contains("TRWKINF_V")   ? "TRWKINF_V"
                                : tag.contains("KSGLINF_V") ? "KSGLINF_V"
                                                            : nullptr;
            if (known) {
                // The number stands at the tag's length from the start of the field.
                info.source = fields[0];
                info.versionTag = fields[1];
                infVersion = toInt16(std::atol(tag.constData() + std::strlen(known)));
                flags |= InfRecordInfo::SourceGiven | InfRecordInfo::TagGiven;
            } else {
                info.source = line.value;
                flags |= InfRecordInfo::SourceGiven;
            }
        } else if (same(key, "Record_Information")) {
            takeText(info.recordInfo, flags, InfRecordInfo::RecordInfoGiven, line.value);
        } else if (same(key, "Location")) {
            takeText(info.location, flags, InfRecordInfo::LocationGiven, line.value);
        } else if (same(key, "max_current")) {
            takeFloat(info.maxCurrent, flags, InfRecordInfo::MaxCurrentGiven, line.value);
        } else if (same(key, "min_current")) {
            takeFloat(info.minCurrent, flags, InfRecordInfo::MinCurrentGiven, line.value);
        } else if (same(key, "max_voltage")) {
            takeFloat(info.maxVoltage, flags, InfRecordInfo::MaxVoltageGiven, line.value);
        } else if (same(key, "min_voltage")) {
            takeFloat(info.minVoltage, flags, InfRecordInfo::MinVoltageGiven, line.value);
        } else if (same(key, "EventNoteCount")) {
            if (!(flags & InfRecordInfo::EventNoteCountGiven)) {
                info.eventNoteCount = atol32(line.value.constData());
                flags |= InfRecordInfo::EventNoteCountGiven;
            }
        } else {
            SetInfKey(info.otherKeys, key, line.value);
        }
    }
    return ReadDone;
}

namespace {

// The segment of ordinal `number` of the raw list, made when missing: one made from a rate has
// no end yet (-1), one made from an end no rate (-1.0).
SampleSegment *segmentOf(std::vector<SampleSegment> &segments, int number, bool fromRate, bool &made)
{
    made = false;
    for (SampleSegment &segment : segments) {
        if (segment.index == number)
            return &segment;
    }
    SampleSegment segment;
    segment.index = toInt16(number);
    segment.rate = fromRate ? 0.0f : -1.0f;
    segment.end = fromRate ? -1 : 0;
    segments.push_back(segment);
    made = true;
    return &segments.back();
}

} // namespace

int CCmtd99File::readInfFileDescription(const InfKeyLines &keys)
{
    CmtdFileDescription &desc = fileDesc;
    uint32_t &flags = desc.flags;
    auto takeCount = [&flags](int16_t &target, uint32_t bit, const QByteArray &value) {
        if (!(flags & bit)) {
            target = toInt16(std::atol(value.constData()));
            flags |= bit;
        }
    };
    auto takeTime = [this, &flags](RecordTime &target, uint32_t bit, const InfKeyLine &line) {
        if (flags & bit)
            return;
        if (ParseTime1999(line.value.constData(), target))
            flags |= bit;
        else
            AddInfMessage(line.line, CmtdMessage("Time format error [%s=%s]!", line.key.constData(),
                                                 line.value.constData()));
    };
    for (const InfKeyLine &line : keys) {
        const NumberedName key = cutNumber(line.key);
        const QByteArray &k = key.name;
        if (k == "station_name") {
            takeText(desc.stationName, flags, CmtdFileDescription::StationGiven, line.value);
        } else if (k == "recording_device_id") {
            takeText(desc.recDevId, flags, CmtdFileDescription::DeviceGiven, line.value);
        } else if (k == "revision_year") {
            takeText(desc.revYear, flags, CmtdFileDescription::RevYearGiven, line.value);
        } else if (k == "total_channel_count") {
            takeCount(desc.totalChannels, CmtdFileDescription::TotalGiven, line.value);
        } else if (k == "analog_channel_count") {
            takeCount(desc.analogCount, CmtdFileDescription::AnalogCountGiven, line.value);
        } else if (k == "status_channel_count") {
            takeCount(desc.statusCount, CmtdFileDescription::StatusCountGiven, line.value);
        } else if (k == "line_frequency") {
            takeFloat(desc.lineFreq, flags, CmtdFileDescription::LineFreqGiven, line.value);
        } else if (k == "sample_rate_count") {
            takeCount(desc.rateCount, CmtdFileDescription::RateCountGiven, line.value);
        } else if (k == "sample_rate_#" || k == "end_sample_rate_#") {
            const bool rate = k == "sample_rate_#";
            bool made = false;
            SampleSegment *segment = segmentOf(desc.rawSegments, key.number, rate, made);
            const uint32_t bit = rate ? SampleSegment::RateGiven : SampleSegment::EndGiven;
            if (!made && (segment->flags & bit))
                continue;
            if (rate) {
                segment->rate = atofFloat(line.value.constData());
                if (segment->rate > 0.0f)
                    segment->flags |= bit;
            } else {
                segment->end = atol32(line.value.constData());
                if (segment->end > 0)
                    segment->flags |= bit;
            }
        } else if (k == "file_start_time") {
            takeTime(desc.startTime, CmtdFileDescription::StartTimeGiven, line);
        } else if (k == "trigger_time") {
            takeTime(desc.triggerTime, CmtdFileDescription::TriggerTimeGiven, line);
        } else if (k == "file_type") {
            takeText(desc.fileType, flags, CmtdFileDescription::FileTypeGiven, line.value);
        } else if (k == "time_multiplier") {
            takeFloat(desc.timeMult, flags, CmtdFileDescription::TimeMultGiven, line.value);
        } else {
            SetInfKey(desc.otherKeys, line.key, line.value);
        }
    }
    return ReadDone;
}

namespace {

// The channel a "Public Analog_Channel_#n" or "Status_Channel_#n" section describes: the one
// of the ".cfg" below version 2, a new one from version 2 on (where the extension file stands
// in for the ".cfg"). Null with `result` set and a message when there is none to take.
template <typename Channel>
Channel *channelOfSection(CCmtd99File &file, Channel *existing, std::vector<std::unique_ptr<Channel>> &list,
                          int number, const char *missing, const char *overlapped, int &result)
{
    const bool usable = number > 0 && number < INT16_MAX;
    result = CCmtd99File::ReadRefused;
    if (file.infVersion < 2 || !usable) {
        if (!existing || !usable) {
            file.AddInfMessage(file.cursor.line, CmtdMessage(missing, number));
            return nullptr;
        }
        return existing;
    }
    if (existing) {
        file.AddInfMessage(file.cursor.line, CmtdMessage(overlapped, number));
        return nullptr;
    }
    auto made = std::unique_ptr<Channel>(new (std::nothrow) Channel);
    if (!made) {
        // The wording is that of the status channel, for both kinds.
        file.AddInfMessage(file.cursor.line,
                           CmtdMessage("Failed to alloc memory for status channel [idx_cfg=%d]!", number));
        result = CCmtd99File::ReadNoMemory;
        return nullptr;
    }
    made->Reset(number);
    list.push_back(std::move(made));
    return list.back().get();
}

} // namespace

int CCmtd99File::readInfAnalogChannel(int number, const InfKeyLines &keys)
{
    const bool known = FindAnalogChannel(number) != nullptr;
    int result = ReadDone;
    CmtdChn_Analog *channel = channelOfSection(*this, FindAnalogChannel(number), analogChannels, number,
                                               "No [idx_cfg=%d] of the analog channel in [.cfg] file!",
                                               "The index [idx_cfg=%d] of analog channel overlaped!", result);
    if (!channel)
        return result;
    if (!known && number + 1 > firstFreeChannelIndex) {
        firstFreeChannelIndex = toInt16(number + 1);
        firstFreeChannelIndex2 = firstFreeChannelIndex;
    }
    uint32_t &flags = channel->flags;
    for (const InfKeyLine &line : keys) {
        const QByteArray &key = line.key;
        const QByteArray &value = line.value;
        if (same(key, "Channel_ID"))
            takeText(channel->ch_id, flags, CmtdChn_Analog::IdGiven, value);
        else if (same(key, "Phase_ID"))
            takeText(channel->ph, flags, CmtdChn_Analog::PhaseGiven, value);
        else if (same(key, "Monitored_Component"))
            takeText(channel->ccbm, flags, CmtdChn_Analog::CcbmGiven, value);
        else if (same(key, "Channel_Units"))
            takeText(channel->uu, flags, CmtdChn_Analog::UnitGiven, value);
        else if (same(key, "Channel_Multiplier"))
            takeFloat(channel->a, flags, CmtdChn_Analog::AGiven, value);
        else if (same(key, "Channel_Offset"))
            takeFloat(channel->b, flags, CmtdChn_Analog::BGiven, value);
        else if (same(key, "Channel_Skew"))
            takeFloat(channel->skew, flags, CmtdChn_Analog::SkewGiven, value);
        else if (same(key, "Range_Minimum_Limit_Value"))
            takeFloat(channel->min, flags, CmtdChn_Analog::MinGiven, value);
        else if (same(key, "Range_Maximum_Limit_Value"))
            takeFloat(channel->max, flags, CmtdChn_Analog::MaxGiven, value);
        else if (same(key, "Channel_Ratio_Primary"))
            takeFloat(channel->primary, flags, CmtdChn_Analog::PrimaryGiven, value);
        else if (same(key, "Channel_Ratio_Secondary"))
            takeFloat(channel->secondary, flags, CmtdChn_Analog::SecondaryGiven, value);
        else if (same(key, "Data_Primary_Secondary")) {
            if (!(flags & CmtdChn_Analog::PsGiven)) {
                channel->ps = value[0];
                flags |= CmtdChn_Analog::PsGiven;
            }
        } else {
            SetInfKey(channel->otherKeys, key, value);
        }
    }
    return ReadDone;
}

int CCmtd99File::readInfStatusChannel(int number, const InfKeyLines &keys)
{
    int result = ReadDone;
    CmtdChn_Status *channel = channelOfSection(*this, FindStatusChannel(number), statusChannels, number,
                                               "No [idx_cfg=%d] of the status channel in [.cfg] file!",
                                               "The index [idx_cfg=%d] of status channel overlaped!", result);
    if (!channel)
        return result;
    uint32_t &flags = channel->flags;
    for (const InfKeyLine &line : keys) {
        const QByteArray &key = line.key;
        if (same(key, "Channel_ID")) {
            takeText(channel->ch_id, flags, CmtdChn_Status::IdGiven, line.value);
        } else if (same(key, "Phase_ID")) {
            takeText(channel->ph, flags, CmtdChn_Status::PhaseGiven, line.value);
        } else if (same(key, "Monitored_Component")) {
            takeText(channel->ccbm, flags, CmtdChn_Status::CcbmGiven, line.value);
        } else if (same(key, "Normal_State")) {
            if (!(flags & CmtdChn_Status::NormalStateGiven)) {
                channel->normalState = static_cast<uint8_t>(std::atoi(line.value.constData()));
                flags |= CmtdChn_Status::NormalStateGiven;
            }
        } else {
            SetInfKey(channel->otherKeys, key, line.value);
        }
    }
    return ReadDone;
}

namespace {

// The fields of a "CHNL_INFO_#n" line, or a message on why there are none.
struct ParameterLine
{
    QByteArray buffer;
    char *fields[kParameterFields] = {};
    int count = 0;
};

bool splitParameters(CCmtd99File &file, const InfKeyLine &line, int least, const char *lossMessage,
                     ParameterLine &out)
{
    if (cutNumber(line.key).name != "chnl_info_#") {
        file.AddInfMessage(line.line, CmtdMessage("Format error (%s)!", line.key.constData()));
        return false;
    }
    out.count = splitValue(line.value, out.buffer, out.fields, kParameterFields, ',');
    if (out.count < least) {
        file.AddInfMessage(line.line, CmtdMessage(lossMessage, line.key.constData(), line.value.constData()));
        return false;
    }
    return true;
}

void takeIndex(int16_t &target, uint32_t &flags, uint32_t bit, const char *field)
{
    if (flags & bit)
        return;
    target = toInt16(std::atol(field));
    if (target >= 0)
        flags |= bit;
}

void takeNonEmpty(QByteArray &target, uint32_t &flags, uint32_t bit, const char *field)
{
    if (flags & bit)
        return;
    target = field;
    if (!target.isEmpty())
        flags |= bit;
}

void takeAngles(CmtdChn_Analog &channel, char *fields[], int count)
{
    if (channel.flags & CmtdChn_Analog::CompAngleGiven)
        return;
    const int angles = std::min(count - 12, 3);
    for (int i = 0; i < angles; ++i) {
        // atof stops at the degree sign.
        const float degrees = atofFloat(fields[12 + i]);
        if (std::fabs(degrees) > 0.0001f)
            channel.compAngle[i] = degrees * kDegreesToRadians;
    }
    if (angles > 0) {
        channel.angleCount = angles;
        channel.flags |= CmtdChn_Analog::CompAngleGiven;
    }
}

} // namespace

int CCmtd99File::readInfAnalogParameters(const InfKeyLines &keys)
{
    for (const InfKeyLine &line : keys) {
        ParameterLine p;
        if (!splitParameters(*this, line, 12, "Lossing Parameters (<12)! [%s=%s]", p))
            continue;
        const int index = std::atoi(p.fields[0]);
        CmtdChn_Analog *channel = FindAnalogChannel(index);
        if (!channel) {
            AddInfMessage(line.line,
                          CmtdMessage("No this analog channel in public segment(idx_cfg=%d)!", index));
            continue;
        }
        uint32_t &flags = channel->flags;
        char **f = p.fields;
        takeIndex(channel->deviceIndex, flags, CmtdChn_Analog::DeviceIndexGiven, f[1]);
        takeNonEmpty(channel->alias, flags, CmtdChn_Analog::AliasGiven, f[2]);
        takeNonEmpty(channel->typeCode, flags, CmtdChn_Analog::TypeCodeGiven, f[3]);
        if (!(flags & CmtdChn_Analog::RatedFreqGiven)) {
            channel->ratedFreq = atofFloat(f[4]);
            if (channel->ratedFreq > 0.0f)
                flags |= CmtdChn_Analog::RatedFreqGiven;
        }
        takeFloat(channel->primaryRating, flags, CmtdChn_Analog::PrimaryRatingGiven, f[5]);
        takeNonEmpty(channel->primaryUnit, flags, CmtdChn_Analog::PrimaryUnitGiven, f[6]);
        takeFloat(channel->secondaryRating, flags, CmtdChn_Analog::SecondaryRatingGiven, f[7]);
        takeNonEmpty(channel->secondaryUnit, flags, CmtdChn_Analog::SecondaryUnitGiven, f[8]);
        takeFloat(channel->slopeA, flags, CmtdChn_Analog::SlopeAGiven, f[9]);
        takeFloat(channel->distanceB, flags, CmtdChn_Analog::DistanceBGiven, f[10]);
        takeNonEmpty(channel->physicalUnit, flags, CmtdChn_Analog::PhysicalUnitGiven, f[11]);
        takeAngles(*channel, f, p.count);
    }
    return ReadDone;
}

int CCmtd99File::readInfStatusParameters(const InfKeyLines &keys)
{
    for (const InfKeyLine &line : keys) {
        ParameterLine p;
        if (!splitParameters(*this, line, 6, "Lossing Parameters (<6)! [%s=%s]", p))
            continue;
        const int index = std::atoi(p.fields[0]);
        CmtdChn_Status *channel = FindStatusChannel(index);
        if (!channel) {
            AddInfMessage(line.line,
                          CmtdMessage("No this status channel in public segment(idx_cfg=%d)!", index));
            continue;
        }
        uint32_t &flags = channel->flags;
        char **f = p.fields;
        takeIndex(channel->deviceIndex, flags, CmtdChn_Status::DeviceIndexGiven, f[1]);
        takeNonEmpty(channel->alias, flags, CmtdChn_Status::AliasGiven, f[2]);
        takeNonEmpty(channel->signalClass, flags, CmtdChn_Status::SignalClassGiven, f[3]);
        takeNonEmpty(channel->typeCode, flags, CmtdChn_Status::TypeCodeGiven, f[4]);
        takeNonEmpty(channel->channelFlag, flags, CmtdChn_Status::ChannelFlagGiven, f[5]);
    }
    return ReadDone;
}

int CCmtd99File::readInfStatusEvent(int32_t headLine, const InfKeyLines &keys)
{
    InfStatusEvent event;
    uint32_t &flags = event.flags;
    using Event = InfStatusEvent;
    for (const InfKeyLine &line : keys) {
        const QByteArray &key = line.key;
        if (same(key, "CHNL_ID")) {
            QByteArray buffer;
            char *fields[2];
            if (splitValue(line.value, buffer, fields, 2, ',') < 2) {
                AddInfMessage(line.line, CmtdMessage("Lossing Parameters (<2)! [%s=%s]", key.constData(),
                                                     line.value.constData()));
                continue;
            }
            if (!(flags & Event::ChannelGiven)) {
                event.channelIndex = toInt16(std::atol(fields[0]));
                flags |= Event::ChannelGiven;
            }
            takeText(event.channelName, flags, Event::NameGiven, QByteArray(fields[1]));
        } else if (same(key, "STATUS")) {
            takeText(event.status, flags, Event::StatusGiven, line.value);
        } else if (same(key, "Trip_Point")) {
            if (!(flags & Event::TripPointGiven)) {
                event.tripPoint = atol32(line.value.constData());
                flags |= Event::TripPointGiven;
            }
        } else if (same(key, "Trip_Time")) {
            if (flags & (Event::TripTimeGiven | Event::TripFracGiven))
                continue;
            const qsizetype dot = line.value.indexOf('.');
            event.tripTimeMs = atol32(line.value.constData());
            flags |= Event::TripTimeGiven;
            if (dot >= 0) {
                event.tripTimeFrac = atol32(line.value.constData() + dot + 1);
                flags |= Event::TripFracGiven;
            }
        } else {
            SetInfKey(event.otherKeys, key, line.value);
        }
    }
    for (const Event &known : statusEvents) {
        if (known.channelIndex == event.channelIndex && known.tripPoint == event.tripPoint) {
            AddInfMessage(headLine, CmtdMessage("Status event overlaped [%d-%s = %d]!", event.channelIndex,
                                                event.channelName.constData(), event.tripPoint));
            return ReadRefused;
        }
    }
    statusEvents.push_back(std::move(event));
    return ReadDone;
}

int CCmtd99File::readInfCommentary(const InfKeyLines &keys)
{
    InfCommentary note;
    using Note = InfCommentary;
    uint32_t &flags = note.flags;
    for (const InfKeyLine &line : keys) {
        const QByteArray &key = line.key;
        QByteArray buffer;
        char *fields[3];
        if (same(key, "CHN_ID")) {
            const int count = splitValue(line.value, buffer, fields, 3, ',');
            if (!(flags & Note::TypeGiven) && fields[0][0]) {
                note.channelType = static_cast<unsigned char>(fields[0][0]);
                flags |= Note::TypeGiven;
            }
            if (count >= 2 && !(flags & Note::IndexGiven)) {
                note.channelIndex = toInt16(std::atol(fields[1]));
                flags |= Note::IndexGiven;
            }
        } else if (same(key, "SMP_IDX")) {
            // The file counts samples from 1.
            if (!(flags & Note::SampleGiven)) {
                note.sampleIndex = toInt32(static_cast<long long>(atol32(line.value.constData())) - 1);
                flags |= Note::SampleGiven;
            }
        } else if (same(key, "DESCR")) {
            takeText(note.text, flags, Note::TextGiven, line.value);
        } else if (same(key, "Position")) {
            if (splitValue(line.value, buffer, fields, 3, ',') >= 2 && !(flags & Note::PositionGiven)) {
                note.posX = atol32(fields[0]);
                note.posY = atol32(fields[1]);
                flags |= Note::PositionGiven;
            }
        } else {
            SetInfKey(note.otherKeys, key, line.value);
        }
    }
    const bool analog = note.channelType == 'A' || note.channelType == 'a';
    const bool exists = analog ? FindAnalogChannel(note.channelIndex) != nullptr
                               : FindStatusChannel(note.channelIndex) != nullptr;
    if (note.text.isEmpty() || note.sampleIndex < 0 || note.channelIndex >= firstFreeChannelIndex || !exists)
        return ReadDone;
    note.channelType = analog ? 'A' : 'D';
    commentaries.push_back(std::move(note));
    return ReadDone;
}

int CCmtd99File::readInfSettings(const InfKeyLines &keys)
{
    for (const InfKeyLine &line : keys) {
        if (same(line.key, "CUSTOM_T0")) {
            // T0' already set (by the engineer or an earlier section) stays.
            const int32_t index = atol32(line.value.constData());
            if (customT0 < 0 && index >= 0)
                customT0 = index;
        } else {
            SetInfKey(settingsKeys, line.key, line.value);
        }
    }
    return ReadDone;
}
