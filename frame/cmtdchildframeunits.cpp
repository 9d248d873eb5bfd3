// The document frame's plant units by hand: add, edit, copy and delete from the "Primary
// Devices" page and from the unit selector, suggestions for recordings without units, each an
// undoable step.

#include "cmtdchildcontainercfg.h"
#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "unitedit.h"
#include "unitsetupdialog.h"
#include "unitsuggest.h"
#include "unitsuggestdialog.h"

#include <QComboBox>
#include <QMenu>
#include <QMessageBox>
#include <QStatusBar>
#include <QUndoCommand>

namespace {

// A change of the plant units, undone and redone by putting back the units as they were.
class UnitChangeCommand : public QUndoCommand
{
public:
    UnitChangeCommand(CCmtdChildFrame *frame, UnitSnapshot before, UnitSnapshot after, const QString &text)
        : m_frame(frame), m_before(std::move(before)), m_after(std::move(after))
    {
        setText(text);
    }
    void redo() override
    {
        if (m_done) // the change itself was made before the step was pushed
            m_frame->restoreUnits(m_after);
        m_done = true;
    }
    void undo() override { m_frame->restoreUnits(m_before); }

private:
    CCmtdChildFrame *m_frame;
    UnitSnapshot m_before;
    UnitSnapshot m_after;
    bool m_done = false;
};

QByteArray defaultUnitName(int kind)
{
    static const char *const kNames[] = {"", "Line", "Transformer", "Generator", "Exciter", "Group"};
    return QByteArray(kNames[qBound(0, kind, 5)]) + " 1";
}

} // namespace

void CCmtdChildFrame::connectUnitRequests()
{
    connect(m_cfgContainer, &CCmtdChildContainerCfg::unitAddRequested, this, &CCmtdChildFrame::addUnit);
    connect(m_cfgContainer, &CCmtdChildContainerCfg::unitEditRequested, this, &CCmtdChildFrame::editUnit);
    connect(m_cfgContainer, &CCmtdChildContainerCfg::unitCopyRequested, this, &CCmtdChildFrame::copyUnit);
    connect(m_cfgContainer, &CCmtdChildContainerCfg::unitDeleteRequested, this, &CCmtdChildFrame::deleteUnit);
    connect(m_cfgContainer, &CCmtdChildContainerCfg::suggestUnitsRequested, this,
            &CCmtdChildFrame::suggestUnits);
    // The unit selector of the wave page offers the same by its context menu.
    unitSelector->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(unitSelector, &QComboBox::customContextMenuRequested, this, [this](const QPoint &at) {
        const auto *unit =
            reinterpret_cast<const CmtdInfTrwk_Unit *>(unitSelector->currentData().value<quintptr>());
        QMenu menu(this);
        QMenu *add = menu.addMenu(tr("New Unit"));
        add->addAction(tr("Line..."), this, [this] { addUnit(CmtdInfTrwk_Unit::KindLine); });
        add->addAction(tr("Transformer..."), this, [this] { addUnit(CmtdInfTrwk_Unit::KindTransformer); });
        add->addAction(tr("Generator..."), this, [this] { addUnit(CmtdInfTrwk_Unit::KindPower); });
        add->addAction(tr("Exciter..."), this, [this] { addUnit(CmtdInfTrwk_Unit::KindExciter); });
        add->addAction(tr("Channel Group..."), this, [this] { addUnit(CmtdInfTrwk_Unit::KindGroup); });
        QAction *edit = menu.addAction(tr("Edit Unit..."), this, [this, unit] { editUnit(unit); });
        QAction *copy = menu.addAction(tr("Copy Unit..."), this, [this, unit] { copyUnit(unit); });
        QAction *remove = menu.addAction(tr("Delete Unit"), this, [this, unit] { deleteUnit(unit); });
        for (QAction *action : {edit, copy, remove})
            action->setEnabled(unit != nullptr);
        menu.addSeparator();
        menu.addAction(tr("Suggest Units..."), this, &CCmtdChildFrame::suggestUnits);
        menu.exec(unitSelector->mapToGlobal(at));
    });
}

const CmtdInfTrwk_Unit *CCmtdChildFrame::addUnit(int kind)
{
    std::unique_ptr<CmtdInfTrwk_Unit> unit = MakeUnit(kind);
    if (!unit)
        return nullptr;
    unit->name = UniqueUnitName(m_file, defaultUnitName(kind));
    unit->devId = m_file.maxDeviceId + 1;
    return runUnitSetup(std::move(unit), nullptr, tr("New unit"));
}

const CmtdInfTrwk_Unit *CCmtdChildFrame::editUnit(const CmtdInfTrwk_Unit *unit)
{
    if (!unit || !m_file.HasUnit(unit))
        return nullptr;
    return runUnitSetup(CloneUnit(*unit), unit, tr("Edit unit %1").arg(m_file.Text(unit->name)));
}

const CmtdInfTrwk_Unit *CCmtdChildFrame::copyUnit(const CmtdInfTrwk_Unit *unit)
{
    if (!unit || !m_file.HasUnit(unit))
        return nullptr;
    std::unique_ptr<CmtdInfTrwk_Unit> copy = CloneUnit(*unit);
    copy->name = UniqueUnitName(m_file, unit->name);
    copy->devId = m_file.maxDeviceId + 1;
    return runUnitSetup(std::move(copy), nullptr, tr("Copy unit %1").arg(m_file.Text(unit->name)));
}

bool CCmtdChildFrame::deleteUnit(const CmtdInfTrwk_Unit *unit)
{
    if (!unit || !m_file.HasUnit(unit))
        return false;
    const QString name = m_file.Text(unit->name);
    if (QMessageBox::question(this, QString(), tr("Delete the unit %1?").arg(name)) != QMessageBox::Yes)
        return false;
    UnitSnapshot before = TakeUnitSnapshot(m_file);
    m_file.RemoveUnit(const_cast<CmtdInfTrwk_Unit *>(unit));
    m_file.LinkStoresToUnits();
    commitUnitChange(std::move(before), tr("Delete unit %1").arg(name), nullptr);
    return true;
}

int CCmtdChildFrame::suggestUnits()
{
    std::vector<UnitSuggestion> suggestions = SuggestUnits(m_file);
    if (suggestions.empty()) {
        QMessageBox::information(
            this, QString(),
            tr("Every channel that a unit could use belongs to a unit already, or no bay "
               "could be recognised from the channels' names."));
        return 0;
    }
    CUnitSuggestDialog dialog(m_file, std::move(suggestions), this);
    if (dialog.exec() != QDialog::Accepted)
        return 0;
    std::vector<std::unique_ptr<CmtdInfTrwk_Unit>> accepted = dialog.takeAccepted();
    if (accepted.empty())
        return 0;
    UnitSnapshot before = TakeUnitSnapshot(m_file);
    int count = 0;
    QStringList leftOut;
    for (auto &unit : accepted) {
        // A proposal edited into a clash is left out rather than taken half right.
        const QStringList problems = CheckUnit(m_file, *unit, nullptr);
        if (!problems.isEmpty()) {
            leftOut << QStringLiteral("%1: %2").arg(m_file.Text(unit->name),
                                                    problems.join(QStringLiteral("; ")));
            continue;
        }
        InstallUnit(m_file, std::move(unit), nullptr);
        ++count;
    }
    if (count > 0)
        commitUnitChange(std::move(before), tr("Take suggested units"), nullptr);
    if (!leftOut.isEmpty())
        QMessageBox::warning(this, QString(), tr("Left out:\n%1").arg(leftOut.join(QLatin1Char('\n'))));
    statusBar()->showMessage(tr("%1 units taken").arg(count), 10000);
    return count;
}

const CmtdInfTrwk_Unit *CCmtdChildFrame::runUnitSetup(std::unique_ptr<CmtdInfTrwk_Unit> unit,
                                                      const CmtdInfTrwk_Unit *replacing,
                                                      const QString &undoText)
{
    CUnitSetupDialog dialog(m_file, std::move(unit), replacing, this);
    dialog.setObjectName(QStringLiteral("UnitSetup"));
    if (dialog.exec() != QDialog::Accepted)
        return nullptr;
    const bool wasShown = replacing && replacing == m_currentUnit;
    UnitSnapshot before = TakeUnitSnapshot(m_file);
    const CmtdInfTrwk_Unit *taken = InstallUnit(m_file, dialog.takeUnit(), replacing);
    commitUnitChange(std::move(before), undoText, wasShown ? taken : nullptr);
    return taken;
}

void CCmtdChildFrame::commitUnitChange(UnitSnapshot before, const QString &undoText,
                                       const CmtdInfTrwk_Unit *select)
{
    m_undo.push(new UnitChangeCommand(this, std::move(before), TakeUnitSnapshot(m_file), undoText));
    showUnitsChanged(select);
}

void CCmtdChildFrame::restoreUnits(const UnitSnapshot &snapshot)
{
    RestoreUnitSnapshot(m_file, snapshot);
    showUnitsChanged(nullptr);
}

void CCmtdChildFrame::showUnitsChanged(const CmtdInfTrwk_Unit *select)
{
    setModified(true);
    m_currentUnit = nullptr;
    refillUnitSelector();
    const int at = unitSelector->findData(QVariant::fromValue(reinterpret_cast<quintptr>(select)));
    unitSelector->blockSignals(true);
    unitSelector->setCurrentIndex(at >= 0 ? at : 0);
    unitSelector->blockSignals(false);
    showUnitChannels(select);
    m_cfgContainer->showRecording(m_file);
}
