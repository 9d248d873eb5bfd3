// The curves of plant units in operation: power P, Q, S, U/f and a generator's load angle. The
// setup is prefilled from the unit the action belongs to, the new channels stand under the last
// of their inputs while the worker fills them, and one job runs at a time.

#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "plantcurvedlg.h"

#include <QStatusBar>

#include <algorithm>
#include <memory>

namespace {

int rowOfChannel(const CCmtdViewAnaWave &view, const CChnMapBase *chn)
{
    for (size_t r = 0; r < view.rows.size(); ++r) {
        if (view.rows[r].channels.contains(const_cast<CChnMapBase *>(chn)))
            return int(r);
    }
    return -1;
}

std::unique_ptr<CPlantCurveDlgBase> makePlantCurveDialog(int kind, CCmtd99File &file,
                                                         const CmtdInfTrwk_Unit *unit, QWidget *parent)
{
    switch (kind) {
    case PlantJobVoltsPerHertz:
        return std::make_unique<CUfCurveDlg>(file, unit, parent);
    case PlantJobPower:
        return std::make_unique<CPowerCurveDlg>(file, unit, parent);
    case PlantJobLoadAngle:
        return std::make_unique<CLoadAngleDlg>(file, unit, parent);
    default:
        return nullptr;
    }
}

// The worker's record of an accepted setup; the worker frees it, or the caller when the slot
// was taken.
void *plantJobOf(int kind, const CPlantCurveDlgBase &dialog)
{
    switch (kind) {
    case PlantJobVoltsPerHertz: {
        const auto &uf = static_cast<const CUfCurveDlg &>(dialog);
        return new UfCurveJob{uf.params(), dialog.made().front()};
    }
    case PlantJobPower: {
        const auto &power = static_cast<const CPowerCurveDlg &>(dialog);
        return new PowerCurveJob{power.params(), power.channels()};
    }
    default: {
        const auto &angle = static_cast<const CLoadAngleDlg &>(dialog);
        return new LoadAngleCurveJob{angle.params(), dialog.made().front()};
    }
    }
}

void freePlantJob(int kind, void *job)
{
    if (kind == PlantJobVoltsPerHertz)
        delete static_cast<UfCurveJob *>(job);
    else if (kind == PlantJobPower)
        delete static_cast<PowerCurveJob *>(job);
    else
        delete static_cast<LoadAngleCurveJob *>(job);
}

} // namespace

bool CCmtdChildFrame::startPlantCurve(int kind, const CmtdInfTrwk_Unit *unit)
{
    if (isBackgroundBusy() || m_thread.pendingKind() != CCmtdThread::KindNone) {
        statusBar()->showMessage(tr("A job is running: ask for the curves again when it has ended."), 10000);
        return false;
    }
    std::unique_ptr<CPlantCurveDlgBase> dialog = makePlantCurveDialog(kind, m_file, unit, this);
    if (!dialog || dialog->exec() != QDialog::Accepted || dialog->made().empty())
        return false;
    // Under the last input's row, in the order made; each scaled by its own peak.
    int row = -1;
    for (const CChnMapAnalog *input : dialog->inputs())
        row = std::max(row, rowOfChannel(*m_waveView, input));
    for (CChnMapAnalog *chn : dialog->made()) {
        chn->flags = (chn->flags | CChnMapBase::FlagVertExtend) & ~uint32_t(CChnMapBase::FlagRelated);
        m_waveView->addChannelToView(chn, row, true);
        if (row >= 0)
            ++row;
    }
    m_nameView->rebuildValues();
    m_nameView->update();
    void *job = plantJobOf(kind, *dialog);
    if (m_thread.pendingKind() != CCmtdThread::KindNone || !submitJob(kind, job)) {
        freePlantJob(kind, job);
        statusBar()->showMessage(
            tr("A job is running: the new curves stay empty; ask for them again when it has ended."), 10000);
        return false;
    }
    return true;
}

const CmtdInfTrwk_Unit *CCmtdChildFrame::unitForCurves(int kind) const
{
    if (m_currentUnit && m_file.HasUnit(m_currentUnit) && m_currentUnit->kind == kind)
        return m_currentUnit;
    if (kind == CmtdInfTrwk_Unit::KindTransformer && !m_file.transformerUnits.empty())
        return m_file.transformerUnits.front().get();
    if (kind == CmtdInfTrwk_Unit::KindPower && !m_file.powerUnits.empty())
        return m_file.powerUnits.front().get();
    return nullptr;
}

void CCmtdChildFrame::slot_WaveShowAnaPqs()
{
    // Any unit chosen in the selector fills the setup; "[All Device]" leaves it empty.
    const CmtdInfTrwk_Unit *unit = m_currentUnit && m_file.HasUnit(m_currentUnit) ? m_currentUnit : nullptr;
    startPlantCurve(PlantJobPower, unit);
}

void CCmtdChildFrame::slot_UntAnaTrmPqs()
{
    startPlantCurve(PlantJobPower, unitForCurves(CmtdInfTrwk_Unit::KindTransformer));
}

void CCmtdChildFrame::slot_UntAnaTrmUf()
{
    startPlantCurve(PlantJobVoltsPerHertz, unitForCurves(CmtdInfTrwk_Unit::KindTransformer));
}

void CCmtdChildFrame::slot_UntAnaPwrPqs()
{
    startPlantCurve(PlantJobPower, unitForCurves(CmtdInfTrwk_Unit::KindPower));
}

void CCmtdChildFrame::slot_UntAnaPwrUf()
{
    startPlantCurve(PlantJobVoltsPerHertz, unitForCurves(CmtdInfTrwk_Unit::KindPower));
}

void CCmtdChildFrame::slot_UntAnaPwrAng()
{
    startPlantCurve(PlantJobLoadAngle, unitForCurves(CmtdInfTrwk_Unit::KindPower));
}
