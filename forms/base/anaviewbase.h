#pragma once

#include "scrollviewbase.h"

#include <QString>

class CAnaFormBase;
class CCmtdChildFrame;

// The base of the diagrams of the analysis forms: a world rectangle mapped to pixels through
// an origin and a scale times a zoom, a grid with round ticks and labels that never collide,
// axes with arrows, and the mouse modes (hand, clip to clipboard, zoom window) of the scrolled
// views. A concrete view says whether it has something to draw, sets its world range and
// scale, and paints its content in world pixels in `paintDiagram`.
class CAnaViewBase : public CScrollViewBase
{
    Q_OBJECT

public:
    // The bounds of the zoom factor.
    static constexpr float kZoomMin = 0.0001f;
    static constexpr float kZoomMax = 10000.0f;
    // The factor of one zoom-in step (its inverse zooms out).
    static constexpr float kZoomStep = 1.1f;

    CAnaViewBase(CCmtdChildFrame *frame, CAnaFormBase *form, QWidget *parent = nullptr);

    // The selected area goes to the clipboard, and on request to a PNG file.
    virtual void clipFinished();
    virtual void zoomWindowFinished();
    // Changes the mouse mode only while there is something to draw; the form's buttons follow.
    void setMouseMode(int mode) override;
    // Draws the content, the painter's origin at the world origin and `plot` in world pixels.
    virtual void paintDiagram(QPainter &painter, const QRect &plot) {}
    // The pixel of the world origin in a viewport of `size`.
    virtual QPoint diagramOrigin(const QSize &size) const;
    // Whether something is chosen to draw.
    virtual bool hasObject() const { return true; }
    // Tick distances and label formats from the scale; called at the start of painting.
    virtual void updateTicks();
    // The document size from the world range, the scale and the zoom.
    virtual void updateContentSize();
    // Multiplies the zoom by `factor` (a negative factor resets it), within its bounds.
    virtual void zoomBy(float factor);
    // The factor from stored values to the values the labels show (primary values).
    virtual double displayFactor() const { return 1.0; }

    // The first round tick distance not below `raw`, and the label format that shows exactly
    // the decimals it needs.
    static float niceStep(float raw, QString &format);
    // Rounds half away from zero, as every diagram does to reach a pixel.
    static int roundPixel(double value);

    void drawContents(QPainter &painter, const QRect &rect) override;
    void onClipArea() override { clipFinished(); }
    void onZoomArea() override { zoomWindowFinished(); }

    float m_fYMax = 100.0f;
    float m_fYMin = 0.0f;
    float m_fYStep = 20.0f;
    QString m_strYFormat = QStringLiteral("%.0f");
    float m_fXMax = 100.0f;
    float m_fXMin = 0.0f;
    float m_fXStep = 20.0f;
    QString m_strXFormat = QStringLiteral("%.0f");
    float m_fZoom = 1.0f;
    // Pixels per world unit at zoom 1, for each axis (equal for an isotropic view).
    float m_fScaleX = 1.0f;
    float m_fScaleY = 1.0f;
    QString m_strXName;
    QString m_strYName;

protected:
    // The visible part of the document, which a diagram always draws whole.
    QRect visibleArea() const { return QRect(scrollX(), scrollY(), width(), height()); }
    // Without an object the view asks for one in red and draws nothing else: true then.
    bool paintNoObject(QPainter &painter, const QRect &area);
    // The painting skeleton: background strips, grid, tick labels, axes and border.
    void paintFrame(QPainter &painter, const QRect &area, QRect &plot);
    void paintGrid(QPainter &painter, const QRect &plot, double factor);
    void paintAxes(QPainter &painter, const QRect &plot);

    CCmtdChildFrame *m_pFrame;
    CAnaFormBase *m_pForm;
};
