// A cut of a recording: a range of samples and a choice of channels copied into a new
// recording, each fast rate segment optionally thinned, with the plant units that use the
// chosen channels; and the same range written as a ".csv" table for a spreadsheet.

#include "cmtd99file.h"
#include "safewrite.h"
#include "unitedit.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

// One rate segment of the cut: where its samples come from in the source.
struct CutSegment
{
    float rate = 0.0f;
    int count = 0;
    int sourceFirst = 0;
    int step = 1;
};

// The kept segments of `first` .. `last`, each above `highestRate` thinned to every k-th sample.
std::vector<CutSegment> cutSegments(const CCmtd99File &source, int first, int last, float highestRate)
{
    std::vector<CutSegment> kept;
    for (const SampleSegment &s : source.segments) {
        if (s.start > last)
            break;
        if (s.end <= first)
            continue;
        const int a = std::max(s.start, first);
        const int b = std::min(s.end - 1, last);
        CutSegment c;
        c.sourceFirst = a;
        if (highestRate <= 0.0f || s.rate <= highestRate) {
            c.rate = s.rate;
            c.count = b - a + 1;
        } else {
            c.step = std::max(2, int(std::lround(double(s.rate) / double(highestRate))));
            c.rate = s.rate / float(c.step);
            c.count = (b - a + 1) / c.step;
        }
        if (c.count > 0)
            kept.push_back(c);
    }
    return kept;
}

QString cutText(const char *text)
{
    return QCoreApplication::translate("CCmtd99File", text);
}

void copyDescription(CCmtd99File &cut, const CCmtd99File &source, int first,
                     const std::vector<CutSegment> &parts)
{
    CmtdFileDescription &d = cut.fileDesc;
    const CmtdFileDescription &s = source.fileDesc;
    d.stationName = s.stationName;
    d.recDevId = s.recDevId;
    d.lineFreq = s.lineFreq;
    d.timeMult = s.timeMult;
    d.revYear = "1999";
    d.fileType = "BINARY";
    d.flags = CmtdFileDescription::StationGiven | CmtdFileDescription::DeviceGiven |
              CmtdFileDescription::RevYearGiven | CmtdFileDescription::LineFreqGiven |
              CmtdFileDescription::StartTimeGiven | CmtdFileDescription::TriggerTimeGiven |
              CmtdFileDescription::TimeMultGiven;
    const int64_t at = source.sampleTimes ? source.sampleTimes[first] : 0;
    d.startTime = ShiftRecordTime(s.triggerTime, at);
    d.triggerTime = d.startTime;
    // Rate segments, those of nearly one rate joined.
    int total = 0;
    for (const CutSegment &part : parts) {
        if (!cut.segments.empty() && std::fabs(cut.segments.back().rate - part.rate) < 0.1f) {
            cut.segments.back().end += part.count;
        } else {
            SampleSegment segment;
            segment.flags = SampleSegment::RateGiven | SampleSegment::EndGiven;
            segment.index = int16_t(cut.segments.size() + 1);
            segment.rate = part.rate;
            segment.start = total;
            segment.end = total + part.count;
            cut.segments.push_back(segment);
        }
        total += part.count;
    }
    d.rateCount = int16_t(cut.segments.size());
    d.rawSegments = cut.segments;
    cut.pointCount = total;
    cut.loadedPoints = total;
    cut.triggerIndex = 0;
}

} // namespace

bool CCmtd99File::CutFrom(const CCmtd99File &source, int first, int last,
                          const std::vector<const CChnMapAnalog *> &analogs,
                          const std::vector<const CChnMapStatus *> &statuses, const QByteArray &title,
                          float highestRate, QString &error)
{
    Q_UNUSED(title);
    ClearAll();
    first = std::max(first, 0);
    last = std::min(last, source.loadedPoints - 1);
    const std::vector<CutSegment> parts = cutSegments(source, first, last, highestRate);
    copyDescription(*this, source, first, parts);
    fileDesc.analogCount = int16_t(analogs.size());
    fileDesc.statusCount = int16_t(statuses.size());
    fileDesc.totalChannels = int16_t(analogs.size() + statuses.size());
    const int points = loadedPoints;
    sampleTimes = static_cast<int64_t *>(std::malloc(sizeof(int64_t) * size_t(std::max(points, 1))));
    if (!sampleTimes) {
        error = QString::fromUtf8("文件剪辑处理时内存不足！");
        return false;
    }
    // Where each sample of the cut comes from.
    std::vector<int> from;
    from.reserve(size_t(points));
    for (const CutSegment &part : parts) {
        for (int j = 0; j < part.count; ++j)
            from.push_back(part.sourceFirst + j * part.step);
    }
    const int64_t zero = source.sampleTimes ? source.sampleTimes[first] : 0;
    for (int r = 0; r < points; ++r)
        sampleTimes[r] = source.sampleTimes ? source.sampleTimes[from[size_t(r)]] - zero : 0;

    for (size_t c = 0; c < analogs.size(); ++c) {
        const CChnMapAnalog &src = *analogs[c];
        auto record = std::make_unique<CmtdChn_Analog>(*src.config);
        record->index = int16_t(c + 1);
        auto map = std::make_unique<CChnMapAnalog>(record.get());
        if (!map->allocate(points)) {
            error = cutText("Memory is not enough to cut analog channel [%1]: %2bytes")
                        .arg(Text(src.config->ch_id))
                        .arg(qint64(points) * qint64(sizeof(float)));
            return false;
        }
        // Values as they stand: the cut keeps the source's scaling.
        map->maxValue = src.maxValue;
        map->minValue = src.minValue;
        float *x = map->Values();
        for (int r = 0; r < points; ++r) {
            x[r] = src.Value(from[size_t(r)]);
            map->takeExtreme(x[r]);
        }
        map->updateExtent();
        analogChannels.push_back(std::move(record));
        analogMaps.push_back(std::move(map));
    }
    for (size_t c = 0; c < statuses.size(); ++c) {
        const CChnMapStatus &src = *statuses[c];
        auto record = std::make_unique<CmtdChn_Status>(*src.config);
        record->index = int16_t(c + 1);
        auto map = std::make_unique<CChnMapStatus>(record.get());
        if (!map->allocate(points)) {
            error = cutText("Memory is not enough to cut status channel [%1]!").arg(Text(src.config->ch_id));
            return false;
        }
        for (int r = 0; r < points; ++r) {
            map->SetBit(r, src.Bit(from[size_t(r)]));
            // A channel that changes within the cut is drawn as one that shifts.
            if (r > 0 && map->Bit(r) != map->Bit(r - 1))
                map->flags |= CChnMapBase::FlagShifts;
        }
        statusChannels.push_back(std::move(record));
        statusMaps.push_back(std::move(map));
    }
    firstFreeChannelIndex = int16_t(std::max<size_t>(analogs.size(), 1) + 1);
    firstFreeChannelIndex2 = firstFreeChannelIndex;

    // The plant units that use a chosen channel, their channels renumbered in the cut's order.
    auto analogNumber = [&analogs](int index) {
        for (size_t c = 0; c < analogs.size(); ++c) {
            if (analogs[c]->config && analogs[c]->config->index == index)
                return int(c + 1);
        }
        return 0;
    };
    auto statusNumber = [&statuses](int index) {
        for (size_t c = 0; c < statuses.size(); ++c) {
            if (statuses[c]->config && statuses[c]->config->index == index)
                return int(c + 1);
        }
        return 0;
    };
    source.FindUnit([&](const CmtdInfTrwk_Unit &unit) {
        if (unit.kind == CmtdInfTrwk_Unit::KindGroup)
            return false;
        std::unique_ptr<CmtdInfTrwk_Unit> copy = CloneUnit(unit);
        if (RemapUnitChannels(*copy, analogNumber, statusNumber)) {
            copy->devId = ++maxDeviceId;
            InstallUnit(*this, std::move(copy), nullptr);
        }
        return false;
    });
    BuildScaleGroups();
    return true;
}

bool CCmtd99File::SaveCsv(const QString &path, int first, int last,
                          const std::vector<const CChnMapAnalog *> &analogs,
                          const std::vector<const CChnMapStatus *> &statuses, QString &error) const
{
    first = std::max(first, 0);
    last = std::min(last, loadedPoints - 1);
    QByteArray text = "Index,Relating time(microsecond)";
    for (const CChnMapAnalog *chn : analogs)
        text += ',' + chn->config->ch_id + '(' + chn->config->uu + ')';
    for (const CChnMapStatus *chn : statuses)
        text += ',' + chn->config->ch_id;
    text += '\n';
    char number[64];
    for (int n = first; n <= last; ++n) {
        std::snprintf(number, sizeof number, "%d,%.3f", n + 1, double(sampleTimes ? sampleTimes[n] : 0));
        text += number;
        for (const CChnMapAnalog *chn : analogs) {
            std::snprintf(number, sizeof number, ",%.6f", double(chn->Value(n)));
            text += number;
        }
        for (const CChnMapStatus *chn : statuses)
            text += chn->Bit(n) ? ",1" : ",0";
        text += '\n';
    }
    return WriteFileSafely(path, text, &error);
}
