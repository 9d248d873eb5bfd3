#pragma once

#include "anaviewbase.h"

class CAnaFormHmChartBase;

// The bar chart of the harmonic forms: one group of bars per order from DC up, one bar per
// channel in the channel's colour, in % of each channel's fundamental or in its own unit.
// "Harmonics only" leaves the fundamental out of the scale, so that a few per cent show; its
// bar is then cut at the top edge.
class CAnaFormHmChartView : public CAnaViewBase
{
    Q_OBJECT

public:
    CAnaFormHmChartView(CCmtdChildFrame *frame, CAnaFormHmChartBase *form);

    bool hasObject() const override;
    void updateTicks() override;
    double displayFactor() const override;
    void paintDiagram(QPainter &painter, const QRect &plot) override;
    // The world range from the spectra at T1 and the scales that fill the view.
    void resetRange();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    double barValue(int channel, int order) const;

    CAnaFormHmChartBase *m_hm;
};
