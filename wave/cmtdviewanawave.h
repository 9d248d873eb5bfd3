#pragma once

#include "scrollviewbase.h"

#include <QImage>
#include <QList>

#include <cstdint>
#include <vector>

class CCmtdDocument;
class CChnMapBase;
class CChnMapAnalog;
class CSampleEnvelope;
struct WaveStatus;

// One row of the wave view: the channels drawn in it (one, or up to three after a group
// overlap), its sort key and where it stands.
struct CWaveRow
{
    int key = 0;
    int centerY = 0; // negative: the row is not shown
    int height = 0;
    QList<CChnMapBase *> channels;
};

// The waves of all visible channels of a recording on a common time axis, with the two
// measuring cursors T1 and T2 and the trip marks T0 and T0'. It owns the rows and the
// horizontal scale; the name column beside it shares its rows and vertical position. It reads
// the samples through its document's recording, up to the extent that a running load announced.
class CCmtdViewAnaWave : public CScrollViewBase
{
    Q_OBJECT

public:
    static constexpr int kStatusRowHeight = 20;

    explicit CCmtdViewAnaWave(CCmtdDocument *document, QWidget *parent = nullptr);

    void buildRows(bool repaint);
    void layoutRows(bool repaint);
    void groupOverlap();
    // Shows a channel in a row of its own after row `after` (at the end when out of range);
    // nothing when it has a row already. Hidden at first when `show` is false.
    void addChannelToView(CChnMapBase *channel, int after, bool show);
    // Takes a channel out of its row; a row left empty goes at the next layout.
    void takeOutChannel(CChnMapBase *channel);
    void setZoomFactor(float factor);
    void setHorzScale(float scale);
    void zoomRange(int from, int to);
    void setCursorT1(int sample);
    void setCursorT2(int sample);
    // The samples that may be drawn: grows during a load, final at its end.
    void setDrawnExtent(int points, bool repaint);
    void showPoint(int index);
    // Clip mode: a dragged rectangle goes to the clipboard.
    void setClipMode(bool on);
    bool clipMode() const { return mode == 2; }
    // Each pixel column drawn as the line from the least to the largest sample under it, so
    // that a compressed 50 Hz wave shows its true envelope instead of an alias.
    void setEnvelopeMode(bool on);
    bool envelopeMode() const { return m_envelope; }
    // The ".wvs" file of how the recording is being viewed; a file of another recording (other
    // point or channel counts) is refused whole and changes nothing.
    bool saveStatus(const char *path) const;
    bool loadStatus(const char *path);

    int sampleAtPixel(int x) const;
    int pixelOfSample(int sample) const;
    float fitScale() const;
    float maxScale() const;
    int availableWidth() const;
    int pointCount() const { return m_points; }
    int hitRow(int y) const;
    // Samples between two labels of the time axis: room for a label of `labelWidth` pixels,
    // and a time of 1, 2 or 5 times a power of ten at a sample period of `periodUs`.
    static int labelSpacing(int labelWidth, float scale, double periodUs);
    // The pixel row of a value in a row centred at `centerY`, held within ±2^24 pixels so that
    // no value, however large, overflows the drawing.
    static int rowPixel(int centerY, double value, double factor);

    void drawContents(QPainter &painter, const QRect &rect) override;
    void onLeftPress(QMouseEvent *event) override;
    void onRightPress(QMouseEvent *event) override;
    void onMouseMove(QMouseEvent *event) override;
    void onLeftRelease(QMouseEvent *event) override;
    bool onKeyPress(QKeyEvent *event) override;
    void onClipArea() override;

    CCmtdDocument *document;
    std::vector<CWaveRow> rows;
    int firstPoint = 0;
    int lastPoint = 0;
    int stride = 1;
    int cursorT1 = 0;
    int cursorT2 = 0;
    float hScale = 1.0f;
    int rowHeightBase = 60;
    int mode = 0;

Q_SIGNALS:
    void cursorsChanged();
    void rowsChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateDocWidth();
    double scaleValue(const CChnMapAnalog &map) const;
    void drawAnalog(const CChnMapAnalog &map, size_t analogIndex, int centerY);
    void drawEnvelope(const CChnMapAnalog &map, const CSampleEnvelope &summary, double factor, int centerY,
                      int last);
    void flushLine(const CChnMapBase &map);
    double rowFactor(const CChnMapAnalog &map) const;
    size_t analogIndex(const CChnMapBase *map) const;
    void drawStatus(const CChnMapBase &map, int centerY);
    void drawAxis(QPainter &painter, const QRect &rect);
    void drawMarks(QPainter &painter, const QRect &rect);
    void cursorMovedByKey(int sample);
    void applyWaveStatus(const WaveStatus &status);
    int sampleUnderPointer(QMouseEvent *event) const;
    int rowTop() const { return m_nMarginT + 3; }
    // A sample's column and a document row in pixels of the canvas (device pixels).
    int deviceX(int sample) const;
    int deviceRow(int y) const;

    int m_points = 0;
    bool m_envelope = false;
    bool m_picture = false; // drawing a picture for the clipboard, not the screen
    bool m_fitOnExtent = true;
    std::vector<QPoint> m_line; // reused between paints: nothing per sample is allocated
    QImage m_canvas;            // the exposed part, in which the waves are drawn as pixels
    QPoint m_canvasOrigin;      // the canvas's top left in device pixels of the document
    double m_dpr = 1.0;         // device pixels per pixel of the painter drawing the canvas
};
