#pragma once

#include "rxbounds.h"

#include <QDialog>
#include <QWidget>

#include <vector>

class QCheckBox;
class QFormLayout;
class QLineEdit;
class QTabWidget;

// A page of the boundary setup: the settings of one characteristic in a group "Boundary
// Settings" beside a picture that explains them. It reads its record into the edits and
// writes them back after its checks.
class CAnaFormChnGrpRxBoundFormBase : public QWidget
{
    Q_OBJECT

public:
    explicit CAnaFormChnGrpRxBoundFormBase(const char *picture, QWidget *parent = nullptr);

    virtual void loadFromRecord() {}
    // False with the message of the first check that fails; the record is then unchanged.
    virtual bool storeToRecord(QString &error)
    {
        Q_UNUSED(error);
        return true;
    }

    QLineEdit *edit(int index) const { return m_edits[size_t(index)]; }
    int editCount() const { return int(m_edits.size()); }

protected:
    void addEdit(const QString &label);
    void showNumbers(std::initializer_list<float> values);
    // The edits' texts in the order they were added (at most five).
    void editTexts(QString texts[]) const;

private:
    QFormLayout *m_form;
    std::vector<QLineEdit *> m_edits;
};

class CAnaFormChnGrpRxBoundForm1Poly : public CAnaFormChnGrpRxBoundFormBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxBoundForm1Poly(RxBoundPoly *record, QWidget *parent = nullptr);
    void loadFromRecord() override;
    bool storeToRecord(QString &error) override;

private:
    RxBoundPoly *m_pRecord;
};

class CAnaFormChnGrpRxBoundForm2Line : public CAnaFormChnGrpRxBoundFormBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxBoundForm2Line(RxBoundLine *record, QWidget *parent = nullptr);
    void loadFromRecord() override;
    bool storeToRecord(QString &error) override;

private:
    RxBoundLine *m_pRecord;
};

class CAnaFormChnGrpRxBoundForm3Cir : public CAnaFormChnGrpRxBoundFormBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxBoundForm3Cir(RxBoundCircle *record, QWidget *parent = nullptr);
    void loadFromRecord() override;
    bool storeToRecord(QString &error) override;

private:
    RxBoundCircle *m_pRecord;
};

class CAnaFormChnGrpRxBoundForm4Rect : public CAnaFormChnGrpRxBoundFormBase
{
    Q_OBJECT

public:
    CAnaFormChnGrpRxBoundForm4Rect(RxBoundRect *record, QWidget *parent = nullptr);
    void loadFromRecord() override;
    bool storeToRecord(QString &error) override;

private:
    RxBoundRect *m_pRecord;
};

// "Impedance Boundary Setup": the coordinate range, the characteristics switched on and one
// page per characteristic, with their settings kept in ".tzb" files. Works on a copy.
class CAnaFormChnGrpRxBoundDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CAnaFormChnGrpRxBoundDlg(QWidget *parent = nullptr);

    // Runs the dialog on `set`; true after OK, when the set holds the new settings with the
    // corners and boxes of polygon and circle computed.
    bool exec(RxBoundSet *set);
    // The checks of OK and Save: the page on show, the range, then the switches into the set.
    bool checkAll(QString &error);

    const RxBoundSet &workingSet() const { return m_set; }
    QTabWidget *tabs() const { return m_tabs; }
    CAnaFormChnGrpRxBoundFormBase *page(int index) const { return m_pages[index]; }
    // Rmax, Rmin, Xmax, Xmin.
    QLineEdit *rangeEdit(int index) const { return m_range[index]; }
    QCheckBox *boundBox(int index) const { return m_checks[index]; }
    // Saves and loads without the file dialogs.
    bool saveTo(const QString &path);
    bool loadFrom(const QString &path);

    void accept() override;
    void slot_tabChanged(int index);
    void slot_btnSave();
    void slot_btnLoad();

private:
    void fillAll();

    RxBoundSet m_set;
    QLineEdit *m_range[4];
    QCheckBox *m_checks[4];
    QTabWidget *m_tabs;
    CAnaFormChnGrpRxBoundFormBase *m_pages[4];
    int m_nPage = 0;
};
