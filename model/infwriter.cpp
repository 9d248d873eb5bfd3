// The writer of the extension file. The text is composed in memory and put on disk through a
// write set, so a save that fails leaves the earlier file as it was. Whatever dialect or version
// was read, the file written is this system's own: "TRWK" heads and the version-2 tag.

#include "cmtd99file.h"

#include "chnmap.h"
#include "chnvocabulary.h"
#include "safewrite.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

namespace {

constexpr float kRadiansToDegrees = 57.2957763671875f;

// Every private section that a save writes; reports are read and never saved.
constexpr uint32_t kSavedPrivateSections = InfAnalogChannelsParameter | InfStatusChannelsParameter |
                                           InfStatusEvents | InfReport | InfLine | InfTransformer | InfPower |
                                           InfExcitation | InfCommentaries | InfExpression | InfSettings |
                                           InfChannelsGroup | InfOtherPrivate;

void writeKeys(CTextOutput &out, const InfKeyValueList &keys)
{
    for (const InfKeyValue &key : keys)
        out.Printf("%s=%s\r\n", key.key.constData(), key.value.constData());
}

void writeRawSections(CTextOutput &out, const QList<InfRawSection> &sections)
{
    for (const InfRawSection &section : sections) {
        out.Printf("[%s]\r\n", section.head.constData());
        writeKeys(out, section.keys);
        out.Printf("\r\n");
    }
}

void writeStamp(CTextOutput &out, const char *key, const RecordTime &t)
{
    out.Printf("%s=%02d/%02d/%04d,%02d:%02d:%02d.%06d\r\n", key, t.day, t.month, t.year, t.hour, t.minute,
               t.second, t.microsecond);
}

// The degree sign in the recording's own text encoding; readers stop at it either way.
QByteArray degreeSign(const QByteArray &codecName)
{
    QTextCodec *codec = codecName.isEmpty() ? nullptr : QTextCodec::codecForName(codecName);
    return codec ? codec->fromUnicode(QStringLiteral("\u00b0")) : QByteArray("\xc2\xb0");
}

// The signal class of an analog channel, as its store finds it.
int16_t analogClass(CmtdChn_Analog &channel)
{
    const CChnMapAnalog store(&channel);
    return store.Class();
}

// A transformer channel with all four ratings is written with them: secondary values in the
// plain unit, the scale of its store, and the ratio from the ratings. The ".cfg" is written by
// then, so the two files can differ in these fields.
void writeRatingsIntoRecord(CmtdChn_Analog &channel)
{
    const CChnMapAnalog store(&channel);
    const int16_t chnClass = store.Class();
    if ((chnClass != ClassACV && chnClass != ClassACC) || !channel.HasRatings())
        return;
    channel.ps = 'S';
    channel.uu = chnClass == ClassACV ? "V" : "A";
    channel.a = static_cast<float>(store.gain);
    channel.b = static_cast<float>(store.offset);
    channel.primary = channel.primaryRating * 1000.0f;
    channel.secondary = channel.secondaryRating;
}

} // namespace

bool CCmtd99File::SaveInf(const char *path)
{
    const QString target = QString::fromLocal8Bit(path);
    const QString backup = target + QStringLiteral(".bak");
    // The first save of another version's file keeps that file as it was; later saves leave
    // the copy alone.
    bool madeBackup = false;
    if (infVersion < 2 && QFileInfo::exists(target) && !QFileInfo::exists(backup))
        madeBackup = QFile::rename(target, backup);

    CTextOutput out;
    WriteInf(out);
    QString error;
    if (!WriteFileSafely(target, out.bytes(), &error)) {
        saveError = error;
        if (madeBackup)
            QFile::rename(backup, target);
        return false;
    }
    saveError.clear();
    return true;
}

void CCmtd99File::WriteInf(CTextOutput &out)
{
    writeInfRecordInfo(out);
    writeInfFileDescription(out);
    writeInfPublicChannels(out);
    writeRawSections(out, publicExtraSections);
    WriteInfSections(out, kSavedPrivateSections);
    writeRawSections(out, foreignSections);
}

bool CCmtd99File::WriteInfSections(CTextOutput &out, uint32_t mask)
{
    if (mask & InfAnalogChannelsParameter)
        writeInfAnalogParameters(out);
    if (mask & InfStatusChannelsParameter)
        writeInfStatusParameters(out);
    if (mask & InfStatusEvents)
        writeInfStatusEvents(out);
    WriteInfUnitSections(out, *this,
                         mask & (InfLine | InfTransformer | InfPower | InfExcitation | InfChannelsGroup));
    if (mask & InfCommentaries)
        writeInfCommentaries(out);
    writeInfExpressionAndSettings(out, mask);
    if (mask & InfOtherPrivate)
        writeRawSections(out, privateExtraSections);
    return true;
}

void CCmtd99File::writeInfRecordInfo(CTextOutput &out) const
{
    const InfRecordInfo &info = recordInfo;
    out.Printf("[Public Record_Information]\r\n");
    out.Printf("Source=%s,TRWKINF_V2\r\n", info.source.constData());
    out.Printf("Record_Information=%s\r\n", info.recordInfo.constData());
    out.Printf("Location=%s\r\n", info.location.constData());
    out.Printf("max_current=%.6f\r\n", double(info.maxCurrent));
    out.Printf("min_current=%.6f\r\n", double(info.minCurrent));
    out.Printf("max_voltage=%.6f\r\n", double(info.maxVoltage));
    out.Printf("min_voltage=%.6f\r\n", double(info.minVoltage));
    out.Printf("EventNoteCount=%d\r\n", info.eventNoteCount);
    writeKeys(out, info.otherKeys);
    out.Printf("\r\n");
}

void CCmtd99File::writeInfFileDescription(CTextOutput &out) const
{
    const CmtdFileDescription &d = fileDesc;
    // The segments as the recording uses them; before validation only the raw list exists.
    const std::vector<SampleSegment> &list = segments.empty() ? d.rawSegments : segments;
    out.Printf("[Public File_Description]\r\n");
    out.Printf("Station_Name=%s\r\n", d.stationName.constData());
    out.Printf("Recording_Device_ID=%s\r\n", d.recDevId.constData());
    out.Printf("Revision_Year=1999\r\n");
    out.Printf("Total_Channel_Count=%d\r\n", d.totalChannels);
    out.Printf("Analog_Channel_Count=%d\r\n", d.analogCount);
    out.Printf("Status_Channel_Count=%d\r\n", d.statusCount);
    out.Printf("Line_Frequency=%.3f\r\n", double(d.lineFreq));
    out.Printf("Sample_Rate_Count=%d\r\n", static_cast<int>(list.size()));
    for (size_t i = 0; i < list.size(); ++i) {
        const int number = static_cast<int>(i) + 1;
        out.Printf("Sample_Rate_#%d=%.3f\r\n", number, double(list[i].rate));
        out.Printf("End_Sample_Rate_#%d=%d\r\n", number, list[i].end);
    }
    writeStamp(out, "File_Start_Time", d.startTime);
    writeStamp(out, "Trigger_Time", d.triggerTime);
    out.Printf("File_Type=%s\r\n", d.fileType.constData());
    out.Printf("Time_Multiplier=%.6f\r\n", double(d.timeMult));
    writeKeys(out, d.otherKeys);
    out.Printf("\r\n");
}

void CCmtd99File::writeInfPublicChannels(CTextOutput &out)
{
    const int analogs = FileAnalogCount();
    for (int i = 0; i < analogs; ++i) {
        CmtdChn_Analog *c = analogChannels[size_t(i)].get();
        writeRatingsIntoRecord(*c);
        out.Printf("[Public Analog_Channel_#%d]\r\n", c->index);
        out.Printf("Channel_ID=%s\r\n", c->ch_id.constData());
        out.Printf("Phase_ID=%s\r\n", c->ph.constData());
        out.Printf("Monitored_Component=%s\r\n", c->ccbm.constData());
        out.Printf("Channel_Units=%s\r\n", c->uu.constData());
        out.Printf("Channel_Multiplier=%.10f\r\n", double(c->a));
        out.Printf("Channel_Offset=%.10f\r\n", double(c->b));
        out.Printf("Channel_Skew=%.10f\r\n", double(c->skew));
        out.Printf("Range_Minimum_Limit_Value=%.0f\r\n", double(c->min));
        out.Printf("Range_Maximum_Limit_Value=%.0f\r\n", double(c->max));
        out.Printf("Channel_Ratio_Primary=%.10f\r\n", double(c->primary));
        out.Printf("Channel_Ratio_Secondary=%.10f\r\n", double(c->secondary));
        out.Printf("Data_Primary_Secondary=%c\r\n", c->ps);
        writeKeys(out, c->otherKeys);
        out.Printf("\r\n");
    }
    if (analogs > 0)
        out.Printf("\r\n");
    for (const auto &c : statusChannels) {
        out.Printf("[Public Status_Channel_#%d]\r\n", c->index);
        out.Printf("Channel_ID=%s\r\n", c->ch_id.constData());
        out.Printf("Phase_ID=%s\r\n", c->ph.constData());
        out.Printf("Monitored_Component=%s\r\n", c->ccbm.constData());
        out.Printf("Normal_State=%d\r\n", c->normalState);
        writeKeys(out, c->otherKeys);
        out.Printf("\r\n");
    }
    if (!statusChannels.empty())
        out.Printf("\r\n");
}

void CCmtd99File::writeInfAnalogParameters(CTextOutput &out)
{
    const int analogs = FileAnalogCount();
    if (analogs < 1)
        return;
    const QByteArray degree = degreeSign(codecName);
    constexpr uint32_t ratingBits = CmtdChn_Analog::PrimaryRatingGiven | CmtdChn_Analog::PrimaryUnitGiven |
                                    CmtdChn_Analog::SecondaryRatingGiven | CmtdChn_Analog::SecondaryUnitGiven;
    constexpr uint32_t ratioBits =
        CmtdChn_Analog::PrimaryGiven | CmtdChn_Analog::SecondaryGiven | CmtdChn_Analog::PsGiven;
    out.Printf("[TRWK Analog_Channels_Parameter]\r\n");
    for (int i = 0; i < analogs; ++i) {
        CmtdChn_Analog *c = analogChannels[size_t(i)].get();
        // Ratings the file never gave follow from the channel line: a voltage or current
        // transformer's ratio, anything else a plain slope of 1.
        const int16_t chnClass = analogClass(*c);
        const bool ac = chnClass == ClassACV || chnClass == ClassACC;
        if (ac && !(c->flags & ratingBits) && (c->flags & ratioBits) == ratioBits) {
            const float factor = ParseUnit(c->uu).factor;
            c->primaryRating = factor * c->primary * 0.001f;
            c->primaryUnit = chnClass == ClassACV ? "kV" : "kA";
            c->secondaryRating = factor * c->secondary;
            c->secondaryUnit = chnClass == ClassACV ? "V" : "A";
        } else if (!ac && !(c->flags & ratingBits)) {
            c->slopeA = 1.0f;
            c->distanceB = 0.0f;
            c->physicalUnit = c->uu;
        }
        if (c->typeCode.isEmpty())
            c->typeCode = ClassCode(chnClass);
        out.Printf("CHNL_INFO_#%d=%d, %d, %s, %s, %.3f, %.3f, %s, %.3f, %s, %.8f, %.8f, %s", c->index,
                   c->index, c->deviceIndex, c->alias.constData(), c->typeCode.constData(),
                   double(c->ratedFreq), double(c->primaryRating), c->primaryUnit.constData(),
                   double(c->secondaryRating), c->secondaryUnit.constData(), double(c->slopeA),
                   double(c->distanceB), c->physicalUnit.constData());
        for (int i = 0; i < c->angleCount && i < 3; ++i)
            out.Printf(", %.8f%s", double(c->compAngle[i] * kRadiansToDegrees), degree.constData());
        out.Printf("\r\n");
    }
    out.Printf("\r\n");
}

void CCmtd99File::writeInfStatusParameters(CTextOutput &out)
{
    if (statusChannels.empty())
        return;
    out.Printf("[TRWK Status_Channels_Parameter]\r\n");
    for (const auto &c : statusChannels) {
        out.Printf("CHNL_INFO_#%d=%d, %d, %s, %s, %s, %s\r\n", c->index, c->index, c->deviceIndex,
                   c->alias.constData(), c->signalClass.constData(), c->typeCode.constData(),
                   c->channelFlag.constData());
    }
    out.Printf("\r\n");
}

void CCmtd99File::writeInfStatusEvents(CTextOutput &out) const
{
    int number = 0;
    for (const InfStatusEvent &e : statusEvents) {
        out.Printf("[TRWK STATUS_Event_#%d]\r\n", ++number);
        out.Printf("CHNL_ID=%d, %s\r\n", e.channelIndex, e.channelName.constData());
        out.Printf("STATUS=%s\r\n", e.status.constData());
        out.Printf("Trip_Point=%d\r\n", e.tripPoint);
        out.Printf("Trip_Time=%d.%03dms\r\n", e.tripTimeMs, e.tripTimeFrac);
        writeKeys(out, e.otherKeys);
        out.Printf("\r\n");
    }
    if (number > 0)
        out.Printf("\r\n");
}

void CCmtd99File::writeInfCommentaries(CTextOutput &out) const
{
    int number = 0;
    for (const InfCommentary &note : commentaries) {
        const bool analog = note.channelType == 'A';
        const CmtdChn_Base *channel =
            analog ? static_cast<const CmtdChn_Base *>(FindAnalogChannel(note.channelIndex))
                   : FindStatusChannel(note.channelIndex);
        if (!channel || note.channelIndex >= firstFreeChannelIndex)
            continue;
        out.Printf("[TRWK Commentary_#%d]\r\n", ++number);
        out.Printf("CHN_ID=%c,%d,%s\r\n", analog ? 'A' : 'D', note.channelIndex, channel->ch_id.constData());
        out.Printf("SMP_IDX=%d\r\n", note.sampleIndex + 1);
        out.Printf("DESCR=%s\r\n", note.text.constData());
        out.Printf("Position=%d,%d\r\n", note.posX, note.posY);
        writeKeys(out, note.otherKeys);
        out.Printf("\r\n");
    }
    if (number > 0)
        out.Printf("\r\n");
}

void CCmtd99File::writeInfExpressionAndSettings(CTextOutput &out, uint32_t mask) const
{
    if ((mask & InfExpression) && !expressionLines.isEmpty()) {
        out.Printf("[TRWK Expression]\r\n");
        for (const QByteArray &line : expressionLines)
            out.Printf("%s\r\n", line.constData());
        out.Printf("\r\n");
    }
    if ((mask & InfSettings) && (customT0 >= 0 || !settingsKeys.isEmpty())) {
        out.Printf("[TRWK Settings]\r\n");
        if (customT0 >= 0)
            out.Printf("CUSTOM_T0=%d\r\n", customT0);
        writeKeys(out, settingsKeys);
        out.Printf("\r\n");
    }
}
