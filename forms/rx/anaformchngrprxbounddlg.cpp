#include "anaformchngrprxbounddlg.h"

#include "dialogbuttons.h"
#include "rxboundfile.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

QString &lastTzbFolder()
{
    static QString folder;
    return folder;
}

QLabel *pictureLabel(const char *resource, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setPixmap(QIcon(QStringLiteral(":/images/") + QLatin1String(resource)).pixmap(QSize(240, 200)));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

CAnaFormChnGrpRxBoundFormBase::CAnaFormChnGrpRxBoundFormBase(const char *picture, QWidget *parent)
    : QWidget(parent)
{
    auto *row = new QHBoxLayout(this);
    auto *group = new QGroupBox(tr("Boundary Settings"), this);
    m_form = new QFormLayout(group);
    row->addWidget(group, 1);
    row->addWidget(pictureLabel(picture, this));
}

void CAnaFormChnGrpRxBoundFormBase::addEdit(const QString &label)
{
    auto *edit = new QLineEdit(this);
    edit->setObjectName(QStringLiteral("edit%1").arg(m_edits.size()));
    m_form->addRow(label, edit);
    m_edits.push_back(edit);
}

void CAnaFormChnGrpRxBoundFormBase::showNumbers(std::initializer_list<float> values)
{
    size_t i = 0;
    for (float value : values)
        m_edits[i++]->setText(RxBoundNumberText(value));
}

void CAnaFormChnGrpRxBoundFormBase::editTexts(QString texts[]) const
{
    for (size_t i = 0; i < m_edits.size(); ++i)
        texts[i] = m_edits[i]->text();
}

CAnaFormChnGrpRxBoundForm1Poly::CAnaFormChnGrpRxBoundForm1Poly(RxBoundPoly *record, QWidget *parent)
    : CAnaFormChnGrpRxBoundFormBase("RXBound1Poly.png", parent), m_pRecord(record)
{
    addEdit(tr("Rset(Secondary,ohm)......"));
    addEdit(tr("Xset(Secondary,ohm)......"));
    addEdit(tr("tgBeta(0~0.5).............."));
    addEdit(tr("(Ang)Alfa(0~45(Deg))............"));
    addEdit(tr("(Ang)Sita(0~135(Deg))..........."));
}

void CAnaFormChnGrpRxBoundForm1Poly::loadFromRecord()
{
    const RxBoundPoly &p = *m_pRecord;
    showNumbers({p.fRset, p.fXset, p.fTgBeta, p.fAlfa, p.fSita});
}

bool CAnaFormChnGrpRxBoundForm1Poly::storeToRecord(QString &error)
{
    QString texts[5];
    editTexts(texts);
    return RxStorePolyPage(texts, *m_pRecord, error);
}

CAnaFormChnGrpRxBoundForm2Line::CAnaFormChnGrpRxBoundForm2Line(RxBoundLine *record, QWidget *parent)
    : CAnaFormChnGrpRxBoundFormBase("RXBound2Line.png", parent), m_pRecord(record)
{
    addEdit(tr("Rset(Secondary,ohm)......"));
    addEdit(tr("Xset(Secondary,ohm)......"));
    addEdit(tr("Beta(-80~+80(Deg))............"));
}

void CAnaFormChnGrpRxBoundForm2Line::loadFromRecord()
{
    showNumbers({m_pRecord->fZsetR, m_pRecord->fZsetX, m_pRecord->fBeta});
}

bool CAnaFormChnGrpRxBoundForm2Line::storeToRecord(QString &error)
{
    QString texts[3];
    editTexts(texts);
    return RxStoreLinePage(texts, *m_pRecord, error);
}

CAnaFormChnGrpRxBoundForm3Cir::CAnaFormChnGrpRxBoundForm3Cir(RxBoundCircle *record, QWidget *parent)
    : CAnaFormChnGrpRxBoundFormBase("RXBound3Circle.png", parent), m_pRecord(record)
{
    addEdit(tr("Rset(Secondary,ohm)......"));
    addEdit(tr("Xset(Secondary,ohm)......"));
    addEdit(tr("Alfa(-0.5~1.0)............"));
}

void CAnaFormChnGrpRxBoundForm3Cir::loadFromRecord()
{
    showNumbers({m_pRecord->fZsetR, m_pRecord->fZsetX, m_pRecord->fAlfa});
}

bool CAnaFormChnGrpRxBoundForm3Cir::storeToRecord(QString &error)
{
    QString texts[3];
    editTexts(texts);
    return RxStoreCirclePage(texts, *m_pRecord, error);
}

CAnaFormChnGrpRxBoundForm4Rect::CAnaFormChnGrpRxBoundForm4Rect(RxBoundRect *record, QWidget *parent)
    : CAnaFormChnGrpRxBoundFormBase("RXBound4Rect.png", parent), m_pRecord(record)
{
    addEdit(tr("Rset1(Secondary,ohm)......"));
    addEdit(tr("Rset2(Secondary,ohm)......"));
    addEdit(tr("Xset1(Secondary,ohm)......"));
    addEdit(tr("Xset2(Secondary,ohm)......"));
}

void CAnaFormChnGrpRxBoundForm4Rect::loadFromRecord()
{
    const RxBoundRect &r = *m_pRecord;
    showNumbers({r.fRmax, r.fRmin, r.fXmax, r.fXmin});
}

bool CAnaFormChnGrpRxBoundForm4Rect::storeToRecord(QString &error)
{
    QString texts[4];
    editTexts(texts);
    return RxStoreRectPage(texts, *m_pRecord, error);
}

CAnaFormChnGrpRxBoundDlg::CAnaFormChnGrpRxBoundDlg(QWidget *parent)
    : QDialog(parent), m_tabs(new QTabWidget(this))
{
    setWindowTitle(tr("Impedance Boundary Setup"));
    setWindowIcon(QIcon(QStringLiteral(":/images/WaveAnaRX.png")));
    auto *range = new QGroupBox(tr("Impedance Coordinate Range"), this);
    auto *rangeForm = new QFormLayout(range);
    const char *const rangeLabels[4] = {QT_TR_NOOP("Rmax(Secondary,ohm)"), QT_TR_NOOP("Rmin(Secondary,ohm)"),
                                        QT_TR_NOOP("Xmax(Secondary,ohm)"), QT_TR_NOOP("Xmin(Secondary,ohm)")};
    for (int i = 0; i < 4; ++i) {
        m_range[i] = new QLineEdit(range);
        m_range[i]->setObjectName(QStringLiteral("range%1").arg(i));
        rangeForm->addRow(tr(rangeLabels[i]), m_range[i]);
    }
    auto *choose = new QGroupBox(tr("Choose Boundaries"), this);
    auto *chooseColumn = new QVBoxLayout(choose);
    const char *const boundNames[4] = {QT_TR_NOOP("Polyline"), QT_TR_NOOP("Line"), QT_TR_NOOP("Circle"),
                                       QT_TR_NOOP("Rectangle")};
    for (int i = 0; i < 4; ++i) {
        m_checks[i] = new QCheckBox(tr(boundNames[i]), choose);
        chooseColumn->addWidget(m_checks[i]);
    }
    auto *top = new QHBoxLayout;
    top->addWidget(range, 1);
    top->addWidget(choose);
    top->addWidget(pictureLabel("RXBound0Limit.png", this));

    m_pages[0] = new CAnaFormChnGrpRxBoundForm1Poly(&m_set.poly, m_tabs);
    m_pages[1] = new CAnaFormChnGrpRxBoundForm2Line(&m_set.line, m_tabs);
    m_pages[2] = new CAnaFormChnGrpRxBoundForm3Cir(&m_set.circle, m_tabs);
    m_pages[3] = new CAnaFormChnGrpRxBoundForm4Rect(&m_set.rect, m_tabs);
    for (int i = 0; i < 4; ++i)
        m_tabs->addTab(m_pages[i], tr(boundNames[i]));

    auto *save = new QPushButton(tr("Save"), this);
    auto *load = new QPushButton(tr("Load"), this);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(save);
    buttons->addWidget(load);
    buttons->addStretch(1);
    buttons->addWidget(OkCancelButtons(this));
    auto *column = new QVBoxLayout(this);
    column->addLayout(top);
    column->addWidget(m_tabs, 1);
    column->addLayout(buttons);
    connect(m_tabs, &QTabWidget::currentChanged, this, &CAnaFormChnGrpRxBoundDlg::slot_tabChanged);
    connect(save, &QPushButton::clicked, this, &CAnaFormChnGrpRxBoundDlg::slot_btnSave);
    connect(load, &QPushButton::clicked, this, &CAnaFormChnGrpRxBoundDlg::slot_btnLoad);
}

void CAnaFormChnGrpRxBoundDlg::fillAll()
{
    const float range[4] = {m_set.fRmax, m_set.fRmin, m_set.fXmax, m_set.fXmin};
    for (int i = 0; i < 4; ++i) {
        m_range[i]->setText(RxBoundNumberText(range[i]));
        m_checks[i]->setChecked((m_set.nBounds & (1u << i)) != 0);
        m_pages[i]->loadFromRecord();
    }
}

bool CAnaFormChnGrpRxBoundDlg::exec(RxBoundSet *set)
{
    m_set = *set;
    fillAll();
    if (QDialog::exec() != QDialog::Accepted)
        return false;
    RxComputeBoundGeometry(m_set);
    *set = m_set;
    return true;
}

bool CAnaFormChnGrpRxBoundDlg::checkAll(QString &error)
{
    if (!m_pages[m_tabs->currentIndex()]->storeToRecord(error))
        return false;
    QString range[4];
    for (int i = 0; i < 4; ++i)
        range[i] = m_range[i]->text();
    if (!RxStoreRange(range, m_set, error))
        return false;
    m_set.nBounds = 0;
    for (int i = 0; i < 4; ++i)
        m_set.nBounds |= m_checks[i]->isChecked() ? 1u << i : 0u;
    return true;
}

void CAnaFormChnGrpRxBoundDlg::slot_tabChanged(int index)
{
    if (index == m_nPage)
        return;
    QString error;
    if (!m_pages[m_nPage]->storeToRecord(error)) {
        // The page with the wrong setting stays on show until it is put right.
        const QSignalBlocker quiet(m_tabs);
        m_tabs->setCurrentIndex(m_nPage);
        QMessageBox::warning(this, QString(), error);
        return;
    }
    m_nPage = index;
}

void CAnaFormChnGrpRxBoundDlg::accept()
{
    QString error;
    if (!checkAll(error)) {
        QMessageBox::warning(this, QString(), error);
        return;
    }
    QDialog::accept();
}

bool CAnaFormChnGrpRxBoundDlg::saveTo(const QString &path)
{
    QString error;
    if (!checkAll(error)) {
        QMessageBox::warning(this, QString(), error);
        return false;
    }
    if (!saveRxBounds(m_set, path, error)) {
        QMessageBox::warning(this, QString(), error);
        return false;
    }
    return true;
}

bool CAnaFormChnGrpRxBoundDlg::loadFrom(const QString &path)
{
    QString error;
    if (!loadRxBounds(m_set, path, error)) {
        QMessageBox::warning(this, QString(), error);
        return false;
    }
    fillAll();
    return true;
}

void CAnaFormChnGrpRxBoundDlg::slot_btnSave()
{
    QString error;
    if (!checkAll(error)) {
        QMessageBox::warning(this, QString(), error);
        return;
    }
    const QString path = QFileDialog::getSaveFileName(this, QString(), lastTzbFolder(),
                                                      tr("TRWK Impedance Boundary Settings File(*.tzb)"));
    if (path.isEmpty())
        return;
    lastTzbFolder() = QFileInfo(path).absolutePath();
    saveTo(path);
}

void CAnaFormChnGrpRxBoundDlg::slot_btnLoad()
{
    const QString path = QFileDialog::getOpenFileName(this, QString(), lastTzbFolder(),
                                                      tr("TRWK Impedance Boundary Settings File(*.tzb)"));
    if (path.isEmpty())
        return;
    lastTzbFolder() = QFileInfo(path).absolutePath();
    loadFrom(path);
}
