#include "unitsetupdialog.h"
#include "dialogbuttons.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "unitedit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

struct ObjectType
{
    const char *code;
    const char *text;
};

// The type codes the file keeps for each kind, with the words the dialog shows.
std::vector<ObjectType> objectTypes(int kind)
{
    switch (kind) {
    case CmtdInfTrwk_Unit::KindLine:
        return {{"", QT_TRANSLATE_NOOP("CUnitSetupDialog", "[Other]")},
                {"LINE", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Line")},
                {"BYPASS", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Shunt Circuit")},
                {"BUS_CONNECTION", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Bus Connection")},
                {"RAILWAY", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Two Ph. Line")}};
    case CmtdInfTrwk_Unit::KindTransformer:
        return {{"", QT_TRANSLATE_NOOP("CUnitSetupDialog", "[Other]")},
                {"MAIN", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Main Trans.")},
                {"PLANT", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Station Trans.")},
                {"EXCITATION", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Exci. Trans.")}};
    case CmtdInfTrwk_Unit::KindPower:
        return {{"", QT_TRANSLATE_NOOP("CUnitSetupDialog", "[Other]")},
                {"STEAM_TURBINE", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Steam Turbine")},
                {"WATER_TURBINE", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Water Turbine")}};
    case CmtdInfTrwk_Unit::KindExciter:
        return {{"", QT_TRANSLATE_NOOP("CUnitSetupDialog", "[Other]")},
                {"PRIMARY", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Main Exciter")},
                {"SLAVE", QT_TRANSLATE_NOOP("CUnitSetupDialog", "Minor Exciter")}};
    default:
        return {};
    }
}

// The shortest text that reads back as the same float: 0.07 rather than 0.0700000003.
QString numberText(float value)
{
    for (int digits = 6; digits < 9; ++digits) {
        const QString text = QString::number(double(value), 'g', digits);
        if (text.toFloat() == value)
            return text;
    }
    return QString::number(double(value), 'g', 9);
}

QString channelText(const CCmtd99File &file, const CChnMapBase &map)
{
    return QStringLiteral("%1: %2").arg(map.Index()).arg(file.Text(QByteArray(map.Name())));
}

// The status list of a transformer that the list page shows: the other channels, or a side's.
std::vector<uint16_t> &statusListOf(CmtdInfTrwk_Unit &unit, int which)
{
    if (unit.kind == CmtdInfTrwk_Unit::KindTransformer && which > 0) {
        auto &t = static_cast<CmtdInfTrwk_UnitTrm &>(unit);
        std::vector<uint16_t> *lists[] = {&t.hStatus, &t.mStatus, &t.lStatus, &t.zStatus};
        return *lists[std::clamp(which - 1, 0, 3)];
    }
    return unit.statusChannels;
}

std::vector<uint16_t> checkedIndexes(const QListWidget *list)
{
    std::vector<uint16_t> indexes;
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->checkState() == Qt::Checked)
            indexes.push_back(uint16_t(list->item(row)->data(Qt::UserRole).toInt()));
    }
    return indexes;
}

} // namespace

CUnitSetupDialog::CUnitSetupDialog(const CCmtd99File &file, std::unique_ptr<CmtdInfTrwk_Unit> unit,
                                   const CmtdInfTrwk_Unit *replacing, QWidget *parent)
    : QDialog(parent), m_file(file), m_unit(std::move(unit)), m_replacing(replacing)
{
    static const char *const kTitles[] = {"",
                                          QT_TR_NOOP("Line Setup"),
                                          QT_TR_NOOP("Transformer Setup"),
                                          QT_TR_NOOP("Generator Setup"),
                                          QT_TR_NOOP("Exciter Setup"),
                                          QT_TR_NOOP("Channel Group Setup")};
    setWindowTitle(tr(kTitles[std::clamp(int(m_unit->kind), 1, 5)]));
    m_roleList = ChannelRolesOf(*m_unit);
    m_tabs = new QTabWidget(this);
    m_tabs->addTab(makeGeneralPage(), tr("General"));
    if (!m_roleList.empty())
        m_tabs->addTab(makeRolesPage(), tr("Channels"));
    m_tabs->addTab(makeListsPage(),
                   m_unit->kind == CmtdInfTrwk_Unit::KindGroup ? tr("Channels") : tr("Other Channels"));
    QDialogButtonBox *buttons = OkCancelButtons(this);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(buttons);
    resize(640, 560);
}

CUnitSetupDialog::~CUnitSetupDialog() = default;

QWidget *CUnitSetupDialog::makeGeneralPage()
{
    auto *page = new QWidget(this);
    auto *form = new QFormLayout(page);
    m_name = new QLineEdit(m_file.Text(m_unit->name), page);
    m_name->setMaxLength(64);
    form->addRow(tr("Name:"), m_name);
    m_devId = new QLineEdit(m_unit->devId > 0 ? QString::number(m_unit->devId) : QString(), page);
    m_devId->setPlaceholderText(tr("none"));
    form->addRow(tr("Device No.:"), m_devId);
    m_sysId = new QLineEdit(m_file.Text(m_unit->sysId), page);
    form->addRow(tr("System:"), m_sysId);
    const std::vector<ObjectType> types = objectTypes(m_unit->kind);
    if (!types.empty()) {
        m_objectType = new QComboBox(page);
        for (const ObjectType &type : types)
            m_objectType->addItem(tr(type.text), QByteArray(type.code));
        const int at = m_objectType->findData(m_unit->objectType.toUpper());
        if (at < 0 && !m_unit->objectType.isEmpty()) // a code of another maker stays as it is
            m_objectType->addItem(QString::fromLatin1(m_unit->objectType), m_unit->objectType);
        m_objectType->setCurrentIndex(at >= 0 ? at : m_objectType->count() - 1);
        form->addRow(tr("Type:"), m_objectType);
    }
    addKindFields(form);
    return page;
}

void CUnitSetupDialog::addNumber(QFormLayout *form, const char *label, const char *unit, float *target)
{
    auto *row = new QWidget(form->parentWidget());
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *edit = new QLineEdit(numberText(*target), row);
    edit->setObjectName(QString::fromLatin1(label));
    layout->addWidget(edit, 1);
    if (unit && *unit)
        layout->addWidget(new QLabel(QString::fromUtf8(unit), row));
    form->addRow(tr(label) + QLatin1Char(':'), row);
    m_numbers.push_back(NumberField{label, edit, target});
}

QLineEdit *CUnitSetupDialog::numberEdit(const char *label) const
{
    for (const NumberField &field : m_numbers) {
        if (qstrcmp(field.label, label) == 0)
            return field.edit;
    }
    return nullptr;
}

void CUnitSetupDialog::addKindFields(QFormLayout *form)
{
    switch (m_unit->kind) {
    case CmtdInfTrwk_Unit::KindLine:
        addLineFields(form);
        break;
    case CmtdInfTrwk_Unit::KindTransformer:
        addTransformerFields(form);
        break;
    case CmtdInfTrwk_Unit::KindPower:
        addPowerFields(form);
        break;
    case CmtdInfTrwk_Unit::KindExciter:
        addExciterFields(form);
        break;
    default:
        break;
    }
}

void CUnitSetupDialog::addLineFields(QFormLayout *form)
{
    auto &u = static_cast<CmtdInfTrwk_UnitLine &>(*m_unit);
    addNumber(form, QT_TR_NOOP("Length"), "km", &u.length);
    addNumber(form, QT_TR_NOOP("R1"), "Ω/km", &u.r1);
    addNumber(form, QT_TR_NOOP("X1"), "Ω/km", &u.x1);
    addNumber(form, QT_TR_NOOP("R0"), "Ω/km", &u.r0);
    addNumber(form, QT_TR_NOOP("X0"), "Ω/km", &u.x0);
    addNumber(form, QT_TR_NOOP("C1"), "μF/km", &u.c1);
    addNumber(form, QT_TR_NOOP("G1"), "S/km", &u.g1);
    addNumber(form, QT_TR_NOOP("C0"), "μF/km", &u.c0);
    addNumber(form, QT_TR_NOOP("G0"), "S/km", &u.g0);
    addNumber(form, QT_TR_NOOP("Mutual R"), "Ω/km", &u.mutualR);
    addNumber(form, QT_TR_NOOP("Mutual X"), "Ω/km", &u.mutualX);
    addNumber(form, QT_TR_NOOP("Shunt reactor"), "Ω", &u.reactor);
    m_reversed = new QCheckBox(tr("TA polarity reversed"), form->parentWidget());
    m_reversed->setChecked(u.taPolarity < 1);
    form->addRow(QString(), m_reversed);
    m_reversed2 = new QCheckBox(tr("TA #2 polarity reversed"), form->parentWidget());
    m_reversed2->setChecked(u.taPolarity2 < 1);
    form->addRow(QString(), m_reversed2);
}

void CUnitSetupDialog::addTransformerFields(QFormLayout *form)
{
    auto &u = static_cast<CmtdInfTrwk_UnitTrm &>(*m_unit);
    addNumber(form, QT_TR_NOOP("Capacity"), "MVA", &u.capacity);
    m_selfComp = new QLineEdit(QString::fromLatin1(u.taSelfComp), form->parentWidget());
    form->addRow(tr("TA self compensation:"), m_selfComp);
    m_windings = new QComboBox(form->parentWidget());
    m_windings->addItems({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    m_windings->setCurrentIndex(std::clamp(int(u.windingNum), 1, 3) - 1);
    form->addRow(tr("Windings:"), m_windings);
    auto *sides = new QGroupBox(tr("Windings"), form->parentWidget());
    auto *grid = new QGridLayout(sides);
    grid->addWidget(new QLabel(tr("Connection")), 0, 1);
    grid->addWidget(new QLabel(tr("Rated voltage (kV)")), 0, 2);
    grid->addWidget(new QLabel(tr("Branches")), 0, 3);
    const TrmSide *data[] = {&u.sideH, &u.sideM, &u.sideL};
    const QString names[] = {tr("Upper side"), tr("Middle side"), tr("Lower side")};
    for (int s = 0; s < 3; ++s) {
        grid->addWidget(new QLabel(names[s]), s + 1, 0);
        m_sideText[s] = new QComboBox(sides);
        m_sideText[s]->setEditable(true);
        m_sideText[s]->addItems({QStringLiteral("Y"), QStringLiteral("Yn"), QStringLiteral("D"),
                                 QStringLiteral("Yn12"), QStringLiteral("Yn11"), QStringLiteral("Yn1"),
                                 QStringLiteral("D11"), QStringLiteral("D1"), QStringLiteral("D5"),
                                 QStringLiteral("Y11")});
        m_sideText[s]->setCurrentText(QString::fromLatin1(data[s]->windingText));
        m_sideKv[s] = new QLineEdit(numberText(data[s]->ratedKv), sides);
        m_sideBranches[s] = new QComboBox(sides);
        for (int b = 0; b <= (s == 2 ? 3 : 2); ++b)
            m_sideBranches[s]->addItem(QString::number(b));
        m_sideBranches[s]->setCurrentIndex(
            std::clamp(int(data[s]->branchNum), 0, m_sideBranches[s]->count() - 1));
        grid->addWidget(m_sideText[s], s + 1, 1);
        grid->addWidget(m_sideKv[s], s + 1, 2);
        grid->addWidget(m_sideBranches[s], s + 1, 3);
    }
    form->addRow(sides);
    // A two-winding transformer has no middle side.
    auto showMiddle = [this] {
        const int windings = m_windings->currentIndex() + 1;
        for (QWidget *w : {static_cast<QWidget *>(m_sideText[1]), static_cast<QWidget *>(m_sideKv[1]),
                           static_cast<QWidget *>(m_sideBranches[1])})
            w->setEnabled(windings == 3);
        for (QWidget *w : {static_cast<QWidget *>(m_sideText[2]), static_cast<QWidget *>(m_sideKv[2]),
                           static_cast<QWidget *>(m_sideBranches[2])})
            w->setEnabled(windings >= 2);
    };
    connect(m_windings, &QComboBox::currentIndexChanged, this, showMiddle);
    showMiddle();
}

void CUnitSetupDialog::addPowerFields(QFormLayout *form)
{
    auto &u = static_cast<CmtdInfTrwk_UnitPwr &>(*m_unit);
    addNumber(form, QT_TR_NOOP("Capacity"), "MVA", &u.capacity);
    addNumber(form, QT_TR_NOOP("Rated frequency"), "Hz", &u.freq);
    addNumber(form, QT_TR_NOOP("Power factor"), "", &u.factor);
    addNumber(form, QT_TR_NOOP("Rated voltage"), "kV", &u.v1);
    addNumber(form, QT_TR_NOOP("Rated rotor current"), "A", &u.rotorI);
    addNumber(form, QT_TR_NOOP("Rotor shunt secondary voltage"), "mV", &u.rotorV2);
    addNumber(form, QT_TR_NOOP("Rated exciter voltage"), "V", &u.ufe[0]);
    addNumber(form, QT_TR_NOOP("No-load exciter voltage"), "V", &u.ufe[1]);
    addNumber(form, QT_TR_NOOP("Xd"), "p.u.", &u.xd);
    addNumber(form, QT_TR_NOOP("Xq"), "p.u.", &u.xq);
    addNumber(form, QT_TR_NOOP("Xd'"), "p.u.", &u.xdTransient);
    addNumber(form, QT_TR_NOOP("Xs"), "p.u.", &u.xs);
    auto *branches = new QWidget(form->parentWidget());
    auto *row = new QHBoxLayout(branches);
    row->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < 3; ++i) {
        m_branches[i] = new QComboBox(branches);
        for (int b = 0; b <= 8; ++b)
            m_branches[i]->addItem(QString::number(b));
        m_branches[i]->setCurrentIndex(std::clamp(int(u.branchNum[size_t(i)]), 0, 8));
        row->addWidget(m_branches[i]);
    }
    form->addRow(tr("Stator branches:"), branches);
    m_excitation = new QComboBox(form->parentWidget());
    m_excitation->addItems({QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2")});
    m_excitation->setCurrentIndex(std::clamp(int(u.excitationMode), 0, 2));
    form->addRow(tr("Excitation mode:"), m_excitation);
    m_igtDir = new QComboBox(form->parentWidget());
    m_igtDir->addItems({tr("Out Generator"), tr("Into Generator")});
    m_igtDir->setCurrentIndex(u.igtDir ? 1 : 0);
    form->addRow(tr("Terminal current:"), m_igtDir);
    addPartnerChoice(form, tr("Main transformer:"), m_file.transformerUnits, u.trmName);
}

void CUnitSetupDialog::addExciterFields(QFormLayout *form)
{
    auto &u = static_cast<CmtdInfTrwk_UnitExci &>(*m_unit);
    addNumber(form, QT_TR_NOOP("Rated frequency"), "Hz", &u.freq);
    addNumber(form, QT_TR_NOOP("Rated voltage"), "kV", &u.v1);
    addPartnerChoice(form, tr("Generator:"), m_file.powerUnits, u.pwrName);
}

template <typename Units>
void CUnitSetupDialog::addPartnerChoice(QFormLayout *form, const QString &label, const Units &units,
                                        const QByteArray &current)
{
    m_partner = new QComboBox(form->parentWidget());
    m_partner->addItem(tr("[None]"), QVariant());
    for (const auto &unit : units)
        m_partner->addItem(m_file.Text(unit->name),
                           QVariant::fromValue(reinterpret_cast<quintptr>(unit.get())));
    const int at = m_partner->findText(m_file.Text(current));
    m_partner->setCurrentIndex(at > 0 ? at : 0);
    form->addRow(label, m_partner);
}

QWidget *CUnitSetupDialog::makeRolesPage()
{
    auto *page = new QWidget(this);
    auto *layout = new QVBoxLayout(page);
    m_roles = new QTableWidget(int(m_roleList.size()), 4, page);
    m_roles->setHorizontalHeaderLabels({tr("A"), tr("B"), tr("C"), tr("N")});
    QStringList rows;
    for (const ChannelRole &role : m_roleList)
        rows << QCoreApplication::translate("UnitEdit", role.label);
    m_roles->setVerticalHeaderLabels(rows);
    m_roles->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_roles->setSelectionMode(QAbstractItemView::NoSelection);
    layout->addWidget(m_roles);
    m_allChannels =
        new QCheckBox(tr("Offer all analog channels, not only those of the fitting class and phase"), page);
    layout->addWidget(m_allChannels);
    fillRolePickers();
    connect(m_allChannels, &QCheckBox::toggled, this, [this] {
        readRolePickers(); // keep what was picked while the lists change
        fillRolePickers();
    });
    return page;
}

void CUnitSetupDialog::fillRolePickers()
{
    const bool all = m_allChannels->isChecked();
    for (int r = 0; r < int(m_roleList.size()); ++r) {
        const ChannelRole &role = m_roleList[size_t(r)];
        for (int c = 0; c < 4; ++c) {
            if (c >= role.count) {
                m_roles->setCellWidget(r, c, nullptr);
                auto *none = new QTableWidgetItem;
                none->setFlags(Qt::NoItemFlags);
                m_roles->setItem(r, c, none);
                continue;
            }
            auto *combo = new QComboBox(m_roles);
            combo->addItem(QStringLiteral("—"), 0);
            for (const auto &map : m_file.analogMaps) {
                // The channel already in the place stays offered, fitting or not.
                if (all || ChannelFitsRole(*map, role, c) || map->Index() == role.places[c])
                    combo->addItem(channelText(m_file, *map), map->Index());
            }
            const int at = combo->findData(int(role.places[c]));
            combo->setCurrentIndex(at >= 0 ? at : 0);
            m_roles->setCellWidget(r, c, combo);
        }
    }
}

void CUnitSetupDialog::readRolePickers()
{
    for (int r = 0; m_roles && r < m_roles->rowCount(); ++r) {
        for (int c = 0; c < m_roleList[size_t(r)].count; ++c) {
            if (auto *combo = qobject_cast<QComboBox *>(m_roles->cellWidget(r, c)))
                m_roleList[size_t(r)].places[c] = int16_t(combo->currentData().toInt());
        }
    }
}

QWidget *CUnitSetupDialog::makeListsPage()
{
    auto *page = new QWidget(this);
    auto *layout = new QHBoxLayout(page);
    auto *analogBox = new QGroupBox(tr("Analog Channels"), page);
    auto *analogLayout = new QVBoxLayout(analogBox);
    m_analogList = new QListWidget(analogBox);
    for (const auto &map : m_file.analogMaps) {
        auto *item = new QListWidgetItem(channelText(m_file, *map), m_analogList);
        item->setData(Qt::UserRole, map->Index());
        const bool taken = std::find(m_unit->otherAnalog.begin(), m_unit->otherAnalog.end(),
                                     uint16_t(map->Index())) != m_unit->otherAnalog.end();
        item->setCheckState(taken ? Qt::Checked : Qt::Unchecked);
    }
    analogLayout->addWidget(m_analogList);
    layout->addWidget(analogBox);
    auto *statusBox = new QGroupBox(tr("Status Channels"), page);
    auto *statusLayout = new QVBoxLayout(statusBox);
    if (m_unit->kind == CmtdInfTrwk_Unit::KindTransformer) {
        // A transformer keeps status channels per side as well.
        m_statusWhich = new QComboBox(statusBox);
        m_statusWhich->addItems(
            {tr("Other"), tr("Upper side"), tr("Middle side"), tr("Lower side"), tr("Neutral point")});
        statusLayout->addWidget(m_statusWhich);
        connect(m_statusWhich, &QComboBox::currentIndexChanged, this, [this](int which) {
            statusListOf(*m_unit, m_statusShown) = checkedIndexes(m_statusList);
            fillStatusList(which);
        });
    }
    m_statusList = new QListWidget(statusBox);
    statusLayout->addWidget(m_statusList);
    layout->addWidget(statusBox);
    fillStatusList(0);
    return page;
}

void CUnitSetupDialog::fillStatusList(int which)
{
    m_statusShown = which;
    m_statusList->clear();
    const std::vector<uint16_t> &list = statusListOf(*m_unit, which);
    for (const auto &map : m_file.statusMaps) {
        auto *item = new QListWidgetItem(channelText(m_file, *map), m_statusList);
        item->setData(Qt::UserRole, map->Index());
        const bool taken = std::find(list.begin(), list.end(), uint16_t(map->Index())) != list.end();
        item->setCheckState(taken ? Qt::Checked : Qt::Unchecked);
    }
}

bool CUnitSetupDialog::collect(QStringList *problems)
{
    CmtdInfTrwk_Unit &u = *m_unit;
    u.name = m_name->text().trimmed().toUtf8();
    bool ok = true;
    const QString devText = m_devId->text().trimmed();
    const int devId = devText.toInt(&ok);
    if (!devText.isEmpty() && (!ok || devId < 1))
        *problems << tr("A device number is a whole number above 0");
    u.devId = devText.isEmpty() || !ok ? -1 : devId;
    u.sysId = m_sysId->text().trimmed().toUtf8();
    if (m_objectType)
        u.objectType = m_objectType->currentData().toByteArray();
    auto number = [problems](QLineEdit *edit, const QString &what, float *target) {
        bool isNumber = false;
        const QString text = edit->text().trimmed();
        const double value = text.isEmpty() ? 0.0 : text.toDouble(&isNumber);
        if (!text.isEmpty() && (!isNumber || !std::isfinite(value) || std::fabs(value) > 1.0e30))
            *problems << tr("%1 is not a number: %2").arg(what, text);
        else
            *target = float(value);
    };
    for (const NumberField &field : m_numbers)
        number(field.edit, tr(field.label), field.target);
    const auto *partner =
        m_partner ? reinterpret_cast<const CmtdInfTrwk_Unit *>(m_partner->currentData().value<quintptr>())
                  : nullptr;
    if (u.kind == CmtdInfTrwk_Unit::KindLine) {
        auto &l = static_cast<CmtdInfTrwk_UnitLine &>(u);
        l.taPolarity = m_reversed->isChecked() ? -1 : 1;
        l.taPolarity2 = m_reversed2->isChecked() ? -1 : 1;
    } else if (u.kind == CmtdInfTrwk_Unit::KindTransformer) {
        auto &t = static_cast<CmtdInfTrwk_UnitTrm &>(u);
        t.windingNum = int16_t(m_windings->currentIndex() + 1);
        t.taSelfComp = m_selfComp->text().trimmed().toLatin1();
        TrmSide *sides[] = {&t.sideH, &t.sideM, &t.sideL};
        const QString names[] = {tr("Upper side"), tr("Middle side"), tr("Lower side")};
        for (int s = 0; s < 3; ++s) {
            sides[s]->windingText = m_sideText[s]->currentText().trimmed().toLatin1();
            number(m_sideKv[s], names[s], &sides[s]->ratedKv);
            sides[s]->branchNum = int16_t(m_sideBranches[s]->currentIndex());
        }
    } else if (u.kind == CmtdInfTrwk_Unit::KindPower) {
        auto &g = static_cast<CmtdInfTrwk_UnitPwr &>(u);
        for (int i = 0; i < 3; ++i)
            g.branchNum[size_t(i)] = int16_t(m_branches[i]->currentIndex());
        g.excitationMode = int16_t(m_excitation->currentIndex());
        g.igtDir = int16_t(m_igtDir->currentIndex());
        g.trmId = partner ? partner->devId : -1;
        g.trmName = partner ? partner->name : QByteArray();
    } else if (u.kind == CmtdInfTrwk_Unit::KindExciter) {
        auto &e = static_cast<CmtdInfTrwk_UnitExci &>(u);
        e.pwrId = partner ? partner->devId : -1;
        e.pwrName = partner ? partner->name : QByteArray();
    }
    readRolePickers();
    u.otherAnalog = checkedIndexes(m_analogList);
    statusListOf(u, m_statusShown) = checkedIndexes(m_statusList);
    return problems->isEmpty();
}

void CUnitSetupDialog::accept()
{
    QStringList problems;
    if (collect(&problems))
        problems = CheckUnit(m_file, *m_unit, m_replacing);
    if (!problems.isEmpty()) {
        // The dialog stays open with what the engineer typed, and says what to change.
        QMessageBox::warning(this, windowTitle(), problems.join(QLatin1Char('\n')));
        return;
    }
    QDialog::accept();
}

std::unique_ptr<CmtdInfTrwk_Unit> CUnitSetupDialog::takeUnit()
{
    return std::move(m_unit);
}
