#include "cmtddocument.h"

#include "cmtd99file.h"

#include <QAction>

#include <algorithm>

CCmtdDocument::CCmtdDocument(CCmtd99File &file, QObject *parent) : QObject(parent), m_file(file) {}

void CCmtdDocument::setBackgroundBit(BackgroundBit bit, bool on)
{
    if (on)
        m_backgroundState.fetch_or(bit, std::memory_order_relaxed);
    else
        m_backgroundState.fetch_and(~uint32_t(bit), std::memory_order_relaxed);
}

bool CCmtdDocument::trigger(Action id) const
{
    QAction *entry = m_actions[id];
    if (!entry || !entry->isEnabled())
        return false;
    entry->trigger();
    return true;
}

void CCmtdDocument::rebuildEnvelopes()
{
    m_envelopes.reset();
    m_envelopeCount = 0;
    extendEnvelopes(m_file.loadedPoints);
}

void CCmtdDocument::extendEnvelopes(int loaded)
{
    const auto &maps = m_file.analogMaps;
    if (m_envelopeCount != maps.size()) {
        m_envelopes.reset(new CSampleEnvelope[maps.size()]);
        m_envelopeCount = maps.size();
        for (size_t i = 0; i < maps.size(); ++i)
            m_envelopes[i].Reserve(maps[i]->sampleCount);
    }
    for (size_t i = 0; i < maps.size(); ++i) {
        if (const float *values = maps[i]->Values())
            m_envelopes[i].Extend(values, std::min(loaded, int(maps[i]->sampleCount)));
    }
}
