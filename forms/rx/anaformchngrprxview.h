#pragma once

#include "anaviewbase.h"
#include "rxbounds.h"

struct RxObject;
class CAnaFormChnGrpRx;

// The R-X plane of the impedance form: the relay characteristics, the traces between the
// plotted samples and one vector per loop at T1, on one scale for both axes so that angles and
// circles keep their shape. The world is secondary ohm; primary values change the labels only.
class CAnaFormChnGrpRxView : public CAnaViewBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxView(CCmtdChildFrame *frame, CAnaFormChnGrpRx *form);

    bool hasObject() const override { return m_pObject != nullptr; }
    // Zoom 1 and the world range of the boundaries, fitted to the plot area.
    void resetView();
    void updateTicks() override;
    double displayFactor() const override;
    void paintDiagram(QPainter &painter, const QRect &plot) override;

    RxBoundSet m_bounds;
    RxObject *m_pObject = nullptr;
    float m_fScale = 1.0f; // pixels per ohm at zoom 1

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QPoint pixel(double r, double x) const;
    void paintBounds(QPainter &painter, const QRect &plot) const;
    void paintTraces(QPainter &painter) const;
    void paintVectors(QPainter &painter, const QRect &plot) const;

    CAnaFormChnGrpRx *m_rx;
};
