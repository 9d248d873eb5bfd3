#include "seriesframe.h"

#include "chnmap.h"

SeriesSource SourceOf(const CChnMapAnalog &chn)
{
    SeriesSource source;
    source.x = chn.Values();
    source.count = source.x ? chn.sampleCount : 0;
    source.freq = RatedFreq(chn);
    source.chnClass = chn.Class();
    return source;
}

int SeriesLength(const CCmtd99File &file, const SeriesSource &source)
{
    if (!source.x)
        return 0;
    return std::max(0, std::min(file.loadedPoints, source.count));
}

SeriesProgress::SeriesProgress(ProgressFn fn, void *context, int total)
    : m_fn(fn), m_context(context), m_total(total)
{
    if (m_fn)
        m_step = std::max(1, m_fn(m_context, 8, total, 0));
}

bool SeriesProgress::report(int i)
{
    m_fn(m_context, 10, m_total, i);
    if (m_fn(m_context, 0, m_total, i) < 0)
        m_stopped = true;
    return !m_stopped;
}

bool SeriesProgress::segmentDone()
{
    if (m_fn && m_fn(m_context, 0, m_total, 0) < 0)
        m_stopped = true;
    return !m_stopped;
}
