#include "cmtdviewananame.h"

#include "chnmap.h"
#include "chntext.h"
#include "cmtd99file.h"
#include "cmtddocument.h"
#include "cmtdtext.h"
#include "cmtdviewanawave.h"
#include "phasor.h"

#include <QAction>
#include <QColorDialog>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

struct MenuDef
{
    const char *text;
    bool checkable;
};

const MenuDef kMenu[CCmtdViewAnaName::MenuEntryCount] = {
    {QT_TR_NOOP("Select this Channel(&P)"), false},
    {QT_TR_NOOP("Overlap the Selected Channel on this Channel(&A)"), false},
    {QT_TR_NOOP("Insert the Selected Channel(&I)"), false},
    {QT_TR_NOOP("Resored this Channel to Original Position(&R)"), false},
    {QT_TR_NOOP("Hide this Channel(&H)"), false},
    {QT_TR_NOOP("Setup Color of this Channel(&C)"), false},
    {QT_TR_NOOP("Dot Mode(&D)"), true},
    {QT_TR_NOOP("Vert Extend(&E)"), true},
    {QT_TR_NOOP("Reverse(&V)"), true},
    {QT_TR_NOOP("Harmonious Chart(&M)"), false},
    {QT_TR_NOOP("APT(&F)"), false},
    {QT_TR_NOOP("Value Search(&S)"), false},
    {QT_TR_NOOP("AC Channel Setup(&T)"), false},
    {QT_TR_NOOP("DC Channel Setup(&Z)"), false},
    {QT_TR_NOOP("Status Channel Setup(&S)"), false},
    {QT_TR_NOOP("Delta(&D)"), false},
    {QT_TR_NOOP("DC Part(&A)"), false},
    {QT_TR_NOOP("Harmonious Part(&H)"), false},
    {QT_TR_NOOP("With Hamming-Window Filter(&M)"), false},
    {QT_TR_NOOP("One-Point-Diff. Filter(&I)"), false},
    {QT_TR_NOOP("Signal Freq.(Cross 0 Method)(&F)"), false},
    {QT_TR_NOOP("Base Freq.(DFT Insert Method)(&T)"), false},
    {QT_TR_NOOP("Delete this Virtual Channel(&X)"), false},
};

// A rate as "%.0fHz" when whole, else with the decimals it needs, up to three.
QString rateText(float rate)
{
    const long long milli = std::llround(double(rate) * 1000.0);
    const char *format = milli % 1000 == 0  ? "%.0fHz"
                         : milli % 100 == 0 ? "%.1fHz"
                         : milli % 10 == 0  ? "%.2fHz"
                                            : "%.3fHz";
    char text[48];
    std::snprintf(text, sizeof text, format, double(rate));
    return QString::fromLatin1(text);
}

int channelKey(const CChnMapBase *channel)
{
    return channel->Index() + 10 * channel->chnType;
}

} // namespace

CCmtdViewAnaName::CCmtdViewAnaName(CCmtdDocument *document, CCmtdViewAnaWave *wave, QWidget *parent)
    : CScrollViewBase(parent), m_doc(document), m_wave(wave)
{
    m_nMarginT = wave->m_nMarginT;
    setMouseMode(ModePlain);
    m_cursorMode = QCursor(Qt::ArrowCursor);
    setCursor(Qt::ArrowCursor);
    for (int i = 0; i < MenuEntryCount; ++i) {
        m_actions[i] = new QAction(this);
        m_actions[i]->setCheckable(kMenu[i].checkable);
        m_actions[i]->setEnabled(false); // features that arrive later stay shown but disabled
    }
    m_actions[MenuSetAC]->setIcon(QIcon(QStringLiteral(":/images/ParamSetAC.png")));
    m_actions[MenuSetSC]->setIcon(QIcon(QStringLiteral(":/images/ParamSetSC.png")));
    const struct
    {
        MenuEntry entry;
        void (CCmtdViewAnaName::*slot)();
    } working[] = {{MenuPick, &CCmtdViewAnaName::slot_ChnPick},
                   {MenuOver, &CCmtdViewAnaName::slot_ChnOver},
                   {MenuInsert, &CCmtdViewAnaName::slot_ChnInsert},
                   {MenuComeback, &CCmtdViewAnaName::slot_ChnComeback},
                   {MenuHide, &CCmtdViewAnaName::slot_ChnHide},
                   {MenuColour, &CCmtdViewAnaName::slot_ChnShowColorSet},
                   {MenuDot, &CCmtdViewAnaName::slot_ChnShowDot},
                   {MenuVertExt, &CCmtdViewAnaName::slot_ChnShowVertExt},
                   {MenuInvert, &CCmtdViewAnaName::slot_ChnShowInvert}};
    for (const auto &w : working) {
        m_actions[w.entry]->setEnabled(true);
        connect(m_actions[w.entry], &QAction::triggered, this, w.slot);
    }
    // The virtual-channel entries, in the order of their jobs.
    const MenuEntry derived[] = {MenuDelta,   MenuAvg,    MenuHm,     MenuFltHamm,
                                 MenuFltDiff, MenuFreqX0, MenuFreqDft};
    for (int i = 0; i < int(std::size(derived)); ++i) {
        m_actions[derived[i]]->setEnabled(true);
        connect(m_actions[derived[i]], &QAction::triggered, this, [this, kind = 3 + i] {
            if (m_hit.channel && m_hit.channel->chnType == CChnMapBase::TypeAnalog)
                Q_EMIT virtualChannelRequested(kind, static_cast<CChnMapAnalog *>(m_hit.channel),
                                               m_hit.rowIndex);
        });
    }
    // The single-channel forms of the channel under the menu.
    m_actions[MenuHmChart]->setEnabled(true);
    connect(m_actions[MenuHmChart], &QAction::triggered, this, [this] {
        if (m_hit.channel && m_hit.channel->chnType == CChnMapBase::TypeAnalog)
            Q_EMIT formRequested(kFormHmChart, m_hit.channel);
    });
    m_actions[MenuVirDelete]->setEnabled(true);
    connect(m_actions[MenuVirDelete], &QAction::triggered, this, [this] {
        auto *channel = static_cast<CChnMapAnalog *>(m_hit.channel);
        if (channel && channel->chnType == CChnMapBase::TypeAnalog && channel->isVirtual)
            Q_EMIT virtualChannelDeleteRequested(channel);
    });
    retranslateTexts();
    connect(wave, &CCmtdViewAnaWave::cursorsChanged, this, [this] {
        rebuildValues();
        update();
    });
    connect(wave, &CCmtdViewAnaWave::rowsChanged, this, [this] {
        m_nMarginT = m_wave->m_nMarginT;
        m_nDocH = m_wave->m_nDocH;
        updateSize();
        update();
    });
}

void CCmtdViewAnaName::retranslateTexts()
{
    for (int i = 0; i < MenuEntryCount; ++i)
        m_actions[i]->setText(tr(kMenu[i].text));
}

int CCmtdViewAnaName::lineHeight() const
{
    return fontMetrics().height();
}

void CCmtdViewAnaName::rebuildValues()
{
    m_values.clear();
    // While the worker reads the file, the segments may still change under us; the values come
    // when the load has ended.
    if (m_doc->backgroundState() & CCmtdDocument::StateLoading)
        return;
    const CCmtd99File &file = m_doc->recording();
    for (const auto &map : file.analogMaps) {
        m_values.insert(map.get(), qMakePair(ChnCursorValueAt(file, *map, m_wave->cursorT1),
                                             ChnCursorValueAt(file, *map, m_wave->cursorT2)));
    }
}

QPair<ChnCursorValue, ChnCursorValue> CCmtdViewAnaName::channelValueAtCursor(CChnMapBase *channel)
{
    if (!m_values.contains(channel))
        rebuildValues();
    return m_values.value(channel);
}

QString CCmtdViewAnaName::lineText(const CChnMapBase *channel)
{
    const uint32_t flags = m_doc->displayFlags.toInt();
    if (channel->chnType == CChnMapBase::TypeStatus) {
        return m_doc->recording().Text(StatusRowText(*static_cast<const CChnMapStatus *>(channel),
                                                     m_wave->cursorT1, m_wave->cursorT2, flags));
    }
    const auto *analog = static_cast<const CChnMapAnalog *>(channel);
    if (!m_values.contains(channel) && !(m_doc->backgroundState() & CCmtdDocument::StateLoading))
        rebuildValues();
    const auto values = m_values.value(channel);
    return m_doc->recording().Text(
        RowText(*analog, values.first, m_wave->cursorT1, values.second, m_wave->cursorT2, flags));
}

bool CCmtdViewAnaName::hitTest(int y, RowHit &hit) const
{
    hit = RowHit();
    const int top = m_wave->m_nMarginT + 3;
    const int line = lineHeight();
    for (size_t r = 0; r < m_wave->rows.size(); ++r) {
        const CWaveRow &row = m_wave->rows[r];
        if (row.centerY < 0)
            continue;
        const int rowTop = top + row.centerY - row.height / 2;
        if (y < rowTop || y >= rowTop + row.height)
            continue;
        hit.rowIndex = static_cast<int>(r);
        int shown = 0;
        for (const CChnMapBase *map : row.channels)
            shown += !(map->flags & CChnMapBase::FlagHidden);
        int lineTop = top + row.centerY - shown * line / 2;
        for (int c = 0; c < row.channels.size(); ++c) {
            CChnMapBase *map = row.channels[c];
            if (map->flags & CChnMapBase::FlagHidden)
                continue;
            if (y >= lineTop && y < lineTop + line) {
                hit.channel = map;
                hit.channelIndex = c;
            }
            lineTop += line;
        }
        return true;
    }
    return false;
}

QString CCmtdViewAnaName::readout(const char *label, int cursor, int other, bool first) const
{
    const CCmtd99File &file = m_doc->recording();
    if (m_wave->pointCount() < 1 || !file.sampleTimes)
        return QString();
    RateSegment segment;
    const float rate = FindRateSegment(file, cursor, segment) ? segment.rate : 0.0f;
    const int64_t time = file.sampleTimes[cursor];
    const QString when = QString::number(double(time) / 1000.0, 'f', 3) + QStringLiteral("ms");
    if (first) {
        const int64_t dt = file.sampleTimes[other] - time;
        const int64_t magnitude = dt < 0 ? -dt : dt;
        return QStringLiteral("%1[%2]/Point %3, dT=%4%5.%6ms, Sample-Rate=%7")
            .arg(QLatin1String(label), when)
            .arg(cursor)
            .arg(dt < 0 ? QStringLiteral("-") : QString())
            .arg(magnitude / 1000)
            .arg(magnitude % 1000, 3, 10, QLatin1Char('0'))
            .arg(rateText(rate));
    }
    return QStringLiteral("%1[%2]/Point %3, dP=%4, Sample-Rate=%5")
        .arg(QLatin1String(label), when)
        .arg(cursor)
        .arg(cursor - other)
        .arg(rateText(rate));
}

void CCmtdViewAnaName::drawContents(QPainter &painter, const QRect &rect)
{
    painter.fillRect(rect, QColor::fromRgba(colour(1)));
    const CCmtd99File &file = m_doc->recording();
    // The names come as soon as five points are in, during a load too; the values at the
    // cursors wait for its end (the segments may still change under us).
    if (file.analogMaps.empty() || m_wave->pointCount() < 5)
        return;
    const int top = m_wave->m_nMarginT + 3;
    const int line = lineHeight();
    const int left = rect.left() + 2;
    const int width = qMax(1, this->width() - 4);
    const QFontMetrics metrics = fontMetrics();
    for (const CWaveRow &row : m_wave->rows) {
        if (row.centerY < 0)
            continue;
        const int rowTop = top + row.centerY - row.height / 2;
        if (rowTop > rect.bottom())
            break;
        if (rowTop + row.height < rect.top())
            continue;
        int shown = 0;
        for (const CChnMapBase *map : row.channels)
            shown += !(map->flags & CChnMapBase::FlagHidden);
        int lineTop = top + row.centerY - shown * line / 2;
        for (const CChnMapBase *map : row.channels) {
            if (map->flags & CChnMapBase::FlagHidden)
                continue;
            // A channel of the analysis form on show carries a bar in its colour at the left.
            const bool related = (map->flags & CChnMapBase::FlagRelated) != 0;
            const int indent = related ? 5 : 0;
            const QRect box(left + indent, lineTop, width - indent, line);
            const QString text = metrics.elidedText(lineText(map), Qt::ElideRight, width - indent);
            QColor pen = QColor::fromRgba(map->colour);
            if (related)
                painter.fillRect(QRect(rect.left(), lineTop + 1, 4, line - 2), pen);
            if (map == m_hit.channel) {
                painter.fillRect(box, pen);
                pen = QColor::fromRgba(colour(0));
            }
            painter.setPen(pen);
            painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter, text);
            if (map == m_picked.channel) {
                QColor band = QColor::fromRgba(colour(2));
                band.setAlpha(127);
                painter.fillRect(box, band);
            }
            lineTop += line;
        }
    }
    // The two cursor read-outs stand in the band above the rows, where the wave view has its axis.
    const int bandTop = scrollY();
    painter.fillRect(QRect(rect.left(), bandTop, rect.width(), m_nMarginT), QColor::fromRgba(colour(3)));
    painter.setPen(QColor::fromRgba(colour(5)));
    const int points = m_wave->pointCount();
    const int t1 = qBound(0, m_wave->cursorT1, points - 1);
    const int t2 = qBound(0, m_wave->cursorT2, points - 1);
    painter.drawText(QRect(left, bandTop + 2, width, line), Qt::AlignLeft | Qt::AlignVCenter,
                     metrics.elidedText(readout("T1", t1, t2, true), Qt::ElideRight, width));
    painter.drawText(QRect(left, bandTop + 2 + line, width, line), Qt::AlignLeft | Qt::AlignVCenter,
                     metrics.elidedText(readout("T2", t2, t1, false), Qt::ElideRight, width));
}

QMenu *CCmtdViewAnaName::buildMenu(QPoint docPoint)
{
    hitTest(docPoint.y(), m_hit);
    update();
    if (m_hit.rowIndex < 0)
        return nullptr;
    if (!m_hit.channel && !m_picked.channel)
        return nullptr;
    const CWaveRow &row = m_wave->rows[size_t(m_hit.rowIndex)];
    m_insertAt = m_hit.rowIndex + (m_hit.channel && m_hit.rowIndex != m_picked.rowIndex ? 1 : 0);
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (!m_hit.channel) {
        if (m_picked.channel)
            menu->addAction(m_actions[MenuInsert]);
        return menu;
    }
    const bool picked = m_picked.channel != nullptr;
    menu->addAction(m_actions[MenuPick]);
    if (picked && row.channels.size() < 4 && m_hit.rowIndex != m_picked.rowIndex)
        menu->addAction(m_actions[MenuOver]);
    if (picked && m_picked.rowIndex >= 0 && m_picked.rowIndex < int(m_wave->rows.size())) {
        const int pickedSize = static_cast<int>(m_wave->rows[size_t(m_picked.rowIndex)].channels.size());
        if (pickedSize >= 2 || (m_insertAt != m_picked.rowIndex && m_insertAt != m_picked.rowIndex + 1))
            menu->addAction(m_actions[MenuInsert]);
    }
    if (row.key != channelKey(m_hit.channel))
        menu->addAction(m_actions[MenuComeback]);
    menu->addAction(m_actions[MenuHide]);
    menu->addSeparator();
    menu->addAction(m_actions[MenuColour]);
    menu->addAction(m_actions[MenuDot]);
    m_actions[MenuDot]->setChecked(m_hit.channel->flags & CChnMapBase::FlagDots);
    const bool analog = m_hit.channel->chnType == CChnMapBase::TypeAnalog;
    if (analog) {
        menu->addAction(m_actions[MenuVertExt]);
        m_actions[MenuVertExt]->setChecked(m_hit.channel->flags & CChnMapBase::FlagVertExtend);
        menu->addAction(m_actions[MenuInvert]);
        m_actions[MenuInvert]->setChecked(m_hit.channel->flags & CChnMapBase::FlagReversed);
        menu->addSeparator();
        menu->addAction(m_actions[MenuHmChart]);
        menu->addAction(m_actions[MenuApt]);
        menu->addAction(m_actions[MenuValSearch]);
        menu->addSeparator();
        menu->addAction(m_actions[MenuSetAC]);
        menu->addAction(m_actions[MenuSetDC]);
        menu->addSeparator();
        QMenu *virtualMenu = menu->addMenu(QIcon(QStringLiteral(":/images/VirChnCreateMenu.png")),
                                           tr("Derive Virtual Channel from this Channel(&N)"));
        for (MenuEntry entry :
             {MenuDelta, MenuAvg, MenuHm, MenuFltHamm, MenuFltDiff, MenuFreqX0, MenuFreqDft})
            virtualMenu->addAction(m_actions[entry]);
        if (static_cast<const CChnMapAnalog *>(m_hit.channel)->isVirtual)
            menu->addAction(m_actions[MenuVirDelete]);
    } else {
        menu->addSeparator();
        menu->addAction(m_actions[MenuSetSC]);
    }
    return menu;
}

void CCmtdViewAnaName::onRightPress(QMouseEvent *event)
{
    const QPoint doc = toDoc(event->position().toPoint());
    if (doc.y() < scrollY() + m_nMarginT)
        return; // the read-out band has no menu
    if (QMenu *menu = buildMenu(doc))
        menu->popup(event->globalPosition().toPoint());
}

void CCmtdViewAnaName::showChannel(CChnMapBase *channel)
{
    for (size_t i = 0; i < m_wave->rows.size(); ++i) {
        const CWaveRow &row = m_wave->rows[i];
        const auto at = std::find(row.channels.begin(), row.channels.end(), channel);
        if (at == row.channels.end() || row.centerY < 0)
            continue;
        m_hit = RowHit{m_wave->cursorT1, int(i), channel, int(at - row.channels.begin())};
        // The wave's vertical scroll bar carries the name column with it.
        m_wave->setScroll(m_wave->scrollX(), qMax(0, row.centerY - m_wave->height() / 2));
        update();
        return;
    }
}

void CCmtdViewAnaName::slot_ChnPick()
{
    m_picked = m_hit;
    update();
}

void CCmtdViewAnaName::forgetChannel(const CChnMapBase *channel)
{
    m_values.remove(channel);
    if (m_hit.channel == channel)
        m_hit = RowHit();
    if (m_picked.channel == channel)
        m_picked = RowHit();
}

void CCmtdViewAnaName::slot_ChnOver()
{
    if (!m_picked.channel || m_hit.rowIndex < 0)
        return;
    CChnMapBase *channel = m_picked.channel;
    CWaveRow &target = m_wave->rows[size_t(m_hit.rowIndex)];
    m_wave->takeOutChannel(channel);
    target.channels.append(channel);
    m_picked = RowHit();
    m_wave->layoutRows(true);
}

void CCmtdViewAnaName::slot_ChnInsert()
{
    if (!m_picked.channel || m_insertAt < 0)
        return;
    CChnMapBase *channel = m_picked.channel;
    m_wave->takeOutChannel(channel);
    CWaveRow row;
    row.key = channelKey(channel);
    row.channels.append(channel);
    const int at = qBound(0, m_insertAt, int(m_wave->rows.size()));
    m_wave->rows.insert(m_wave->rows.begin() + at, row);
    m_picked = RowHit();
    m_wave->layoutRows(true);
}

void CCmtdViewAnaName::slot_ChnComeback()
{
    CChnMapBase *channel = m_hit.channel;
    if (!channel)
        return;
    m_wave->takeOutChannel(channel);
    // Back among the rows in the order of the keys, where it stood after the load.
    const int key = channelKey(channel);
    size_t at = 0;
    while (at < m_wave->rows.size() && (m_wave->rows[at].key < 0 || m_wave->rows[at].key < key))
        ++at;
    CWaveRow row;
    row.key = key;
    row.channels.append(channel);
    m_wave->rows.insert(m_wave->rows.begin() + static_cast<std::ptrdiff_t>(at), row);
    m_wave->layoutRows(true);
}

void CCmtdViewAnaName::slot_ChnHide()
{
    if (!m_hit.channel)
        return;
    m_hit.channel->flags |= CChnMapBase::FlagHidden;
    m_wave->layoutRows(true);
}

void CCmtdViewAnaName::slot_ChnShowColorSet()
{
    if (!m_hit.channel)
        return;
    const QColor chosen = QColorDialog::getColor(QColor::fromRgba(m_hit.channel->colour), this);
    if (!chosen.isValid())
        return;
    m_hit.channel->colour = chosen.rgba();
    m_wave->update();
    update();
}

void CCmtdViewAnaName::slot_ChnShowDot()
{
    if (m_hit.channel)
        m_hit.channel->flags ^= CChnMapBase::FlagDots;
    m_wave->update();
}

void CCmtdViewAnaName::slot_ChnShowVertExt()
{
    if (m_hit.channel)
        m_hit.channel->flags ^= CChnMapBase::FlagVertExtend;
    m_wave->update();
}

void CCmtdViewAnaName::slot_ChnShowInvert()
{
    if (m_hit.channel)
        m_hit.channel->flags ^= CChnMapBase::FlagReversed;
    m_wave->update();
}
