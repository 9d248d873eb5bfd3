#pragma once

#include <QGroupBox>
#include <QWizardPage>

class CCmtdChildFrame;
class CFaultFind2Wizard;
class CmtdInfTrwk_UnitLine;
class QComboBox;
class QDoubleSpinBox;
class QSpinBox;
struct FaultEnd;
struct FaultLine;

// One end on the first page: recording, line, the three voltages, two current groups with
// their weights, the transformer ratings and the pick-up factor of the window search.
class CFaultFind2EndGroupPage0 : public QGroupBox
{
    Q_OBJECT

public:
    CFaultFind2EndGroupPage0(const QString &title, const QList<CCmtdChildFrame *> &recordings, int chosen,
                             QWidget *parent = nullptr);

    // Reads the entries into `end` (channels as the recording's stores; kV to V).
    void store(FaultEnd &end) const;
    CCmtdChildFrame *recording() const;
    // Tells the page which line is chosen (after the page has connected).
    void announceLine();
    QComboBox *fileCombo() const { return m_cmbFile; }
    QComboBox *lineCombo() const { return m_cmbLine; }
    QComboBox *voltageCombo(int phase) const { return m_cmbU[phase]; }
    QComboBox *currentCombo(int group, int phase) const { return m_cmbI[group][phase]; }

Q_SIGNALS:
    void lineChanged(CFaultFind2EndGroupPage0 *group, const CmtdInfTrwk_UnitLine *line);

private:
    void fillRecording();
    void presetFromLine(int index);
    QComboBox *ratingCombo(const char *const presets[], int count, const char *initial);

    const QList<CCmtdChildFrame *> &m_recordings;
    QComboBox *m_cmbFile;
    QComboBox *m_cmbLine;
    QComboBox *m_cmbU[3];
    QComboBox *m_cmbI[2][3];
    QSpinBox *m_weight[2];
    QComboBox *m_tvPrimary;
    QComboBox *m_tvSecondary;
    QComboBox *m_taPrimary;
    QComboBox *m_taSecondary;
    QDoubleSpinBox *m_kf;
};

// The first page: both ends and the line data; it refuses to go on with the first entry that
// is missing or out of range.
class CFaultFind2Page0 : public QWizardPage
{
    Q_OBJECT

public:
    explicit CFaultFind2Page0(CFaultFind2Wizard *wizard);

    bool validatePage() override;
    CFaultFind2EndGroupPage0 *group(int end) const { return m_groups[end]; }
    QDoubleSpinBox *lineField(int index) const { return m_lineFields[index]; }

    // The line data follow the line chosen at either end.
    void slot_lineChanged(CFaultFind2EndGroupPage0 *group, const CmtdInfTrwk_UnitLine *line);

private:
    void storeLine(FaultLine &line) const;

    CFaultFind2Wizard *m_wizard;
    CFaultFind2EndGroupPage0 *m_groups[2];
    // Length, R1, X1, C1, R0, X0.
    QDoubleSpinBox *m_lineFields[6];
};
