#pragma once

#include "anaformbase.h"
#include "harmonics.h"

#include <vector>

class CAnaFormHmChartView;
class CChnMapAnalog;
class QLabel;
class QTableWidget;

// What the harmonic charts of one channel and of a three-phase group share: the spectra at
// T1's one-cycle window (the window of the name column's phasor), the chart, the table of
// every order with its effective value, share of the fundamental and angle, THD and DC share
// per channel, saved as CSV; the chart follows T1 and play.
class CAnaFormHmChartBase : public CAnaFormBase
{
    Q_OBJECT

public:
    CAnaFormHmChartBase(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    void retranslateTexts() override;
    bool activate() override;
    void refresh() override;

    // The channels of the chart in their order, and their spectra at T1.
    const std::vector<CChnMapAnalog *> &chartChannels() const { return m_channels; }
    const std::vector<HarmonicSpectrum> &spectra() const { return m_spectra; }
    void setChartChannels(const std::vector<CChnMapAnalog *> &channels);
    // Bars in % of the fundamental (else in the channel's unit); the scale without the
    // fundamental.
    bool percent() const;
    bool harmonicsOnly() const;
    // The highest order any chart channel shows.
    int highestOrder() const;
    QTableWidget *table() const { return m_table; }
    QLabel *summary() const { return m_summary; }
    CAnaFormHmChartView *view() const { return m_view; }
    // The table as CSV: a head line, then one line per order.
    QByteArray csvText() const;
    bool saveCsv(const QString &path, QString &message) const;

    void slot_btnSave();
    void slot_btnMode();

protected:
    void resetObject() override;
    void forgetChannel(const CChnMapBase *channel) override;

private:
    void fillTable();
    void fillSummary();

    std::vector<CChnMapAnalog *> m_channels;
    std::vector<HarmonicSpectrum> m_spectra;
    CAnaFormHmChartView *m_view;
    QTableWidget *m_table;
    QLabel *m_summary;
    QToolButton *m_btnPercent = nullptr;
    QToolButton *m_btnOnly = nullptr;
    QToolButton *m_btnSave = nullptr;
};
