#include "anaformchngrprxview.h"

#include "anaformchngrprx.h"
#include "chnmap.h"
#include "rxobject.h"

#include <QPainter>
#include <QPolygon>

#include <cmath>

namespace {

// The pen of a loop: the colour of its voltage (of the R channel for kind 3).
uint32_t rowColour(const RxObject &o, int row)
{
    const CChnMapAnalog *chn = o.nKind == RxObject::KindRxChn ? o.chnR : o.chnU[row];
    if (o.nKind < RxObject::KindUxIxK || o.nKind > RxObject::KindRxChn)
        return 0xFF000000u;
    return chn ? chn->colour : 0xFF000000u;
}

bool rowDrawn(const RxObject &o, int row)
{
    const uint32_t bit = 1u << row;
    return (o.nMask & bit) && (o.nShown & bit);
}

} // namespace

CAnaFormChnGrpRxView::CAnaFormChnGrpRxView(CCmtdChildFrame *frame, CAnaFormChnGrpRx *form)
    : CAnaViewBase(frame, form), m_rx(form)
{
    const int margin = fontMetrics().horizontalAdvance(QStringLiteral("SXXX.X(omh)")) + 7;
    m_nMarginL = margin;
    m_nMarginB = margin;
    m_nMarginT = 4;
    m_nMarginR = 8;
    m_strXName = QStringLiteral("R");
    m_strYName = QStringLiteral("jX");
}

void CAnaFormChnGrpRxView::resetView()
{
    m_fZoom = 1.0f;
    RxComputeRange(m_bounds, m_fXMin, m_fYMin, m_fXMax, m_fYMax);
    // The plot area, so that zoom 1 shows the whole range without scrolling.
    const int w = std::max(width() - m_nMarginL - m_nMarginR, 40);
    const int h = std::max(height() - m_nMarginT - m_nMarginB, 40);
    m_fScale = std::min(float(w) / (m_fXMax - m_fXMin), float(h) / (m_fYMax - m_fYMin));
    m_fScaleX = m_fScale;
    m_fScaleY = m_fScale;
    updateContentSize();
}

void CAnaFormChnGrpRxView::resizeEvent(QResizeEvent *event)
{
    CAnaViewBase::resizeEvent(event);
    // Keep the zoom the user chose; only the fit to the area changes.
    const float zoom = m_fZoom;
    resetView();
    m_fZoom = zoom;
    updateContentSize();
}

double CAnaFormChnGrpRxView::displayFactor() const
{
    return m_rx->impedanceFactor();
}

void CAnaFormChnGrpRxView::updateTicks()
{
    const double factor = displayFactor();
    const float raw = float(2.0 * fontMetrics().height() / (double(m_fScale) * m_fZoom) * factor);
    // One step on both axes keeps the grid square; the labels show primary ohm when asked.
    m_fYStep = float(niceStep(raw, m_strYFormat) / factor);
    m_strYFormat += QStringLiteral("omh");
    m_fXStep = m_fYStep;
    m_strXFormat = m_strYFormat;
}

QPoint CAnaFormChnGrpRxView::pixel(double r, double x) const
{
    const double s = double(m_fScale) * m_fZoom;
    return QPoint(roundPixel(s * r), -roundPixel(s * x));
}

void CAnaFormChnGrpRxView::paintBounds(QPainter &painter, const QRect &plot) const
{
    const RxBoundSet &b = m_bounds;
    const double s = double(m_fScale) * m_fZoom;
    painter.setBrush(Qt::NoBrush);
    if (b.nBounds & RxBoundSet::BoundRect) {
        painter.setPen(QPen(QColor::fromRgba(b.rect.nColor), 1));
        painter.drawRect(QRect(pixel(b.rect.fRmin, b.rect.fXmax), pixel(b.rect.fRmax, b.rect.fXmin)));
    }
    if (b.nBounds & RxBoundSet::BoundCircle) {
        painter.setPen(QPen(QColor::fromRgba(b.circle.nColor), 1));
        painter.drawEllipse(
            QRect(pixel(b.circle.fLeft, b.circle.fTop), pixel(b.circle.fRight, b.circle.fBottom)));
    }
    if (b.nBounds & RxBoundSet::BoundPoly) {
        RxPlanePoint outline[6];
        RxPolyOutline(b.poly, outline);
        QPolygon polygon;
        for (const RxPlanePoint &p : outline)
            polygon << pixel(p.r, p.x);
        painter.setPen(QPen(QColor::fromRgba(b.poly.nColor), 1));
        painter.drawPolyline(polygon);
    }
    if (b.nBounds & RxBoundSet::BoundLine) {
        // A blinder has no ends: across the plot through its reach point.
        const int px = roundPixel(s * b.line.fZsetR);
        const int py = -roundPixel(s * b.line.fZsetX);
        const double t = std::tan(double(b.line.fBeta) * 0.017453292519943295);
        const int left = plot.left();
        const int right = plot.right();
        painter.setPen(QPen(QColor::fromRgba(b.line.nColor), 1));
        painter.drawLine(left, py - roundPixel((left - px) * t), right, py - roundPixel((right - px) * t));
    }
}

void CAnaFormChnGrpRxView::paintTraces(QPainter &painter) const
{
    const RxObject &o = *m_pObject;
    for (int row = 0; row < 3; ++row) {
        const std::vector<RxPoint> &trace = o.trace[row];
        if (!rowDrawn(o, row) || trace.size() < 2)
            continue;
        painter.setPen(QPen(QColor::fromRgba(rowColour(o, row)), 1));
        QPoint last = pixel(trace[0].r, trace[0].x);
        // Points that fall on the pixel already reached are not drawn again: a trace of many
        // thousand samples costs only the pixels it crosses.
        for (size_t i = 1; i < trace.size(); ++i) {
            const QPoint next = pixel(trace[i].r, trace[i].x);
            if (next == last)
                continue;
            painter.drawLine(last, next);
            last = next;
        }
    }
}

void CAnaFormChnGrpRxView::paintVectors(QPainter &painter, const QRect &plot) const
{
    const RxObject &o = *m_pObject;
    const int half = fontMetrics().height() / 2;
    for (int row = 0; row < 3; ++row) {
        if (!rowDrawn(o, row))
            continue;
        const QPoint tip = pixel(o.z[row].re, o.z[row].im);
        const uint32_t colour = rowColour(o, row);
        drawVector(painter, tip.x(), tip.y(), 0, 0, colour, Qt::DashLine, 1);
        if ((std::abs(tip.x()) < half && std::abs(tip.y()) < half) || !plot.contains(tip))
            continue;
        // The loop's name beside the tip, on the side away from the origin.
        const QString name = RxRowName(o, row);
        const QRect box = fontMetrics().boundingRect(name);
        const int w = box.width();
        const int h = box.height();
        const int left = tip.x() == 0 ? -w / 2 : (tip.x() < 0 ? tip.x() - w - 2 : tip.x() + 2);
        const int top = tip.y() == 0 ? -h / 2 : (tip.y() > 0 ? tip.y() - h - 2 : tip.y() + 2);
        painter.setPen(QColor::fromRgba(colour));
        painter.drawText(QRect(left, top, w, h), Qt::AlignCenter, name);
    }
}

void CAnaFormChnGrpRxView::paintDiagram(QPainter &painter, const QRect &plot)
{
    paintBounds(painter, plot);
    if (m_rx->tracing())
        paintTraces(painter);
    paintVectors(painter, plot);
}
