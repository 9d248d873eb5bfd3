#include "scrollviewbase.h"

#include "colorscheme.h"
#include "globalsettings.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// The image cursors of the mouse modes, made once for the process.
const QCursor &imageCursor(int mode)
{
    static const QCursor clip(QPixmap(QStringLiteral(":/images/ToolsManClip.png")).scaled(24, 24), 1, 1);
    static const QCursor zoom(QPixmap(QStringLiteral(":/images/ZoomWin.png")).scaled(24, 24), 1, 1);
    static const QCursor range(QPixmap(QStringLiteral(":/images/BtnZoomHorzFreeIn.png")).scaled(24, 24), 1,
                               1);
    return mode == CScrollViewBase::ModeClip ? clip : mode == CScrollViewBase::ModeZoomWindow ? zoom : range;
}

int roundHalfAway(double value)
{
    return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5);
}

} // namespace

CScrollViewBase::CScrollViewBase(QWidget *parent) : QWidget(parent), m_cursorOut(Qt::ArrowCursor)
{
    setMouseMode(ModePlain);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    for (int i = 0; i < kSchemeColours; ++i)
        m_ownColours[i] = SchemeColour(1, i);
}

uint32_t CScrollViewBase::colour(int index) const
{
    if (index < 0 || index >= kSchemeColours)
        return 0xff000000;
    if (m_colourFlags & ColourOwnRow)
        return SchemeColour(m_colourRow, index);
    if (m_colourFlags & ColourGlobalScheme)
        return SchemeColour(colorScheme, index);
    return m_ownColours[index];
}

void CScrollViewBase::setColourRecord(uint32_t flags, int row)
{
    m_colourFlags = flags;
    m_colourRow = row;
    update();
}

int CScrollViewBase::scrollX() const
{
    return m_pArea ? m_pArea->horizontalScrollBar()->value() : 0;
}

int CScrollViewBase::scrollY() const
{
    return m_pArea ? m_pArea->verticalScrollBar()->value() : 0;
}

void CScrollViewBase::setScroll(int x, int y)
{
    if (!m_pArea)
        return;
    m_pArea->horizontalScrollBar()->setValue(x);
    m_pArea->verticalScrollBar()->setValue(y);
}

void CScrollViewBase::updateSize()
{
    if (!m_pArea)
        return;
    const QSize port = m_pArea->viewport()->size();
    const int64_t fullW = int64_t(m_nDocW) + m_nMarginL + m_nMarginR;
    const int64_t fullH = int64_t(m_nDocH) + m_nMarginT + m_nMarginB;
    QScrollBar *h = m_pArea->horizontalScrollBar();
    QScrollBar *v = m_pArea->verticalScrollBar();
    h->setRange(0, static_cast<int>(std::clamp<int64_t>(fullW - port.width(), 0, INT32_MAX)));
    v->setRange(0, static_cast<int>(std::clamp<int64_t>(fullH - port.height(), 0, INT32_MAX)));
    if (m_nMarginL + m_nMarginR > 0)
        h->setPageStep(qMax(1, port.width() - m_nMarginL - m_nMarginR - 1));
    else
        h->setPageStep(qMax(1, port.width()));
    if (m_nMarginT + m_nMarginB > 0)
        v->setPageStep(qMax(1, port.height() - m_nMarginT - m_nMarginB - 1));
    else
        v->setPageStep(qMax(1, port.height()));
    h->setSingleStep(qMax(1, port.width() / 20));
    v->setSingleStep(20);
}

QRect CScrollViewBase::docRect(bool withMargins) const
{
    // The viewport in document coordinates, less the margins, so that a document smaller than
    // the viewport stays at the top left.
    const int x = scrollX();
    const int y = scrollY();
    const int left = x < m_nMarginL ? m_nMarginL : x;
    const int top = y < m_nMarginT ? m_nMarginT : y;
    int right = x + width() - m_nMarginR;
    int bottom = y + height() - m_nMarginB;
    right = qMin(right, m_nMarginL + m_nDocW);
    bottom = qMin(bottom, m_nMarginT + m_nDocH);
    QRect rect(QPoint(left, top), QPoint(right - 1, bottom - 1));
    if (withMargins)
        rect.adjust(-m_nMarginL, -m_nMarginT, m_nMarginR, m_nMarginB);
    return rect;
}

bool CScrollViewBase::isInDoc(int x, int y) const
{
    return docRect(false).contains(toDoc(QPoint(x, y)));
}

QPoint CScrollViewBase::clampToDoc(QPoint point) const
{
    const QRect doc = docRect(false);
    return QPoint(qBound(doc.left(), point.x(), qMax(doc.left(), doc.right())),
                  qBound(doc.top(), point.y(), qMax(doc.top(), doc.bottom())));
}

QPoint CScrollViewBase::heldInDoc(QPoint widgetPoint)
{
    const QPoint doc = toDoc(widgetPoint);
    const QPoint held = clampToDoc(doc);
    if (held != doc)
        QCursor::setPos(mapToGlobal(held - QPoint(scrollX(), scrollY())));
    return held;
}

void CScrollViewBase::setMouseMode(int mode)
{
    m_nMouseMode = mode;
    switch (mode) {
    case ModePlain:
        m_cursorMode = QCursor(Qt::CrossCursor);
        break;
    case ModeHand:
        m_cursorMode = QCursor(Qt::OpenHandCursor);
        break;
    case ModeClip:
    case ModeZoomWindow:
    case ModeRange:
        m_cursorMode = imageCursor(mode);
        break;
    default:
        return;
    }
    setCursor(m_cursorMode);
}

void CScrollViewBase::onAreaSelected(int mode)
{
    switch (mode) {
    case ModeClip:
        onClipArea();
        break;
    case ModeZoomWindow:
        onZoomArea();
        setMouseMode(ModeZoomWindow); // the zoom window stays on until the user leaves it
        break;
    case ModeRange:
        onRangeArea();
        break;
    default:
        break;
    }
}

float CScrollViewBase::zoomFactorFor(QPoint a, QPoint b) const
{
    const int dx = std::abs(b.x() - a.x());
    const int dy = std::abs(b.y() - a.y());
    if (dx < 21 || dy < 21)
        return -1.0f;
    const QRect doc = docRect(false);
    const float w = float(doc.width());
    const float h = float(doc.height());
    const float factor = b.x() - a.x() >= 1 ? qMin(w / dx, h / dy) : qMin(dx / w, dy / h);
    return qBound(0.0001f, factor, 10000.0f);
}

void CScrollViewBase::zoomToArea(QPoint a, QPoint b, float &zoom)
{
    const float factor = zoomFactorFor(a, b);
    if (factor < 0.0f)
        return;
    QRect area = QRect(a, b).normalized().translated(-m_nMarginL, -m_nMarginT);
    area = QRect(roundHalfAway(area.left() * double(factor)), roundHalfAway(area.top() * double(factor)),
                 roundHalfAway(area.width() * double(factor)), roundHalfAway(area.height() * double(factor)));
    m_nDocW = roundHalfAway(m_nDocW * double(factor));
    updateSize();
    m_nDocH = roundHalfAway(m_nDocH * double(factor));
    updateSize();
    const QRect doc = docRect(false);
    setScroll(area.left() - (doc.width() - area.width()) / 2,
              area.top() - (doc.height() - area.height()) / 2);
    zoom *= factor;
    update();
}

QPixmap CScrollViewBase::renderArea(const QRect &rect)
{
    QPixmap pixmap(rect.size());
    pixmap.fill(QColor::fromRgba(colour(0)));
    QPainter painter(&pixmap);
    painter.translate(-rect.topLeft());
    drawContents(painter, rect);
    painter.resetTransform();
    painter.setPen(QColor::fromRgba(colour(2)));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(0, 0, rect.width() - 1, rect.height() - 1);
    return pixmap;
}

void CScrollViewBase::drawContents(QPainter &, const QRect &) {}

void CScrollViewBase::paintEvent(QPaintEvent *event)
{
    // Qt's backing store already gives the flicker-free off-screen picture; the contents are
    // painted in document coordinates.
    const QRect exposed = event->rect().intersected(rect());
    QPainter painter(this);
    painter.fillRect(exposed, QColor::fromRgba(colour(0)));
    painter.translate(-scrollX(), -scrollY());
    const QRect docExposed = exposed.translated(scrollX(), scrollY());
    painter.setClipRect(docExposed);
    drawContents(painter, docExposed);
    const QColor band = QColor::fromRgba(colour(8));
    if ((m_nMouseMode == ModeClip || m_nMouseMode == ModeZoomWindow) && !m_ptLeftDown.isNull() &&
        !m_ptMouse.isNull()) {
        painter.setPen(QPen(band, 1, Qt::DashLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRect(m_ptLeftDown, m_ptMouse).normalized());
    } else if (m_nMouseMode == ModeRange && !m_ptLeftDown.isNull() && !m_ptMouse.isNull()) {
        painter.setPen(band);
        const int top = m_nMarginT;
        const int bottom = m_nMarginT + m_nDocH;
        painter.drawLine(m_ptLeftDown.x(), top, m_ptLeftDown.x(), bottom);
        painter.drawLine(m_ptMouse.x(), top, m_ptMouse.x(), bottom);
    }
}

void CScrollViewBase::mousePressEvent(QMouseEvent *event)
{
    event->accept();
    const QPoint point = toDoc(event->position().toPoint());
    if (event->button() == Qt::LeftButton) {
        m_nMouseBits |= 1;
        m_ptLeftDown = point;
        if (m_nMouseMode == ModePlain || m_nMouseMode > ModeRange) {
            onLeftPress(event);
            return;
        }
        m_ptLeftDown = heldInDoc(event->position().toPoint());
        if (m_nMouseMode == ModeHand) {
            m_ptLeftDown = event->globalPosition().toPoint();
            m_nScrollStartH = scrollX();
            m_nScrollStartV = scrollY();
        }
    } else if (event->button() == Qt::RightButton) {
        m_nMouseBits |= 2;
        m_ptRightDown = point;
        if (m_nMouseMode == ModePlain)
            onRightPress(event);
    }
}

void CScrollViewBase::mouseMoveEvent(QMouseEvent *event)
{
    event->accept();
    if ((m_nMouseBits & 1) && m_nMouseMode >= ModeHand && m_nMouseMode <= ModeRange) {
        m_ptMouse = heldInDoc(event->position().toPoint());
        if (m_nMouseMode == ModeHand) {
            const QPoint moved = event->globalPosition().toPoint() - m_ptLeftDown;
            setScroll(m_nScrollStartH - moved.x(), m_nScrollStartV - moved.y());
        } else {
            update();
        }
        return;
    }
    const QPoint p = event->position().toPoint();
    setCursor(isInDoc(p.x(), p.y()) ? m_cursorMode : m_cursorOut);
    onMouseMove(event);
}

void CScrollViewBase::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() == Qt::LeftButton) {
        m_nMouseBits &= ~1u;
        m_ptLeftUp = toDoc(event->position().toPoint());
        if (m_nMouseMode == ModeHand) {
            m_ptLeftDown = m_ptLeftUp = QPoint();
        } else if (m_nMouseMode >= ModeClip && m_nMouseMode <= ModeRange) {
            const int mode = m_nMouseMode;
            setMouseMode(ModePlain);
            m_ptMouse = clampToDoc(toDoc(event->position().toPoint()));
            update();
            onAreaSelected(mode);
            m_ptLeftDown = m_ptLeftUp = m_ptRightDown = m_ptRightUp = m_ptMouse = QPoint();
        } else {
            onLeftRelease(event);
        }
    } else if (event->button() == Qt::RightButton) {
        m_nMouseBits &= ~2u;
        m_ptRightUp = toDoc(event->position().toPoint());
        if (m_nMouseMode >= ModeHand && m_nMouseMode <= ModeRange)
            setMouseMode(ModePlain);
        else
            onRightRelease(event);
    }
}

void CScrollViewBase::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() == Qt::LeftButton)
        onLeftDouble(event);
    else if (event->button() == Qt::RightButton)
        onRightDouble(event);
}

void CScrollViewBase::offerPicture(const QPixmap &picture)
{
    // One folder for the whole session, whichever view the picture came from.
    static QString lastFolder;
    QApplication::clipboard()->setPixmap(picture);
    if (QMessageBox::question(
            this, QString(),
            tr("The Image of Selected Area Has been copied to system clipboard,\n\nSave it to a "
               "bitmap file now?")) != QMessageBox::Yes)
        return;
    const QString path = QFileDialog::getSaveFileName(this, QString(), lastFolder, tr("Bitmap File(*.png)"));
    if (path.isEmpty())
        return;
    lastFolder = QFileInfo(path).absolutePath();
    picture.save(path, "PNG");
}

double CScrollViewBase::pointAngle(int x0, int y0, int x1, int y1)
{
    double angle = std::atan2(double(y1 - y0), double(x1 - x0));
    if (angle < 0)
        angle += double(6.2831855f);
    return angle;
}

void CScrollViewBase::drawArrow(QPainter &painter, int x0, int y0, int x1, int y1, uint32_t colour,
                                Qt::PenStyle style, int width)
{
    const int dx = x0 - x1;
    const int dy = y0 - y1;
    if (dx * dx + dy * dy <= 80)
        return;
    const QColor c = QColor::fromRgba(colour);
    painter.setPen(QPen(c, width, style));
    painter.drawLine(x1, y1, x0, y0);
    // The head sits at (x0, y0); its wings leave backwards at ±22 degrees, 9 pixels long.
    const double angle = pointAngle(x0, y0, x1, y1);
    QPainterPath head;
    head.moveTo(x0, y0);
    head.lineTo(x0 + roundHalfAway(9 * std::cos(angle - 0.38397244)),
                y0 + roundHalfAway(9 * std::sin(angle - 0.38397244)));
    head.lineTo(x0 + roundHalfAway(9 * std::cos(angle + 0.38397244)),
                y0 + roundHalfAway(9 * std::sin(angle + 0.38397244)));
    head.closeSubpath();
    painter.setPen(QPen(c, 1));
    painter.setBrush(c);
    painter.drawPath(head);
    painter.setBrush(Qt::NoBrush);
}

void CScrollViewBase::drawVector(QPainter &painter, int x0, int y0, int x1, int y1, uint32_t colour,
                                 Qt::PenStyle style, int width)
{
    const int dx = x0 - x1;
    const int dy = y0 - y1;
    if (dx * dx + dy * dy <= 24)
        return;
    const QColor c = QColor::fromRgba(colour);
    painter.setPen(QPen(c, width, style));
    painter.drawLine(x1, y1, x0, y0);
    painter.setBrush(c);
    painter.drawEllipse(x0 - 2, y0 - 2, 5, 5);
    painter.setBrush(Qt::NoBrush);
}

CScrollAreaEx::CScrollAreaEx(QWidget *parent) : QAbstractScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
}

void CScrollAreaEx::setView(CScrollViewBase *view)
{
    m_view = view;
    view->m_pArea = this;
    setViewport(view);
    view->updateSize();
}

void CScrollAreaEx::scrollContentsBy(int, int)
{
    viewport()->update();
    if (m_view)
        m_view->onScrolled();
}

void CScrollAreaEx::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    if (m_view)
        m_view->updateSize();
}

bool CScrollAreaEx::viewportEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Paint:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::ContextMenu:
        return false; // the view paints and takes the mouse itself
    case QEvent::Resize:
        // The area lays out its bars; the view then hears of its new size itself, so that a
        // diagram fits its scale to the space it has.
        QAbstractScrollArea::viewportEvent(event);
        if (m_view)
            m_view->updateSize();
        return false;
    case QEvent::LayoutRequest:
    case QEvent::UpdateLater: {
        const bool handled = QAbstractScrollArea::viewportEvent(event);
        if (m_view)
            m_view->updateSize();
        return handled;
    }
    default:
        return QAbstractScrollArea::viewportEvent(event);
    }
}

void CScrollAreaEx::keyPressEvent(QKeyEvent *event)
{
    if (m_view && m_view->onKeyPress(event))
        return;
    QAbstractScrollArea::keyPressEvent(event);
}

void CScrollAreaEx::keyReleaseEvent(QKeyEvent *event)
{
    if (m_view && m_view->onKeyRelease(event))
        return;
    QAbstractScrollArea::keyReleaseEvent(event);
}
