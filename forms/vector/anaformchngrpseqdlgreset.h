#pragma once

#include <QDialog>

#include <array>

class CChnMapAnalog;
class CCmtd99File;
class QComboBox;

// The channel choice of the sequence form: phases A, B and C of a voltage and of a current
// group. Choosing phase A fills B and C from the group that channel belongs to.
class CAnaFormChnGrpSeqDlgReset : public QDialog
{
    Q_OBJECT

public:
    using Group = std::array<CChnMapAnalog *, 3>;

    CAnaFormChnGrpSeqDlgReset(const CCmtd99File &file, uint32_t displayFlags, const Group &voltages,
                              const Group &currents, QWidget *parent = nullptr);

    Group voltages() const { return chosenOf(m_cmbU); }
    Group currents() const { return chosenOf(m_cmbI); }
    QComboBox *voltageCombo(int phase) const { return m_cmbU[size_t(phase)]; }
    QComboBox *currentCombo(int phase) const { return m_cmbI[size_t(phase)]; }

    void accept() override;
    void slot_cmbUaSelChanged(int index);
    void slot_cmbIaSelChanged(int index);

private:
    using Combos = std::array<QComboBox *, 3>;
    QWidget *makeGroup(const QString &title, char letter, int chnClass, Combos &combos, const Group &chosen,
                       uint32_t displayFlags);
    void fillFromPhaseA(const Combos &combos);
    static Group chosenOf(const Combos &combos);
    // A group's phases as a mask, bit 0 to 2 for A, B, C.
    static int maskOf(const Combos &combos);

    const CCmtd99File &m_file;
    Combos m_cmbU = {};
    Combos m_cmbI = {};
};
