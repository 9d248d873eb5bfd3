#include "plantcurvedlg.h"
#include "dialogbuttons.h"

#include "chnmap.h"
#include "chnvocabulary.h"
#include "cmtd99file.h"
#include "units.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

const CmtdInfTrwk_UnitTrm *asTransformer(const CmtdInfTrwk_Unit *unit)
{
    return unit && unit->kind == CmtdInfTrwk_Unit::KindTransformer
               ? dynamic_cast<const CmtdInfTrwk_UnitTrm *>(unit)
               : nullptr;
}

// The windings of a transformer to choose from (high, middle, low; a two-winding one has no
// middle), as item data 0, 1, 2 of the side chooser.
QComboBox *makeSideCombo(QWidget *parent, const CmtdInfTrwk_UnitTrm &trm)
{
    auto *combo = new QComboBox(parent);
    combo->addItem(CPlantCurveDlgBase::tr("High Side"), 0);
    if (trm.windingNum >= 3)
        combo->addItem(CPlantCurveDlgBase::tr("Middle Side"), 1);
    combo->addItem(CPlantCurveDlgBase::tr("Low Side"), 2);
    return combo;
}

QString phaseLabel(const char *what, int phase, int key)
{
    static const char *const phases[] = {"A", "B", "C"};
    return QStringLiteral("%1 %2(&%3)")
        .arg(CPlantCurveDlgBase::tr(what), QLatin1String(phases[phase]), QString::number(key));
}

} // namespace

CPlantCurveDlgBase::CPlantCurveDlgBase(CCmtd99File &file, QWidget *parent)
    : QDialog(parent), m_file(file), m_prefix(new QLineEdit(this))
{
    m_prefix->setObjectName(QStringLiteral("prefixEdit"));
    m_prefix->setToolTip(tr("Put before the names of the new curves, e.g. the unit's name"));
}

void CPlantCurveDlgBase::finishLayout(QWidget *body)
{
    auto *column = new QVBoxLayout(this);
    auto *head = new QFormLayout;
    head->addRow(tr("Name Prefix(&N)"), m_prefix);
    column->addLayout(head);
    column->addWidget(body);
    column->addWidget(OkCancelButtons(this));
}

QComboBox *CPlantCurveDlgBase::addChannelCombo(QFormLayout *form, const QString &label, int chnClass,
                                               const CChnMapAnalog *chosen)
{
    auto *combo = new QComboBox(form->parentWidget());
    combo->addItem(tr("[Choose Nothing]"), QVariant::fromValue(quintptr(0)));
    for (const auto &map : m_file.analogMaps) {
        if (map->Class() == chnClass)
            addChannelEntry(combo, *map);
    }
    selectChannel(combo, chosen);
    form->addRow(label, combo);
    return combo;
}

const CChnMapAnalog *CPlantCurveDlgBase::comboChannel(const QComboBox *combo)
{
    return reinterpret_cast<const CChnMapAnalog *>(combo->currentData().value<quintptr>());
}

void CPlantCurveDlgBase::addChannelEntry(QComboBox *combo, const CChnMapAnalog &chn)
{
    combo->addItem(QStringLiteral("A%1  %2").arg(chn.Index()).arg(m_file.Text(chn.Name())),
                   QVariant::fromValue(quintptr(&chn)));
}

void CPlantCurveDlgBase::selectChannel(QComboBox *combo, const CChnMapAnalog *chn)
{
    int at = combo->findData(QVariant::fromValue(quintptr(chn)));
    // A unit may name a channel of another class (a voltage recorded without its unit).
    if (at < 0 && chn) {
        addChannelEntry(combo, *chn);
        at = combo->count() - 1;
    }
    combo->setCurrentIndex(at >= 0 ? at : 0);
}

QDoubleSpinBox *CPlantCurveDlgBase::addNumber(QFormLayout *form, const QString &label, double max,
                                              int decimals, const QString &suffix, double value)
{
    auto *spin = new QDoubleSpinBox(form->parentWidget());
    spin->setRange(0.0, max);
    spin->setDecimals(decimals);
    spin->setSuffix(suffix);
    spin->setValue(value);
    form->addRow(label, spin);
    return spin;
}

void CPlantCurveDlgBase::refuse(const QString &message)
{
    QMessageBox::warning(this, windowTitle(), message);
}

CPowerCurveDlg::CPowerCurveDlg(CCmtd99File &file, const CmtdInfTrwk_Unit *unit, QWidget *parent)
    : CPlantCurveDlgBase(file, parent), m_unit(unit)
{
    setWindowTitle(tr("Power Curve Setup"));
    setWindowIcon(QIcon(QStringLiteral(":/images/WaveAnaPqs.png")));
    auto *body = new QWidget(this);
    auto *columns = new QHBoxLayout(body);
    columns->setContentsMargins(0, 0, 0, 0);

    auto *chnBox = new QGroupBox(tr("Channels"), body);
    auto *chn = new QFormLayout(chnBox);
    if (const CmtdInfTrwk_UnitTrm *trm = asTransformer(unit)) {
        m_side = makeSideCombo(chnBox, *trm);
        chn->addRow(tr("Winding(&W)"), m_side);
        connect(m_side, &QComboBox::currentIndexChanged, this,
                [this] { prefill(m_side->currentData().toInt()); });
    }
    static const char *const voltageKeys[] = {"A", "B", "C"};
    for (int p = 0; p < 3; ++p)
        m_u[p] =
            addChannelCombo(chn, tr("Voltage %1(&%1)").arg(QLatin1String(voltageKeys[p])), ClassACV, nullptr);
    for (int p = 0; p < 3; ++p)
        m_i[p] = addChannelCombo(chn, phaseLabel("Current", p, p + 1), ClassACC, nullptr);
    m_reverse = new QCheckBox(tr("Reverse CT Direction(&R)"), chnBox);
    m_reverse->setToolTip(tr("The current transformers point into the plant: power leaving the bus "
                             "then reads positive"));
    chn->addRow(m_reverse);
    m_branch2 = new QGroupBox(tr("Second Current Branch(&T)"), chnBox);
    m_branch2->setCheckable(true);
    m_branch2->setChecked(false);
    auto *branch = new QFormLayout(m_branch2);
    for (int p = 0; p < 3; ++p)
        m_i2[p] = addChannelCombo(branch, phaseLabel("Current", p, p + 4), ClassACC, nullptr);
    m_reverse2 = new QCheckBox(tr("Reverse CT Direction(&E)"), m_branch2);
    branch->addRow(m_reverse2);
    chn->addRow(m_branch2);
    columns->addWidget(chnBox, 1);

    auto *curveBox = new QGroupBox(tr("Curves"), body);
    auto *curves = new QVBoxLayout(curveBox);
    m_secondary = new QRadioButton(tr("Secondary Values(&D)"), curveBox);
    m_primary = new QRadioButton(tr("Primary Values(&Y)"), curveBox);
    m_secondary->setChecked(true);
    curves->addWidget(m_secondary);
    curves->addWidget(m_primary);
    const std::pair<uint32_t, const char *> choices[] = {
        {PowerActive, QT_TR_NOOP("Active Power P(&P)")},
        {PowerReactive, QT_TR_NOOP("Reactive Power Q(&Q)")},
        {PowerApparent, QT_TR_NOOP("Apparent Power S(&S)")},
        {PowerPhaseA, QT_TR_NOOP("Phase A")},
        {PowerPhaseB, QT_TR_NOOP("Phase B")},
        {PowerPhaseC, QT_TR_NOOP("Phase C")},
        {PowerTotal, QT_TR_NOOP("Total of Three Phases(&L)")}};
    for (const auto &[bit, text] : choices) {
        if (bit == PowerPhaseA)
            curves->addSpacing(8);
        auto *box = new QCheckBox(tr(text), curveBox);
        box->setChecked(true);
        curves->addWidget(box);
        m_curves.emplace_back(bit, box);
    }
    curves->addStretch(1);
    columns->addWidget(curveBox);
    finishLayout(body);
    prefill(m_side ? m_side->currentData().toInt() : 0);
}

QCheckBox *CPowerCurveDlg::curveBox(uint32_t bit) const
{
    for (const auto &[b, box] : m_curves) {
        if (b == bit)
            return box;
    }
    return nullptr;
}

void CPowerCurveDlg::prefill(int side)
{
    PowerJobParams params;
    if (m_unit)
        PowerJobFromUnit(m_file, *m_unit, side, params);
    for (int p = 0; p < 3; ++p) {
        selectChannel(m_u[p], params.u[p]);
        selectChannel(m_i[p], params.i[p]);
        selectChannel(m_i2[p], params.i2[p]);
    }
    m_reverse->setChecked(params.currentSign < 0.0f);
    m_reverse2->setChecked(params.currentSign2 < 0.0f);
    m_branch2->setChecked(params.i2[0] || params.i2[1] || params.i2[2]);
    (params.primary ? m_primary : m_secondary)->setChecked(true);
    prefixEdit()->setText(params.namePrefix);
}

bool CPowerCurveDlg::readInput()
{
    m_params = PowerJobParams{};
    bool phase = false;
    for (int p = 0; p < 3; ++p) {
        m_params.u[p] = comboChannel(m_u[p]);
        m_params.i[p] = comboChannel(m_i[p]);
        m_params.i2[p] = m_branch2->isChecked() ? comboChannel(m_i2[p]) : nullptr;
        phase = phase || (m_params.u[p] && m_params.i[p]);
    }
    m_params.currentSign = m_reverse->isChecked() ? -1.0f : 1.0f;
    m_params.currentSign2 = m_reverse2->isChecked() ? -1.0f : 1.0f;
    m_params.primary = m_primary->isChecked();
    m_params.namePrefix = prefixEdit()->text().trimmed();
    m_params.curves = 0;
    for (const auto &[bit, box] : m_curves)
        m_params.curves |= box->isChecked() ? bit : 0u;
    if (!phase) {
        refuse(tr("Please choose the voltage and the current of at least one phase!"));
        return false;
    }
    if (!(m_params.curves & PowerKindMask) || !(m_params.curves & PowerPlaceMask)) {
        refuse(tr("Please tick at least one of P, Q and S, and at least one of the phases or the total!"));
        return false;
    }
    bool wanted = (m_params.curves & PowerTotal) != 0;
    for (int p = 0; p < 3; ++p)
        wanted = wanted || ((m_params.curves & (PowerPhaseA << p)) && m_params.u[p] && m_params.i[p]);
    if (!wanted) {
        refuse(tr("None of the ticked phases has both a voltage and a current channel!"));
        return false;
    }
    return true;
}

std::vector<const CChnMapAnalog *> CPowerCurveDlg::inputs() const
{
    std::vector<const CChnMapAnalog *> list;
    for (const CChnMapAnalog *const *set : {m_params.u, m_params.i, m_params.i2}) {
        for (int p = 0; p < 3; ++p) {
            if (set[p])
                list.push_back(set[p]);
        }
    }
    return list;
}

void CPowerCurveDlg::accept()
{
    if (!readInput())
        return;
    QString message;
    if (!MakePowerChannels(m_file, m_params, m_channels, message)) {
        refuse(message);
        return;
    }
    m_made.clear();
    for (int place = 0; place < kPowerPlaces; ++place) {
        for (CChnMapAnalog *chn : {m_channels.p[place], m_channels.q[place], m_channels.s[place]}) {
            if (chn)
                m_made.push_back(chn);
        }
    }
    QDialog::accept();
}

CUfCurveDlg::CUfCurveDlg(CCmtd99File &file, const CmtdInfTrwk_Unit *unit, QWidget *parent)
    : CPlantCurveDlgBase(file, parent), m_unit(unit)
{
    setWindowTitle(tr("U/f Curve Setup"));
    setWindowIcon(QIcon(QStringLiteral(":/images/UntAnaTrmUf.png")));
    auto *body = new QGroupBox(tr("Winding"), this);
    auto *form = new QFormLayout(body);
    if (const CmtdInfTrwk_UnitTrm *trm = asTransformer(unit)) {
        m_side = makeSideCombo(body, *trm);
        form->addRow(tr("Winding(&W)"), m_side);
        connect(m_side, &QComboBox::currentIndexChanged, this,
                [this] { prefill(m_side->currentData().toInt()); });
    }
    m_u = addChannelCombo(form, tr("Voltage(&U)"), ClassACV, nullptr);
    m_kv = addNumber(form, tr("Rated Voltage(&K)"), 2000.0, 3, tr(" kV (line to line)"), 0.0);
    m_freq = addNumber(form, tr("Rated Frequency(&F)"), 1000.0, 2, QStringLiteral(" Hz"), 50.0);
    finishLayout(body);
    prefill(m_side ? m_side->currentData().toInt() : 0);
}

void CUfCurveDlg::prefill(int side)
{
    UfJobParams params;
    if (m_unit)
        UfJobFromUnit(m_file, *m_unit, side, params);
    selectChannel(m_u, params.u);
    m_kv->setValue(double(params.ratedKv));
    m_freq->setValue(double(params.ratedFreq));
    prefixEdit()->setText(params.namePrefix);
}

std::vector<const CChnMapAnalog *> CUfCurveDlg::inputs() const
{
    return {m_params.u};
}

void CUfCurveDlg::accept()
{
    m_params = UfJobParams{};
    m_params.u = comboChannel(m_u);
    m_params.ratedKv = float(m_kv->value());
    m_params.ratedFreq = float(m_freq->value());
    m_params.namePrefix = prefixEdit()->text().trimmed();
    if (!m_params.u)
        return refuse(tr("Please choose the voltage channel of the winding!"));
    if (!(m_params.ratedKv > 0.0f))
        return refuse(tr("Please give the winding's rated voltage in kV (line to line), above 0!"));
    if (!(m_params.ratedFreq > 0.0f))
        return refuse(tr("Please give the rated frequency in Hz, above 0!"));
    QString message;
    CChnMapAnalog *chn = MakeUfChannel(m_file, m_params, message);
    if (!chn)
        return refuse(message);
    m_made = {chn};
    QDialog::accept();
}

CLoadAngleDlg::CLoadAngleDlg(CCmtd99File &file, const CmtdInfTrwk_Unit *unit, QWidget *parent)
    : CPlantCurveDlgBase(file, parent)
{
    setWindowTitle(tr("Power-Angle Curve Setup"));
    setWindowIcon(QIcon(QStringLiteral(":/images/UntAnaPwrAng.png")));
    LoadAngleJobParams params;
    if (const auto *pwr = dynamic_cast<const CmtdInfTrwk_UnitPwr *>(unit))
        LoadAngleJobFromUnit(file, *pwr, params);
    auto *body = new QGroupBox(tr("Generator"), this);
    auto *form = new QFormLayout(body);
    static const char *const voltageKeys[] = {"A", "B", "C"};
    for (int p = 0; p < 3; ++p)
        m_u[p] = addChannelCombo(form, tr("Voltage %1(&%1)").arg(QLatin1String(voltageKeys[p])), ClassACV,
                                 params.u[p]);
    for (int p = 0; p < 3; ++p)
        m_i[p] = addChannelCombo(form, phaseLabel("Current", p, p + 1), ClassACC, params.i[p]);
    m_reverse = new QCheckBox(tr("Currents Measured into the Machine(&R)"), body);
    m_reverse->setChecked(params.currentSign < 0.0f);
    form->addRow(m_reverse);
    m_xq = addNumber(form, tr("Xq(&X)"), 100.0, 4, tr(" p.u."), double(params.xq));
    m_kv =
        addNumber(form, tr("Rated Voltage(&K)"), 2000.0, 3, tr(" kV (line to line)"), double(params.ratedKv));
    m_mva = addNumber(form, tr("Rated Capacity(&M)"), 100000.0, 3, QStringLiteral(" MVA"),
                      double(params.ratedMva));
    finishLayout(body);
    prefixEdit()->setText(params.namePrefix);
}

std::vector<const CChnMapAnalog *> CLoadAngleDlg::inputs() const
{
    std::vector<const CChnMapAnalog *> list;
    for (const CChnMapAnalog *const *set : {m_params.u, m_params.i}) {
        for (int p = 0; p < 3; ++p) {
            if (set[p])
                list.push_back(set[p]);
        }
    }
    return list;
}

void CLoadAngleDlg::accept()
{
    m_params = LoadAngleJobParams{};
    for (int p = 0; p < 3; ++p) {
        m_params.u[p] = comboChannel(m_u[p]);
        m_params.i[p] = comboChannel(m_i[p]);
    }
    m_params.currentSign = m_reverse->isChecked() ? -1.0f : 1.0f;
    m_params.xq = float(m_xq->value());
    m_params.ratedKv = float(m_kv->value());
    m_params.ratedMva = float(m_mva->value());
    m_params.namePrefix = prefixEdit()->text().trimmed();
    if (!m_params.u[0] || !m_params.i[0])
        return refuse(tr("Please choose the voltage and the current of phase A at least (with all three "
                         "phases the positive sequence is taken)!"));
    if (!(m_params.xq > 0.0f))
        return refuse(tr("Xq must be above 0 p.u.: the load angle is that of the voltage behind the "
                         "quadrature reactance. Take it from the machine's data sheet."));
    if (!(m_params.ratedKv > 0.0f) || !(m_params.ratedMva > 0.0f))
        return refuse(tr("Please give the machine's rated voltage (kV) and rated capacity (MVA), above 0!"));
    QString message;
    CChnMapAnalog *chn = MakeLoadAngleChannel(m_file, m_params, message);
    if (!chn)
        return refuse(message);
    m_made = {chn};
    QDialog::accept();
}
