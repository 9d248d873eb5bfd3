#include "vectorview.h"

#include <QPainter>

#include <cmath>

CAnaFormChnGrpVecView::CAnaFormChnGrpVecView(CCmtdChildFrame *frame, CAnaFormBase *form, QWidget *parent)
    : CAnaViewBase(frame, form, parent)
{}

void CAnaFormChnGrpVecView::resizeEvent(QResizeEvent *event)
{
    CAnaViewBase::resizeEvent(event);
    m_nDocW = width();
    m_nDocH = height();
    updateSize();
}

void CAnaFormChnGrpVecView::drawContents(QPainter &painter, const QRect &)
{
    // The diagram always fills the visible area; the document is the viewport itself.
    const QRect area = visibleArea();
    if (paintNoObject(painter, area))
        return;
    painter.setRenderHint(QPainter::Antialiasing, true);
    const int fh = fontMetrics().height();
    const int radius = (qMin(area.width(), area.height()) - 2 * fh) / 2;
    const QPoint centre = area.center();
    painter.setPen(QPen(QColor::fromRgba(colour(4)), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(centre, radius, radius);
    painter.drawLine(centre.x() - radius, centre.y(), centre.x() + radius, centre.y());
    painter.drawLine(centre.x(), centre.y() - radius, centre.x(), centre.y() + radius);
    for (const VectorItem &item : items) {
        if (item.nFlags & VectorItem::Hidden)
            continue;
        const int dx = roundPixel(double(radius) * item.fRe / item.fMax * item.fGain);
        const int dy = roundPixel(double(radius) * item.fIm / item.fMax * item.fGain);
        const QPoint tip(centre.x() + dx, centre.y() - dy);
        drawOne(painter, centre, tip, item.nColor);
        drawLabel(painter, item, tip, dx, dy);
    }
    drawLegend(painter, area);
}

void CAnaFormChnGrpVecView::drawOne(QPainter &painter, QPoint centre, QPoint tip, uint32_t colour)
{
    drawArrow(painter, tip.x(), tip.y(), centre.x(), centre.y(), colour, Qt::SolidLine, 1);
}

void CAnaFormChnGrpSeqView::drawOne(QPainter &painter, QPoint centre, QPoint tip, uint32_t colour)
{
    drawVector(painter, tip.x(), tip.y(), centre.x(), centre.y(), colour, Qt::DashLine, 1);
}

void CAnaFormChnGrpVecView::drawLabel(QPainter &painter, const VectorItem &item, QPoint tip, int dx, int dy)
{
    const int half = fontMetrics().height() / 2;
    if (item.strName.isEmpty() || (std::abs(dx) < half && std::abs(dy) < half))
        return;
    const QRect box = fontMetrics().boundingRect(item.strName);
    const int tw = box.width() + 2;
    const int th = box.height();
    // The label stands beyond the tip, away from the centre.
    const int left = dx == 0 ? tip.x() - tw / 2 : dx < 0 ? tip.x() - tw : tip.x();
    const int top = dy == 0 ? tip.y() - th / 2 : dy > 0 ? tip.y() - th : tip.y();
    painter.setPen(QColor::fromRgba(item.nColor));
    painter.drawText(QRect(left, top, tw, th), Qt::AlignCenter, item.strName);
}

void CAnaFormChnGrpVecView::drawLegend(QPainter &painter, const QRect &area)
{
    const int line = fontMetrics().height();
    int y = area.top() + 4;
    for (const VectorItem &item : items) {
        if (item.strLegend.isEmpty())
            continue;
        QColor pen = QColor::fromRgba(item.nColor);
        // A hidden vector stays in the legend, faded, so that it can be found again.
        if (item.nFlags & VectorItem::Hidden)
            pen.setAlpha(90);
        painter.setPen(QPen(pen, 2));
        painter.drawLine(area.left() + 6, y + line / 2, area.left() + 20, y + line / 2);
        painter.drawText(QRect(area.left() + 24, y, area.width() - 28, line),
                         Qt::AlignLeft | Qt::AlignVCenter, item.strLegend);
        y += line;
    }
}
