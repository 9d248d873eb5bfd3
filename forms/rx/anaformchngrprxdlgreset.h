#pragma once

#include <QDialog>

#include <cstdint>

struct RxObject;
class CCmtd99File;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLineEdit;

// The choice of an impedance object: a modal dialog on a copy of the form's object, written
// back on OK after the checks of its kind. A changed choice drops the values and traces
// computed for the old one, so that no stale trace is shown.
class CAnaFormChnGrpRxDlgResetObj : public QDialog
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxDlgResetObj(RxObject &object, const CCmtd99File &file, uint32_t displayFlags,
                                QWidget *parent = nullptr);

    void accept() override;

protected:
    // The widgets' choice into `copy` (channels, line values, group factors).
    virtual void storeChoice(RxObject &copy) const = 0;

    RxObject &m_object;
    const CCmtd99File &m_file;
    uint32_t m_displayFlags;
};

// [Ux / Ix]: the phase voltages and up to three current groups (a line with two breakers, a
// teed line) whose currents add up per phase.
class CAnaFormChnGrpRxDlgResetObjUxIx : public CAnaFormChnGrpRxDlgResetObj
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxDlgResetObjUxIx(RxObject &object, const CCmtd99File &file, uint32_t displayFlags,
                                    QWidget *parent = nullptr);

    QComboBox *voltageCombo(int phase) const { return m_cmbU[phase]; }
    QComboBox *currentCombo(int group, int phase) const { return m_cmbI[group][phase]; }

    void slot_cmbUaSelChanged(int index);
    void slot_cmbIa0SelChanged(int index);
    void slot_cmbIa1SelChanged(int index);
    void slot_cmbIa2SelChanged(int index);

protected:
    void storeChoice(RxObject &copy) const override;
    // Phases B and C follow a chosen phase A from the channel group it belongs to.
    void fillFromPhaseA(QComboBox *const combos[3]);

    QGridLayout *m_grid;
    QComboBox *m_cmbU[3];
    QComboBox *m_cmbI[3][3];
    QCheckBox *m_chkCounter[3] = {};
};

// [Uxy / Ixy]: the same choice, read as the loops A-B, B-C and C-A.
class CAnaFormChnGrpRxDlgResetObjUxyIxy : public CAnaFormChnGrpRxDlgResetObjUxIx
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxDlgResetObjUxyIxy(RxObject &object, const CCmtd99File &file, uint32_t displayFlags,
                                      QWidget *parent = nullptr);
};

// [Ux / (Ix+kIo)]: the earth loops with the residual compensation of a line, its channels
// and impedances taken from a line unit or chosen by hand; a group wired against the others
// is marked "Countercurrent".
class CAnaFormChnGrpRxDlgResetObjUxIxK : public CAnaFormChnGrpRxDlgResetObjUxIx
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxDlgResetObjUxIxK(RxObject &object, const CCmtd99File &file, uint32_t displayFlags,
                                     QWidget *parent = nullptr);

    QComboBox *unitCombo() const { return m_cmbUnit; }
    // R1, X1, R0, X0.
    QLineEdit *lineEdit(int which) const { return m_edits[which]; }
    QCheckBox *counterBox(int group) const { return m_chkCounter[group]; }

    void slot_cmbUnitSelChanged(int index);

protected:
    void storeChoice(RxObject &copy) const override;

private:
    QComboBox *m_cmbUnit;
    QLineEdit *m_edits[4];
};

// [Choose RX Channels]: two channels that already hold resistance and reactance, made by the
// expression editor or recorded by a relay.
class CAnaFormChnGrpRxDlgResetObjChn : public CAnaFormChnGrpRxDlgResetObj
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxDlgResetObjChn(RxObject &object, const CCmtd99File &file, uint32_t displayFlags,
                                   QWidget *parent = nullptr);

    // Whether the recording has channels to offer; without them the dialog does not open.
    bool hasChannels() const;
    QComboBox *rCombo() const { return m_cmbR; }
    QComboBox *xCombo() const { return m_cmbX; }

protected:
    void storeChoice(RxObject &copy) const override;

private:
    QComboBox *m_cmbR;
    QComboBox *m_cmbX;
};

// The dialog of the object's kind; null, after saying why, when it cannot open.
CAnaFormChnGrpRxDlgResetObj *MakeRxObjectDialog(RxObject &object, const CCmtd99File &file,
                                                uint32_t displayFlags, QWidget *parent);
