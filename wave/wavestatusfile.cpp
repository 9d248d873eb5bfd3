// The wave view status file (".wvs"): how a recording was being looked at — scale, scroll
// position, cursors, display switches, each channel's colour and flags, and the rows with
// their grouping — so that an engineer comes back to the same picture.

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtddocument.h"
#include "cmtdviewanawave.h"
#include "diskfile.h"
#include "linereader.h"
#include "safewrite.h"

#include <QScrollBar>

#include <cstdio>
#include <cstdlib>
#include <cstring>

// Everything a status file holds, read whole before any of it is applied.
struct WaveStatus
{
    struct Channel
    {
        bool analog = true;
        int idx = -1;
        uint32_t colour = 0;
        float vScale = 1.0f;
        uint32_t flags = 0;
    };
    struct Row
    {
        int key = 0;
        QList<CChnMapBase *> channels;
    };

    int points = -1;
    int analogs = -1;
    int statuses = -1;
    float scale = -1.0f;
    int hPos = 0;
    int vPos = 0;
    int t1 = 0;
    int t2 = 0;
    uint32_t drawFlags = 0;
    std::vector<Channel> channels;
    std::vector<Row> axes;
};

namespace {

const char kSeparator[] = "//--------------------------------------------------\n";

struct FlagName
{
    const char *name;
    uint32_t bit;
};

const FlagName kFrameFlags[] = {
    {"Dot", CCmtdDocument::ShowDots},         {"Ext", CCmtdDocument::ShowVertExtend},
    {"T0Cur", CCmtdDocument::ShowT0Cursor},   {"T0cCur", CCmtdDocument::ShowT0cCursor},
    {"HideS0", CCmtdDocument::HideStatus0},   {"Pri", CCmtdDocument::ValuePrimary},
    {"Hm1", CCmtdDocument::ValueFundamental}, {"Rms", CCmtdDocument::ValueTrueRms},
    {"Ang", CCmtdDocument::ValueAngle},       {"Freq", CCmtdDocument::ValueFrequency},
    {"NameAhead", CCmtdDocument::NameAhead},  {"NameNoIdx", CCmtdDocument::NameWithoutIndex}};
const FlagName kChannelFlags[] = {
    {"Dot", CChnMapBase::FlagDots}, {"Ext", CChnMapBase::FlagVertExtend}, {"Hide", CChnMapBase::FlagHidden}};

template <size_t N> uint32_t readFlags(char *value, const FlagName (&table)[N])
{
    uint32_t flags = 0;
    char *names[64];
    const int count = SplitTrimmed(value, names, 64, ',');
    for (int i = 0; i < count; ++i) {
        for (const FlagName &entry : table) {
            if (qstricmp(entry.name, names[i]) == 0)
                flags |= entry.bit;
        }
    }
    return flags;
}

enum Section
{
    SectionNone,
    SectionPublic,
    SectionAnalog,
    SectionStatus,
    SectionAxis
};

bool is(const char *key, const char *name)
{
    return qstricmp(key, name) == 0;
}

void readPublicKey(const char *key, char *value, WaveStatus &status)
{
    if (is(key, "PointNum"))
        status.points = std::atoi(value);
    else if (is(key, "ACNum"))
        status.analogs = std::atoi(value);
    else if (is(key, "SCNum"))
        status.statuses = std::atoi(value);
    else if (is(key, "hScale"))
        status.scale = static_cast<float>(std::atof(value));
    else if (is(key, "hPos"))
        status.hPos = std::atoi(value);
    else if (is(key, "vPos"))
        status.vPos = std::atoi(value);
    else if (is(key, "curT1"))
        status.t1 = std::atoi(value);
    else if (is(key, "curT2"))
        status.t2 = std::atoi(value);
    else if (is(key, "drawFlags"))
        status.drawFlags = readFlags(value, kFrameFlags);
}

void readChannelKey(const char *key, char *value, WaveStatus::Channel &channel)
{
    if (is(key, "idx")) {
        channel.idx = std::atoi(value);
    } else if (is(key, "clr")) {
        unsigned colour = 0;
        std::sscanf(value, "%x", &colour);
        channel.colour = colour;
    } else if (is(key, "vScale")) {
        const float v = static_cast<float>(std::atof(value));
        if (v >= 1.0f)
            channel.vScale = v;
    } else if (is(key, "flags")) {
        channel.flags = readFlags(value, kChannelFlags);
    }
}

void readAxisKey(const char *key, char *value, const CCmtd99File &recording, WaveStatus::Row &axis)
{
    if (is(key, "key")) {
        axis.key = std::atoi(value);
    } else if (is(key, "ChMap")) {
        char *items[64];
        const int count = SplitTrimmed(value, items, 64, ',');
        for (int i = 0; i < count; ++i) {
            const char kindLetter = items[i][0];
            CChnMapBase *map = nullptr;
            if (kindLetter == 'A' || kindLetter == 'a')
                map = recording.FindAnalogMap(std::atoi(items[i] + 1));
            else if (kindLetter == 'S' || kindLetter == 's')
                map = recording.FindStatusMap(std::atoi(items[i] + 1));
            if (map)
                axis.channels.append(map);
        }
    }
}

Section sectionNamed(const char *name)
{
    return is(name, "Public") ? SectionPublic
           : is(name, "ACh")  ? SectionAnalog
           : is(name, "SCh")  ? SectionStatus
           : is(name, "Axis") ? SectionAxis
                              : SectionNone;
}

// Reads the key lines section by section; a channel of another recording or without a colour
// is left out, as is an empty row.
void readWaveStatus(CDiskFile &file, const CCmtd99File &recording, WaveStatus &status)
{
    WaveStatus::Channel channel;
    WaveStatus::Row axis;
    Section section = SectionNone;
    auto closeSection = [&]() {
        if (section == SectionAnalog || section == SectionStatus) {
            const bool known = channel.analog ? recording.FindAnalogMap(channel.idx) != nullptr
                                              : recording.FindStatusMap(channel.idx) != nullptr;
            if (known && channel.colour != 0 && channel.vScale > 0.0f)
                status.channels.push_back(channel);
        } else if (section == SectionAxis && !(axis.channels.isEmpty() && axis.key < 0)) {
            status.axes.push_back(axis);
        }
        channel = WaveStatus::Channel();
        axis = WaveStatus::Row();
    };
    char buffer[4096];
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;
    for (;;) {
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        if (kind == KeyLineEnd)
            break;
        if (kind == KeyLineSection) {
            closeSection();
            section = sectionNamed(key);
            channel.analog = section == SectionAnalog;
            continue;
        }
        if (section == SectionPublic)
            readPublicKey(key, value, status);
        else if (section == SectionAnalog || section == SectionStatus)
            readChannelKey(key, value, channel);
        else if (section == SectionAxis)
            readAxisKey(key, value, recording, axis);
    }
    closeSection();
}

} // namespace

bool CCmtdViewAnaWave::saveStatus(const char *path) const
{
    // Composed whole, then written safely: a failed save leaves the earlier status file.
    CTextOutput file;
    const CCmtd99File &recording = document->recording();
    file.Printf("%s", kSeparator);
    file.Printf("[Public]\n");
    file.Printf("  PointNum=%d\n", recording.loadedPoints);
    file.Printf("  ACNum=%d\n", int(recording.analogMaps.size()));
    file.Printf("  SCNum=%d\n", int(recording.statusMaps.size()));
    file.Printf("  hScale=%g\n", double(hScale));
    file.Printf("  hPos=%d\n", scrollX());
    file.Printf("  vPos=%d\n", scrollY());
    file.Printf("  curT1=%d\n", cursorT1);
    file.Printf("  curT2=%d\n", cursorT2);
    file.Printf("  drawFlags=");
    for (const FlagName &flag : kFrameFlags) {
        if (document->displayFlags.testAnyFlags(CCmtdDocument::DisplayFlags::fromInt(flag.bit)))
            file.Printf("%s,", flag.name);
    }
    file.Printf("\n  unitSel=\n");
    file.Printf("%s", kSeparator);
    auto channelSection = [&](const CChnMapBase &map, bool analog) {
        file.Printf("[%s]\n", analog ? "ACh" : "SCh");
        file.Printf("  idx=%d\n", map.Index());
        file.Printf("  clr=0x%08x\n", map.colour);
        if (analog)
            file.Printf("  vScale=%g\n", double(static_cast<const CChnMapAnalog &>(map).vScale));
        file.Printf("  flags=");
        for (const FlagName &flag : kChannelFlags) {
            if (map.flags & flag.bit)
                file.Printf("%s, ", flag.name);
        }
        file.Printf("\n%s", kSeparator);
    };
    for (const auto &map : recording.analogMaps)
        channelSection(*map, true);
    for (const auto &map : recording.statusMaps)
        channelSection(*map, false);
    for (const CWaveRow &row : rows) {
        file.Printf("[Axis]\n");
        file.Printf("key=%d\n", row.key);
        file.Printf("Y=%d\n", row.centerY);
        file.Printf("H=%d\n", row.height);
        file.Printf("ChMap=");
        for (const CChnMapBase *map : row.channels)
            file.Printf("%c%d, ", map->chnType == CChnMapBase::TypeAnalog ? 'A' : 'S', map->Index());
        file.Printf("\n%s", kSeparator);
    }
    return WriteFileSafely(QString::fromLocal8Bit(path), file.bytes(), nullptr);
}

bool CCmtdViewAnaWave::loadStatus(const char *path)
{
    CDiskFile file;
    if (!file.Open(path, "r"))
        return false;
    const CCmtd99File &recording = document->recording();
    // The whole file is read first: a status of another recording changes nothing at all.
    WaveStatus status;
    status.t1 = cursorT1;
    status.t2 = cursorT2;
    status.drawFlags = document->displayFlags.toInt();
    readWaveStatus(file, recording, status);
    if (status.points != recording.loadedPoints || status.analogs != int(recording.analogMaps.size()) ||
        status.statuses != int(recording.statusMaps.size()))
        return false;
    applyWaveStatus(status);
    return true;
}

void CCmtdViewAnaWave::applyWaveStatus(const WaveStatus &status)
{
    const CCmtd99File &recording = document->recording();
    // The switches a status file carries; the others (a status channel's changes) stay as the
    // load found them.
    constexpr uint32_t kKept = CChnMapBase::FlagDots | CChnMapBase::FlagVertExtend | CChnMapBase::FlagHidden;
    for (const WaveStatus::Channel &entry : status.channels) {
        CChnMapBase *map = entry.analog ? static_cast<CChnMapBase *>(recording.FindAnalogMap(entry.idx))
                                        : static_cast<CChnMapBase *>(recording.FindStatusMap(entry.idx));
        map->colour = entry.colour;
        map->flags = (map->flags & ~kKept) | (entry.flags & kKept);
        if (entry.analog)
            static_cast<CChnMapAnalog *>(map)->vScale = entry.vScale;
    }
    if (!status.axes.empty()) {
        rows.clear();
        for (const WaveStatus::Row &entry : status.axes) {
            CWaveRow row;
            row.key = entry.key;
            row.channels = entry.channels;
            rows.push_back(row);
        }
    }
    document->displayFlags = CCmtdDocument::DisplayFlags::fromInt(status.drawFlags);
    layoutRows(false);
    if (status.scale > 0.0f)
        setHorzScale(status.scale);
    cursorT1 = qBound(0, status.t1, qMax(0, m_points - 1));
    cursorT2 = qBound(0, status.t2, qMax(0, m_points - 1));
    setScroll(status.hPos, status.vPos);
    document->actionsChanged();
    document->cursorsMoved();
    Q_EMIT cursorsChanged();
    update();
}
