#pragma once

#include "anaformvectorbase.h"

#include <array>

// Sequence analysis (form 8): three-phase voltages and currents at T1 with their positive,
// negative and zero sequence parts, in a table of twelve rows and on a circle diagram.
class CAnaFormChnGrpSeq : public CAnaFormVectorBase
{
    Q_OBJECT

public:
    using Group = std::array<CChnMapAnalog *, 3>;
    // The rows: sequence parts of the voltages and currents, then their phases.
    enum Row
    {
        RowU1 = 0,
        RowI1 = 3,
        RowUa = 6,
        RowIa = 9,
        RowCount = 12
    };
    enum : int
    {
        ColChannels = 5,
        AllPhases = 7
    };

    CAnaFormChnGrpSeq(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    void retranslateTexts() override;
    void refresh() override;
    // Takes the two groups as the form's object; a group without all three phases is left out.
    void setGroups(const Group &voltages, const Group &currents);
    uint16_t voltageMask() const { return m_nMaskU; }
    uint16_t currentMask() const { return m_nMaskI; }

protected:
    bool chooseObject() override;

private:
    QStringList headers() const;
    Group group(int first) const;
    void refreshGroup(int first, int sequenceRow, int phaseRow);
    void setupGroupRows(const Group &group, int sequenceRow, int phaseRow, char letter);

    uint16_t m_nMaskU = 0;
    uint16_t m_nMaskI = 0;
};
