#include "anaformcoordinatexy.h"

#include "anaformcoordinatexydlg.h"
#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdviewanawave.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QPainter>
#include <QSplitter>
#include <QTableWidget>
#include <QToolButton>

#include <cmath>

namespace {

// The world range of a channel: its samples' extent with the zero inside and a little room.
void channelRange(const CChnMapAnalog *chn, float &lo, float &hi)
{
    lo = chn ? std::min(0.0f, chn->minValue) : -1.0f;
    hi = chn ? std::max(0.0f, chn->maxValue) : 1.0f;
    if (!(hi > lo)) {
        lo = -1.0f;
        hi = 1.0f;
    }
    const float room = (hi - lo) * 0.05f;
    lo -= lo < 0.0f ? room : 0.0f;
    hi += hi > 0.0f ? room : 0.0f;
}

} // namespace

CAnaFormCoordinateXYView::CAnaFormCoordinateXYView(CCmtdChildFrame *frame, CAnaFormCoordinateXY *form)
    : CAnaViewBase(frame, form), m_xy(form)
{
    const int text = fontMetrics().horizontalAdvance(QStringLiteral("SXXX.X(omh)")) + 8;
    m_nMarginL = text;
    m_nMarginB = text;
    m_nMarginT = 4;
    m_nMarginR = 8;
}

bool CAnaFormCoordinateXYView::hasObject() const
{
    return m_xy->channelX() && m_xy->channelY();
}

void CAnaFormCoordinateXYView::resetRange()
{
    channelRange(m_xy->channelX(), m_fXMin, m_fXMax);
    channelRange(m_xy->channelY(), m_fYMin, m_fYMax);
    const int w = std::max(width() - m_nMarginL - m_nMarginR, 40);
    const int h = std::max(height() - m_nMarginT - m_nMarginB, 40);
    m_fScaleX = float(w) / (m_fXMax - m_fXMin);
    m_fScaleY = float(h) / (m_fYMax - m_fYMin);
    updateContentSize();
}

void CAnaFormCoordinateXYView::resizeEvent(QResizeEvent *event)
{
    CAnaViewBase::resizeEvent(event);
    if (hasObject())
        resetRange();
}

QPointF CAnaFormCoordinateXYView::pixel(double x, double y) const
{
    return QPointF(roundPixel(x * m_fScaleX * m_fZoom), -roundPixel(y * m_fScaleY * m_fZoom));
}

void CAnaFormCoordinateXYView::paintBounds(QPainter &painter, const QRect &plot)
{
    const double sx = double(m_fScaleX) * m_fZoom;
    const double sy = double(m_fScaleY) * m_fZoom;
    for (const XYBound &bound : m_xy->bounds) {
        painter.setPen(QPen(QColor::fromRgba(bound.colour), 1.5));
        painter.setBrush(Qt::NoBrush);
        if (bound.kind == XYBound::KindLine) {
            // Over the plot's width; the clip cuts it at the edges.
            const double x1 = plot.left() / sx;
            const double x2 = plot.right() / sx;
            painter.drawLine(pixel(x1, bound.a * x1 + bound.b), pixel(x2, bound.a * x2 + bound.b));
        } else if (bound.kind == XYBound::KindPlumbLine) {
            const double x = bound.c * sx;
            painter.drawLine(QPointF(x, plot.top()), QPointF(x, plot.bottom()));
        } else {
            painter.drawEllipse(pixel(bound.xc, bound.yc), bound.r * sx, bound.r * sy);
        }
    }
}

void CAnaFormCoordinateXYView::paintTrace(QPainter &painter)
{
    const CChnMapAnalog *x = m_xy->channelX();
    const CChnMapAnalog *y = m_xy->channelY();
    painter.setPen(QPen(QColor::fromRgba(y->colour), 1.0));
    QPointF last = pixel(x->Value(m_xy->plotFrom()), y->Value(m_xy->plotFrom()));
    // Samples that fall on the pixel already reached are not drawn again.
    for (int n = m_xy->plotFrom() + 1; n <= m_xy->plotTo(); ++n) {
        const QPointF next = pixel(x->Value(n), y->Value(n));
        if (next == last)
            continue;
        painter.drawLine(last, next);
        last = next;
    }
}

void CAnaFormCoordinateXYView::paintDiagram(QPainter &painter, const QRect &plot)
{
    paintBounds(painter, plot);
    if (m_xy->tracing())
        paintTrace(painter);
    const int t1 = m_pFrame->waveView()->cursorT1;
    const QPointF at = pixel(m_xy->channelX()->Value(t1), m_xy->channelY()->Value(t1));
    const QColor mark = QColor::fromRgba(colour(6));
    painter.setPen(QPen(mark, 1.0));
    painter.setBrush(mark);
    painter.drawEllipse(at, 3.5, 3.5);
    painter.setBrush(Qt::NoBrush);
}

CAnaFormCoordinateXY::CAnaFormCoordinateXY(int number, CCmtdChildFrame *frame,
                                           CCmtdChildContainerAna *container)
    : CAnaFormBase(number, frame, container), m_table(new QTableWidget(2, 2, this)),
      m_view(new CAnaFormCoordinateXYView(frame, this))
{
    m_strTitle = tr("X-Y Custom Coordinate");
    m_nDockFeatures = DockFeaturesAll;
    m_nDockH = fontMetrics().height() * 22;
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    auto *bar = new QHBoxLayout;
    addObjectButtons(bar);
    m_btnBound = makeButton("CoordinateXY.png");
    m_btnTrace = makeButton("showTrace.png", true);
    m_btnTrace->setObjectName(QStringLiteral("btnTrace"));
    bar->addWidget(m_btnBound);
    bar->addWidget(m_btnTrace);
    const struct
    {
        const char *icon;
        void (CAnaFormCoordinateXY::*slot)();
    } zooms[] = {{"ZoomOut.png", &CAnaFormCoordinateXY::slot_btnZoomOut},
                 {"ZoomIn.png", &CAnaFormCoordinateXY::slot_btnZoomIn},
                 {"ZoomRes.png", &CAnaFormCoordinateXY::slot_btnZoomComeback}};
    for (const auto &z : zooms) {
        QToolButton *button = makeButton(z.icon);
        button->setToolButtonStyle(Qt::ToolButtonIconOnly);
        bar->addWidget(button);
        connect(button, &QToolButton::clicked, this, z.slot);
    }
    addMouseModeButtons(bar);
    bar->addStretch(1);
    addPlayControls(bar);
    column->addLayout(bar);
    auto *split = new QSplitter(Qt::Horizontal, this);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    split->addWidget(m_table);
    auto *area = new CScrollAreaEx(split);
    area->setView(m_view);
    split->addWidget(area);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 3);
    column->addWidget(split, 1);
    m_views = {m_view};
    connect(m_btnBound, &QToolButton::clicked, this, &CAnaFormCoordinateXY::slot_btnBoundSetup);
    connect(m_btnTrace, &QToolButton::clicked, this, &CAnaFormCoordinateXY::slot_btnShowTrace);
    m_btnAction = nullptr;
    retranslateTexts();
}

void CAnaFormCoordinateXY::retranslateTexts()
{
    retranslateShared();
    m_btnBound->setText(tr("Boundary Setup"));
    m_btnTrace->setText(tr("Plot Curve"));
    m_table->setHorizontalHeaderLabels({tr("Channel"), tr("Current Value")});
}

bool CAnaFormCoordinateXY::activate()
{
    if (!m_x || !m_y) {
        if (refuseWhileBusy() || !chooseObject())
            return false;
    }
    markRelated(true);
    refresh();
    return true;
}

bool CAnaFormCoordinateXY::chooseObject()
{
    CAnaFormCoordinateXYDlgReset dialog(m_pFrame->recording(), m_pFrame->document()->displayFlags.toInt(),
                                        m_x, m_y, this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    setChannels(dialog.channelX(), dialog.channelY());
    return true;
}

void CAnaFormCoordinateXY::setChannels(CChnMapAnalog *x, CChnMapAnalog *y)
{
    markRelated(false);
    m_x = x;
    m_y = y;
    m_chns = {x, y};
    m_nFrom = m_nTo = -1;
    const uint32_t flags = m_pFrame->document()->displayFlags.toInt();
    for (int row = 0; row < 2; ++row) {
        CChnMapAnalog *chn = row == 0 ? x : y;
        auto *name = new QTableWidgetItem(channelName(*chn, flags));
        name->setForeground(QColor::fromRgba(chn->colour));
        m_table->setItem(row, 0, name);
        auto *value = new QTableWidgetItem;
        value->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_table->setItem(row, 1, value);
    }
    m_view->m_strXName = QStringLiteral("X: ") + channelName(*x, flags);
    m_view->m_strYName = QStringLiteral("Y: ") + channelName(*y, flags);
    m_view->m_fZoom = 1.0f;
    m_view->resetRange();
    if (m_btnHide && m_btnHide->isChecked())
        m_pFrame->hideUnrelated(m_chns);
    refresh();
    markRelated(true);
}

void CAnaFormCoordinateXY::resetObject()
{
    CAnaFormBase::resetObject();
    m_x = m_y = nullptr;
    m_nFrom = m_nTo = -1;
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 2; ++column)
            delete m_table->takeItem(row, column);
    }
}

bool CAnaFormCoordinateXY::tracing() const
{
    return m_x && m_y && m_btnTrace->isChecked() && m_nFrom >= 0 && m_nTo > m_nFrom;
}

void CAnaFormCoordinateXY::refresh()
{
    if (m_x && m_y) {
        const int t1 = cursorT1();
        m_table->item(0, 1)->setText(QString::asprintf("%.6f", double(m_x->Value(t1))));
        m_table->item(1, 1)->setText(QString::asprintf("%.6f", double(m_y->Value(t1))));
    }
    CAnaFormBase::refresh();
}

void CAnaFormCoordinateXY::slot_btnBoundSetup()
{
    if (refuseWhileBusy())
        return;
    CAnaFormCoordinateXYBoundDlg dialog(bounds, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    bounds = dialog.bounds();
    m_view->update();
}

void CAnaFormCoordinateXY::slot_btnShowTrace(bool on)
{
    if (!on) {
        m_view->update();
        return;
    }
    if (!m_x || !m_y) {
        m_btnTrace->setChecked(false);
        return;
    }
    const int t1 = cursorT1();
    const int t2 = cursorT2();
    if (std::abs(t2 - t1) < 2) {
        m_btnTrace->setChecked(false);
        QMessageBox::warning(this, QString(), tr("The Points Selected to Plot Curve is Too Few!"));
        return;
    }
    m_nFrom = std::min(t1, t2);
    m_nTo = std::max(t1, t2);
    m_view->update();
}

void CAnaFormCoordinateXY::slot_btnZoomIn()
{
    m_view->zoomBy(CAnaViewBase::kZoomStep);
}

void CAnaFormCoordinateXY::slot_btnZoomOut()
{
    m_view->zoomBy(1.0f / CAnaViewBase::kZoomStep);
}

void CAnaFormCoordinateXY::slot_btnZoomComeback()
{
    m_view->zoomBy(-1.0f);
}
