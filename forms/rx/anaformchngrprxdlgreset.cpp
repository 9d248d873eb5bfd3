#include "anaformchngrprxdlgreset.h"

#include "channelcombo.h"
#include "chnmap.h"
#include "cmtd99file.h"
#include "dialogbuttons.h"
#include "phasegroup.h"
#include "rxobject.h"
#include "units.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QVBoxLayout>

#include <utility>

namespace {

bool isImpedanceChannel(const CChnMapAnalog &chn)
{
    return chn.Class() == ClassImpedance;
}

void chooseByIndex(QComboBox *combo, const CCmtd99File &file, int index)
{
    if (index >= 1)
        SelectComboChannel(combo, file.FindAnalogMap(index));
}

// The copy a dialog works on leaves the traces behind: they may hold a million points a loop.
RxObject copyWithoutTraces(RxObject &object)
{
    std::vector<RxPoint> kept[3];
    for (int row = 0; row < 3; ++row)
        kept[row].swap(object.trace[row]);
    RxObject copy = object;
    for (int row = 0; row < 3; ++row)
        kept[row].swap(object.trace[row]);
    return copy;
}

double editNumber(const QLineEdit *edit)
{
    bool ok = false;
    const double value = edit->text().trimmed().toDouble(&ok);
    return ok ? value : 0.0;
}

} // namespace

CAnaFormChnGrpRxDlgResetObj::CAnaFormChnGrpRxDlgResetObj(RxObject &object, const CCmtd99File &file,
                                                         uint32_t displayFlags, QWidget *parent)
    : QDialog(parent), m_object(object), m_file(file), m_displayFlags(displayFlags)
{
    setWindowIcon(QIcon(QStringLiteral(":/images/WaveAnaRX.png")));
}

void CAnaFormChnGrpRxDlgResetObj::accept()
{
    RxObject copy = copyWithoutTraces(m_object);
    storeChoice(copy);
    QString message;
    if (!RxApplyChoice(copy, message)) {
        QMessageBox::warning(this, QString(), message);
        return;
    }
    if (RxSameChoice(m_object, copy)) {
        for (int row = 0; row < 3; ++row)
            copy.trace[row] = std::move(m_object.trace[row]);
    } else {
        for (ComplexD &z : copy.z)
            z = ComplexD{};
        copy.nFrom = -1;
        copy.nTo = -1;
    }
    m_object = std::move(copy);
    RxFinishObject(m_object);
    QDialog::accept();
}

CAnaFormChnGrpRxDlgResetObjUxIx::CAnaFormChnGrpRxDlgResetObjUxIx(RxObject &object, const CCmtd99File &file,
                                                                 uint32_t displayFlags, QWidget *parent)
    : CAnaFormChnGrpRxDlgResetObj(object, file, displayFlags, parent), m_grid(new QGridLayout)
{
    setWindowTitle(tr("Impedance Settings - [Ux / Ix]"));
    for (int box = 0; box < 4; ++box) {
        const bool voltage = box == 0;
        auto *group = new QGroupBox(voltage ? tr("Choose Ph. A,B and C ACV Channels")
                                            : tr("Choose Group %1 Ph. A,B and C ACC Channels").arg(box),
                                    this);
        auto *form = new QFormLayout(group);
        for (int p = 0; p < 3; ++p) {
            auto *combo = new QComboBox(group);
            FillChannelCombo(combo, file, displayFlags, voltage ? object.chnU[p] : object.chnI[box - 1][p],
                             voltage ? ClassACV : ClassACC);
            form->addRow(
                QStringLiteral("%1%2").arg(QLatin1Char(voltage ? 'U' : 'I')).arg(QLatin1Char(char('A' + p))),
                combo);
            (voltage ? m_cmbU[p] : m_cmbI[box - 1][p]) = combo;
        }
        m_grid->addWidget(group, box / 2, box % 2);
    }
    auto *column = new QVBoxLayout(this);
    column->addLayout(m_grid);
    column->addWidget(OkCancelButtons(this));
    connect(m_cmbU[0], &QComboBox::currentIndexChanged, this,
            &CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbUaSelChanged);
    connect(m_cmbI[0][0], &QComboBox::currentIndexChanged, this,
            &CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbIa0SelChanged);
    connect(m_cmbI[1][0], &QComboBox::currentIndexChanged, this,
            &CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbIa1SelChanged);
    connect(m_cmbI[2][0], &QComboBox::currentIndexChanged, this,
            &CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbIa2SelChanged);
    setMinimumWidth(560);
}

void CAnaFormChnGrpRxDlgResetObjUxIx::fillFromPhaseA(QComboBox *const combos[3])
{
    CChnMapAnalog *first = ComboChannel(combos[0]);
    if (!first)
        return;
    const auto group = ThreePhaseGroup(m_file, first);
    for (size_t p = 1; p < 3; ++p)
        SelectComboChannel(combos[p], group[p]);
}

void CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbUaSelChanged(int)
{
    fillFromPhaseA(m_cmbU);
}

void CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbIa0SelChanged(int)
{
    fillFromPhaseA(m_cmbI[0]);
}

void CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbIa1SelChanged(int)
{
    fillFromPhaseA(m_cmbI[1]);
}

void CAnaFormChnGrpRxDlgResetObjUxIx::slot_cmbIa2SelChanged(int)
{
    fillFromPhaseA(m_cmbI[2]);
}

void CAnaFormChnGrpRxDlgResetObjUxIx::storeChoice(RxObject &copy) const
{
    for (int p = 0; p < 3; ++p) {
        copy.chnU[p] = ComboChannel(m_cmbU[p]);
        for (int g = 0; g < 3; ++g)
            copy.chnI[g][p] = ComboChannel(m_cmbI[g][p]);
    }
}

CAnaFormChnGrpRxDlgResetObjUxyIxy::CAnaFormChnGrpRxDlgResetObjUxyIxy(RxObject &object,
                                                                     const CCmtd99File &file,
                                                                     uint32_t displayFlags, QWidget *parent)
    : CAnaFormChnGrpRxDlgResetObjUxIx(object, file, displayFlags, parent)
{
    setWindowTitle(tr("Impedance Settings - [Uxy / Ixy]"));
}

CAnaFormChnGrpRxDlgResetObjUxIxK::CAnaFormChnGrpRxDlgResetObjUxIxK(RxObject &object, const CCmtd99File &file,
                                                                   uint32_t displayFlags, QWidget *parent)
    : CAnaFormChnGrpRxDlgResetObjUxIx(object, file, displayFlags, parent), m_cmbUnit(new QComboBox(this))
{
    setWindowTitle(tr("Impedance Settings - [Ux / (Ix+kIo)]"));
    m_cmbUnit->addItem(tr("[Manual Choose Channels]"), QVariant::fromValue(quintptr(0)));
    for (const auto &line : file.lineUnits) {
        m_cmbUnit->addItem(QIcon(QStringLiteral(":/images/UntAnaLineSingle.png")), file.Text(line->name),
                           QVariant::fromValue(quintptr(line.get())));
        if (line.get() == object.pLine)
            m_cmbUnit->setCurrentIndex(m_cmbUnit->count() - 1);
    }
    auto *unitRow = new QHBoxLayout;
    unitRow->addWidget(new QLabel(tr("Choose Object"), this));
    unitRow->addWidget(m_cmbUnit, 1);
    // The line's impedances per km: k depends only on their ratio.
    auto *impedances = new QGridLayout;
    const double values[4] = {object.fR1, object.fX1, object.fR0, object.fX0};
    for (int i = 0; i < 4; ++i) {
        m_edits[i] = new QLineEdit(QString::asprintf("%.4f", values[i]), this);
        m_edits[i]->setObjectName(QStringLiteral("edit%1").arg(i));
    }
    impedances->addWidget(new QLabel(tr("Line Positive Impedance(omh/km):Z1=R1"), this), 0, 0);
    impedances->addWidget(m_edits[0], 0, 1);
    impedances->addWidget(new QLabel(tr("+jX1"), this), 0, 2);
    impedances->addWidget(m_edits[1], 0, 3);
    impedances->addWidget(new QLabel(tr("Line Zero Impedance(omh/km):Z0=R0"), this), 1, 0);
    impedances->addWidget(m_edits[2], 1, 1);
    impedances->addWidget(new QLabel(tr("+jX0"), this), 1, 2);
    impedances->addWidget(m_edits[3], 1, 3);
    for (int g = 0; g < 3; ++g) {
        m_chkCounter[g] = new QCheckBox(tr("Countercurrent"), this);
        m_chkCounter[g]->setChecked(object.nCoef[g] < 0);
        auto *box = qobject_cast<QGroupBox *>(m_grid->itemAtPosition((g + 1) / 2, (g + 1) % 2)->widget());
        static_cast<QFormLayout *>(box->layout())->addRow(m_chkCounter[g]);
    }
    auto *column = static_cast<QVBoxLayout *>(layout());
    column->insertLayout(0, unitRow);
    column->insertLayout(1, impedances);
    connect(m_cmbUnit, &QComboBox::currentIndexChanged, this,
            &CAnaFormChnGrpRxDlgResetObjUxIxK::slot_cmbUnitSelChanged);
}

void CAnaFormChnGrpRxDlgResetObjUxIxK::slot_cmbUnitSelChanged(int index)
{
    const auto *line =
        reinterpret_cast<const CmtdInfTrwk_UnitLine *>(m_cmbUnit->itemData(index).value<quintptr>());
    if (!line)
        return;
    for (int p = 0; p < 3; ++p) {
        m_cmbU[p]->setCurrentIndex(0);
        for (int g = 0; g < 3; ++g)
            m_cmbI[g][p]->setCurrentIndex(0);
    }
    // The unit's own choice, without the group fill of phase A interfering.
    for (int p = 0; p < 3; ++p) {
        if (line->tvCount > 0)
            chooseByIndex(m_cmbU[p], m_file, line->tvChns[0][size_t(p)]);
        chooseByIndex(m_cmbI[0][p], m_file, line->taChns[size_t(p)]);
        chooseByIndex(m_cmbI[1][p], m_file, line->taChns2[size_t(p)]);
    }
    m_chkCounter[0]->setChecked(line->taPolarity < 0);
    m_chkCounter[1]->setChecked(line->taPolarity2 < 0);
    m_chkCounter[2]->setChecked(false);
    const float values[4] = {line->r1, line->x1, line->r0, line->x0};
    for (int i = 0; i < 4; ++i)
        m_edits[i]->setText(QString::asprintf("%.4f", double(values[i])));
}

void CAnaFormChnGrpRxDlgResetObjUxIxK::storeChoice(RxObject &copy) const
{
    CAnaFormChnGrpRxDlgResetObjUxIx::storeChoice(copy);
    copy.pLine = reinterpret_cast<const CmtdInfTrwk_Unit *>(m_cmbUnit->currentData().value<quintptr>());
    copy.fR1 = editNumber(m_edits[0]);
    copy.fX1 = editNumber(m_edits[1]);
    copy.fR0 = editNumber(m_edits[2]);
    copy.fX0 = editNumber(m_edits[3]);
    for (int g = 0; g < 3; ++g)
        copy.nCoef[g] = m_chkCounter[g]->isChecked() ? -1 : 1;
}

CAnaFormChnGrpRxDlgResetObjChn::CAnaFormChnGrpRxDlgResetObjChn(RxObject &object, const CCmtd99File &file,
                                                               uint32_t displayFlags, QWidget *parent)
    : CAnaFormChnGrpRxDlgResetObj(object, file, displayFlags, parent), m_cmbR(new QComboBox(this)),
      m_cmbX(new QComboBox(this))
{
    setWindowTitle(tr("Impedance Settings - Choose R/X Curve"));
    FillChannelCombo(m_cmbR, file, displayFlags, object.chnR, isImpedanceChannel);
    FillChannelCombo(m_cmbX, file, displayFlags, object.chnX, isImpedanceChannel);
    auto *group = new QGroupBox(tr("Choose R/X Channels"), this);
    auto *form = new QFormLayout(group);
    form->addRow(tr("R-Part Curve"), m_cmbR);
    form->addRow(tr("X-Part Curve"), m_cmbX);
    auto *column = new QVBoxLayout(this);
    column->addWidget(group);
    column->addWidget(OkCancelButtons(this));
    setMinimumWidth(400);
}

bool CAnaFormChnGrpRxDlgResetObjChn::hasChannels() const
{
    return m_cmbR->count() >= 2;
}

void CAnaFormChnGrpRxDlgResetObjChn::storeChoice(RxObject &copy) const
{
    copy.chnR = ComboChannel(m_cmbR);
    copy.chnX = ComboChannel(m_cmbX);
}

CAnaFormChnGrpRxDlgResetObj *MakeRxObjectDialog(RxObject &object, const CCmtd99File &file,
                                                uint32_t displayFlags, QWidget *parent)
{
    switch (object.nKind) {
    case RxObject::KindUxIxK:
        return new CAnaFormChnGrpRxDlgResetObjUxIxK(object, file, displayFlags, parent);
    case RxObject::KindUxIx:
        return new CAnaFormChnGrpRxDlgResetObjUxIx(object, file, displayFlags, parent);
    case RxObject::KindUxyIxy:
        return new CAnaFormChnGrpRxDlgResetObjUxyIxy(object, file, displayFlags, parent);
    case RxObject::KindRxChn: {
        auto *dialog = new CAnaFormChnGrpRxDlgResetObjChn(object, file, displayFlags, parent);
        if (dialog->hasChannels())
            return dialog;
        delete dialog;
        QMessageBox::warning(
            parent, QString(),
            QCoreApplication::translate(
                "CAnaFormChnGrpRxDlgResetObjChn",
                "Can NOT Found R/X Curve,\n\nThe R/X Curve Can Created By Expressions Editor!"));
        return nullptr;
    }
    default:
        return nullptr;
    }
}
