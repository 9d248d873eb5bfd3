#include "cmtddocument.h"

#include <QAction>

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
