#pragma once

#include "anaformbase.h"
#include "statusevents.h"

class QComboBox;
class QLineEdit;
class QTableWidget;

// The status event list (form 12): every change of state of the recording's status channels in
// time order, timed against a base point the engineer chooses (the trigger, T0', or T1 either
// followed or fixed), with its rising or falling mark. A double click moves T1 to the event;
// the list saves as CSV and finds a channel by part of its name.
class CAnaFormChnGrpStaEvn : public CAnaFormBase
{
    Q_OBJECT

public:
    enum Column
    {
        ColState = 0,
        ColDelta,
        ColChannel,
        ColSample,
        ColCount
    };

    CAnaFormChnGrpStaEvn(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    void retranslateTexts() override;
    bool activate() override;
    void refresh() override;
    QTableWidget *table() const { return m_table; }
    QComboBox *formatCombo() const { return m_cmbFormat; }
    QComboBox *baseCombo() const { return m_cmbBase; }
    const std::vector<StatusEvent> &events() const { return m_events; }
    // Writes the list as CSV: the full times against the base point, channel, state, sample.
    bool saveCsv(const QString &path, QString &message) const;
    // The next row after the current one whose channel name holds `text` (any case), or -1.
    int findNext(const QString &text) const;

    void slot_cmbFormatChanged(int index);
    void slot_cmbBaseChanged(int index);
    void slot_btnSave();
    void slot_btnFind();
    void slot_tblDoubleClicked(int row, int column);

private:
    void fillTable();
    StatusTimeBase base() const;
    StatusTimeFormat format() const;
    // The base time in microseconds from the first sample; false when the recording lacks it.
    bool baseTime(int64_t &timeUs) const;

    std::vector<StatusEvent> m_events;
    int m_nStaticT1 = 0; // T1 when the fixed cursor base was chosen
    QComboBox *m_cmbFormat;
    QComboBox *m_cmbBase;
    QLineEdit *m_find;
    QTableWidget *m_table;
};
