#pragma once

#include "anaformbase.h"

#include <QDateTime>

#include <vector>

class CChnMapAnalog;
class CChnMapStatus;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

// The name of a new cut before its extension: the folder, then the date and time of the cut
// down to the microsecond, so that cuts made one after the other never meet.
QString CutFileBaseName(const QString &directory, const QDateTime &local, int microsecond);
// The same for the present moment.
QString CutFileBaseNameNow(const QString &directory);

// Cut of a recording (form 1): the range between the cursors and a choice of analog and status
// channels written as a new recording, optionally thinned to a lower rate, or as a ".csv" table.
// The form follows the cursors; the chosen channels are marked in the wave.
class CAnaFormFileCut : public CAnaFormBase
{
    Q_OBJECT

public:
    // A new recording must open again, and the loader takes no recording of fewer samples.
    static constexpr int kMinCutPoints = 5;

    // The entries of the output form box.
    enum OutputForm : int
    {
        FormAscii = 0,
        FormBinary,
        FormCsv
    };

    CAnaFormFileCut(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);

    void retranslateTexts() override;
    bool activate() override;
    void refresh() override;

    QTreeWidget *channelTree() const { return m_tree; }
    QComboBox *rateCombo() const { return m_cmbRate; }
    QComboBox *formCombo() const { return m_cmbForm; }
    QLineEdit *nameEdit() const { return m_editName; }
    // The range read-outs: first and last sample with their times, and the number of samples.
    QLabel *rangeLabel() const { return m_labelRange; }
    // The output path as it will be written: the typed name with the extension of the form.
    QString outputPath() const;

    void slot_btnAll();
    void slot_btnNone();
    void slot_btnBrowse();
    void slot_cmbFormChanged(int index);
    // Checks the choice, writes the cut and reports (or offers to open the new recording).
    void slot_btnCut();

protected:
    void resetObject() override;

private:
    void buildChannelTree();
    void fillRates();
    void setAllChecked(bool on);
    // The checked channels become the form's related channels.
    void takeCheckedChannels();
    void chosenChannels(std::vector<const CChnMapAnalog *> &analogs,
                        std::vector<const CChnMapStatus *> &statuses) const;
    bool writeCsv(const QString &path, int first, int last, const std::vector<const CChnMapAnalog *> &analogs,
                  const std::vector<const CChnMapStatus *> &statuses);
    bool writeRecording(const QString &path, int first, int last,
                        const std::vector<const CChnMapAnalog *> &analogs,
                        const std::vector<const CChnMapStatus *> &statuses);
    void warnWriteFailed(const char *text, const QString &reason);
    void renewName();

    QTreeWidget *m_tree;
    QTreeWidgetItem *m_analogRoot = nullptr;
    QTreeWidgetItem *m_statusRoot = nullptr;
    QLabel *m_labelRange;
    QLabel *m_labelMaxRate;
    QComboBox *m_cmbRate;
    QLabel *m_labelForm;
    QComboBox *m_cmbForm;
    QLabel *m_labelName;
    QLineEdit *m_editName;
    QPushButton *m_btnBrowse;
    QPushButton *m_btnAll;
    QPushButton *m_btnNone;
};
