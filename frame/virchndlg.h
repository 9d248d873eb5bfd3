#pragma once

#include "seriesjob.h"

#include <QDialog>

class CChnMapAnalog;
class CCmtd99File;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLineEdit;
class QSpinBox;

// The setup of a virtual channel derived from one channel: the source, the options of the
// curve, and the new channel's name, which follows the options until "Rename Channel" lets the
// engineer type it. On acceptance the channel is made (or an existing virtual channel of that
// name taken again) and described from its source; the caller posts the job that fills it.
class CVirChnDlgBase : public QDialog
{
    Q_OBJECT

public:
    CVirChnDlgBase(CCmtd99File &file, CChnMapAnalog &source, int kind, QWidget *parent = nullptr);

    const SeriesJobParams &params() const { return m_params; }
    // The channel made on acceptance; null before and when it could not be made.
    CChnMapAnalog *channel() const { return m_channel; }
    QLineEdit *nameEdit() const { return m_name; }
    QCheckBox *renameBox() const { return m_rename; }

    void accept() override;
    void slot_chkRenameStateChanged(int state);

protected:
    // Reads the options into the parameters; a dialog's option widgets call this on change.
    virtual void readOptions() {}
    void optionsChanged();
    // The place of the dialog's own options, above the name.
    QFormLayout *options() const { return m_options; }

    SeriesJobParams m_params;

private:
    CCmtd99File &m_file;
    CChnMapAnalog &m_source;
    CChnMapAnalog *m_channel = nullptr;
    QFormLayout *m_options;
    QLineEdit *m_name;
    QCheckBox *m_rename;
};

class CVirChnDlgDelta : public CVirChnDlgBase
{
    Q_OBJECT

public:
    CVirChnDlgDelta(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent = nullptr);
    QComboBox *methodCombo() const { return m_method; }

protected:
    void readOptions() override;

private:
    QComboBox *m_method;
};

class CVirChnDlgAvg : public CVirChnDlgBase
{
    Q_OBJECT

public:
    CVirChnDlgAvg(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent = nullptr);
};

class CVirChnDlgHm : public CVirChnDlgBase
{
    Q_OBJECT

public:
    CVirChnDlgHm(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent = nullptr);
    QSpinBox *orderSpin() const { return m_order; }
    QCheckBox *dcBox() const { return m_dc; }
    QComboBox *curveCombo() const { return m_curve; }

protected:
    void readOptions() override;

private:
    QSpinBox *m_order;
    QCheckBox *m_dc;
    QComboBox *m_curve;
};

class CVirChnDlgFilterHamm : public CVirChnDlgBase
{
    Q_OBJECT

public:
    CVirChnDlgFilterHamm(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent = nullptr);

protected:
    void readOptions() override;

private:
    QDoubleSpinBox *m_endFreq;
    QSpinBox *m_length;
};

class CVirChnDlgFilterDiff : public CVirChnDlgBase
{
    Q_OBJECT

public:
    CVirChnDlgFilterDiff(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent = nullptr);
};

class CVirChnDlgFreqX0 : public CVirChnDlgBase
{
    Q_OBJECT

public:
    CVirChnDlgFreqX0(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent = nullptr);
};

class CVirChnDlgFreqDft : public CVirChnDlgBase
{
    Q_OBJECT

public:
    CVirChnDlgFreqDft(CCmtd99File &file, CChnMapAnalog &source, QWidget *parent = nullptr);
};

// The dialog of job `kind` (3 to 9) for `source`; null for another kind.
CVirChnDlgBase *MakeVirChnDialog(int kind, CCmtd99File &file, CChnMapAnalog &source, QWidget *parent);
