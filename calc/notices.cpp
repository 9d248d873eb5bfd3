#include "notices.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("RecordingNotices", text);
}

// True when a channel that phasors are computed for has a cycle taken as 50 Hz only because
// no extension file gave its rated frequency.
bool anyAcChannelOnDefaultFrequency(const CCmtd99File &file)
{
    for (const auto &map : file.analogMaps) {
        const CmtdChn_Analog *record = map->config;
        if (record && map->IsAC() && !(record->flags & CmtdChn_Analog::RatedFreqGiven))
            return true;
    }
    return false;
}

} // namespace

int FirstBackwardStamp(const CCmtd99File &file)
{
    if (!file.sampleTimes)
        return -1;
    for (int i = 1; i < file.loadedPoints; ++i) {
        if (file.sampleTimes[i] < file.sampleTimes[i - 1])
            return i;
    }
    return -1;
}

QStringList RecordingNotices(const CCmtd99File &file)
{
    QStringList notices;
    const float line = file.fileDesc.lineFreq;
    if (line > 0.0f && line != 50.0f && anyAcChannelOnDefaultFrequency(file)) {
        notices << tr("Phasors use 50 Hz windows; the recording's line frequency is %1 Hz")
                       .arg(double(line), 0, 'g', 7);
    }
    const int backward = FirstBackwardStamp(file);
    if (backward > 0) {
        notices << tr("Time stamps run backwards at point %1 (%2 us after %3 us); times are shown as "
                      "recorded")
                       .arg(backward)
                       .arg(file.sampleTimes[backward])
                       .arg(file.sampleTimes[backward - 1]);
    }
    return notices;
}
