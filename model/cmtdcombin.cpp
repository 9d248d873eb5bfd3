#include "cmtdcombin.h"

#include "cmtd99file.h"
#include "exactcopy.h"
#include "interpolation.h"
#include "seriesframe.h"
#include "unitedit.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cmath>

namespace {

QString combinText(const char *text)
{
    return QCoreApplication::translate("CCmtd99FileCombin", text);
}

// The source sample at or before `time`, -1 when the time lies outside the source's samples.
// `hint` carries the walk from one result sample to the next, whose times only grow.
int sampleAtOrBefore(const CCmtd99File &source, double time, int &hint)
{
    const int points = source.loadedPoints;
    if (!source.sampleTimes || points < 1 || time < double(source.sampleTimes[0]) ||
        time > double(source.sampleTimes[points - 1]))
        return -1;
    if (hint < 0 || hint >= points || double(source.sampleTimes[hint]) > time)
        hint = 0;
    while (hint + 1 < points && double(source.sampleTimes[hint + 1]) <= time)
        ++hint;
    return hint;
}

// The value of a channel at `time` between source samples i, i + 1 (and i + 2).
double interpolated(const CCmtd99File &source, const CChnMapAnalog &chn, int i, double time, int method)
{
    const int64_t *t = source.sampleTimes;
    const double x0 = double(t[i]);
    const double x1 = i + 1 < source.loadedPoints ? double(t[i + 1]) : x0;
    const double x2 = i + 2 < source.loadedPoints ? double(t[i + 2]) : x1;
    const double y0 = chn.Value(i);
    const double y1 = chn.Value(i + 1);
    const double y2 = chn.Value(i + 2);
    switch (method) {
    case CombinHermite:
        return InterpHermite2(x0, y0, x1, y1, x2, y2, time);
    case CombinLagrange2:
        return InterpLagrange2(x0, y0, x1, y1, x2, y2, time);
    case CombinNewton:
        return InterpNewton2(x0, y0, x1, y1, x2, y2, time);
    default:
        return InterpLagrange1(x0, y0, x1, y1, time);
    }
}

bool addChannels(CCmtd99File &result, const CombinItem &item, std::vector<CChnMapAnalog *> &analogs,
                 std::vector<CChnMapStatus *> &statuses, QString &error)
{
    const int points = result.loadedPoints;
    int analogIndex = 0;
    for (const auto &record : result.analogChannels)
        analogIndex = std::max<int>(analogIndex, record->index);
    int statusIndex = 0;
    for (const auto &record : result.statusChannels)
        statusIndex = std::max<int>(statusIndex, record->index);
    for (const CChnMapAnalog *src : item.analogChannels) {
        auto record = std::make_unique<CmtdChn_Analog>(*src->config);
        record->index = int16_t(++analogIndex);
        auto map = std::make_unique<CChnMapAnalog>(record.get());
        if (!map->allocate(points)) {
            error = combinText("Memory is not enough to combin analog channel [%1]: %2bytes")
                        .arg(item.file->Text(src->config->ch_id))
                        .arg(qint64(points) * qint64(sizeof(float)));
            return false;
        }
        std::fill(map->Values(), map->Values() + points, 0.0f);
        map->maxValue = 0.0f;
        map->minValue = 0.0f;
        analogs.push_back(map.get());
        result.analogChannels.push_back(std::move(record));
        result.analogMaps.push_back(std::move(map));
    }
    for (const CChnMapStatus *src : item.statusChannels) {
        auto record = std::make_unique<CmtdChn_Status>(*src->config);
        record->index = int16_t(++statusIndex);
        auto map = std::make_unique<CChnMapStatus>(record.get());
        if (!map->allocate(points)) {
            error = combinText("Memory is not enough to combin status channel [%1]!")
                        .arg(item.file->Text(src->config->ch_id));
            return false;
        }
        for (int r = 0; r < points; ++r)
            map->SetBit(r, 0);
        statuses.push_back(map.get());
        result.statusChannels.push_back(std::move(record));
        result.statusMaps.push_back(std::move(map));
    }
    const CmtdFileDescription &d = result.fileDesc;
    result.fileDesc.analogCount = int16_t(result.analogChannels.size());
    result.fileDesc.statusCount = int16_t(result.statusChannels.size());
    result.fileDesc.totalChannels = int16_t(d.analogCount + d.statusCount);
    result.firstFreeChannelIndex = int16_t(analogIndex + 1);
    result.firstFreeChannelIndex2 = result.firstFreeChannelIndex;
    return true;
}

bool mergeSamples(CCmtd99File &result, const CCmtd99File &source, int64_t baseAlignTime,
                  const CombinItem &item, const std::vector<CChnMapAnalog *> &analogs,
                  const std::vector<CChnMapStatus *> &statuses, SeriesProgress *progress, int done)
{
    const double shift =
        double(source.sampleTimes
                   ? source.sampleTimes[std::clamp(item.alignPoint, 0, std::max(0, source.loadedPoints - 1))]
                   : 0) -
        double(baseAlignTime);
    std::vector<float> carried(analogs.size(), 0.0f);
    int hint = 0;
    int lastMatched = -1;
    for (int r = 0; r < result.loadedPoints; ++r) {
        if (progress && !progress->at(done + r))
            return false;
        const double time = double(result.sampleTimes ? result.sampleTimes[r] : 0) + shift;
        int i = sampleAtOrBefore(source, time, hint);
        if (i < 0)
            continue;
        lastMatched = i;
        const bool exact = double(source.sampleTimes[i]) == time;
        for (size_t c = 0; c < analogs.size(); ++c) {
            const CChnMapAnalog &src = *item.analogChannels[c];
            float value;
            if (exact) {
                value = src.Value(i);
            } else if (item.method > CombinLagrange1) {
                value = carried[c];
            } else {
                const int at = std::max(0, std::min(i, source.loadedPoints - 3));
                const double v = interpolated(source, src, at, time, item.method);
                // An interpolation that overshoots the channel's whole extent takes the sample.
                const double peak =
                    std::max(std::fabs(double(src.maxValue)), std::fabs(double(src.minValue)));
                value = std::fabs(v) > 1.2 * peak ? src.Value(at) : float(v);
            }
            analogs[c]->Values()[r] = value;
            analogs[c]->takeExtreme(value);
            carried[c] = value;
        }
        for (size_t c = 0; c < statuses.size(); ++c)
            statuses[c]->SetBit(r, item.statusChannels[c]->Bit(i));
    }
    // A state that is on at the other file's last sample holds to the end.
    for (size_t c = 0; c < statuses.size(); ++c) {
        if (lastMatched < 0 || !item.statusChannels[c]->Bit(lastMatched))
            continue;
        int r = result.loadedPoints - 1;
        while (r >= 0 && !statuses[c]->Bit(r))
            statuses[c]->SetBit(r--, 1);
    }
    // A channel that changes is drawn as one that shifts.
    for (size_t c = 0; c < statuses.size(); ++c) {
        for (int n = 1; n < result.loadedPoints && !(statuses[c]->flags & CChnMapBase::FlagShifts); ++n) {
            if (statuses[c]->Bit(n) != statuses[c]->Bit(n - 1))
                statuses[c]->flags |= CChnMapBase::FlagShifts;
        }
    }
    return true;
}

void copyUnits(CCmtd99File &result, const CCmtd99File &source, const CombinItem &item, int analogBase,
               int statusBase)
{
    auto analogNumber = [&item, analogBase](int index) {
        for (size_t c = 0; c < item.analogChannels.size(); ++c) {
            if (item.analogChannels[c]->config->index == index)
                return analogBase + int(c) + 1;
        }
        return 0;
    };
    auto statusNumber = [&item, statusBase](int index) {
        for (size_t c = 0; c < item.statusChannels.size(); ++c) {
            if (item.statusChannels[c]->config->index == index)
                return statusBase + int(c) + 1;
        }
        return 0;
    };
    source.FindUnit([&](const CmtdInfTrwk_Unit &unit) {
        if (unit.kind == CmtdInfTrwk_Unit::KindGroup)
            return false;
        std::unique_ptr<CmtdInfTrwk_Unit> copy = CloneUnit(unit);
        if (RemapUnitChannels(*copy, analogNumber, statusNumber)) {
            copy->devId = ++result.maxDeviceId;
            copy->name = UniqueUnitName(result, copy->name);
            InstallUnit(result, std::move(copy), nullptr);
        }
        return false;
    });
}

} // namespace

QString CombinMethodText(int method)
{
    switch (method) {
    case CombinHermite:
        return combinText("Charleshermite Three-Times Insert");
    case CombinLagrange2:
        return combinText("Lagrange Tow-Times Insert");
    case CombinNewton:
        return combinText("Newton Diff. & Quotient Insert");
    case CombinLagrange1:
        return combinText("Lagrange One-Time Insert");
    default:
        return combinText("Kriging Insert");
    }
}

bool MergeFrom(CCmtd99File &result, const CCmtd99File &source, int64_t baseAlignTime, const CombinItem &item,
               QString &error, SeriesProgress *progress, int done)
{
    const int analogBase = int(result.analogChannels.size());
    const int statusBase = int(result.statusChannels.size());
    std::vector<CChnMapAnalog *> analogs;
    std::vector<CChnMapStatus *> statuses;
    if (!addChannels(result, item, analogs, statuses, error))
        return false;
    if (!mergeSamples(result, source, baseAlignTime, item, analogs, statuses, progress, done))
        return false;
    for (CChnMapAnalog *map : analogs)
        map->updateExtent();
    copyUnits(result, source, item, analogBase, statusBase);
    return true;
}

CCmtd99FileCombin::CCmtd99FileCombin() = default;
CCmtd99FileCombin::~CCmtd99FileCombin() = default;

CombinItem &CCmtd99FileCombin::addOther(const CCmtd99File *file)
{
    m_others.push_back(std::make_unique<CombinItem>());
    m_others.back()->file = file;
    return *m_others.back();
}

int CCmtd99FileCombin::removeOther(const CCmtd99File *file)
{
    for (size_t i = 0; i < m_others.size(); ++i) {
        if (m_others[i]->file == file) {
            m_others.erase(m_others.begin() + std::ptrdiff_t(i));
            return int(i);
        }
    }
    return -1;
}

CombinItem *CCmtd99FileCombin::item(const CCmtd99File *file)
{
    if (m_base.file == file)
        return &m_base;
    for (const auto &other : m_others) {
        if (other->file == file)
            return other.get();
    }
    return nullptr;
}

bool CCmtd99FileCombin::build(QString &error, float highestRate, ProgressFn report, void *owner)
{
    stopped = false;
    if (!m_base.file)
        return false;
    m_result = std::make_unique<CCmtd99File>();
    if (!m_result->CutFrom(*m_base.file, m_base.first, m_base.last, m_base.analogChannels,
                           m_base.statusChannels, m_strTitle, highestRate, error))
        return false;
    const int64_t *baseTimes = m_base.file->sampleTimes;
    const int points = m_result->loadedPoints;
    SeriesProgress progress(report, owner,
                            int(std::min<int64_t>(int64_t(points) * int64_t(m_others.size()), INT32_MAX)));
    int done = 0;
    for (const auto &other : m_others) {
        if (!other->file)
            continue;
        const int64_t alignTime = baseTimes ? baseTimes[other->baseAlignPoint] - baseTimes[m_base.first] : 0;
        if (!MergeFrom(*m_result, *other->file, alignTime, *other, error, report ? &progress : nullptr,
                       done)) {
            stopped = progress.stopped();
            return false;
        }
        done += points;
    }
    m_result->BuildScaleGroups();
    return true;
}

bool CCmtd99FileCombin::run(const QString &basePath, QString &error, const QByteArray &datMode,
                            float highestRate, ProgressFn report, void *owner)
{
    if (!build(error, highestRate, report, owner))
        return false;
    // The exact-copy writer keeps every value as read (primary channels, unit prefixes).
    ExactCopyFormat format;
    format.fileType = datMode;
    format.revision = 1999;
    QString reason;
    if (SaveExactCopy(*m_result, basePath + QStringLiteral(".cfg"), format, &reason) !=
        ExactCopyResult::Written) {
        error = combinText("Failed to Create [.dat] File!") + QLatin1Char('\n') + reason;
        return false;
    }
    if (!m_result->SaveInf(QFile::encodeName(basePath + QStringLiteral(".inf")).constData())) {
        error = combinText("Failed to Create [.inf] File!") + QLatin1Char('\n') + m_result->saveError;
        return false;
    }
    return true;
}
