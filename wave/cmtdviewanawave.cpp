#include "cmtdviewanawave.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtddocument.h"
#include "envelope.h"
#include "globaloptions.h"
#include "phasor.h"
#include "polylineraster.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <cmath>

namespace {

// The widest document in pixels: scroll bars and painter coordinates are ints, and pixels of
// the cursors and labels must stay representable beside it.
constexpr double kMaxDocWidth = 2000000000.0;

int roundHalfAway(double value)
{
    return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5);
}

// A time relative to the zero of the axis, in ms with the digits it needs, or m:s.
QString axisLabel(int64_t us)
{
    const bool negative = us < 0;
    const int64_t v = negative ? -us : us;
    char text[32];
    if (globalOptions.statusTimeFormat == 1) {
        const int64_t seconds = v / 1000000;
        std::snprintf(text, sizeof text, "%s%d:%02d", negative ? "-" : "", int(seconds / 60),
                      int(seconds % 60));
        return QString::fromLatin1(text);
    }
    const long long ms = v / 1000;
    const int fraction = int(v % 1000);
    const char *sign = negative ? "-" : "";
    if (fraction == 0)
        std::snprintf(text, sizeof text, "%s%lld.0", sign, ms);
    else if (fraction % 100 == 0)
        std::snprintf(text, sizeof text, "%s%lld.%d", sign, ms, fraction / 100);
    else if (fraction % 10 == 0)
        std::snprintf(text, sizeof text, "%s%lld.%02d", sign, ms, fraction / 10);
    else
        std::snprintf(text, sizeof text, "%s%lld.%03d", sign, ms, fraction);
    return QString::fromLatin1(text);
}

// A label spacing of 1, 2 or 5 times a power of ten samples, no narrower than `least`.
// The document point that the painter puts at its device's origin. Marks and labels are drawn
// at the identity transform from it, in device pixels.
QPoint documentOrigin(const QPainter &painter)
{
    const QPointF shift = painter.transform().map(QPointF(0.0, 0.0));
    return QPoint(-int(std::lround(shift.x())), -int(std::lround(shift.y())));
}

int niceSpacing(int least)
{
    int decade = 1;
    while (decade <= least / 10)
        decade *= 10;
    for (int m : {1, 2, 5, 10}) {
        if (m * decade >= least)
            return m * decade;
    }
    return 10 * decade;
}

} // namespace

CCmtdViewAnaWave::CCmtdViewAnaWave(CCmtdDocument *owner, QWidget *parent)
    : CScrollViewBase(parent), document(owner)
{
    m_nMarginL = 4;
    m_nMarginR = 4;
    // Two lines: the name column beside shows its two cursor read-outs in this band.
    m_nMarginT = 2 * fontMetrics().height() + 6;
    m_nMarginB = 2;
    rowHeightBase = qMax(48, fontMetrics().height() * 4);
    setFocusPolicy(Qt::StrongFocus);
}

int CCmtdViewAnaWave::availableWidth() const
{
    const int port = m_pArea ? m_pArea->viewport()->width() : width();
    return qMax(1, port - m_nMarginL - m_nMarginR - 21);
}

float CCmtdViewAnaWave::fitScale() const
{
    return m_points < 5 ? 1.0f : float(availableWidth()) / float(m_points);
}

float CCmtdViewAnaWave::maxScale() const
{
    // One sample across the view, unless the document would then grow past what a scroll bar
    // and pixel coordinates can hold: the end of a long recording must stay reachable.
    const float whole = float(kMaxDocWidth / double(qMax(m_points, 1)));
    return qMax(fitScale(), qMin(float(availableWidth()), whole));
}

int CCmtdViewAnaWave::sampleAtPixel(int x) const
{
    if (m_points < 1)
        return 0;
    return qBound(0, roundHalfAway(double(x) / double(hScale)), m_points - 1);
}

int CCmtdViewAnaWave::pixelOfSample(int sample) const
{
    return roundHalfAway(double(sample) * double(hScale)) + m_nMarginL;
}

int CCmtdViewAnaWave::deviceX(int sample) const
{
    return roundHalfAway((double(sample) * double(hScale) + double(m_nMarginL)) * m_dpr);
}

int CCmtdViewAnaWave::deviceRow(int y) const
{
    return roundHalfAway(double(y) * m_dpr);
}

void CCmtdViewAnaWave::updateDocWidth()
{
    m_nDocW = static_cast<int>(qMin(kMaxDocWidth, std::round(double(m_points) * double(hScale))));
    updateSize();
}

void CCmtdViewAnaWave::setDrawnExtent(int points, bool repaint)
{
    m_points = qMax(0, points);
    if (m_fitOnExtent)
        hScale = fitScale();
    updateDocWidth();
    if (repaint)
        update();
}

void CCmtdViewAnaWave::resizeEvent(QResizeEvent *event)
{
    CScrollViewBase::resizeEvent(event);
    if (m_fitOnExtent && m_points >= 5) {
        hScale = fitScale();
        updateDocWidth();
    }
}

void CCmtdViewAnaWave::buildRows(bool repaint)
{
    rows.clear();
    const CCmtd99File &file = document->recording();
    std::vector<CChnMapBase *> order;
    const bool statusFirst = globalOptions.stateMask & CGlobalOptions::StatusChnAhead;
    if (statusFirst) {
        for (const auto &map : file.statusMaps)
            order.push_back(map.get());
    }
    for (const auto &map : file.analogMaps)
        order.push_back(map.get());
    if (!statusFirst) {
        for (const auto &map : file.statusMaps)
            order.push_back(map.get());
    }
    for (CChnMapBase *map : order) {
        CWaveRow row;
        row.key = map->Index() + 10 * map->chnType;
        row.height = map->chnType == CChnMapBase::TypeAnalog ? rowHeightBase : kStatusRowHeight;
        row.channels.append(map);
        rows.push_back(row);
    }
    layoutRows(repaint);
}

void CCmtdViewAnaWave::addChannelToView(CChnMapBase *channel, int after, bool show)
{
    for (const CWaveRow &row : rows) {
        if (row.channels.contains(channel))
            return;
    }
    channel->flags =
        show ? (channel->flags & ~CChnMapBase::FlagHidden) : (channel->flags | CChnMapBase::FlagHidden);
    CWaveRow row;
    row.key = channel->Index() + 10 * channel->chnType;
    row.channels.append(channel);
    const size_t at = after >= 0 && size_t(after) < rows.size() ? size_t(after) + 1 : rows.size();
    rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at), row);
    layoutRows(true);
}

void CCmtdViewAnaWave::takeOutChannel(CChnMapBase *channel)
{
    for (CWaveRow &row : rows) {
        if (row.channels.removeOne(channel) && row.channels.isEmpty())
            row.key = -1; // an emptied row goes at the next layout
    }
}

void CCmtdViewAnaWave::layoutRows(bool repaint)
{
    int y = 0;
    for (size_t i = 0; i < rows.size();) {
        CWaveRow &row = rows[i];
        if (row.channels.isEmpty() && row.key < 0) {
            rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        int height = 0;
        bool shown = false;
        for (CChnMapBase *map : std::as_const(row.channels)) {
            int h = kStatusRowHeight;
            if (map->chnType == CChnMapBase::TypeAnalog) {
                auto *analog = static_cast<CChnMapAnalog *>(map);
                analog->vScale = qMax(1.0f, analog->vScale);
                h = roundHalfAway(double(rowHeightBase) * double(analog->vScale));
            }
            height = qMax(height, h);
            if (!(map->flags & CChnMapBase::FlagHidden))
                shown = true;
        }
        row.height = height > 0 ? height : rowHeightBase;
        if (!shown) {
            row.centerY = -row.height;
        } else {
            row.centerY = y + row.height / 2;
            y += row.height;
        }
        ++i;
    }
    m_nDocH = 3 + y + 10;
    updateSize();
    Q_EMIT rowsChanged();
    if (repaint)
        update();
}

void CCmtdViewAnaWave::groupOverlap()
{
    buildRows(false);
    for (size_t i = 0; i < rows.size(); ++i) {
        CWaveRow &row = rows[i];
        if (row.channels.isEmpty() || row.channels.first()->chnType != CChnMapBase::TypeAnalog ||
            row.channels.first()->phase != 1)
            continue;
        const CChnMapBase *first = row.channels.first();
        int wanted = 2;
        for (size_t j = i + 1; j < rows.size() && wanted <= 3; ++j) {
            CWaveRow &other = rows[j];
            if (other.channels.isEmpty())
                continue;
            const CChnMapBase *candidate = other.channels.first();
            if (candidate->chnType != CChnMapBase::TypeAnalog || candidate->kindCode != first->kindCode ||
                candidate->phase != wanted)
                continue;
            row.channels.append(other.channels.takeFirst());
            other.key = -1;
            ++wanted;
        }
    }
    layoutRows(true);
}

void CCmtdViewAnaWave::setZoomFactor(float factor)
{
    m_fitOnExtent = false;
    hScale = qBound(fitScale(), hScale * factor, maxScale());
    const int keep = cursorT1;
    updateDocWidth();
    showPoint(keep);
    update();
}

void CCmtdViewAnaWave::setHorzScale(float scale)
{
    m_fitOnExtent = scale < 0.0f;
    hScale = scale < 0.0f ? fitScale() : scale;
    updateDocWidth();
    update();
}

void CCmtdViewAnaWave::zoomRange(int from, int to)
{
    if (from == -1 && to == -1) {
        from = cursorT1;
        to = cursorT2;
    }
    if (from > to)
        std::swap(from, to);
    if (to - from < 1)
        return; // less than one sample: nothing to zoom into
    m_fitOnExtent = false;
    const int port = m_pArea ? m_pArea->viewport()->width() : width();
    hScale = float(qMax(port - m_nMarginL - m_nMarginR - 22, 1)) / float(to - from + 2);
    updateDocWidth();
    if (m_pArea)
        m_pArea->horizontalScrollBar()->setValue(roundHalfAway(double(qMax(from - 1, 0)) * double(hScale)));
    update();
}

void CCmtdViewAnaWave::showPoint(int index)
{
    if (!m_pArea || m_points < 1)
        return;
    const int x = pixelOfSample(qBound(0, index, m_points - 1));
    const QRect doc = docRect(false);
    if (x < doc.left() || x > doc.right())
        m_pArea->horizontalScrollBar()->setValue(x - m_nMarginL - doc.width() / 2);
}

void CCmtdViewAnaWave::setCursorT1(int sample)
{
    cursorT1 = m_points > 0 ? qBound(0, sample, m_points - 1) : 0;
    document->cursorsMoved();
    Q_EMIT cursorsChanged();
    update();
}

void CCmtdViewAnaWave::setCursorT2(int sample)
{
    cursorT2 = m_points > 0 ? qBound(0, sample, m_points - 1) : 0;
    document->cursorsMoved();
    Q_EMIT cursorsChanged();
    update();
}

void CCmtdViewAnaWave::setClipMode(bool on)
{
    mode = on ? 2 : 0;
    setMouseMode(on ? ModeClip : ModePlain);
}

int CCmtdViewAnaWave::hitRow(int y) const
{
    const int docY = y - rowTop();
    for (size_t i = 0; i < rows.size(); ++i) {
        const CWaveRow &row = rows[i];
        if (row.centerY < 0)
            continue;
        if (docY >= row.centerY - row.height / 2 && docY < row.centerY - row.height / 2 + row.height)
            return static_cast<int>(i);
    }
    return -1;
}

int CCmtdViewAnaWave::sampleUnderPointer(QMouseEvent *event) const
{
    // A cursor is never taken to the left of the visible part.
    const int x = qMax(toDoc(event->position().toPoint()).x(), scrollX());
    return sampleAtPixel(x - m_nMarginL);
}

void CCmtdViewAnaWave::onLeftPress(QMouseEvent *event)
{
    setFocus();
    if (document->zoomMode == CCmtdDocument::ZoomVertDrag) {
        const int index = hitRow(toDoc(event->position().toPoint()).y());
        if (index < 0)
            return;
        for (CChnMapBase *map : std::as_const(rows[size_t(index)].channels)) {
            if (map->chnType == CChnMapBase::TypeAnalog)
                static_cast<CChnMapAnalog *>(map)->vScale *= 1.1f;
        }
        layoutRows(true);
        return;
    }
    setCursorT1(sampleUnderPointer(event));
}

void CCmtdViewAnaWave::onRightPress(QMouseEvent *event)
{
    if (document->zoomMode == CCmtdDocument::ZoomHorzFree) {
        document->requestZoomMode(CCmtdDocument::ZoomNone);
        return;
    }
    if (document->zoomMode == CCmtdDocument::ZoomVertDrag) {
        const int index = hitRow(toDoc(event->position().toPoint()).y());
        if (index < 0)
            return;
        for (CChnMapBase *map : std::as_const(rows[size_t(index)].channels)) {
            if (map->chnType == CChnMapBase::TypeAnalog) {
                auto *analog = static_cast<CChnMapAnalog *>(map);
                analog->vScale = qMax(1.0f, analog->vScale / 1.1f);
            }
        }
        layoutRows(true);
        return;
    }
    setCursorT2(sampleUnderPointer(event));
}

void CCmtdViewAnaWave::onMouseMove(QMouseEvent *event)
{
    const Qt::MouseButtons buttons = event->buttons();
    if (document->zoomMode == CCmtdDocument::ZoomVertDrag)
        return;
    if (buttons & Qt::LeftButton) {
        if (document->zoomMode == CCmtdDocument::ZoomHorzFree)
            setCursorT2(sampleUnderPointer(event));
        else
            setCursorT1(sampleUnderPointer(event));
    } else if ((buttons & Qt::RightButton) && document->zoomMode == CCmtdDocument::ZoomNone) {
        setCursorT2(sampleUnderPointer(event));
    }
}

void CCmtdViewAnaWave::onLeftRelease(QMouseEvent *event)
{
    if (document->zoomMode != CCmtdDocument::ZoomHorzFree)
        return;
    setCursorT2(sampleUnderPointer(event));
    zoomRange(-1, -1);
    document->requestZoomMode(CCmtdDocument::ZoomNone);
}

void CCmtdViewAnaWave::cursorMovedByKey(int sample)
{
    // Keep the moved cursor in view when it reaches the outer two samples.
    const QRect doc = docRect(false);
    const int left = sampleAtPixel(doc.left() - m_nMarginL);
    const int right = sampleAtPixel(doc.right() - m_nMarginL);
    if (sample <= left + 1 || sample >= right - 1)
        showPoint(sample);
}

bool CCmtdViewAnaWave::onKeyPress(QKeyEvent *event)
{
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const int last = qMax(0, m_points - 1);
    auto moveCursor = [&](int sample) {
        if (shift)
            setCursorT2(sample);
        else
            setCursorT1(sample);
        cursorMovedByKey(shift ? cursorT2 : cursorT1);
        return true;
    };
    auto trigger = [this](CCmtdDocument::Action id) {
        document->trigger(id);
        return true;
    };
    switch (event->key()) {
    case Qt::Key_Left:
        return moveCursor((shift ? cursorT2 : cursorT1) - 1);
    case Qt::Key_Right:
        return moveCursor((shift ? cursorT2 : cursorT1) + 1);
    case Qt::Key_Home:
        return moveCursor(0);
    case Qt::Key_End:
        return moveCursor(last);
    case Qt::Key_F2:
        return trigger(CCmtdDocument::ActZoomHorzCompress);
    case Qt::Key_F3:
        return trigger(CCmtdDocument::ActZoomHorzExtend);
    case Qt::Key_F4:
        return trigger(CCmtdDocument::ActZoomHorzFree);
    case Qt::Key_F5:
        return trigger(CCmtdDocument::ActZoomHorzReset);
    case Qt::Key_F6:
        return trigger(CCmtdDocument::ActZoomVertScale);
    case Qt::Key_F7:
        return trigger(CCmtdDocument::ActZoomVertReset);
    case Qt::Key_F8:
        return trigger(CCmtdDocument::ActZoomVertExtend);
    case Qt::Key_F9:
        return trigger(CCmtdDocument::ActDotMode);
    case Qt::Key_F10:
        return trigger(CCmtdDocument::ActValPri);
    case Qt::Key_F11:
        return trigger(CCmtdDocument::ActValRms);
    case Qt::Key_F12:
        return trigger(CCmtdDocument::ActValHm1);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        setZoomFactor(2.0f);
        return true;
    case Qt::Key_Minus:
        setZoomFactor(0.5f);
        return true;
    case Qt::Key_A:
        return trigger(CCmtdDocument::ActValAng);
    case Qt::Key_V:
        return trigger(CCmtdDocument::ActAnaVec);
    case Qt::Key_Q:
        return trigger(CCmtdDocument::ActAnaSeq);
    case Qt::Key_H:
        return trigger(CCmtdDocument::ActAnaHm);
    case Qt::Key_R:
        return trigger(CCmtdDocument::ActAnaRX);
    case Qt::Key_S:
        return trigger(CCmtdDocument::ActAnaStaEvn);
    case Qt::Key_T:
        return trigger(CCmtdDocument::ActT0cSet);
    case Qt::Key_D:
        if (event->modifiers() & Qt::ControlModifier)
            return trigger(CCmtdDocument::ActT0cDel);
        return false;
    case Qt::Key_Escape:
        document->requestZoomMode(CCmtdDocument::ZoomNone);
        if (clipMode()) {
            setClipMode(false);
            document->actionsChanged();
        }
        return true;
    default:
        return false;
    }
}

void CCmtdViewAnaWave::setEnvelopeMode(bool on)
{
    m_envelope = on;
    update();
}

void CCmtdViewAnaWave::onClipArea()
{
    const QRect area = QRect(m_ptLeftDown, m_ptMouse).normalized();
    setClipMode(false);
    document->actionsChanged();
    if (area.width() < 2 || area.height() < 2)
        return;
    m_picture = true;
    const QPixmap picture = renderArea(area);
    m_picture = false;
    offerPicture(picture);
}

double CCmtdViewAnaWave::scaleValue(const CChnMapAnalog &map) const
{
    double v = 9999999.0;
    if (map.flags & CChnMapBase::FlagVertExtend) {
        v = map.absMax;
    } else {
        bool grouped = false;
        // The worker builds the groups at the end of a load; until then they are not read.
        const bool loading = document->backgroundState() & CCmtdDocument::StateLoading;
        if (!loading) {
            for (const ScaleGroup &group : document->recording().scaleGroups) {
                if (group.chnClass == map.chnClass && group.unit.prefix == map.unit.prefix &&
                    qstricmp(group.unit.text, map.unit.text) == 0) {
                    v = group.peak;
                    grouped = true;
                    break;
                }
            }
        }
        // While the file is still read there are no groups yet: the configured range stands in,
        // so that the waves take shape as they arrive.
        if (!grouped)
            v = qMax(std::fabs(double(map.rangeMax)), std::fabs(double(map.rangeMin)));
    }
    return v > 0.0 ? v : 9999999.0;
}

int CCmtdViewAnaWave::rowPixel(int centerY, double value, double factor)
{
    // A value far beyond its row is held a little outside the view; the rasteriser clips it.
    // This keeps a channel holding 3.4e38 (or a tiny scale) from overflowing the pixel row.
    const double y = double(centerY) - value * factor;
    constexpr double kLimit = 1 << 24;
    return roundHalfAway(y < -kLimit ? -kLimit : y > kLimit ? kLimit : y);
}

void CCmtdViewAnaWave::flushLine(const CChnMapBase &map)
{
    const int count = static_cast<int>(m_line.size());
    if (map.flags & CChnMapBase::FlagDots)
        RasterPlusSigns(m_canvas, m_canvasOrigin, m_line.data(), count, map.colour);
    else
        RasterPolyline(m_canvas, m_canvasOrigin, m_line.data(), count, map.colour);
    m_line.clear();
}

size_t CCmtdViewAnaWave::analogIndex(const CChnMapBase *map) const
{
    const auto &maps = document->recording().analogMaps;
    for (size_t i = 0; i < maps.size(); ++i) {
        if (maps[i].get() == map)
            return i;
    }
    return maps.size();
}

double CCmtdViewAnaWave::rowFactor(const CChnMapAnalog &map) const
{
    double factor = double(rowHeightBase) / 2.0 * double(map.vScale) / scaleValue(map);
    if (map.flags & CChnMapBase::FlagReversed)
        factor = -factor; // drawn reversed, as a current measured against the other direction
    return factor;
}

void CCmtdViewAnaWave::drawAnalog(const CChnMapAnalog &map, size_t analogIndex, int centerY)
{
    const float *values = map.Values();
    if (!values)
        return;
    const double factor = rowFactor(map);
    const int last = qMin(lastPoint, map.sampleCount - 1);
    const CSampleEnvelope *summary = document->isLoading() ? nullptr : document->envelope(analogIndex);
    if (m_envelope && summary && hScale < 0.5f && !(map.flags & CChnMapBase::FlagDots)) {
        drawEnvelope(map, *summary, factor, centerY, last);
        return;
    }
    m_line.clear();
    QPoint previous(INT_MIN, INT_MIN);
    for (int i = firstPoint; i <= last; i += stride) {
        const float v = values[i];
        if (!std::isfinite(v)) {
            // A missing or non-finite sample is a gap: the line ends here and starts anew.
            flushLine(map);
            previous = QPoint(INT_MIN, INT_MIN);
            continue;
        }
        const QPoint p(deviceX(i), rowPixel(deviceRow(centerY), double(v), factor * m_dpr));
        if (p == previous)
            continue; // a pixel that repeats the last one is not drawn again
        m_line.push_back(p);
        previous = p;
    }
    flushLine(map);
}

void CCmtdViewAnaWave::drawEnvelope(const CChnMapAnalog &map, const CSampleEnvelope &summary, double factor,
                                    int centerY, int last)
{
    // One vertical stroke per device pixel column, from the least to the largest sample under
    // it. The column's range takes in the last sample of the column before, so the strokes join.
    const float *values = map.Values();
    const int center = deviceRow(centerY);
    const double deviceFactor = factor * m_dpr;
    const int left = qMax(m_canvasOrigin.x(), deviceX(firstPoint));
    const int right = qMin(m_canvasOrigin.x() + m_canvas.width() - 1, deviceX(last));
    // The sample whose device column begins at a device x: samples left of the canvas belong to
    // no column.
    auto firstSampleOf = [this](int x) {
        return int(std::ceil(((double(x) - 0.5) / m_dpr - double(m_nMarginL)) / double(hScale)));
    };
    int from = qMax(firstPoint, firstSampleOf(left));
    for (int x = left; x <= right && from <= last; ++x) {
        const int to = qMin(last, firstSampleOf(x + 1) - 1);
        if (to < from)
            continue;
        float low, high;
        if (summary.Range(values, qMax(0, from - 1), to, low, high)) {
            const QPoint stroke[2] = {QPoint(x, rowPixel(center, double(low), deviceFactor)),
                                      QPoint(x, rowPixel(center, double(high), deviceFactor))};
            RasterPolyline(m_canvas, m_canvasOrigin, stroke, 2, map.colour);
        }
        from = to + 1;
    }
}

void CCmtdViewAnaWave::drawStatus(const CChnMapBase &base, int centerY)
{
    const auto &map = static_cast<const CChnMapStatus &>(base);
    const uint32_t *words = map.Words();
    if (!words)
        return;
    const int last = qMin(lastPoint, map.sampleCount - 1);
    m_line.clear();
    QPoint previous(INT_MIN, INT_MIN);
    for (int i = firstPoint; i <= last; i += stride) {
        const int bit = (words[i >> 5] >> (i & 31)) & 1;
        const QPoint p(deviceX(i), deviceRow(centerY - (bit ? 5 : 0)));
        if (p == previous)
            continue;
        m_line.push_back(p);
        previous = p;
    }
    const int count = static_cast<int>(m_line.size());
    if (map.flags & CChnMapBase::FlagDots) {
        RasterPlusSigns(m_canvas, m_canvasOrigin, m_line.data(), count, map.colour);
        return;
    }
    // Two pixels thick, so that a state line stands out from the waves.
    // Two pixels thick on the screen, whatever its pixel ratio.
    const int thickness = qMax(2, roundHalfAway(2.0 * m_dpr));
    for (int k = 0; k < thickness; ++k)
        RasterPolyline(m_canvas, m_canvasOrigin - QPoint(0, k), m_line.data(), count, map.colour);
}

void CCmtdViewAnaWave::drawContents(QPainter &painter, const QRect &rect)
{
    const CCmtd99File &file = document->recording();
    if (m_points < 5 || !file.sampleTimes || rect.isEmpty()) {
        painter.fillRect(rect, QColor::fromRgba(colour(1)));
        return;
    }
    firstPoint = qMax(0, sampleAtPixel(rect.left() - m_nMarginL) - 1);
    lastPoint = qMin(m_points - 1, sampleAtPixel(rect.right() - m_nMarginL) + 1);
    const double visible = double(lastPoint - firstPoint);
    // The exposed part is drawn into an image of its own size in device pixels, the waves
    // pixel by pixel: sharp on a high-density screen rather than doubled.
    const QPaintDevice *device = painter.device();
    m_dpr = device && device->devicePixelRatioF() > 0.0 ? device->devicePixelRatioF() : 1.0;
    const QSize deviceSize(int(std::ceil(rect.width() * m_dpr)), int(std::ceil(rect.height() * m_dpr)));
    stride = qMax(1, roundHalfAway(visible / double(qMax(1, deviceSize.width())) * 0.2));
    if (m_canvas.size() != deviceSize)
        m_canvas = QImage(deviceSize, QImage::Format_ARGB32_Premultiplied);
    m_canvas.setDevicePixelRatio(m_dpr);
    m_canvas.fill(QColor::fromRgba(colour(1)));
    m_canvasOrigin = QPoint(roundHalfAway(rect.left() * m_dpr), roundHalfAway(rect.top() * m_dpr));
    const uint32_t baseLine = colour(4);
    const int top = rowTop();
    for (const CWaveRow &row : rows) {
        if (row.centerY < 0)
            continue;
        const int rowTopY = top + row.centerY - row.height / 2;
        if (rowTopY > rect.bottom())
            break;
        if (rowTopY + row.height < rect.top())
            continue;
        const int centerY = top + row.centerY;
        const QPoint ends[2] = {QPoint(m_canvasOrigin.x(), deviceRow(centerY)),
                                QPoint(m_canvasOrigin.x() + m_canvas.width() - 1, deviceRow(centerY))};
        RasterPolyline(m_canvas, m_canvasOrigin, ends, 2, baseLine);
        for (const CChnMapBase *map : row.channels) {
            if (map->flags & CChnMapBase::FlagHidden)
                continue;
            if (map->chnType == CChnMapBase::TypeAnalog)
                drawAnalog(*static_cast<const CChnMapAnalog *>(map), analogIndex(map), centerY);
            else
                drawStatus(*map, centerY);
        }
    }
    painter.drawImage(rect.topLeft(), m_canvas);
    drawMarks(painter, rect);
    drawAxis(painter, rect);
}

void CCmtdViewAnaWave::drawMarks(QPainter &painter, const QRect &rect)
{
    const CCmtd99File &file = document->recording();
    // Drawn in view coordinates, as the time axis is: see there.
    const QPoint origin = documentOrigin(painter);
    const int sx = origin.x();
    const int sy = origin.y();
    painter.save();
    painter.resetTransform();
    const int top = qMax(rect.top(), sy + m_nMarginT) - sy;
    const int bottom = rect.bottom() - sy;
    auto vertical = [&](int sample, uint32_t argb, Qt::PenStyle style) {
        if (sample < 0 || sample >= m_points)
            return;
        const int x = pixelOfSample(sample) - sx;
        painter.setPen(QPen(QColor::fromRgba(argb), 1, style));
        painter.drawLine(x, top, x, bottom);
    };
    if (document->zoomMode == CCmtdDocument::ZoomHorzFree) {
        const int a = pixelOfSample(qMin(cursorT1, cursorT2)) - sx;
        const int b = pixelOfSample(qMax(cursorT1, cursorT2)) - sx;
        QColor shade = QColor::fromRgba(colour(8));
        shade.setAlpha(40);
        painter.fillRect(QRect(QPoint(a, top), QPoint(b, bottom)), shade);
    }
    if (document->displayFlags.testFlag(CCmtdDocument::ShowT0Cursor))
        vertical(file.triggerIndex, colour(8), Qt::DashLine);
    if (document->displayFlags.testFlag(CCmtdDocument::ShowT0cCursor) && file.customT0 >= 0) {
        vertical(file.customT0, colour(9), Qt::DashDotLine);
        painter.drawText(pixelOfSample(file.customT0) - sx + 3, top + fontMetrics().ascent() + 2,
                         QStringLiteral("T0'"));
    }
    vertical(cursorT1, colour(6), Qt::SolidLine);
    vertical(cursorT2, colour(7), Qt::SolidLine);

    // Each status row tells its state at both cursors; not on a picture for the clipboard,
    // where the labels would cover the traces.
    if (m_picture) {
        painter.restore();
        return;
    }
    const QFontMetrics metrics = fontMetrics();
    for (const CWaveRow &row : rows) {
        if (row.centerY < 0 || row.channels.isEmpty() ||
            row.channels.first()->chnType != CChnMapBase::TypeStatus)
            continue;
        const int y = rowTop() + row.centerY - sy;
        if (y < top || y - metrics.height() > bottom)
            continue;
        const auto *map = static_cast<const CChnMapStatus *>(row.channels.first());
        const QString text = QStringLiteral("T1=%1,T2=%2")
                                 .arg(map->Bit(cursorT1) ? QStringLiteral("ON") : QStringLiteral("OFF"), -3)
                                 .arg(map->Bit(cursorT2) ? QStringLiteral("ON") : QStringLiteral("OFF"), -3);
        // At the right edge of the view, on the row's own background, so the step stays readable.
        const int width = metrics.horizontalAdvance(text);
        const int x = qMin(rect.right(), scrollX() + this->width() - m_nMarginR) - sx - width - 6;
        painter.fillRect(QRect(x - 3, y - metrics.ascent() / 2 - 1, width + 6, metrics.height()),
                         QColor::fromRgba(colour(1)));
        painter.setPen(QColor::fromRgba(colour(5)));
        painter.drawText(x, y + metrics.ascent() / 2, text);
    }
    painter.restore();
}

int CCmtdViewAnaWave::labelSpacing(int labelWidth, float scale, double periodUs)
{
    // The fewest samples that leave room for one label.
    const int least = qMax(1, int(std::ceil(double(labelWidth) / double(scale))));
    if (!(periodUs > 0.0) || !std::isfinite(periodUs))
        return niceSpacing(least);
    // The smallest whole number of samples, at least `least`, whose time is 1, 2 or 5 times a
    // power of ten microseconds, so that labels read 0, 20, 40 ms. A rate whose period fits no
    // such time (an odd rate) falls back to a round number of samples.
    const double needed = double(least) * periodUs;
    for (double decade = 1.0; decade <= 1e13; decade *= 10.0) {
        for (const double m : {1.0, 2.0, 5.0}) {
            const double time = m * decade;
            if (time < needed * (1.0 - 1e-9))
                continue;
            const double samples = time / periodUs;
            // Beyond ten label widths the labels would be too sparse to read: the rate's
            // period fits no round time.
            if (samples > 10.0 * double(least))
                return niceSpacing(least);
            const double whole = std::round(samples);
            if (whole >= 1.0 && whole >= double(least) && std::fabs(samples - whole) <= 1e-6 * whole &&
                whole < 2e9)
                return int(whole);
        }
    }
    return niceSpacing(least);
}

void CCmtdViewAnaWave::drawAxis(QPainter &painter, const QRect &rect)
{
    const CCmtd99File &file = document->recording();
    const QFontMetrics metrics = fontMetrics();
    // Text and lines go through the painter in view coordinates: document coordinates of a
    // long recording zoomed in pass the painter's fixed-point range (about 2^25 pixels).
    const QPoint origin = documentOrigin(painter);
    const int sx = origin.x();
    const int bandTop = scrollY() - origin.y();
    painter.save();
    painter.resetTransform();
    const QRect band(rect.left() - sx, bandTop, rect.width(), m_nMarginT);
    painter.fillRect(band, QColor::fromRgba(colour(3)));
    painter.setPen(QColor::fromRgba(colour(2)));
    painter.drawLine(band.left(), band.bottom(), band.right(), band.bottom());

    // Stamps count from the trigger; the engineer's own zero T0' moves the origin. A load
    // cancelled before the trigger leaves the trigger beyond the samples: times still count
    // from it.
    const bool customZero = file.customT0 >= 0 && file.customT0 < m_points;
    const int zero = customZero ? file.customT0 : qBound(0, file.triggerIndex, qMax(0, m_points - 1));
    const int64_t zeroTime = customZero ? file.sampleTimes[zero] : 0;
    const int labelWidth = metrics.horizontalAdvance(QStringLiteral("_smmm.uuu_"));
    const int from = sampleAtPixel(rect.left() - m_nMarginL);
    const int to = sampleAtPixel(rect.right() - m_nMarginL);
    RateSegment segment;
    const double period =
        FindRateSegment(file, from, segment) && segment.rate > 0.0f ? 1e6 / double(segment.rate) : 0.0;
    const int spacing = labelSpacing(labelWidth, hScale, period);
    // Labels stand on samples whose distance from the zero is a multiple of the spacing.
    int64_t first = zero + (int64_t(from - zero) / spacing) * spacing;
    if (first > from)
        first -= spacing;
    const QString unit = globalOptions.statusTimeFormat == 1 ? tr("[m:s]: ") : tr("[ms]: ");
    const int unitLeft = scrollX() - sx + m_nMarginL;
    const int unitRight = unitLeft + metrics.horizontalAdvance(unit);
    for (int64_t i = first; i <= to; i += spacing) {
        if (i < 0 || i >= m_points)
            continue;
        const int x = pixelOfSample(int(i)) - sx;
        if (x - labelWidth / 2 < unitRight)
            continue;
        painter.setPen(QColor::fromRgba(colour(2)));
        painter.drawLine(x, band.bottom() - 4, x, band.bottom());
        painter.setPen(QColor::fromRgba(colour(5)));
        const QString text = axisLabel(file.sampleTimes[i] - zeroTime);
        painter.drawText(x - metrics.horizontalAdvance(text) / 2, band.bottom() - metrics.descent() - 4,
                         text);
    }
    painter.fillRect(QRect(scrollX() - sx, bandTop, unitRight - (scrollX() - sx) + 2, m_nMarginT - 1),
                     QColor::fromRgba(colour(3)));
    painter.setPen(QColor::fromRgba(colour(5)));
    painter.drawText(unitLeft, band.bottom() - metrics.descent() - 4, unit);
    painter.restore();
}
