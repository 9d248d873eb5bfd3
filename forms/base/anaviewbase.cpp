#include "anaviewbase.h"

#include "anaformbase.h"

#include <QPainter>

#include <cmath>
#include <cstdio>

namespace {

// A round tick distance and the decimals its labels need.
struct TickStep
{
    float value;
    int decimals;
};

// Ascending; each entry is the smallest tick that is at least as wide as the raw distance.
constexpr TickStep kTickLadder[] = {
    {0.0001f, 4},  {0.0002f, 4}, {0.0003f, 4}, {0.0004f, 4}, {0.0005f, 4}, {0.0006f, 4}, {0.0007f, 4},
    {0.0008f, 4},  {0.0009f, 4}, {0.001f, 3},  {0.002f, 3},  {0.003f, 3},  {0.004f, 3},  {0.005f, 3},
    {0.006f, 3},   {0.007f, 3},  {0.008f, 3},  {0.009f, 3},  {0.01f, 2},   {0.015f, 3},  {0.02f, 2},
    {0.025f, 3},   {0.03f, 2},   {0.04f, 2},   {0.05f, 2},   {0.06f, 2},   {0.07f, 2},   {0.08f, 2},
    {0.09f, 2},    {0.1f, 1},    {0.15f, 2},   {0.2f, 1},    {0.25f, 2},   {0.3f, 1},    {0.4f, 1},
    {0.5f, 1},     {0.6f, 1},    {0.7f, 1},    {0.8f, 1},    {0.9f, 1},    {1.0f, 0},    {1.5f, 1},
    {2.0f, 0},     {2.5f, 1},    {3.0f, 0},    {4.0f, 0},    {5.0f, 0},    {6.0f, 0},    {7.0f, 0},
    {8.0f, 0},     {9.0f, 0},    {10.0f, 0},   {15.0f, 0},   {20.0f, 0},   {25.0f, 0},   {30.0f, 0},
    {40.0f, 0},    {50.0f, 0},   {60.0f, 0},   {70.0f, 0},   {80.0f, 0},   {90.0f, 0},   {100.0f, 0},
    {150.0f, 0},   {200.0f, 0},  {250.0f, 0},  {300.0f, 0},  {400.0f, 0},  {500.0f, 0},  {600.0f, 0},
    {700.0f, 0},   {800.0f, 0},  {900.0f, 0},  {1000.0f, 0}, {1500.0f, 0}, {2000.0f, 0}, {2500.0f, 0},
    {3000.0f, 0},  {4000.0f, 0}, {5000.0f, 0}, {6000.0f, 0}, {7000.0f, 0}, {8000.0f, 0}, {9000.0f, 0},
    {10000.0f, 0},
};

QString formatNumber(const QString &format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format.toLatin1().constData(), value);
    return QString::fromLatin1(text);
}

} // namespace

CAnaViewBase::CAnaViewBase(CCmtdChildFrame *frame, CAnaFormBase *form, QWidget *parent)
    : CScrollViewBase(parent), m_pFrame(frame), m_pForm(form)
{}

int CAnaViewBase::roundPixel(double value)
{
    // Far outside any screen (an unlimited vector gain, a zero full scale) the pixel is held,
    // and a value that is not a number is drawn at the origin.
    constexpr double kFar = 1.0e7;
    if (!(std::fabs(value) < kFar))
        return value > 0 ? int(kFar) : value < 0 ? -int(kFar) : 0;
    return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5);
}

float CAnaViewBase::niceStep(float raw, QString &format)
{
    for (const TickStep &step : kTickLadder) {
        if (step.value >= raw) {
            format = QStringLiteral("%.%1f").arg(step.decimals);
            return step.value;
        }
    }
    format = QStringLiteral("%.0f");
    return 10000.0f;
}

void CAnaViewBase::setMouseMode(int mode)
{
    if (hasObject())
        CScrollViewBase::setMouseMode(mode);
    m_pForm->syncButtons();
}

QPoint CAnaViewBase::diagramOrigin(const QSize &size) const
{
    const int w = qMax(size.width() - m_nMarginR - m_nMarginL, m_nDocW);
    const int h = qMax(size.height() - m_nMarginB - m_nMarginT, m_nDocH);
    const int x = roundPixel(std::fabs(m_fXMin / (m_fXMax - m_fXMin)) * w) + m_nMarginL;
    const int y = roundPixel(std::fabs(m_fYMax / (m_fYMax - m_fYMin)) * h) + m_nMarginT;
    return QPoint(x, y);
}

void CAnaViewBase::updateTicks()
{
    // Two font heights between labels, so that they never run into each other.
    const float raw = 2.0f * float(fontMetrics().height());
    m_fXStep = niceStep(raw / (m_fScaleX * m_fZoom), m_strXFormat);
    m_fYStep = niceStep(raw / (m_fScaleY * m_fZoom), m_strYFormat);
}

void CAnaViewBase::updateContentSize()
{
    m_nDocW = roundPixel(double(m_fXMax - m_fXMin) * m_fScaleX * m_fZoom);
    m_nDocH = roundPixel(double(m_fYMax - m_fYMin) * m_fScaleY * m_fZoom);
    updateSize();
    update();
}

void CAnaViewBase::zoomBy(float factor)
{
    if (!hasObject())
        return;
    m_fZoom = factor < 0.0f ? 1.0f : m_fZoom * factor;
    m_fZoom = qBound(kZoomMin, m_fZoom, kZoomMax);
    updateContentSize();
}

void CAnaViewBase::clipFinished()
{
    const QRect area = QRect(m_ptLeftDown, m_ptMouse).normalized();
    if (area.width() < 2 || area.height() < 2)
        return;
    offerPicture(renderArea(area));
}

void CAnaViewBase::zoomWindowFinished()
{
    zoomToArea(m_ptLeftDown, m_ptMouse, m_fZoom);
    m_fZoom = qBound(kZoomMin, m_fZoom, kZoomMax);
}

bool CAnaViewBase::paintNoObject(QPainter &painter, const QRect &area)
{
    if (hasObject())
        return false;
    painter.setPen(QColor(0xFF, 0, 0));
    painter.drawText(area, Qt::AlignCenter, tr("***** Please Choose Object *****"));
    return true;
}

void CAnaViewBase::drawContents(QPainter &painter, const QRect &)
{
    // The whole visible part is drawn, so that the labels keep to the margins while scrolling.
    const QRect area = visibleArea();
    if (paintNoObject(painter, area))
        return;
    // Grid and axes on whole pixels, crisp; the content smooth.
    painter.setRenderHint(QPainter::Antialiasing, false);
    updateTicks();
    QRect plot;
    paintFrame(painter, area, plot);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setClipRect(plot);
    paintDiagram(painter, plot);
    painter.restore();
}

void CAnaViewBase::paintFrame(QPainter &painter, const QRect &area, QRect &plot)
{
    const QPoint origin = diagramOrigin(size());
    painter.translate(origin);
    const QRect world = area.translated(-origin);
    plot = world;
    plot.setLeft(world.left() + m_nMarginL);
    plot.setBottom(world.bottom() - (m_nMarginB - 1));
    const QColor back = QColor::fromRgba(colour(1));
    painter.fillRect(QRect(world.left(), world.top(), m_nMarginL, world.height()), back);
    painter.fillRect(QRect(world.left(), plot.bottom() + 1, world.width(), m_nMarginB), back);
    paintGrid(painter, plot, displayFactor());
    paintAxes(painter, plot);
}

void CAnaViewBase::paintGrid(QPainter &painter, const QRect &plot, double factor)
{
    const double sx = double(m_fScaleX) * m_fZoom;
    const double sy = double(m_fScaleY) * m_fZoom;
    const int fh = fontMetrics().height();
    const QPen grid(QColor::fromRgba(colour(4)), 0);
    const QPen label(QColor::fromRgba(colour(5)));
    // A degenerate scale (no range yet) has no grid.
    if (!(sx * m_fXStep > 1e-9) || !(sy * m_fYStep > 1e-9))
        return;
    // Horizontal lines, from the bottom edge upward; their labels stand left of the plot.
    for (int k = int(-plot.bottom() / (sy * m_fYStep));; ++k) {
        const int y = -roundPixel(k * double(m_fYStep) * sy);
        if (y < plot.top())
            break;
        if (y > plot.bottom())
            continue;
        painter.setPen(grid);
        painter.drawLine(plot.left(), y, plot.right(), y);
        painter.setPen(label);
        painter.drawLine(plot.left() - 3, y, plot.left(), y);
        const QRect cell(plot.left() - m_nMarginL, y - fh, m_nMarginL - 5, 2 * fh);
        painter.drawText(cell, Qt::AlignRight | Qt::AlignVCenter,
                         formatNumber(m_strYFormat, k * double(m_fYStep) * factor));
    }
    // Vertical lines, from the left edge rightward; their labels stand below the plot, turned.
    for (int k = int(plot.left() / (sx * m_fXStep));; ++k) {
        const int x = roundPixel(k * double(m_fXStep) * sx);
        if (x > plot.right())
            break;
        if (x < plot.left() || x == 0)
            continue;
        painter.setPen(grid);
        painter.drawLine(x, plot.top(), x, plot.bottom());
        painter.setPen(label);
        painter.drawLine(x, plot.bottom(), x, plot.bottom() + 3);
        painter.rotate(-90.0);
        const QRect cell(-(plot.bottom() + m_nMarginB), x - fh, m_nMarginB - 5, 2 * fh);
        painter.drawText(cell, Qt::AlignRight | Qt::AlignVCenter,
                         formatNumber(m_strXFormat, k * double(m_fXStep) * factor));
        painter.rotate(90.0);
    }
}

void CAnaViewBase::paintAxes(QPainter &painter, const QRect &plot)
{
    const uint32_t axis = colour(2);
    painter.setPen(QColor::fromRgba(axis));
    if (plot.top() <= 0 && plot.bottom() >= 0) {
        drawArrow(painter, plot.right() - 2, 0, plot.left(), 0, axis, Qt::SolidLine, 1);
        painter.drawText(QRect(plot.right() - 200, -fontMetrics().height() - 2, 196, fontMetrics().height()),
                         Qt::AlignRight | Qt::AlignBottom, m_strXName);
    }
    if (plot.left() <= 0 && plot.right() >= 0) {
        drawArrow(painter, 0, plot.top() + 2, 0, plot.bottom(), axis, Qt::SolidLine, 1);
        painter.drawText(QRect(6, plot.top() + 2, 200, fontMetrics().height()), Qt::AlignLeft | Qt::AlignTop,
                         m_strYName);
    }
    painter.setPen(QColor::fromRgba(axis));
    painter.drawLine(plot.left(), plot.top(), plot.left(), plot.bottom());
    painter.drawLine(plot.left(), plot.bottom(), plot.right(), plot.bottom());
}
