#pragma once

#include <QAbstractScrollArea>
#include <QCursor>
#include <QPixmap>
#include <QPoint>
#include <QWidget>

#include <cstdint>

class QPainter;

// Base of every drawn view: the wave view, the name column and the diagrams. It keeps a
// document size and four margins, sorts mouse gestures into modes (hand move, clip, zoom
// window, free range) and plain hooks for the derived view, and paints through
// `drawContents`. It is the viewport of a CScrollAreaEx, which scrolls it virtually, so that a
// document wider than any widget (a long recording at a fine scale) still scrolls.
class CScrollViewBase : public QWidget
{
    Q_OBJECT

public:
    enum MouseMode
    {
        ModePlain = 0,
        ModeHand = 1,
        ModeClip = 2,
        ModeZoomWindow = 3,
        ModeRange = 4
    };
    enum ColourFlag
    {
        ColourGlobalScheme = 0x1,
        ColourOwnRow = 0x2
    };

    explicit CScrollViewBase(QWidget *parent = nullptr);

    virtual void retranslateTexts() {}
    virtual void onAreaSelected(int mode);
    // The visible document rectangle in document coordinates; with margins when asked.
    virtual QRect docRect(bool withMargins) const;
    virtual void onClipArea() {}
    virtual void onZoomArea() {}
    virtual void onRangeArea() {}
    // The zoom that makes the rectangle a..b fill the view; -1 when it is too small.
    virtual float zoomFactorFor(QPoint a, QPoint b) const;
    virtual void zoomToArea(QPoint a, QPoint b, float &zoom);
    // A picture of a document rectangle: background, contents and a frame.
    virtual QPixmap renderArea(const QRect &rect);
    virtual void setMouseMode(int mode);
    virtual void onMouseMove(QMouseEvent *) {}
    virtual void onLeftPress(QMouseEvent *) {}
    virtual void onRightPress(QMouseEvent *) {}
    virtual void onLeftRelease(QMouseEvent *) {}
    virtual void onRightRelease(QMouseEvent *) {}
    virtual void onLeftDouble(QMouseEvent *) {}
    virtual void onRightDouble(QMouseEvent *) {}
    virtual bool onKeyPress(QKeyEvent *) { return false; }
    virtual bool onKeyRelease(QKeyEvent *) { return false; }
    // Paints the document; `rect` is the exposed part in document coordinates.
    virtual void drawContents(QPainter &painter, const QRect &rect);
    virtual void onScrolled() {}

    // Scroll bar ranges and page steps from the document size.
    void updateSize();
    bool isInDoc(int x, int y) const;
    QPoint clampToDoc(QPoint point) const;
    int mouseMode() const { return m_nMouseMode; }
    // The colour of entry `index` of the view's colour record.
    uint32_t colour(int index) const;
    void setColourRecord(uint32_t flags, int row = 1);
    int scrollX() const;
    int scrollY() const;
    void setScroll(int x, int y);
    // A widget point as a document point (with the margins, as the scroll area shows it).
    QPoint toDoc(QPoint widgetPoint) const { return widgetPoint + QPoint(scrollX(), scrollY()); }

    // Puts a clipped picture on the clipboard and offers to save it as a PNG file, in the folder
    // of the last such save.
    void offerPicture(const QPixmap &picture);

    static double pointAngle(int x0, int y0, int x1, int y1);
    static void drawArrow(QPainter &painter, int x0, int y0, int x1, int y1, uint32_t colour,
                          Qt::PenStyle style, int width);
    static void drawVector(QPainter &painter, int x0, int y0, int x1, int y1, uint32_t colour,
                           Qt::PenStyle style, int width);

    QAbstractScrollArea *m_pArea = nullptr;
    int m_nMarginL = 0;
    int m_nMarginT = 0;
    int m_nMarginR = 0;
    int m_nMarginB = 0;
    int m_nDocW = 0;
    int m_nDocH = 0;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

    QCursor m_cursorOut;
    QCursor m_cursorMode;
    uint32_t m_nMouseBits = 0;
    QPoint m_ptLeftDown, m_ptLeftUp, m_ptRightDown, m_ptRightUp, m_ptMouse;
    int m_nScrollStartH = 0;
    int m_nScrollStartV = 0;
    int m_nMouseMode = ModePlain;
    uint32_t m_colourFlags = ColourGlobalScheme;
    int m_colourRow = 1;
    uint32_t m_ownColours[10] = {};

private:
    QPoint heldInDoc(QPoint widgetPoint);
};

// The scroll area of a view: it offers keys to the view first and tells it when the contents
// moved or the viewport changed size.
class CScrollAreaEx : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit CScrollAreaEx(QWidget *parent = nullptr);
    void setView(CScrollViewBase *view);
    CScrollViewBase *view() const { return m_view; }

protected:
    void scrollContentsBy(int dx, int dy) override;
    void resizeEvent(QResizeEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    CScrollViewBase *m_view = nullptr;
};
