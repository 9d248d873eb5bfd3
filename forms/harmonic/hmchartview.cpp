#include "hmchartview.h"

#include "anaformhmchartbase.h"
#include "chnmap.h"
#include "cmtdchildframe.h"
#include "cmtddocument.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

CAnaFormHmChartView::CAnaFormHmChartView(CCmtdChildFrame *frame, CAnaFormHmChartBase *form)
    : CAnaViewBase(frame, form), m_hm(form)
{
    const int margin = fontMetrics().horizontalAdvance(QStringLiteral("XXXXX.XX")) + 8;
    m_nMarginL = margin;
    m_nMarginB = fontMetrics().horizontalAdvance(QStringLiteral("XXX")) + 8;
    m_nMarginT = fontMetrics().height() + 4;
    m_nMarginR = 8;
}

bool CAnaFormHmChartView::hasObject() const
{
    return !m_hm->chartChannels().empty();
}

double CAnaFormHmChartView::barValue(int channel, int order) const
{
    const HarmonicSpectrum &s = m_hm->spectra()[size_t(channel)];
    if (!s.valid || order >= int(s.orders.size()))
        return 0.0;
    const HarmonicOrder &o = s.orders[size_t(order)];
    return m_hm->percent() ? o.percent : o.effective;
}

void CAnaFormHmChartView::resetRange()
{
    const int top = std::max(1, m_hm->highestOrder());
    m_fXMin = -1.0f;
    m_fXMax = float(top) + 1.0f;
    double highest = 0.0;
    for (int c = 0; c < int(m_hm->spectra().size()); ++c) {
        for (int k = 0; k <= top; ++k) {
            if (k == 1 && m_hm->harmonicsOnly())
                continue;
            const double v = barValue(c, k);
            if (std::isfinite(v))
                highest = std::max(highest, v);
        }
    }
    if (!(highest > 0.0))
        highest = m_hm->percent() ? 100.0 : 1.0;
    m_fYMax = float(highest * 1.1);
    m_fYMin = -m_fYMax * 0.03f;
    const int w = std::max(width() - m_nMarginL - m_nMarginR, 40);
    const int h = std::max(height() - m_nMarginT - m_nMarginB, 40);
    m_fScaleX = float(w) / (m_fXMax - m_fXMin);
    m_fScaleY = float(h) / (m_fYMax - m_fYMin);
    m_fZoom = 1.0f;
    m_strXName = tr("Order");
    const ChnUnit &unit = m_hm->chartChannels().front()->Unit();
    m_strYName = m_hm->percent() ? QStringLiteral("%")
                                 : (unit.prefix ? QString(QLatin1Char(unit.prefix)) : QString()) +
                                       QString::fromLatin1(unit.text);
    updateContentSize();
}

void CAnaFormHmChartView::resizeEvent(QResizeEvent *event)
{
    CAnaViewBase::resizeEvent(event);
    if (hasObject())
        resetRange();
}

double CAnaFormHmChartView::displayFactor() const
{
    // In the channel's unit the labels follow "show primary values", as the table does.
    if (m_hm->percent() || !hasObject() ||
        !m_pFrame->document()->displayFlags.testFlag(CCmtdDocument::ValuePrimary))
        return 1.0;
    return m_hm->chartChannels().front()->PrimaryFactor();
}

void CAnaFormHmChartView::updateTicks()
{
    CAnaViewBase::updateTicks();
    // Orders are whole numbers.
    m_fXStep = std::max(1.0f, std::round(m_fXStep));
    m_strXFormat = QStringLiteral("%.0f");
}

void CAnaFormHmChartView::paintDiagram(QPainter &painter, const QRect &)
{
    const int channels = int(m_hm->chartChannels().size());
    const double sx = double(m_fScaleX) * m_fZoom;
    const double sy = double(m_fScaleY) * m_fZoom;
    // The bars of one order share 0.8 of the order's width.
    const double width = 0.8 / channels;
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (int c = 0; c < channels; ++c) {
        const QColor colour = QColor::fromRgba(m_hm->chartChannels()[size_t(c)]->colour);
        painter.setPen(colour.darker(130));
        painter.setBrush(colour);
        const double offset = (c - (channels - 1) * 0.5) * width;
        for (int k = 0; k <= m_hm->highestOrder(); ++k) {
            const double v = barValue(c, k);
            if (!std::isfinite(v) || v <= 0.0)
                continue;
            const int left = roundPixel((k + offset - width * 0.5) * sx);
            const int right = roundPixel((k + offset + width * 0.5) * sx);
            const int top = -roundPixel(v * sy);
            painter.drawRect(QRect(QPoint(left, top), QPoint(std::max(left, right - 1), 0)));
        }
    }
    painter.setBrush(Qt::NoBrush);
}
