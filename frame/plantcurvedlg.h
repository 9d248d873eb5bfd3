#pragma once

// The setups of the curves of a plant unit in operation: power P, Q, S, voltage over frequency,
// and a generator's load angle. Each is prefilled from a unit when one is given and makes its
// virtual channels on acceptance; the frame then shows them and posts the job that fills them.

#include "plantjobs.h"

#include <QDialog>

#include <vector>

class CChnMapAnalog;
class CCmtd99File;
class CmtdInfTrwk_Unit;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QGroupBox;
class QLineEdit;
class QRadioButton;

// What the three setups share: the recording, the name prefix of the curves, the channel
// choosers and the refusal of bad input in a message box that names what is missing.
class CPlantCurveDlgBase : public QDialog
{
    Q_OBJECT

public:
    CPlantCurveDlgBase(CCmtd99File &file, QWidget *parent);

    QLineEdit *prefixEdit() const { return m_prefix; }
    // Every channel the curves are computed from, to place the new rows under the last.
    virtual std::vector<const CChnMapAnalog *> inputs() const = 0;
    // The channels made on acceptance; empty before and when they could not be made.
    const std::vector<CChnMapAnalog *> &made() const { return m_made; }

protected:
    // A chooser of analog channels of `chnClass` (and the chosen one, whatever its class),
    // "[Choose Nothing]" first; its label's mnemonic reaches it from the keyboard.
    QComboBox *addChannelCombo(QFormLayout *form, const QString &label, int chnClass,
                               const CChnMapAnalog *chosen);
    static const CChnMapAnalog *comboChannel(const QComboBox *combo);
    // Selects `chn` ("[Choose Nothing]" for null), adding its entry when the combo lacks it.
    void selectChannel(QComboBox *combo, const CChnMapAnalog *chn);
    void addChannelEntry(QComboBox *combo, const CChnMapAnalog &chn);
    QDoubleSpinBox *addNumber(QFormLayout *form, const QString &label, double max, int decimals,
                              const QString &suffix, double value);
    // The refusal of bad input: the dialog stays open.
    void refuse(const QString &message);
    // The prefix row and the buttons around the dialog's own `body`.
    void finishLayout(QWidget *body);

    CCmtd99File &m_file;
    std::vector<CChnMapAnalog *> m_made;

private:
    QLineEdit *m_prefix;
};

// Power curves P, Q, S per phase and in total from three voltages and the currents of one or two
// branches, on the secondary or the primary side. A transformer unit chooses its winding.
class CPowerCurveDlg : public CPlantCurveDlgBase
{
    Q_OBJECT

public:
    // `unit` null: nothing chosen. A transformer shows its high winding first.
    CPowerCurveDlg(CCmtd99File &file, const CmtdInfTrwk_Unit *unit, QWidget *parent = nullptr);

    const PowerJobParams &params() const { return m_params; }
    const PowerJobChannels &channels() const { return m_channels; }
    std::vector<const CChnMapAnalog *> inputs() const override;
    QComboBox *voltageCombo(int phase) const { return m_u[phase]; }
    QComboBox *currentCombo(int phase) const { return m_i[phase]; }
    QComboBox *sideCombo() const { return m_side; }
    QGroupBox *secondBranch() const { return m_branch2; }
    QCheckBox *curveBox(uint32_t bit) const;
    QRadioButton *primaryButton() const { return m_primary; }

    void accept() override;

private:
    void prefill(int side);
    bool readInput();

    const CmtdInfTrwk_Unit *m_unit;
    PowerJobParams m_params;
    PowerJobChannels m_channels;
    QComboBox *m_side = nullptr;
    QComboBox *m_u[3] = {};
    QComboBox *m_i[3] = {};
    QComboBox *m_i2[3] = {};
    QCheckBox *m_reverse;
    QCheckBox *m_reverse2;
    QGroupBox *m_branch2;
    QRadioButton *m_secondary;
    QRadioButton *m_primary;
    std::vector<std::pair<uint32_t, QCheckBox *>> m_curves;
};

// Voltage over frequency of a winding in per unit, from one voltage channel, the winding's rated
// voltage (kV, line to line) and the rated frequency.
class CUfCurveDlg : public CPlantCurveDlgBase
{
    Q_OBJECT

public:
    CUfCurveDlg(CCmtd99File &file, const CmtdInfTrwk_Unit *unit, QWidget *parent = nullptr);

    const UfJobParams &params() const { return m_params; }
    std::vector<const CChnMapAnalog *> inputs() const override;
    QComboBox *voltageCombo() const { return m_u; }
    QComboBox *sideCombo() const { return m_side; }
    QDoubleSpinBox *ratedKvSpin() const { return m_kv; }
    QDoubleSpinBox *ratedFreqSpin() const { return m_freq; }

    void accept() override;

private:
    void prefill(int side);

    const CmtdInfTrwk_Unit *m_unit;
    UfJobParams m_params;
    QComboBox *m_side = nullptr;
    QComboBox *m_u;
    QDoubleSpinBox *m_kv;
    QDoubleSpinBox *m_freq;
};

// The load angle of a generator from its terminal voltages and stator currents, its quadrature
// reactance in per unit and its rating.
class CLoadAngleDlg : public CPlantCurveDlgBase
{
    Q_OBJECT

public:
    CLoadAngleDlg(CCmtd99File &file, const CmtdInfTrwk_Unit *unit, QWidget *parent = nullptr);

    const LoadAngleJobParams &params() const { return m_params; }
    std::vector<const CChnMapAnalog *> inputs() const override;
    QComboBox *voltageCombo(int phase) const { return m_u[phase]; }
    QComboBox *currentCombo(int phase) const { return m_i[phase]; }
    QDoubleSpinBox *xqSpin() const { return m_xq; }
    QDoubleSpinBox *ratedKvSpin() const { return m_kv; }
    QDoubleSpinBox *ratedMvaSpin() const { return m_mva; }

    void accept() override;

private:
    LoadAngleJobParams m_params;
    QComboBox *m_u[3] = {};
    QComboBox *m_i[3] = {};
    QCheckBox *m_reverse;
    QDoubleSpinBox *m_xq;
    QDoubleSpinBox *m_kv;
    QDoubleSpinBox *m_mva;
};
