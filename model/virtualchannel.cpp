#include "virtualchannel.h"

#include "chnmap.h"
#include "chnvocabulary.h"
#include "cmtdchannel.h"
#include "seriesframe.h"
#include "seriesjob.h"
#include "textcodec.h"

#include <QCoreApplication>

#include <algorithm>
#include <climits>
#include <memory>
#include <new>

namespace {

const char *const kNoMemory =
    QT_TRANSLATE_NOOP("CVirChnDlg", "Memory is not enough to create virtual channel!");

QString tr(const char *text)
{
    return QCoreApplication::translate("CVirChnDlg", text);
}

CChnMapAnalog *mapOf(const CCmtd99File &file, const CmtdChn_Analog *record)
{
    for (const auto &map : file.analogMaps) {
        if (map->config == record)
            return map.get();
    }
    return nullptr;
}

// The lowest index at or above the running one that no analog channel holds; 0 when the 16-bit
// indexes are used up.
int nextVirtualIndex(const CCmtd99File &file)
{
    const int first = std::max(int(file.firstFreeChannelIndex), 1);
    int index = std::max(first, int(file.firstFreeChannelIndex2));
    for (int tries = 0; tries < 2; ++tries) {
        for (; index <= INT16_MAX; ++index) {
            if (!file.FindAnalogChannel(index))
                return index;
        }
        index = first; // indexes of removed channels are free again
    }
    return 0;
}

// A new record and store of `name`, appended behind the recording's channels; null when the
// memory or the indexes run out.
CChnMapAnalog *appendVirtualChannel(CCmtd99File &file, const QByteArray &name)
{
    const int index = nextVirtualIndex(file);
    if (index < 1)
        return nullptr;
    auto record = std::unique_ptr<CmtdChn_Analog>(new (std::nothrow) CmtdChn_Analog);
    if (!record)
        return nullptr;
    record->Reset(index);
    record->ch_id = name;
    record->alias = name;
    record->flags |= CmtdChn_Analog::IdGiven | CmtdChn_Analog::AliasGiven;
    auto map = std::unique_ptr<CChnMapAnalog>(new (std::nothrow) CChnMapAnalog(record.get(), true));
    if (!map || !map->allocate(std::max(file.loadedPoints, 0)))
        return nullptr;
    // All zeros until a job fills it.
    map->maxValue = 0.0f;
    map->minValue = 0.0f;
    map->absMax = 0.0f;
    file.firstFreeChannelIndex2 = static_cast<int16_t>(std::min(index + 1, int(INT16_MAX)));
    file.analogChannels.push_back(std::move(record));
    file.analogMaps.push_back(std::move(map));
    return file.analogMaps.back().get();
}

// The fields that tell how the source's values are to be read: kind, unit, the coefficients
// and ranges, the transformer's ratio and ratings, P/S, phase and rated frequency.
void copyDescription(CmtdChn_Analog &to, const CmtdChn_Analog &from)
{
    to.typeCode = from.typeCode;
    to.uu = from.uu;
    to.a = from.a;
    to.b = from.b;
    to.skew = from.skew;
    to.min = from.min;
    to.max = from.max;
    to.primary = from.primary;
    to.secondary = from.secondary;
    to.ps = from.ps;
    to.ph = from.ph;
    to.ratedFreq = from.ratedFreq;
    to.primaryRating = from.primaryRating;
    to.primaryUnit = from.primaryUnit;
    to.secondaryRating = from.secondaryRating;
    to.secondaryUnit = from.secondaryUnit;
    to.slopeA = from.slopeA;
    to.distanceB = from.distanceB;
    to.physicalUnit = from.physicalUnit;
    to.angleCount = from.angleCount;
    std::copy(std::begin(from.compAngle), std::end(from.compAngle), std::begin(to.compAngle));
}

// The curve of `source` into the target's array. False when stopped or short of memory.
bool fillCurve(CCmtd99File &file, CChnMapAnalog &target, const CChnMapAnalog &source,
               const SeriesJobParams &params, ProgressFn report, void *owner)
{
    const int total = SeriesLength(file, SourceOf(source));
    float *y = target.Values();
    if (total < 1 || !y || target.sampleCount < total)
        return true;
    // A channel taken again keeps nothing of its earlier curve.
    std::fill(y + total, y + target.sampleCount, 0.0f);
    SeriesProgress progress(report, owner, total);
    bool done = false;
    if (&target == &source) {
        // A channel computed from itself reads a copy of what it held before.
        CChnMapAnalog before(nullptr, true);
        before.config = source.config;
        before.chnClass = source.chnClass;
        if (before.allocate(total)) {
            std::copy(y, y + total, before.Values());
            done = RunSeriesJob(file, before, params, y, &progress);
        }
    } else {
        done = RunSeriesJob(file, source, params, y, &progress);
    }
    if (!done && !progress.stopped())
        file.AddDatMessage(QCoreApplication::translate("CVirChnDlg", kNoMemory).toLocal8Bit());
    return done;
}

} // namespace

CChnMapAnalog *MakeVirtualChannel(CCmtd99File &file, const QByteArray &name, QString &message)
{
    // Stores hold names without double quotes; look the name up as it will be held.
    QByteArray wanted = name;
    wanted.replace('"', '_');
    // Names are compared as C strings: a name must not hide a tail behind a NUL, or the
    // suffix added below would never make it differ.
    if (const qsizetype nul = wanted.indexOf('\0'); nul >= 0)
        wanted.truncate(nul);
    const QByteArray suffix = EncodeText(tr(" Virtual Channel"), file.codecName);
    // Each pass that meets a file's channel makes the name longer, so the passes end.
    for (;;) {
        CmtdChn_Analog *record = file.FindAnalogChannelByName(wanted.constData());
        if (record && file.IsVirtualAnalog(*record)) {
            if (CChnMapAnalog *map = mapOf(file, record)) {
                map->isVirtual = true;
                return map;
            }
            break;
        }
        if (!record && !file.FindStatusChannelByName(wanted.constData()))
            break;
        wanted += suffix;
    }
    CChnMapAnalog *map = appendVirtualChannel(file, wanted);
    if (!map)
        message = tr(kNoMemory);
    return map;
}

void DescribeVirtualChannel(CChnMapAnalog &target, const CChnMapAnalog &source, const SeriesJobParams &params)
{
    if (!target.config || !source.config)
        return;
    // Read before anything is written: a channel may be derived into itself.
    const SeriesJobTraits traits = SeriesJobResultTraits(source, params);
    const int16_t sourceClass = source.Class();
    const float sourceFreq = source.config->ratedFreq;
    const int16_t device = source.isVirtual ? source.config->deviceIndex : source.config->index;

    CmtdChn_Analog &to = *target.config;
    // The name, index and monitored component stay the channel's own.
    constexpr uint32_t own =
        CmtdChn_Analog::IdGiven | CmtdChn_Analog::IndexGiven | CmtdChn_Analog::AliasGiven;
    constexpr uint32_t notCopied = own | CmtdChn_Analog::CcbmGiven | CmtdChn_Analog::DeviceIndexGiven;
    to.flags = (source.config->flags & ~notCopied) | (to.flags & own);
    copyDescription(to, *source.config);
    to.deviceIndex = device;
    if (device >= 0)
        to.flags |= CmtdChn_Analog::DeviceIndexGiven;

    // What the curve changes is written into the record, so that a store rebuilt from it agrees.
    to.ratedFreq = traits.ratedFreq;
    if (traits.ratedFreq != sourceFreq)
        to.flags |= CmtdChn_Analog::RatedFreqGiven;
    if (traits.chnClass != sourceClass) {
        to.typeCode = ClassCode(traits.chnClass);
        to.flags |= CmtdChn_Analog::TypeCodeGiven;
    }

    const CChnMapAnalog fresh(&to, true);
    target.chnClass = traits.chnClass;
    target.kindCode = fresh.kindCode;
    target.phase = fresh.phase;
    target.unit = fresh.unit;
    target.colour = fresh.colour;
    target.gain = fresh.gain;
    target.offset = fresh.offset;
    target.rangeMin = fresh.rangeMin;
    target.rangeMax = fresh.rangeMax;
    target.periodic = traits.ac;
    target.direct = traits.direct;
    target.isVirtual = true;
}

bool RemoveVirtualChannel(CCmtd99File &file, CChnMapAnalog *map)
{
    auto &maps = file.analogMaps;
    const auto it = std::find_if(maps.begin(), maps.end(), [map](const auto &m) { return m.get() == map; });
    if (!map || it == maps.end() || !map->config || !file.IsVirtualAnalog(*map->config))
        return false;
    const CmtdChn_Analog *record = map->config;
    const int16_t index = record->index;
    const bool grouped = std::any_of(file.scaleGroups.begin(), file.scaleGroups.end(),
                                     [map](const ScaleGroup &g) { return g.store == map; });
    maps.erase(it);
    std::erase_if(file.analogChannels, [record](const auto &c) { return c.get() == record; });
    std::erase_if(file.commentaries, [index](const InfCommentary &n) {
        return n.channelType == 'A' && n.channelIndex == index;
    });
    if (grouped)
        file.BuildScaleGroups();
    return true;
}

void RemoveAllVirtualChannels(CCmtd99File &file)
{
    const size_t maps = file.analogMaps.size();
    std::erase_if(file.analogMaps,
                  [&file](const auto &m) { return m->config && file.IsVirtualAnalog(*m->config); });
    std::erase_if(file.analogChannels, [&file](const auto &c) { return file.IsVirtualAnalog(*c); });
    const int16_t first = file.firstFreeChannelIndex;
    std::erase_if(file.commentaries, [first](const InfCommentary &n) {
        return n.channelType == 'A' && n.channelIndex >= first;
    });
    file.firstFreeChannelIndex2 = file.firstFreeChannelIndex;
    if (maps != file.analogMaps.size() && !file.scaleGroups.empty())
        file.BuildScaleGroups();
}

bool RunVirtualChannelJob(CCmtd99File &file, CChnMapAnalog &target, const CChnMapAnalog &source,
                          const SeriesJobParams &params, ProgressFn report, void *owner)
{
    target.maxValue = 0.0f;
    target.minValue = 0.0f;
    target.absMax = 0.0f;
    const bool finished = file.segments.empty() || fillCurve(file, target, source, params, report, owner);
    // The closing steps run for a stopped job too: its extent covers what it wrote.
    target.RecalcExtremes();
    target.flags &= ~uint32_t(CChnMapBase::FlagJobMask);
    return finished;
}
