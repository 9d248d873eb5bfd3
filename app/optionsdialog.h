#pragma once

#include <QDialog>

class CGlobalOptions;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QSpinBox;

// A plain dialog over the options object: every setting of the options file, grouped by what
// it acts on. `apply` writes the edited values back; the caller saves them.
class COptionsDialog : public QDialog
{
    Q_OBJECT

public:
    COptionsDialog(CGlobalOptions &options, QWidget *parent = nullptr);
    void apply();

private:
    QWidget *createDisplayPage(const CGlobalOptions &options, QWidget *parent);
    QWidget *createAnalysisPage(const CGlobalOptions &options, QWidget *parent);
    QWidget *createLineTestPage(const CGlobalOptions &options, QWidget *parent);
    QWidget *createToolsPage(const CGlobalOptions &options, QWidget *parent);

    CGlobalOptions &m_options;
    QComboBox *m_language = nullptr;
    QLineEdit *m_codec = nullptr;
    QLineEdit *m_style = nullptr;
    QLineEdit *m_font = nullptr;
    QComboBox *m_colorScheme = nullptr;
    QCheckBox *m_flags[6] = {};
    QComboBox *m_timeFormat = nullptr;
    QComboBox *m_timeBase = nullptr;
    QComboBox *m_dftWin = nullptr;
    QComboBox *m_dftMethod = nullptr;
    QCheckBox *m_phComp = nullptr;
    QSpinBox *m_statusMinWidth = nullptr;
    QSpinBox *m_wheelLines = nullptr;
    QLineEdit *m_textViewer = nullptr;
    QLineEdit *m_cvtLib = nullptr;
    QLineEdit *m_anaLib = nullptr;
    QDoubleSpinBox *m_lineLength = nullptr;
    QDoubleSpinBox *m_lineR = nullptr;
    QDoubleSpinBox *m_lineX = nullptr;
    QSpinBox *m_linePoints = nullptr;
    QDoubleSpinBox *m_tv[2] = {};
    QDoubleSpinBox *m_ta[2] = {};
};
