#pragma once

#include "anaviewbase.h"

#include <QString>

#include <cstdint>
#include <vector>

// One drawn phasor of the vector and sequence diagrams.
struct VectorItem
{
    enum : uint32_t
    {
        Hidden = 0x1
    };
    uint32_t nFlags = 0;
    uint32_t nColor = 0xFFFFFFFFu;
    float fMax = 100.0f; // the value that reaches the circle
    float fGain = 1.0f;  // the engineer's zoom of this vector
    float fRe = 0.0f;
    float fIm = 0.0f;
    QString strName;   // the label at the tip
    QString strLegend; // the line of the legend
    int nClass = 0;    // the channel class the zoom buttons act on
};

// The circle diagram of phasors at T1: each vector as an arrow from the centre, its length the
// value over the vector's full scale, labelled at its tip and named in the legend, in the
// channel's colour. No grid or scale: the table beside it carries the numbers.
class CAnaFormChnGrpVecView : public CAnaViewBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpVecView(CCmtdChildFrame *frame, CAnaFormBase *form, QWidget *parent = nullptr);

    bool hasObject() const override { return !items.empty(); }
    void drawContents(QPainter &painter, const QRect &rect) override;

    std::vector<VectorItem> items;

protected:
    // The document is the viewport: the circle always fits, and a clip can take any part of it.
    void resizeEvent(QResizeEvent *event) override;
    // One vector from the centre to `tip`.
    virtual void drawOne(QPainter &painter, QPoint centre, QPoint tip, uint32_t colour);

private:
    void drawLabel(QPainter &painter, const VectorItem &item, QPoint tip, int dx, int dy);
    void drawLegend(QPainter &painter, const QRect &area);
};

// The sequence diagram: the same plan with dashed vectors ending in a dot.
class CAnaFormChnGrpSeqView : public CAnaFormChnGrpVecView
{
    Q_OBJECT

public:
    using CAnaFormChnGrpVecView::CAnaFormChnGrpVecView;

protected:
    void drawOne(QPainter &painter, QPoint centre, QPoint tip, uint32_t colour) override;
};
