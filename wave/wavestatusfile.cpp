// The wave view status file (".wvs"): how a recording was being looked at — scale, scroll
// position, cursors, display switches, each channel's colour and flags, and the rows with
// their grouping — so that an engineer comes back to the same picture.

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtddocument.h"
#include "cmtdviewanawave.h"
#include "diskfile.h"
#include "linereader.h"

#include <QScrollBar>

#include <cstdio>
#include <cstdlib>
#include <cstring>

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

struct ChannelEntry
{
    bool analog = true;
    int idx = -1;
    uint32_t colour = 0;
    float vScale = 1.0f;
    uint32_t flags = 0;
};

struct AxisEntry
{
    int key = 0;
    QList<CChnMapBase *> channels;
};

enum Section
{
    SectionNone,
    SectionPublic,
    SectionAnalog,
    SectionStatus,
    SectionAxis
};

} // namespace

bool CCmtdViewAnaWave::saveStatus(const char *path) const
{
    CDiskFile file;
    if (!file.Open(path, "w"))
        return false;
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
    return true;
}

bool CCmtdViewAnaWave::loadStatus(const char *path)
{
    CDiskFile file;
    if (!file.Open(path, "r"))
        return false;
    const CCmtd99File &recording = document->recording();
    // The whole file is read first: a status of another recording changes nothing at all.
    int points = -1, analogs = -1, statuses = -1;
    float scale = -1.0f;
    int hPos = 0, vPos = 0, t1 = cursorT1, t2 = cursorT2;
    uint32_t drawFlags = document->displayFlags.toInt();
    std::vector<ChannelEntry> channels;
    std::vector<AxisEntry> axes;
    ChannelEntry channel;
    AxisEntry axis;
    Section section = SectionNone;
    auto closeSection = [&]() {
        if (section == SectionAnalog || section == SectionStatus) {
            const bool known = channel.analog ? recording.FindAnalogMap(channel.idx) != nullptr
                                              : recording.FindStatusMap(channel.idx) != nullptr;
            if (known && channel.colour != 0 && channel.vScale > 0.0f)
                channels.push_back(channel);
        } else if (section == SectionAxis && !(axis.channels.isEmpty() && axis.key < 0)) {
            axes.push_back(axis);
        }
        channel = ChannelEntry();
        axis = AxisEntry();
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
            section = qstricmp(key, "Public") == 0 ? SectionPublic
                      : qstricmp(key, "ACh") == 0  ? SectionAnalog
                      : qstricmp(key, "SCh") == 0  ? SectionStatus
                      : qstricmp(key, "Axis") == 0 ? SectionAxis
                                                   : SectionNone;
            channel.analog = section == SectionAnalog;
            continue;
        }
        auto is = [key](const char *name) { return qstricmp(key, name) == 0; };
        switch (section) {
        case SectionPublic:
            if (is("PointNum"))
                points = std::atoi(value);
            else if (is("ACNum"))
                analogs = std::atoi(value);
            else if (is("SCNum"))
                statuses = std::atoi(value);
            else if (is("hScale"))
                scale = static_cast<float>(std::atof(value));
            else if (is("hPos"))
                hPos = std::atoi(value);
            else if (is("vPos"))
                vPos = std::atoi(value);
            else if (is("curT1"))
                t1 = std::atoi(value);
            else if (is("curT2"))
                t2 = std::atoi(value);
            else if (is("drawFlags"))
                drawFlags = readFlags(value, kFrameFlags);
            break;
        case SectionAnalog:
        case SectionStatus:
            if (is("idx")) {
                channel.idx = std::atoi(value);
            } else if (is("clr")) {
                unsigned colour = 0;
                std::sscanf(value, "%x", &colour);
                channel.colour = colour;
            } else if (is("vScale")) {
                const float v = static_cast<float>(std::atof(value));
                if (v >= 1.0f)
                    channel.vScale = v;
            } else if (is("flags")) {
                channel.flags = readFlags(value, kChannelFlags);
            }
            break;
        case SectionAxis:
            if (is("key")) {
                axis.key = std::atoi(value);
            } else if (is("ChMap")) {
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
            break;
        case SectionNone:
            break;
        }
    }
    closeSection();
    if (points != recording.loadedPoints || analogs != int(recording.analogMaps.size()) ||
        statuses != int(recording.statusMaps.size()))
        return false;

    for (const ChannelEntry &entry : channels) {
        CChnMapBase *map = entry.analog ? static_cast<CChnMapBase *>(recording.FindAnalogMap(entry.idx))
                                        : static_cast<CChnMapBase *>(recording.FindStatusMap(entry.idx));
        map->colour = entry.colour;
        map->flags = (map->flags & ~0xBu) | (entry.flags & 0xBu);
        if (entry.analog)
            static_cast<CChnMapAnalog *>(map)->vScale = entry.vScale;
    }
    if (!axes.empty()) {
        rows.clear();
        for (const AxisEntry &entry : axes) {
            CWaveRow row;
            row.key = entry.key;
            row.channels = entry.channels;
            rows.push_back(row);
        }
    }
    document->displayFlags = CCmtdDocument::DisplayFlags::fromInt(drawFlags);
    layoutRows(false);
    if (scale > 0.0f)
        setHorzScale(scale);
    cursorT1 = qBound(0, t1, qMax(0, m_points - 1));
    cursorT2 = qBound(0, t2, qMax(0, m_points - 1));
    setScroll(hPos, vPos);
    document->actionsChanged();
    document->cursorsMoved();
    Q_EMIT cursorsChanged();
    update();
    return true;
}
