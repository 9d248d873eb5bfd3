#include "cmtd99file.h"

#include "cfffile.h"
#include "diskfile.h"
#include "extfile.h"
#include "linereader.h"
#include "safewrite.h"
#include "textcodec.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

namespace {

constexpr int kCfgLineSize = 2048;
constexpr int kCfgMaxFields = 128;
constexpr int kDuplicateAnalogOffset = 10000;

bool equalsNoCase(const char *a, const char *b)
{
    return qstricmp(a, b) == 0;
}

void setText(QByteArray &target, uint32_t &flags, uint32_t bit, const char *field)
{
    if (field && *field) {
        target = field;
        flags |= bit;
    }
}

// A decimal number as a 32-bit float. Rubbish reads as 0 as with atof; so do "inf", "nan" and
// numbers beyond what a float holds, which no recorder means (false for those).
bool readFloat(const char *field, float &value)
{
    const double number = std::atof(field);
    if (!std::isfinite(number) || std::fabs(number) > double(FLT_MAX)) {
        value = 0.0f;
        return false;
    }
    value = static_cast<float>(number);
    return true;
}

void setFloat(float &target, uint32_t &flags, uint32_t bit, const char *field)
{
    if (field && *field) {
        readFloat(field, target);
        flags |= bit;
    }
}

// A whole number as atoi reads it (blanks, sign, digits; what follows is ignored; no digits
// read as 0), but never wrapped: false when it does not fit 64 bits.
bool wholeNumber(const char *text, long long &value)
{
    errno = 0;
    char *end = nullptr;
    value = std::strtoll(text, &end, 10);
    if (errno == ERANGE)
        return false;
    if (end == text)
        value = 0;
    return true;
}

// The digits of a field as written, for a message about a number too large to hold.
QByteArray numberText(const char *text)
{
    QByteArray digits = QByteArray(text).trimmed();
    qsizetype n = 0;
    while (n < digits.size() && (std::isdigit(static_cast<unsigned char>(digits[n])) ||
                                 (n == 0 && (digits[n] == '-' || digits[n] == '+'))))
        ++n;
    digits.truncate(n);
    return digits;
}

} // namespace

QByteArray CmtdMessage(const char *key, ...)
{
    const QByteArray format = QCoreApplication::translate("CCmtd99File", key).toLocal8Bit();
    char buffer[1024];
    va_list args;
    va_start(args, key);
    std::vsnprintf(buffer, sizeof buffer, format.constData(), args);
    va_end(args);
    return QByteArray(buffer);
}

QByteArray CmtdBasePath(const char *path)
{
    QByteArray base(path ? path : "");
    const qsizetype slash = base.lastIndexOf('/');
    const qsizetype dot = base.lastIndexOf('.');
    if (dot > slash && dot >= 0)
        base.truncate(dot);
    return base;
}

QByteArray CmtdSiblingPath(const QByteArray &base, const char *extension)
{
    const QByteArray lower = base + QByteArray(extension).toLower();
    if (QFileInfo::exists(QString::fromLocal8Bit(lower)))
        return lower;
    const QByteArray upper = base + QByteArray(extension).toUpper();
    if (QFileInfo::exists(QString::fromLocal8Bit(upper)))
        return upper;
    return lower;
}

CChnMapFilter::~CChnMapFilter() = default;

CCmtd99File::~CCmtd99File()
{
    std::free(sampleTimes);
}

void CCmtd99File::AddCfgMessage(const QByteArray &text)
{
    cursor.text = text;
    cfgMessages.append(LoadMessage{cursor.line, text});
}

void CCmtd99File::AddInfMessage(int32_t line, const QByteArray &text)
{
    infMessages.append(LoadMessage{line, text});
}

void CCmtd99File::AddDatMessage(const QByteArray &text)
{
    datMessages.append(LoadMessage{static_cast<int32_t>(datMessages.size() + 1), text});
}

void CCmtd99File::ClearAll()
{
    validationMask = 0;
    cffPath.clear();
    cffLayout = CffLayout();
    infSectionsSeen = 0;
    infVersion = 0;
    cursor = Cursor();
    infMessages.clear();
    recordInfo = InfRecordInfo();
    statusEvents.clear();
    commentaries.clear();
    expressionLines.clear();
    settingsKeys.clear();
    publicExtraSections.clear();
    privateExtraSections.clear();
    foreignSections.clear();
    cfgMessages.clear();
    extMessages.clear();
    reservedMessages.clear();
    maxDeviceId = 0;
    lineUnits.clear();
    transformerUnits.clear();
    powerUnits.clear();
    exciterUnits.clear();
    groupUnits.clear();
    reportRecords.clear();
    firstFreeChannelIndex = 0;
    firstFreeChannelIndex2 = 0;
    pointCount = 0;
    loadedPoints = 0;
    triggerIndex = -1;
    segments.clear();
    std::free(sampleTimes);
    sampleTimes = nullptr;
    analogMaps.clear();
    statusMaps.clear();
    scaleGroups.clear();
    customT0 = -1;
    fileDesc.Reset();
    analogChannels.clear();
    statusChannels.clear();
}

bool CCmtd99File::LoadFile(const char *path)
{
    ClearAll();
    const QByteArray base = CmtdBasePath(path);
    if (IsCffPath(QByteArray(path)))
        return LoadCffFile(QByteArray(path));
    infVersion = static_cast<int16_t>(ReadInfVersion(CmtdSiblingPath(base, ".inf").constData()));
    if (infVersion >= 2) {
        // A complete extension file of this version repeats every field of the ".cfg" and
        // can stand in for a missing or broken one.
        LoadCfg(CmtdSiblingPath(base, ".cfg").constData());
        LoadInf(CmtdSiblingPath(base, ".inf").constData());
    } else if (LoadCfg(CmtdSiblingPath(base, ".cfg").constData()) != ReadDone) {
        return false;
    } else {
        LoadInf(CmtdSiblingPath(base, ".inf").constData());
        // The older positional file fills what neither of the others gave; its result does not
        // decide the load.
        CmtdExtFile ext;
        ext.Load(CmtdSiblingPath(base, ".ext").constData(), fileDesc.analogCount, extMessages);
        ApplyExt(*this, ext);
    }
    // The names read as the recorder wrote them: the codec follows from the whole ".cfg".
    if (!codecOverride.isEmpty()) {
        codecName = codecOverride;
    } else {
        CDiskFile cfg;
        codecName = cfg.OpenRegular(CmtdSiblingPath(base, ".cfg").constData()) ? DetectCodecOf(cfg)
                                                                               : QByteArrayLiteral("UTF-8");
    }
    validationMask = Validate();
    return validationMask == 0;
}

QByteArray CCmtd99File::DetectCodecOf(CDiskFile &file)
{
    QByteArray head(1 << 20, Qt::Uninitialized);
    const int got = file.ReadSome(head.data(), static_cast<int>(head.size()));
    head.resize(std::max(got, 0));
    return DetectTextCodec(head, PreferredTextCodec());
}

bool CCmtd99File::LoadCffFile(const QByteArray &path)
{
    // The single-file form is read in place: each reader gets the stretch of its section.
    QStringList notes;
    const bool found = ReadCffLayout(path, cffLayout, notes);
    for (const QString &note : std::as_const(notes))
        AddCfgMessage(note.toLocal8Bit());
    if (!found)
        return false;
    cffPath = path;
    const CffSection &cfgPart = cffLayout.cfg;
    if (cffLayout.inf.present)
        infVersion = static_cast<int16_t>(ReadInfVersion(path.constData()));
    CDiskSection cfg;
    if (!cfg.OpenSection(path.constData(), cfgPart.begin, cfgPart.length()))
        return false;
    if (LoadCfgFrom(cfg) != ReadDone && infVersion < 2)
        return false;
    if (cffLayout.inf.present)
        LoadInf(path.constData());
    if (!codecOverride.isEmpty()) {
        codecName = codecOverride;
    } else {
        CDiskSection again;
        codecName = again.OpenSection(path.constData(), cfgPart.begin, cfgPart.length())
                        ? DetectCodecOf(again)
                        : QByteArrayLiteral("UTF-8");
    }
    validationMask = Validate();
    return validationMask == 0;
}

QString CCmtd99File::Text(const QByteArray &bytes) const
{
    return DecodeText(bytes, codecName);
}

CDiskFile *CCmtd99File::OpenInfSource(const char *path, CDiskSection &section, CDiskFile &plain) const
{
    // The extension section inside a single-file recording, or the file itself.
    if (IsCffPath(QByteArray(path))) {
        const CffSection &inf = cffLayout.inf;
        return inf.present && section.OpenSection(path, inf.begin, inf.length()) ? &section : nullptr;
    }
    return plain.OpenRegular(path) ? &plain : nullptr;
}

int CCmtd99File::ReadInfVersion(const char *path)
{
    CDiskSection section;
    CDiskFile plain;
    const QByteArray infPath =
        IsCffPath(QByteArray(path)) ? QByteArray(path) : CmtdSiblingPath(CmtdBasePath(path), ".inf");
    CDiskFile *opened = OpenInfSource(infPath.constData(), section, plain);
    if (!opened)
        return 0;
    CDiskFile &file = *opened;
    char buffer[1024];
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;
    bool inRecordSection = false;
    for (;;) {
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        if (kind == KeyLineEnd)
            return 0;
        if (kind == KeyLineSection) {
            if (inRecordSection)
                return 0;
            char *words[3];
            const int count = SplitTrimmed(key, words, 3, ' ');
            inRecordSection = count == 2 && equalsNoCase(words[0], "Public") &&
                              equalsNoCase(words[1], "Record_Information");
            continue;
        }
        if (!inRecordSection)
            continue;
        if (!equalsNoCase(key, "Source"))
            continue;
        char *fields[8];
        const int count = SplitTrimmed(value, fields, 8, ',');
        if (count < 2)
            return 0;
        ToUpperAscii(fields[1]);
        for (const char *tag : {"TRWKINF_V", "KSGLINF_V"}) {
            const size_t length = std::strlen(tag);
            if (std::strncmp(fields[1], tag, length) == 0)
                return std::atoi(fields[1] + length);
        }
        return 0;
    }
}

bool CCmtd99File::ReadAnalogLine(char *fields[], int count, int &result)
{
    if (count < 10) {
        AddCfgMessage(CmtdMessage("Lossing parameters of analog channel! (<10)"));
        return true;
    }
    // The record keeps a 16-bit index; compare what it will hold.
    int index = static_cast<int16_t>(std::atoi(fields[0]));
    if (FindAnalogChannel(index)) {
        AddCfgMessage(CmtdMessage("The index [idx_cfg=%d] of analog channel overlaped!", index));
        index += kDuplicateAnalogOffset;
    }
    auto channel = std::unique_ptr<CmtdChn_Analog>(new (std::nothrow) CmtdChn_Analog);
    if (!channel) {
        AddCfgMessage(CmtdMessage("Memory is not enough (idx_cfg=%d)!", index));
        result = ReadNoMemory;
        return false;
    }
    channel->Reset(index);
    uint32_t &flags = channel->flags;
    setText(channel->ch_id, flags, CmtdChn_Analog::IdGiven, fields[1]);
    setText(channel->ph, flags, CmtdChn_Analog::PhaseGiven, fields[2]);
    setText(channel->ccbm, flags, CmtdChn_Analog::CcbmGiven, fields[3]);
    setText(channel->uu, flags, CmtdChn_Analog::UnitGiven, fields[4]);
    setFloat(channel->a, flags, CmtdChn_Analog::AGiven, fields[5]);
    setFloat(channel->b, flags, CmtdChn_Analog::BGiven, fields[6]);
    setFloat(channel->skew, flags, CmtdChn_Analog::SkewGiven, fields[7]);
    setFloat(channel->min, flags, CmtdChn_Analog::MinGiven, fields[8]);
    setFloat(channel->max, flags, CmtdChn_Analog::MaxGiven, fields[9]);
    if (count >= 13) {
        setFloat(channel->primary, flags, CmtdChn_Analog::PrimaryGiven, fields[10]);
        setFloat(channel->secondary, flags, CmtdChn_Analog::SecondaryGiven, fields[11]);
        const char ps = fields[12][0];
        if (ps == 'P' || ps == 'S' || ps == 'p' || ps == 's') {
            channel->ps = ps;
            flags |= CmtdChn_Analog::PsGiven;
        }
    }
    const int next = index + 1;
    if (next > firstFreeChannelIndex && next <= INT16_MAX) {
        firstFreeChannelIndex = static_cast<int16_t>(next);
        firstFreeChannelIndex2 = static_cast<int16_t>(next);
    }
    analogChannels.push_back(std::move(channel));
    return true;
}

bool CCmtd99File::ReadStatusLine(char *fields[], int count, int &result)
{
    if (count < 3) {
        // The recorders' own wording, which says "analog" for status lines too.
        AddCfgMessage(CmtdMessage("Lossing parameters of analog channel! (<3)"));
        return true;
    }
    const int index = static_cast<int16_t>(std::atoi(fields[0]));
    if (FindStatusChannel(index)) {
        AddCfgMessage(CmtdMessage("The index [idx_cfg=%d] of status channel overlaped!", index));
        return true;
    }
    auto channel = std::unique_ptr<CmtdChn_Status>(new (std::nothrow) CmtdChn_Status);
    if (!channel) {
        AddCfgMessage(CmtdMessage("Memory is not enough (idx_cfg=%d)!", index));
        result = ReadNoMemory;
        return false;
    }
    channel->Reset(index);
    uint32_t &flags = channel->flags;
    setText(channel->ch_id, flags, CmtdChn_Status::IdGiven, fields[1]);
    const char *state = fields[2];
    if (count >= 5) {
        setText(channel->ph, flags, CmtdChn_Status::PhaseGiven, fields[2]);
        setText(channel->ccbm, flags, CmtdChn_Status::CcbmGiven, fields[3]);
        state = fields[4];
    }
    if (*state) {
        channel->normalState = static_cast<uint8_t>(std::atoi(state) & 1);
        flags |= CmtdChn_Status::NormalStateGiven;
    }
    statusChannels.push_back(std::move(channel));
    return true;
}

int CCmtd99File::LoadCfg(const char *path)
{
    cursor = Cursor();
    CDiskFile file;
    bool notFile = false;
    if (!file.OpenRegular(path, &notFile)) {
        if (notFile)
            AddCfgMessage(CmtdMessage("%s is not a regular file", path));
        return ReadRefused;
    }
    return LoadCfgFrom(file);
}

// The lines of a configuration as the reader walks them: one line at a time into a buffer of
// its own, split at commas on demand.
struct CCmtd99File::CfgLines
{
    CDiskFile &file;
    int32_t &lineNumber;
    std::unique_ptr<char[]> buffer{new (std::nothrow) char[kCfgLineSize]};
    char *fields[kCfgMaxFields] = {};
    char *line = nullptr;
    int count = 0;

    // False when the file has no more lines: the read ends quietly, and `Validate` reports
    // what is lacking.
    bool next() { return ReadDataLine(file, lineNumber, buffer.get(), kCfgLineSize, line) != 0; }
    void split() { count = SplitTrimmed(line, fields, kCfgMaxFields, ','); }
};

int CCmtd99File::LoadCfgFrom(CDiskFile &file)
{
    cursor = Cursor();
    CfgLines in{file, cursor.line};
    if (!in.buffer)
        return ReadNoMemory;
    int result = readIdentity(in);
    if (result == ReadContinue)
        result = readChannels(in);
    if (result == ReadContinue)
        result = readRates(in);
    if (result == ReadContinue)
        result = readStampsAndType(in);
    if (result == ReadContinue)
        result = readTimeLines(in);
    return result == ReadContinue ? int(ReadDone) : result;
}

// station_name,rec_dev_id,rev_year
int CCmtd99File::readIdentity(CfgLines &in)
{
    CmtdFileDescription &desc = fileDesc;
    if (!in.next())
        return ReadDone;
    // A byte-order mark belongs to the file, not to the station's name.
    if (static_cast<unsigned char>(in.line[0]) == 0xEF && static_cast<unsigned char>(in.line[1]) == 0xBB &&
        static_cast<unsigned char>(in.line[2]) == 0xBF)
        in.line += 3;
    in.split();
    if (in.count < 2) {
        AddCfgMessage(CmtdMessage("Lossing Parameters (<2), Needs [station-name, station-id <, revision>]!"));
        return ReadRefused;
    }
    setText(desc.stationName, desc.flags, CmtdFileDescription::StationGiven, in.fields[0]);
    setText(desc.recDevId, desc.flags, CmtdFileDescription::DeviceGiven, in.fields[1]);
    if (in.count >= 3) {
        desc.revYear = in.fields[2];
        if (!desc.recDevId.isEmpty())
            desc.flags |= CmtdFileDescription::RevYearGiven;
    }
    return ReadContinue;
}

// TT,##A,##D in either order of the two counts, then one line per channel.
int CCmtd99File::readChannels(CfgLines &in)
{
    CmtdFileDescription &desc = fileDesc;
    if (!in.next())
        return ReadDone;
    in.split();
    if (in.count < 3) {
        AddCfgMessage(CmtdMessage("Lossing Parameters (<3), Needs [T, xxA, xxD]!"));
        return ReadRefused;
    }
    char **fields = in.fields;
    ToUpperAscii(fields[1]);
    ToUpperAscii(fields[2]);
    // Each count must fit what the reader holds (16 bits); a larger one is refused as written,
    // never wrapped into a small one.
    const bool statusFirst = std::strchr(fields[1], 'D') != nullptr;
    static const char *const kCountNames[3] = {"channels", "analog channels", "status channels"};
    long long counts[3] = {};
    for (int i = 0; i < 3; ++i) {
        const bool fits = wholeNumber(fields[i], counts[i]);
        if (!fits || counts[i] > INT16_MAX || counts[i] < INT16_MIN) {
            const int kind = i == 0 ? 0 : ((i == 1) != statusFirst ? 1 : 2);
            AddCfgMessage(CmtdMessage("line %d: %s %s is out of range", cursor.line,
                                      numberText(fields[i]).constData(), kCountNames[kind]));
            return ReadRefused;
        }
    }
    const int total = static_cast<int>(counts[0]);
    int analogs = static_cast<int>(counts[1]);
    int statuses = static_cast<int>(counts[2]);
    if (statusFirst)
        std::swap(analogs, statuses);
    if (total < 1 || analogs < 0 || statuses < 0 || total > INT16_MAX || analogs > INT16_MAX ||
        statuses > INT16_MAX || analogs + statuses != total) {
        AddCfgMessage(CmtdMessage("Channel number error! [%d, %dA, %dD]", total, analogs, statuses));
        return ReadRefused;
    }
    desc.totalChannels = static_cast<int16_t>(total);
    desc.analogCount = static_cast<int16_t>(analogs);
    desc.statusCount = static_cast<int16_t>(statuses);
    desc.flags |= CmtdFileDescription::TotalGiven | CmtdFileDescription::AnalogCountGiven |
                  CmtdFileDescription::StatusCountGiven;

    int result = ReadDone;
    for (int i = 0; i < analogs; ++i) {
        if (!in.next())
            return ReadDone;
        in.split();
        if (!ReadAnalogLine(in.fields, in.count, result))
            return result;
    }
    for (int i = 0; i < statuses; ++i) {
        if (!in.next())
            return ReadDone;
        in.split();
        if (!ReadStatusLine(in.fields, in.count, result))
            return result;
    }
    return ReadContinue;
}

// lf, nrates, then its segment lines (one line when nrates is 0).
int CCmtd99File::readRates(CfgLines &in)
{
    CmtdFileDescription &desc = fileDesc;
    if (!in.next())
        return ReadDone;
    readFloat(in.line, desc.lineFreq);
    if (desc.lineFreq > 0.0f)
        desc.flags |= CmtdFileDescription::LineFreqGiven;
    else
        AddCfgMessage(CmtdMessage("Invalid [Line Freq.]! [%s]", in.line));
    if (!in.next())
        return ReadDone;
    const char *line = in.line;
    long long rateNumber = 0;
    if (!wholeNumber(line, rateNumber) || rateNumber > INT16_MAX || rateNumber < INT16_MIN) {
        // One line per rate follows; a count beyond what the reader holds would swallow the
        // rest of the file as rates.
        AddCfgMessage(CmtdMessage("line %d: %s sampling rates is out of range", cursor.line,
                                  numberText(line).constData()));
        return ReadRefused;
    }
    const int rates = static_cast<int>(rateNumber);
    desc.rateCount = static_cast<int16_t>(rates);
    if (rates >= 0)
        desc.flags |= CmtdFileDescription::RateCountGiven;
    else
        AddCfgMessage(CmtdMessage("Invalid [sampling segments num.]! [%s]", line));
    const int segmentLines = rates == 0 ? 1 : (rates > 0 ? rates : 0);
    // The last sample of a segment. One beyond what a recording holds is no count to refuse:
    // the data file decides how many samples there are, so it is held at the largest.
    auto readEndSample = [&](const char *field) -> int32_t {
        long long number = 0;
        if (wholeNumber(field, number) && number <= INT32_MAX && number >= INT32_MIN)
            return static_cast<int32_t>(number);
        AddCfgMessage(CmtdMessage("line %d: end sample %s is beyond what a recording holds; the samples of "
                                  "the data file are read",
                                  cursor.line, numberText(field).constData()));
        return number < 0 ? 0 : INT32_MAX;
    };
    for (int i = 0; i < segmentLines; ++i) {
        if (!in.next())
            return ReadDone;
        in.split();
        char **fields = in.fields;
        const int count = in.count;
        const int ordinal = i + 1;
        if (count < 2)
            AddCfgMessage(CmtdMessage("Lossing parameters of [sampling segment %d]! (&lt;2)", ordinal));
        SampleSegment segment;
        segment.index = static_cast<int16_t>(ordinal);
        const bool rateHeld = readFloat(fields[0], segment.rate);
        segment.end = count >= 2 ? readEndSample(fields[1]) : 0;
        if (segment.rate < 0.0f || !rateHeld)
            AddCfgMessage(
                CmtdMessage("Invalid Sampling-Rate of [sampling segment %d]! [%s]", ordinal, fields[0]));
        if (segment.end < 5)
            AddCfgMessage(CmtdMessage("Invalid End-point-number of [sampling segment %d]! [%s]", ordinal,
                                      count >= 2 ? fields[1] : ""));
        if (segment.rate > 0.0f)
            segment.flags |= SampleSegment::RateGiven;
        if (segment.end > 0)
            segment.flags |= SampleSegment::EndGiven;
        desc.rawSegments.push_back(segment);
    }

    return ReadContinue;
}

// The start and trigger stamps, and the data file type, kept as written: the data loader
// finds out an unknown form by itself.
int CCmtd99File::readStampsAndType(CfgLines &in)
{
    CmtdFileDescription &desc = fileDesc;
    const bool form1999 = std::atoi(desc.revYear.constData()) >= 1999;
    const bool form2013 = desc.is2013();
    auto parse = [&](RecordTime &time) {
        if (!form2013)
            return form1999 ? ParseTime1999(in.line, time) : ParseTime1991(in.line, time);
        QByteArray note;
        const bool taken = ParseTime2013(in.line, time, note);
        if (!note.isEmpty())
            AddCfgMessage(CmtdMessage(note.constData()));
        return taken;
    };
    if (!in.next())
        return ReadDone;
    if (parse(desc.startTime))
        desc.flags |= CmtdFileDescription::StartTimeGiven;
    else
        AddCfgMessage(CmtdMessage("Invalid [start time of Recording]! [%s]", in.line));
    if (!in.next())
        return ReadDone;
    if (parse(desc.triggerTime))
        desc.flags |= CmtdFileDescription::TriggerTimeGiven;
    else
        AddCfgMessage(CmtdMessage("Invalid [trigger time of Recording]! [%s]", in.line));
    if (!in.next())
        return ReadDone;
    desc.fileType = in.line;
    if (equalsNoCase(in.line, "BINARY") || equalsNoCase(in.line, "ASCII") ||
        (form2013 && (equalsNoCase(in.line, "BINARY32") || equalsNoCase(in.line, "FLOAT32"))))
        desc.flags |= CmtdFileDescription::FileTypeGiven;
    return form1999 ? int(ReadContinue) : int(ReadDone);
}

// 1999: the time multiplier; 2013: time_code,local_code and tmq_code,leapsec. A DOS
// end-of-file byte ends the text.
int CCmtd99File::readTimeLines(CfgLines &in)
{
    CmtdFileDescription &desc = fileDesc;
    if (!in.next())
        return ReadDone;
    readFloat(in.line, desc.timeMult);
    if (desc.timeMult > 0.0f)
        desc.flags |= CmtdFileDescription::TimeMultGiven;
    else
        AddCfgMessage(CmtdMessage("Invalid [time multiplication factor]! [%s]", in.line));
    if (!desc.is2013())
        return ReadDone;
    for (QByteArray *pair : {&desc.timeCode, &desc.timeQuality}) {
        if (!in.next())
            return ReadDone;
        if (in.line[0] == '\x1a') {
            AddCfgMessage(
                CmtdMessage("DOS end-of-file bytes end the configuration file; the rest is ignored"));
            return ReadDone;
        }
        in.split();
        pair[0] = in.fields[0];
        QByteArray &second = pair == &desc.timeCode ? desc.localCode : desc.leapSecond;
        second = in.count >= 2 ? QByteArray(in.fields[1]) : QByteArray();
    }
    if (in.next() && in.line[0] == '\x1a')
        AddCfgMessage(CmtdMessage("DOS end-of-file bytes end the configuration file; the rest is ignored"));
    return ReadDone;
}

void CCmtd99File::BuildEffectiveSegments()
{
    segments = fileDesc.rawSegments;
    if (segments.empty()) {
        pointCount = 0;
        return;
    }
    // Order by ordinal; a later duplicate replaces an earlier one, and a gap in the ordinals
    // loses what stands behind it.
    std::map<int, SampleSegment> byIndex;
    for (const SampleSegment &segment : segments)
        byIndex[segment.index] = segment;
    const int oldCount = static_cast<int>(segments.size());
    segments.clear();
    for (int i = 1; i <= oldCount; ++i) {
        const auto found = byIndex.find(i);
        if (found != byIndex.end())
            segments.push_back(found->second);
    }
    if (segments.empty()) {
        pointCount = 0;
        return;
    }

    // Ends that do not rise are per-segment sample counts: make them cumulative.
    bool cumulative = true;
    for (size_t i = 1; i < segments.size(); ++i) {
        if (segments[i].end <= segments[i - 1].end) {
            cumulative = false;
            break;
        }
    }
    if (!cumulative) {
        int64_t sum = 0;
        for (SampleSegment &segment : segments) {
            sum += segment.end;
            segment.end = static_cast<int32_t>(std::clamp<int64_t>(sum, INT32_MIN, INT32_MAX));
        }
    }
    int32_t start = 0;
    for (SampleSegment &segment : segments) {
        segment.start = start;
        start = segment.end;
    }
    pointCount = segments.back().end;
}

int CCmtd99File::Validate()
{
    int mask = 0;
    const CmtdFileDescription &desc = fileDesc;
    const int analogSize = static_cast<int>(analogChannels.size());
    const int statusSize = static_cast<int>(statusChannels.size());
    if (desc.totalChannels < 1) {
        AddDatMessage(CmtdMessage("Invalid total number of channels! [n=%d]", desc.totalChannels));
        mask |= BadTotal;
    }
    if (desc.analogCount < 0 || desc.analogCount != analogSize) {
        AddDatMessage(
            CmtdMessage("Invalid analog channel parameter! [n=%d][ar=%d]", desc.analogCount, analogSize));
        mask |= BadAnalog;
    }
    if (desc.statusCount < 0 || desc.statusCount != statusSize) {
        AddDatMessage(
            CmtdMessage("Invalid status channel parameter! [n=%d][ar=%d]", desc.statusCount, statusSize));
        mask |= BadStatus;
    }
    const int sum = desc.analogCount + desc.statusCount;
    if (sum != desc.totalChannels) {
        AddDatMessage(CmtdMessage("Invalid channel parameter! [n=%d][sum=%d]", desc.totalChannels, sum));
        mask |= BadSum;
    }
    BuildEffectiveSegments();
    if (pointCount < 5) {
        AddDatMessage(
            CmtdMessage("Invalid sampling segment! [npt=%d][nrate=%d]", pointCount, desc.rateCount));
        mask |= BadSegments;
    }
    if (!(desc.timeMult > 0.0f)) {
        AddDatMessage(CmtdMessage("Invalid time-multiplication! [%.3f]", static_cast<double>(desc.timeMult)));
        mask |= BadTimeMult;
    }
    if (!(fileDesc.lineFreq > 0.0f))
        fileDesc.lineFreq = 50.0f;
    for (const auto &channel : analogChannels) {
        if (!(channel->ratedFreq > 0.0f))
            channel->ratedFreq = fileDesc.lineFreq;
    }
    return mask;
}

namespace {

// printf onto the end of a byte array: the configuration is built whole, then written once.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void appendf(QByteArray &text, const char *format, ...)
{
    char line[1024];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    if (length < 0)
        return;
    if (length < int(sizeof line)) {
        text.append(line, length);
        return;
    }
    // Channel names of recorders in the field can make a line longer than any buffer.
    QByteArray wide(length + 1, '\0');
    va_start(args, format);
    std::vsnprintf(wide.data(), size_t(length) + 1, format, args);
    va_end(args);
    text.append(wide.constData(), length);
}

} // namespace

bool CCmtd99File::WriteCfg(QIODevice &out) const
{
    QByteArray text;
    const CmtdFileDescription &desc = fileDesc;
    appendf(text, "%s,%s,%s\n", desc.stationName.constData(), desc.recDevId.constData(),
            desc.revYear.constData());
    const int analogs = FileAnalogCount();
    const int statuses = static_cast<int>(statusChannels.size());
    appendf(text, "%d,%dA,%dD\n", analogs + statuses, analogs, statuses);
    for (int i = 0; i < analogs; ++i) {
        const CmtdChn_Analog *c = analogChannels[size_t(i)].get();
        appendf(text, "%d,%s,%s,%s,%s,%.10f,%.10f,%.6f,%.0f,%.0f,%.6f,%.6f,%c\n", c->index,
                c->ch_id.constData(), c->ph.constData(), c->ccbm.constData(), c->uu.constData(), double(c->a),
                double(c->b), double(c->skew), double(c->min), double(c->max), double(c->primary),
                double(c->secondary), c->ps);
    }
    for (const auto &c : statusChannels) {
        appendf(text, "%d,%s,%s,%s,%d\n", c->index, c->ch_id.constData(), c->ph.constData(),
                c->ccbm.constData(), int(c->normalState));
    }
    appendf(text, "%.3f\n", double(desc.lineFreq));
    appendf(text, "%d\n", int(desc.rateCount));
    for (const SampleSegment &segment : segments)
        appendf(text, "%.6f,%d\n", double(segment.rate), segment.end);
    for (const RecordTime *t : {&desc.startTime, &desc.triggerTime}) {
        appendf(text, "%02d/%02d/%04d,%02d:%02d:%02d.%06d\n", t->day, t->month, t->year, t->hour, t->minute,
                t->second, t->microsecond);
    }
    appendf(text, "%s\n", desc.fileType.constData());
    appendf(text, "%.6f\n", double(desc.timeMult));
    if (desc.is2013()) {
        appendf(text, "%s,%s\n", desc.timeCode.constData(), desc.localCode.constData());
        appendf(text, "%s,%s\n", desc.timeQuality.constData(), desc.leapSecond.constData());
    }
    return out.write(text) == text.size();
}

bool CCmtd99File::SaveCfg(const char *path)
{
    saveError.clear();
    const QString name = QString::fromLocal8Bit(path);
    CSafeWriteSet set;
    QIODevice *out = set.Begin(name);
    if (out && !WriteCfg(*out))
        set.WriteFailed(out);
    if (!out || !set.Commit()) {
        saveError = set.ErrorText();
        return false;
    }
    return true;
}

int CCmtd99File::FileAnalogCount() const
{
    int count = 0;
    for (const auto &channel : analogChannels) {
        if (IsVirtualAnalog(*channel))
            break;
        ++count;
    }
    return count;
}

int CCmtd99File::FileAnalogStoreCount() const
{
    return std::min(FileAnalogCount(), static_cast<int>(analogMaps.size()));
}

CmtdChn_Analog *CCmtd99File::FindAnalogChannel(int index) const
{
    for (const auto &channel : analogChannels) {
        if (channel->index == index)
            return channel.get();
    }
    return nullptr;
}

CmtdChn_Status *CCmtd99File::FindStatusChannel(int index) const
{
    for (const auto &channel : statusChannels) {
        if (channel->index == index)
            return channel.get();
    }
    return nullptr;
}

CmtdChn_Analog *CCmtd99File::FindAnalogChannelByName(const char *name) const
{
    if (!name)
        return nullptr;
    for (const auto &channel : analogChannels) {
        if (equalsNoCase(channel->ch_id.constData(), name))
            return channel.get();
    }
    // The user's alias of a real channel; virtual channels stand behind the real ones.
    for (const auto &channel : analogChannels) {
        if (IsVirtualAnalog(*channel))
            break;
        if (!channel->alias.isEmpty() && equalsNoCase(channel->alias.constData(), name))
            return channel.get();
    }
    return nullptr;
}

CmtdChn_Status *CCmtd99File::FindStatusChannelByName(const char *name) const
{
    if (!name)
        return nullptr;
    for (const auto &channel : statusChannels) {
        if (equalsNoCase(channel->ch_id.constData(), name))
            return channel.get();
    }
    for (const auto &channel : statusChannels) {
        if (!channel->alias.isEmpty() && equalsNoCase(channel->alias.constData(), name))
            return channel.get();
    }
    return nullptr;
}

CChnMapAnalog *CCmtd99File::FindAnalogMap(int index) const
{
    for (const auto &map : analogMaps) {
        if (map->Index() == index)
            return map.get();
    }
    return nullptr;
}

CChnMapStatus *CCmtd99File::FindStatusMap(int index) const
{
    for (const auto &map : statusMaps) {
        if (map->Index() == index)
            return map.get();
    }
    return nullptr;
}

CChnMapBase *CCmtd99File::FindMapByName(const char *name) const
{
    if (!name)
        return nullptr;
    for (const auto &map : analogMaps) {
        if (equalsNoCase(map->config->ch_id.constData(), name))
            return map.get();
    }
    for (const auto &map : analogMaps) {
        if (map->isVirtual)
            break;
        if (!map->config->alias.isEmpty() && equalsNoCase(map->config->alias.constData(), name))
            return map.get();
    }
    for (const auto &map : statusMaps) {
        if (equalsNoCase(map->config->ch_id.constData(), name) ||
            (!map->config->alias.isEmpty() && equalsNoCase(map->config->alias.constData(), name)))
            return map.get();
    }
    return nullptr;
}

void CCmtd99File::SelectMaps(const CChnMapFilter &filter, std::vector<CChnMapBase *> &list) const
{
    for (const auto &map : analogMaps) {
        const int index = map->Index() >= firstFreeChannelIndex ? map->config->deviceIndex : map->Index();
        if (filter.acceptAnalog(index))
            list.push_back(map.get());
    }
    for (const auto &map : statusMaps) {
        if (filter.acceptStatus(map->Index()))
            list.push_back(map.get());
    }
}

bool CCmtd99File::SetCustomT0(int index)
{
    if (index < -1 || index >= loadedPoints)
        return false;
    customT0 = index;
    return true;
}

void CCmtd99File::SetCodecOverride(const QByteArray &codec)
{
    codecOverride = codec;
    codecName = codec;
}
