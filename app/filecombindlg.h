#pragma once

#include <QDialog>
#include <QList>

#include <memory>
#include <vector>

class CCmtdChildFrame;
class CCmtd99FileCombin;
struct CombinItem;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QSpinBox;

// "Combin Files": recordings of one event from several recorders joined on the time axis of a
// base range. The engineer chooses the base and its range (from its cursors), adds the other
// open recordings, and lines each up by a pair of samples: T1 of both windows, or the fault
// inception that the program finds in both. Channels and the interpolation are chosen per
// file; the combination runs in the background with a progress bar and can be stopped.
class CFileCombinDlg : public QDialog
{
    Q_OBJECT

public:
    CFileCombinDlg(const QList<CCmtdChildFrame *> &recordings, QWidget *parent = nullptr);
    ~CFileCombinDlg() override;

    // The written recording's ".cfg", empty until a combination succeeded.
    QString resultPath() const { return m_result; }

    QComboBox *baseCombo() const { return m_cmbBase; }
    QSpinBox *fromBox() const { return m_spinFrom; }
    QSpinBox *toBox() const { return m_spinTo; }
    QListWidget *otherList() const { return m_lstOthers; }
    QListWidget *channelList() const { return m_lstChannels; }
    QSpinBox *alignBox() const { return m_spinAlign; }
    QSpinBox *baseAlignBox() const { return m_spinBaseAlign; }
    QComboBox *methodCombo() const { return m_cmbMethod; }
    QLineEdit *outputEdit() const { return m_editOut; }
    QLabel *alignNote() const { return m_lblAlign; }

    // Checks the choice and combines into the output; true when written.
    bool combine();
    void slot_baseChanged(int index);
    void slot_rangeFromCursors();
    void slot_otherChanged(QListWidgetItem *current);
    void slot_alignFromCursors();
    void slot_alignAtInception();
    void slot_browse();
    void accept() override;

private:
    CCmtdChildFrame *baseFrame() const;
    CCmtdChildFrame *shownFrame() const;
    CombinItem *shownItem() const;
    void fillChannels(CCmtdChildFrame *frame, const CombinItem &item);
    void storeShown();
    void showAlignNote();

    QList<CCmtdChildFrame *> m_recordings;
    std::unique_ptr<CCmtd99FileCombin> m_combin;
    QString m_result;
    // The item whose settings the right side shows: the base's or an other's.
    CCmtdChildFrame *m_shown = nullptr;
    QComboBox *m_cmbBase;
    QSpinBox *m_spinFrom;
    QSpinBox *m_spinTo;
    QListWidget *m_lstOthers;
    QListWidget *m_lstChannels;
    QSpinBox *m_spinAlign;
    QSpinBox *m_spinBaseAlign;
    QComboBox *m_cmbMethod;
    QLabel *m_lblAlign;
    QComboBox *m_cmbType;
    QLineEdit *m_editOut;
};
