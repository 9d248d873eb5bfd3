#pragma once

#include "anaformhmchartbase.h"

#include <QDialog>

class CCmtd99File;
class QComboBox;

// Harmonic chart of one channel (form 4), opened from the name column on that channel.
class CAnaFormChnSngHmChart : public CAnaFormHmChartBase
{
    Q_OBJECT

public:
    CAnaFormChnSngHmChart(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);
    void offerChannel(CChnMapBase *channel) override;

protected:
    bool chooseObject() override;
};

// Harmonic chart of a three-phase group (form 9): the phases side by side per order.
class CAnaFormChnGrpHmChart : public CAnaFormHmChartBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpHmChart(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

protected:
    bool chooseObject() override;
};

// The channels of a harmonic chart: one, or phases A, B and C of a group (B and C follow A's
// group); any analog channel.
class CAnaFormHmChartDlgReset : public QDialog
{
    Q_OBJECT

public:
    CAnaFormHmChartDlgReset(const CCmtd99File &file, uint32_t displayFlags, int count,
                            const std::vector<CChnMapAnalog *> &chosen, QWidget *parent = nullptr);

    QComboBox *combo(int index) const { return m_combos[index]; }
    // The chosen channels, without the empty places.
    std::vector<CChnMapAnalog *> chosen() const;
    void accept() override;
    void slot_cmbFirstSelChanged(int index);

private:
    const CCmtd99File &m_file;
    int m_count;
    QComboBox *m_combos[3] = {};
};
