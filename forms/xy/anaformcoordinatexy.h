#pragma once

#include "anaformbase.h"
#include "anaviewbase.h"
#include "xybounds.h"

#include <QPointF>

class CChnMapAnalog;
class QTableWidget;

class CAnaFormCoordinateXY;

// The X-Y plane: the engineer's boundaries, the trace of the samples between the plotted ends
// and the point at T1, on two scales that fill the view with the ranges of both channels (the
// origin always inside).
class CAnaFormCoordinateXYView : public CAnaViewBase
{
    Q_OBJECT

public:
    CAnaFormCoordinateXYView(CCmtdChildFrame *frame, CAnaFormCoordinateXY *form);

    bool hasObject() const override;
    void paintDiagram(QPainter &painter, const QRect &plot) override;
    // The world range from the channels' extents and the scales that fill the viewport.
    void resetRange();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QPointF pixel(double x, double y) const;
    void paintBounds(QPainter &painter, const QRect &plot);
    void paintTrace(QPainter &painter);

    CAnaFormCoordinateXY *m_xy;
};

// X-Y custom coordinate (form 13): one channel against another, with boundaries kept in a
// ".txb" file; play and "Plot Curve" as in the other diagrams.
class CAnaFormCoordinateXY : public CAnaFormBase
{
    Q_OBJECT

public:
    CAnaFormCoordinateXY(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    void retranslateTexts() override;
    bool activate() override;
    void refresh() override;
    // Takes the two channels as the object.
    void setChannels(CChnMapAnalog *x, CChnMapAnalog *y);
    CChnMapAnalog *channelX() const { return m_x; }
    CChnMapAnalog *channelY() const { return m_y; }
    QTableWidget *table() const { return m_table; }
    CAnaFormCoordinateXYView *view() const { return m_view; }
    // The plotted samples, -1 when none.
    int plotFrom() const { return m_nFrom; }
    int plotTo() const { return m_nTo; }
    bool tracing() const;

    std::vector<XYBound> bounds;

    void slot_btnBoundSetup();
    void slot_btnShowTrace(bool on);
    void slot_btnZoomIn();
    void slot_btnZoomOut();
    void slot_btnZoomComeback();

protected:
    bool chooseObject() override;
    void resetObject() override;

private:
    CChnMapAnalog *m_x = nullptr;
    CChnMapAnalog *m_y = nullptr;
    int m_nFrom = -1;
    int m_nTo = -1;
    QTableWidget *m_table;
    CAnaFormCoordinateXYView *m_view;
    QToolButton *m_btnBound = nullptr;
    QToolButton *m_btnTrace = nullptr;
};
