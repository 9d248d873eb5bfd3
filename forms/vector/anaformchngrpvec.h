#pragma once

#include "anaformvectorbase.h"

class QComboBox;

// Vector analysis (form 7): up to eight AC channels as phasors at T1, as they stand
// (revolving) or turned so that the first one lies at 0 degrees (reference).
class CAnaFormChnGrpVec : public CAnaFormVectorBase
{
    Q_OBJECT

public:
    enum Mode
    {
        ModeReference = 0,
        ModeRevolving = 1
    };

    CAnaFormChnGrpVec(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    void retranslateTexts() override;
    void refresh() override;
    // Takes `channels` as the form's object: rows, vectors and their full scales anew.
    void setChannels(const std::vector<CChnMapAnalog *> &channels);
    QComboBox *modeCombo() const { return m_cmbMode; }

    void slot_cmbModeSelChanged(int index);

protected:
    bool chooseObject() override;

private:
    QStringList headers() const;

    QComboBox *m_cmbMode;
};
