// The reader of the older positional extension file and the step that carries its content into a
// loaded recording, under everything that the ".cfg" and the sectioned extension file gave.

#include "extfile.h"

#include "cmtd99file.h"
#include "diskfile.h"
#include "linereader.h"
#include "units.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr int kExtLineSize = 2048;
constexpr int kExtMaxFields = 128;
constexpr int kNameBytes = 48;
constexpr int kUnitBytes = 8;
constexpr int kMaxBusbars = 32;
constexpr int kMaxLines = 64;
constexpr int kMaxLineStatus = 160;
constexpr int kBusbarFields = 10;
constexpr int kBusbarPairFields = 18;
constexpr int kLineFields = 22;
constexpr int kLinePairFields = 30;
constexpr int kLineTypeFields = 32;
constexpr int kReactorFields = 34;
constexpr int kDualLineFields = 5;
constexpr int kChannelFields = 9;

// What a channel line of the file fills; the channel keeps these as given from then on.
constexpr uint32_t kExtChannelBits = CmtdChn_Analog::TypeCodeGiven | CmtdChn_Analog::PrimaryRatingGiven |
                                     CmtdChn_Analog::PrimaryUnitGiven | CmtdChn_Analog::SecondaryRatingGiven |
                                     CmtdChn_Analog::SecondaryUnitGiven | CmtdChn_Analog::SlopeAGiven |
                                     CmtdChn_Analog::DistanceBGiven | CmtdChn_Analog::PhysicalUnitGiven;
static_assert(kExtChannelBits == 0xFE8000u);

constexpr uint32_t kRatingBits = CmtdChn_Analog::PrimaryRatingGiven | CmtdChn_Analog::PrimaryUnitGiven |
                                 CmtdChn_Analog::SecondaryRatingGiven | CmtdChn_Analog::SecondaryUnitGiven;

// A line unit made from the file has every field of its data but no device id of its own.
constexpr uint32_t kExtUnitBits =
    CmtdInfTrwk_Unit::HasName | CmtdInfTrwk_Unit::HasObjectType | CmtdInfTrwk_UnitLine::HasLength |
    CmtdInfTrwk_UnitLine::HasR1 | CmtdInfTrwk_UnitLine::HasX1 | CmtdInfTrwk_UnitLine::HasR0 |
    CmtdInfTrwk_UnitLine::HasX0 | CmtdInfTrwk_UnitLine::HasC1 | CmtdInfTrwk_UnitLine::HasG1 |
    CmtdInfTrwk_UnitLine::HasC0 | CmtdInfTrwk_UnitLine::HasG0 | CmtdInfTrwk_UnitLine::HasMutualR |
    CmtdInfTrwk_UnitLine::HasMutualX | CmtdInfTrwk_UnitLine::HasReactor | CmtdInfTrwk_UnitLine::HasTaChns |
    CmtdInfTrwk_UnitLine::HasTvChns | CmtdInfTrwk_UnitLine::HasStatusChannels;
static_assert(kExtUnitBits == 0x15FFFAu);

constexpr uint32_t kUnitSectionBits = InfLine | InfTransformer | InfPower | InfExcitation | InfChannelsGroup;

// atof into a float; what a float cannot hold reads as 0, as rubbish does.
float toFloat(const char *text)
{
    const double number = std::atof(text);
    if (!std::isfinite(number) || std::fabs(number) > double(FLT_MAX))
        return 0.0f;
    return static_cast<float>(number);
}

int16_t toInt16(const char *text)
{
    return static_cast<int16_t>(std::atoi(text));
}

QByteArray cut(const char *text, int bytes)
{
    return QByteArray(text).left(bytes);
}

// Fills four rating pairs from `fields` two at a time (primary, secondary).
void readPairs(ExtRatingPair pairs[4], char *fields[])
{
    for (int i = 0; i < 4; ++i) {
        pairs[i].primary = toFloat(fields[2 * i]);
        pairs[i].secondary = toFloat(fields[2 * i + 1]);
    }
}

// id, name, ch1..ch4, primary, primaryUnit, secondary, secondaryUnit
void readBayHead(ExtBay &bay, char *f[])
{
    bay.id = std::atoi(f[0]);
    bay.name = cut(f[1], kNameBytes);
    for (int i = 0; i < 4; ++i)
        bay.channels[i] = toInt16(f[2 + i]);
    const float primary = toFloat(f[6]);
    const float secondary = toFloat(f[8]);
    bay.primaryUnit = cut(f[7], kUnitBytes);
    bay.secondaryUnit = cut(f[9], kUnitBytes);
    for (ExtRatingPair &pair : bay.pairs)
        pair = ExtRatingPair{primary, secondary};
}

void readLineData(ExtLine &line, char *f[], int count)
{
    readBayHead(line, f);
    line.busId = std::atoi(f[10]);
    float *const values[] = {&line.length, &line.x1,      &line.x0,      &line.r1, &line.r0, &line.c1,
                             &line.c0,     &line.mutualR, &line.mutualX, &line.g1, &line.g0};
    for (int i = 0; i < 11; ++i)
        *values[i] = toFloat(f[11 + i]);
    if (count >= kLinePairFields)
        readPairs(line.pairs, f + 22);
    if (count >= kLineTypeFields)
        line.lineType = std::atoi(f[30]);
    if (count >= kReactorFields && std::atoi(f[32]) != 0)
        line.reactor = toFloat(f[33]);
}

// A voltage transformer's secondary in kV is a recorder's slip for V: the ratio is kept.
void mendKilovoltSecondaries(std::vector<ExtBusbar> &busbars)
{
    for (ExtBusbar &bus : busbars) {
        if (bus.secondaryUnit != "kV")
            continue;
        bus.secondaryUnit = "V";
        for (ExtRatingPair &pair : bus.pairs)
            pair.secondary *= 1000.0f;
    }
}

const char *analogTypeCode(int kind)
{
    static const char *const kCodes[] = {"TV", "TA", "DV", "DA", "HF", "FQ", "PW", "PW", "AG", "ZX"};
    return kind >= 1 && kind <= 10 ? kCodes[kind - 1] : nullptr;
}

struct StatusKind
{
    int kind;
    const char *typeCode;
    const char *signalClass;
    const char *phase;
};

const StatusKind *statusKind(int kind)
{
    static const StatusKind kKinds[] = {
        {25, "Jump_A", "Relay_Act", "A"},
        {26, "Jump_B", "Relay_Act", "B"},
        {27, "Jump_C", "Relay_Act", "C"},
        {28, "Jump_ABC", "Relay_Act", nullptr},
        {29, "Close_Break", "Relay_Act", nullptr},
        {30, "Jump_Faster", "Relay_Act", nullptr},
        {35, "Jump_Ground", "Relay_Act", nullptr},
        {36, "Jump_Between_Phase", "Relay_Act", nullptr},
        {37, "Jump_For_Keeps", "Relay_Act", nullptr},
        {38, "Send", "", nullptr},
        {39, "Send", "", nullptr},
    };
    for (const StatusKind &entry : kKinds) {
        if (entry.kind == kind)
            return &entry;
    }
    return nullptr;
}

} // namespace

// The lines of the file as the reader walks them; a line can be put back for the next step.
struct CmtdExtFile::Reader
{
    CDiskFile &file;
    LoadMessageList &messages;
    int lineNumber = 0;
    std::unique_ptr<char[]> buffer{new (std::nothrow) char[kExtLineSize]};
    char *fields[kExtMaxFields] = {};
    char *line = nullptr;
    int count = 0;
    bool held = false;

    // False at the end of the file. Each line comes split into trimmed fields.
    bool next()
    {
        if (held) {
            held = false;
            return true;
        }
        if (ReadDataLine(file, lineNumber, buffer.get(), kExtLineSize, line) == 0)
            return false;
        count = SplitTrimmed(line, fields, kExtMaxFields, ',');
        return true;
    }
    void putBack() { held = true; }
    void message(const QByteArray &text) { messages.append(LoadMessage{lineNumber, text}); }
};

int CmtdExtFile::Load(const char *path, int analogCount, LoadMessageList &messages)
{
    CDiskFile file;
    if (!file.OpenRegular(path))
        return CCmtd99File::ReadDone;
    Reader in{file, messages};
    if (!in.buffer)
        return CCmtd99File::ReadNoMemory;
    int result = readHead(in);
    if (result == CCmtd99File::ReadContinue)
        result = readChannels(in, analogCount);
    return result == CCmtd99File::ReadContinue ? int(CCmtd99File::ReadDone) : result;
}

// The flag and revision, the sampling type, both system impedances and the bay's counts.
int CmtdExtFile::readHead(Reader &in)
{
    if (!in.next())
        return CCmtd99File::ReadDone;
    if (in.count < 2) {
        in.message(CmtdMessage("Lossing Parameters (<2), Needs [file-flag, copy-right <, revision>]!"));
        return CCmtd99File::ReadRefused;
    }
    if (std::strcmp(in.fields[0], "COMTRADE_EXT") != 0) {
        in.message(CmtdMessage("Invalid [file-flag]!"));
        return CCmtd99File::ReadRefused;
    }
    // "R2": the letter names the scheme, the number counts.
    revision = in.count >= 3 && in.fields[2][0] ? std::max(1, std::atoi(in.fields[2] + 1)) : 1;

    if (!in.next())
        return CCmtd99File::ReadDone;
    if (std::strcmp(in.fields[0], "YES") != 0 && std::strcmp(in.fields[0], "NO") != 0) {
        in.message(CmtdMessage("Invalid [sampling-data type]!"));
        return CCmtd99File::ReadRefused;
    }
    sampled = std::strcmp(in.fields[0], "YES") == 0;

    struct
    {
        float *values;
        const char *loss;
    } const impedances[] = {
        {localImpedance, "Lossing Parameters (<4), Needs local system impedance [rm1, rm0, xm1, xm0]!"},
        {remoteImpedance, "Lossing Parameters (<4), Needs remote system impedance [rn1, rn0, xn1, xn0]!"}};
    for (const auto &impedance : impedances) {
        if (!in.next())
            return CCmtd99File::ReadDone;
        if (in.count < 4) {
            in.message(CmtdMessage(impedance.loss));
            return CCmtd99File::ReadRefused;
        }
        for (int i = 0; i < 4; ++i)
            impedance.values[i] = toFloat(in.fields[i]);
    }

    if (!in.next())
        return CCmtd99File::ReadDone;
    if (in.count < 2) {
        // The recorders' own text, with the entity as it stands.
        in.message(CmtdMessage("Lossing Parameters (&lt;2), Needs [nBus, nLine <, nT>]!"));
        return CCmtd99File::ReadRefused;
    }
    const int nBus = std::atoi(in.fields[0]);
    const int nLine = std::atoi(in.fields[1]);
    const int nT = in.count >= 3 ? std::atoi(in.fields[2]) : 0;
    if (nBus < 0 || nBus > kMaxBusbars) {
        in.message(CmtdMessage("Invalid [basbar num.]! [nBus=%d]", nBus));
        return CCmtd99File::ReadRefused;
    }
    if (nLine < 0 || nLine > kMaxLines) {
        in.message(CmtdMessage("Invalid [line num.]! [nLine=%d]", nLine));
        return CCmtd99File::ReadRefused;
    }
    // A dual-line count is never refused: no count is both negative and above the line count.
    const int result = readBay(in, nBus, nLine, nT);
    return result == CCmtd99File::ReadContinue ? readStatusLists(in, nLine) : result;
}

// The busbar, line and dual-line records; a short record gives a message and stays zeroed.
int CmtdExtFile::readBay(Reader &in, int nBus, int nLine, int nT)
{
    for (int i = 0; i < nBus; ++i) {
        if (!in.next())
            return CCmtd99File::ReadDone;
        ExtBusbar &bus = busbars.emplace_back();
        if (in.count < kBusbarFields) {
            in.message(CmtdMessage("Lossing parameter of basbar (<10)!"));
            continue;
        }
        readBayHead(bus, in.fields);
        if (in.count >= kBusbarPairFields)
            readPairs(bus.pairs, in.fields + 10);
    }
    mendKilovoltSecondaries(busbars);
    for (int i = 0; i < nLine; ++i) {
        if (!in.next())
            return CCmtd99File::ReadDone;
        ExtLine &line = lines.emplace_back();
        if (in.count < kLineFields) {
            in.message(CmtdMessage("Lossing parameter of line (<22)!"));
            continue;
        }
        readLineData(line, in.fields, in.count);
    }
    for (int i = 0; i < nT; ++i) {
        if (!in.next())
            return CCmtd99File::ReadDone;
        if (in.count < kDualLineFields)
            in.message(CmtdMessage("Lossing parameter of dual-line (<5)!"));
        else
            ++dualLineCount;
    }
    return CCmtd99File::ReadContinue;
}

// The number of status channels per line, then one list "lineId, channel:kind, ..." per line.
int CmtdExtFile::readStatusLists(Reader &in, int nLine)
{
    if (nLine > 0) {
        if (!in.next())
            return CCmtd99File::ReadDone;
        if (in.count < nLine) {
            in.message(CmtdMessage("Invalid the number status channels related the line (<%d)!", nLine));
            return CCmtd99File::ReadRefused;
        }
        for (int i = 0; i < nLine; ++i)
            lines[size_t(i)].statusCount =
                static_cast<int16_t>(std::min(std::atoi(in.fields[i]), kMaxLineStatus));
    }
    while (in.next()) {
        if (in.count < 2) {
            in.putBack();
            return CCmtd99File::ReadContinue;
        }
        const int lineId = std::atoi(in.fields[0]);
        const auto line =
            std::find_if(lines.begin(), lines.end(), [lineId](const ExtLine &l) { return l.id == lineId; });
        if (line == lines.end())
            continue;
        const int entries = std::min(in.count - 1, kMaxLineStatus);
        for (int i = 1; i <= entries; ++i) {
            const char *entry = in.fields[i];
            const char *colon = std::strchr(entry, ':');
            const int16_t channel = toInt16(entry);
            line->statusChannels.push_back(channel);
            statusKinds[channel] = colon ? std::atoi(colon + 1) : 0;
        }
    }
    return CCmtd99File::ReadDone;
}

// "[CHANNELS_INFO_BEGIN]", the channel count, then one line per analog channel.
int CmtdExtFile::readChannels(Reader &in, int analogCount)
{
    if (!in.next() || in.count != 1 || std::strcmp(in.fields[0], "[CHANNELS_INFO_BEGIN]") != 0)
        return CCmtd99File::ReadDone;
    if (!in.next())
        return CCmtd99File::ReadDone;
    const int count = std::atoi(in.fields[0]);
    if (count < 1 || count > analogCount) {
        in.message(CmtdMessage("Invalid the number of analog channels (<%d)!", analogCount));
        return CCmtd99File::ReadRefused;
    }
    for (int i = 0; i < count; ++i) {
        if (!in.next())
            return CCmtd99File::ReadDone;
        if (in.count < kChannelFields) {
            in.message(CmtdMessage("Lossing parameters of analog channel (<9)!"));
            continue;
        }
        char **f = in.fields;
        ExtChannel &channel = channels.emplace_back();
        channel.index = toInt16(f[0]);
        channel.kind = std::atoi(f[1]);
        channel.primaryRating = toFloat(f[2]);
        channel.primaryUnit = cut(f[3], kUnitBytes);
        channel.secondaryRating = toFloat(f[4]);
        channel.secondaryUnit = cut(f[5], kUnitBytes);
        channel.slopeA = toFloat(f[6]);
        channel.distanceB = toFloat(f[7]);
        channel.physicalUnit = cut(f[8], kUnitBytes);
    }
    return CCmtd99File::ReadDone;
}

namespace {

void applyChannels(CCmtd99File &file, const CmtdExtFile &ext)
{
    for (const ExtChannel &line : ext.channels) {
        CmtdChn_Analog *channel = file.FindAnalogChannel(line.index);
        if (!channel)
            continue;
        if (const char *code = analogTypeCode(line.kind))
            channel->typeCode = code;
        channel->primaryRating = line.primaryRating;
        channel->primaryUnit = line.primaryUnit;
        channel->secondaryRating = line.secondaryRating;
        channel->secondaryUnit = line.secondaryUnit;
        channel->slopeA = line.slopeA;
        channel->distanceB = line.distanceB;
        channel->physicalUnit = line.physicalUnit;
        channel->flags |= kExtChannelBits;
    }
}

void applyStatusKinds(CCmtd99File &file, const CmtdExtFile &ext)
{
    for (const auto &[index, kind] : ext.statusKinds) {
        CmtdChn_Status *channel = file.FindStatusChannel(index);
        if (!channel)
            continue;
        if (const StatusKind *known = statusKind(kind)) {
            channel->typeCode = known->typeCode;
            channel->signalClass = known->signalClass;
            if (known->phase && channel->ph.isEmpty()) {
                channel->ph = known->phase;
                channel->flags |= CmtdChn_Status::PhaseGiven;
            }
        }
        channel->flags |= CmtdChn_Status::TypeCodeGiven | CmtdChn_Status::SignalClassGiven;
    }
}

const char *lineObjectType(int lineType)
{
    switch (lineType) {
    case 0:
    case 8:
        return "RAILWAY";
    case 1:
        return "LINE";
    case 2:
        return "BUS_CONNECTION";
    case 3:
        return "BYPASS";
    }
    return nullptr;
}

// The phase channels of a bay take its transformer ratings unless they have their own.
void rateChannels(CCmtd99File &file, const ExtBay &bay)
{
    for (int i = 0; i < 4; ++i) {
        CmtdChn_Analog *channel = bay.channels[i] ? file.FindAnalogChannel(bay.channels[i]) : nullptr;
        if (!channel || channel->HasRatings())
            continue;
        channel->primaryRating = bay.pairs[i].primary;
        channel->primaryUnit = bay.primaryUnit;
        channel->secondaryRating = bay.pairs[i].secondary;
        channel->secondaryUnit = bay.secondaryUnit;
        channel->flags |= kRatingBits;
    }
}

std::unique_ptr<CmtdInfTrwk_UnitLine> makeLineUnit(CCmtd99File &file, const CmtdExtFile &ext,
                                                   const ExtLine &line, const char *objectType)
{
    std::unique_ptr<CmtdInfTrwk_UnitLine> unit(new (std::nothrow) CmtdInfTrwk_UnitLine);
    if (!unit)
        return unit;
    unit->name = line.name;
    unit->devId = line.id;
    unit->objectType = objectType;
    unit->length = line.length;
    unit->r1 = line.r1;
    unit->x1 = line.x1;
    unit->r0 = line.r0;
    unit->x0 = line.x0;
    unit->c1 = line.c1;
    unit->g1 = line.g1;
    unit->c0 = line.c0;
    unit->g0 = line.g0;
    unit->mutualR = line.mutualR;
    unit->mutualX = line.mutualX;
    unit->reactor = line.reactor;
    for (int i = 0; i < 4; ++i)
        unit->taChns[size_t(i)] = line.channels[i];
    rateChannels(file, line);
    const auto bus = std::find_if(ext.busbars.begin(), ext.busbars.end(),
                                  [&line](const ExtBusbar &b) { return b.id == line.busId; });
    if (bus != ext.busbars.end()) {
        for (int i = 0; i < 4; ++i)
            unit->tvChns[0][size_t(i)] = bus->channels[i];
        unit->tvCount = 1;
        rateChannels(file, *bus);
    }
    for (int16_t index : line.statusChannels) {
        unit->statusChannels.push_back(static_cast<uint16_t>(index));
        CmtdChn_Status *channel = file.FindStatusChannel(index);
        if (channel && channel->ccbm.isEmpty()) {
            channel->ccbm = line.name;
            channel->flags |= CmtdChn_Status::CcbmGiven;
        }
    }
    unit->flags = kExtUnitBits;
    return unit;
}

void applyLines(CCmtd99File &file, const CmtdExtFile &ext)
{
    for (const ExtLine &line : ext.lines) {
        const char *objectType = lineObjectType(line.lineType);
        if (line.name.isEmpty() || !objectType)
            continue;
        std::unique_ptr<CmtdInfTrwk_UnitLine> unit = makeLineUnit(file, ext, line, objectType);
        if (!unit)
            return;
        file.maxDeviceId = std::max(file.maxDeviceId, unit->devId);
        file.lineUnits.push_back(std::move(unit));
    }
}

} // namespace

void ApplyExt(CCmtd99File &file, const CmtdExtFile &ext)
{
    if (!(file.infSectionsSeen & InfAnalogChannelsParameter))
        applyChannels(file, ext);
    if (!(file.infSectionsSeen & InfStatusChannelsParameter))
        applyStatusKinds(file, ext);
    if (!(file.infSectionsSeen & kUnitSectionBits))
        applyLines(file, ext);
}

int ExtMadeUnitCount(const CCmtd99File &file)
{
    const bool extRead =
        file.cffPath.isEmpty() && file.infVersion < 2 && !(file.infSectionsSeen & kUnitSectionBits);
    return extRead ? static_cast<int>(file.lineUnits.size()) : 0;
}
