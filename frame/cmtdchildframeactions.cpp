// The actions of a document frame: their table, texts, menus, enabled and checked states,
// and the display toggles.

#include "cmtdchildcontainer.h"
#include "cmtdchildcontainercfg.h"
#include "cmtdchildframe.h"
#include "cmtdtext.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "dialogbuttons.h"
#include "faultfindwizard.h"
#include "globaloptions.h"
#include "globalsettings.h"
#include "menutext.h"
#include "reportwarning.h"

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QTabBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

namespace {

struct ActionDef
{
    const char *text;
    const char *image;
    bool checkable;
};

// Text, image and checkable state of every action, in the order of CCmtdChildFrame::Action.
const ActionDef kActions[CCmtdChildFrame::ActionCount] = {
    {QT_TR_NOOP("Save(&S)..."), "FileSave", false},
    {QT_TR_NOOP("Save As(&V)..."), "FileSaveAs", false},
    {QT_TR_NOOP("Cut File(&E)..."), "FileCut", false},
    {QT_TR_NOOP("Export TRWK Settings(&X)..."), "FileInfExp", false},
    {QT_TR_NOOP("Import TRWK Settings(&I)..."), "FileInfImp", false},
    {QT_TR_NOOP("Choose Print Segment(&G)"), "FilePntSel", false},
    {QT_TR_NOOP("Print Wave(&P)..."), "FilePrint", false},
    {QT_TR_NOOP("Primary Value(&P)"), "WaveShowValPri", true},
    {QT_TR_NOOP("Real Effective Value(&R)"), "WaveShowValRms", true},
    {QT_TR_NOOP("Base Effective Value(&V)"), "WaveShowValHm1", true},
    {QT_TR_NOOP("Phase Angle(&A)"), "WaveShowValAng", true},
    {QT_TR_NOOP("Choose Visible Channels(&K)..."), "WaveShowChnPick", false},
    {QT_TR_NOOP("Reset Channels Order(&O)"), "WaveShowChnReSort", false},
    {QT_TR_NOOP("Show All Hidded Channels(&S)"), "WaveShowChnShowAll", false},
    {QT_TR_NOOP("Hide Status Channels that NOT SHIFT(&H)"), "WaveShowChnHideS0", true},
    {QT_TR_NOOP("Show T0 Cursor(&T0)"), "WaveShowChnShowT0", true},
    {QT_TR_NOOP("Set Current T1 Cursor At T0'(T&0')"), "WaveShowChnShowT0", false},
    {QT_TR_NOOP("Show T0' Cursor(&T0')"), "WaveShowChnShowT0", true},
    {QT_TR_NOOP("Delete T0' Cursor(&D)"), "WaveShowChnShowT0", false},
    {QT_TR_NOOP("Save Status of Wave View(&U)"), "FileSave", false},
    {QT_TR_NOOP("Load Status of Wave View(&L)"), "FileOpen", false},
    {QT_TR_NOOP("Group Overlap(&G)"), "ChnOver", false},
    {QT_TR_NOOP("Cut to Clipboard(&C)"), "ToolsManClip", true},
    {QT_TR_NOOP("Add & Manage Marks(&M)"), "ToolsManMark", true},
    {QT_TR_NOOP("Channels Group setup(&G)"), "ChnGrpSetup", false},
    {QT_TR_NOOP("Expressions Editor(&E)"), "ToolsExp", true},
    {QT_TR_NOOP("Line Parameters Testing(&T)"), "ToolLineTst", false},
    {QT_TR_NOOP("Vector(&V)"), "WaveAnaVec", true},
    {QT_TR_NOOP("Sequence(&S)"), "WaveAnaSeq", true},
    {QT_TR_NOOP("Impedance(&R)"), "WaveAnaRX", true},
    {QT_TR_NOOP("Harmonious(&H)"), "WaveAnaHm", true},
    {QT_TR_NOOP("Power Curve(&P)"), "WaveAnaPqs", false},
    {QT_TR_NOOP("Busbar Diff.(&D)"), "WaveAnaBusDiff", true},
    {QT_TR_NOOP("Status Event List(&E)"), "ChnStatusEvent", true},
    {QT_TR_NOOP("X-Y Custom Coordinate(&X)"), "CoordinateXY", true},
    {QT_TR_NOOP("Short Circuit Location with One-end(&S)"), "UntAnaLineSingle", false},
    {QT_TR_NOOP("Short Circuit Location with Daul-ends(&D)"), "UntAnaLineDouble", false},
    {QT_TR_NOOP("Auto Analysis(&C)"), "UntAnaLineComplex", false},
    {QT_TR_NOOP("Power Curve of Trans.(&P)"), "UntAnaTrmPqs", false},
    {QT_TR_NOOP("U/f Curve of Trans.(&U)"), "UntAnaTrmUf", false},
    {QT_TR_NOOP("Longitudinal Diff-cur. of Trans.(&D)"), "UntAnaTrmDiff", true},
    {QT_TR_NOOP("Partial Side Diff-cur. of AutoTrans.(&W)"), "UntAnaTrmDiffCw", true},
    {QT_TR_NOOP("Zero Sequence Diff-cur. of AutoTrans.(&0)"), "UntAnaTrmDiff0", true},
    {QT_TR_NOOP("Auto Analysis(&C)"), "UntAnaTrmComplex", true},
    {QT_TR_NOOP("Power Curve of Generator(&P)"), "UntAnaPwrPqs", false},
    {QT_TR_NOOP("U/f Curve of Generator(&U)"), "UntAnaPwrUf", false},
    {QT_TR_NOOP("Power-Angle Curve of Generator(&A)"), "UntAnaPwrAng", false},
    {QT_TR_NOOP("Exci-Lossing of Generator(&E)"), "UntAnaPwrLossExci", true},
    {QT_TR_NOOP("Step-Lossing of Generator(&S)"), "UntAnaPwrLossStep", true},
    {QT_TR_NOOP("P/Q Relation of Generator(&G)"), "UntAnaPwrPqG", true},
    {QT_TR_NOOP("Complete Longitudinal Diff-cur. of Generator(&D)"), "UntAnaPwrDiff", true},
    {QT_TR_NOOP("Incomplete Longitudinal Diff-cur. of Generator(&V)"), "UntAnaPwrDiffV", true},
    {QT_TR_NOOP("Split-Phase Transverse Diff-cur. of Generator(&H)"), "UntAnaPwrDiffH", true},
    {QT_TR_NOOP("Auto Analysis(&C)"), "UntAnaPwrComplex", true},
    {QT_TR_NOOP("Complete Longitudinal Diff-cur. of G&T(&T)"), "UntAnaPTGDiff", true},
    {QT_TR_NOOP("Color Shift"), "BtnShowColor", false},
    {QT_TR_NOOP("Ahead Channel Name"), "BtnShowNameAhead", true},
    {QT_TR_NOOP("Dot Mode"), "BtnShowDot", true},
    {QT_TR_NOOP("Horz Zoom-Out with fixed Scale"), "BtnZoomHorzScaleOut", false},
    {QT_TR_NOOP("Horz Zoom-In with fixed Scale"), "BtnZoomHorzScaleIn", false},
    {QT_TR_NOOP("Custom Horz Zoom"), "BtnZoomHorzFreeIn", true},
    {QT_TR_NOOP("Horz Compress"), "BtnZoomHorzCompressAll", false},
    {QT_TR_NOOP("Horz Extend"), "BtnZoomHorzExtendRange", false},
    {QT_TR_NOOP("Channel Vert Zoom with fixed Scale"), "BtnZoomVertScaleInOut", true},
    {QT_TR_NOOP("Channel Vert Extend"), "BtnZoomVertExtend", true},
    {QT_TR_NOOP("Horz Zoom Reset"), "BtnZoomHorzReset", false},
    {QT_TR_NOOP("Vert Zoom Reset"), "BtnZoomVertReset", false},
    {QT_TR_NOOP("Cancel Background Service"), "BtnStop", false},
    {QT_TR_NOOP("Envelope Drawing"), "BtnEnvelope", true},
    {QT_TR_NOOP("Save Channel Groups..."), "FileInfExp", false},
    {QT_TR_NOOP("Open Channel Groups..."), "FileInfImp", false},
};

} // namespace

void CCmtdChildFrame::createActions()
{
    for (int i = 0; i < ActionCount; ++i) {
        const ActionDef &def = kActions[i];
        auto *action = new QAction(QIcon(QStringLiteral(":/images/%1.png").arg(QLatin1String(def.image))),
                                   QString(), this);
        action->setCheckable(def.checkable);
        m_actions[i] = action;
        m_document.setAction(Action(i), action);
    }
    // The actions that work now; the others stay disabled until their features are built.
    const struct
    {
        Action id;
        void (CCmtdChildFrame::*slot)();
    } working[] = {
        {ActFileSave, &CCmtdChildFrame::slot_FileSave},
        {ActFileSaveAs, &CCmtdChildFrame::slot_FileSaveAs},
        {ActFileInfExp, &CCmtdChildFrame::slot_FileInfExp},
        {ActFileInfImp, &CCmtdChildFrame::slot_FileInfImp},
        {ActFileGroupsSave, &CCmtdChildFrame::slot_FileGroupsSave},
        {ActFileGroupsOpen, &CCmtdChildFrame::slot_FileGroupsOpen},
        {ActFileCut, &CCmtdChildFrame::slot_FileCut},
        {ActValPri, &CCmtdChildFrame::slot_WaveShowValPri},
        {ActValRms, &CCmtdChildFrame::slot_WaveShowValRms},
        {ActValHm1, &CCmtdChildFrame::slot_WaveShowValHm1},
        {ActValAng, &CCmtdChildFrame::slot_WaveShowValAng},
        {ActChnShowAll, &CCmtdChildFrame::slot_WaveShowChnShowAll},
        {ActChnHideS0, &CCmtdChildFrame::slot_WaveShowChnHideS0},
        {ActColorShift, &CCmtdChildFrame::slot_BtnShowColor},
        {ActNameAhead, &CCmtdChildFrame::slot_BtnShowNameAhead},
        {ActDotMode, &CCmtdChildFrame::slot_BtnShowDot},
        {ActZoomVertExtend, &CCmtdChildFrame::slot_BtnZoomVertExtend},
        {ActServerStop, &CCmtdChildFrame::slot_BtnServerStop},
        {ActGrpOver, &CCmtdChildFrame::slot_WaveShowGrpOver},
        {ActChnPick, &CCmtdChildFrame::slot_WaveShowChnPick},
        {ActSaveStatus, &CCmtdChildFrame::slot_WaveShowSaveStatus},
        {ActLoadStatus, &CCmtdChildFrame::slot_WaveShowLoadStatus},
        {ActChnReSort, &CCmtdChildFrame::slot_WaveShowChnReSort},
        {ActShowT0, &CCmtdChildFrame::slot_WaveShowT0},
        {ActT0cSet, &CCmtdChildFrame::slot_WaveShowT0cSet},
        {ActT0cShow, &CCmtdChildFrame::slot_WaveShowT0cShow},
        {ActT0cDel, &CCmtdChildFrame::slot_WaveShowT0cDel},
        {ActToolClip, &CCmtdChildFrame::slot_ToolManClip},
        {ActZoomHorzOut, &CCmtdChildFrame::slot_BtnZoomHorzScaleOut},
        {ActZoomHorzIn, &CCmtdChildFrame::slot_BtnZoomHorzScaleIn},
        {ActZoomHorzFree, &CCmtdChildFrame::slot_BtnZoomHorzFreeIn},
        {ActZoomHorzCompress, &CCmtdChildFrame::slot_BtnZoomHorzCompressAll},
        {ActZoomHorzExtend, &CCmtdChildFrame::slot_BtnZoomHorzExtendRange},
        {ActZoomVertScale, &CCmtdChildFrame::slot_BtnZoomVertScaleInOut},
        {ActZoomHorzReset, &CCmtdChildFrame::slot_BtnZoomHorzReset},
        {ActZoomVertReset, &CCmtdChildFrame::slot_BtnZoomVertReset},
        {ActEnvelope, &CCmtdChildFrame::slot_WaveShowEnvelope},
        {ActAnaVec, &CCmtdChildFrame::slot_WaveShowAnaVec},
        {ActLineDouble, &CCmtdChildFrame::slot_UntAnaLineDouble},
        {ActAnaSeq, &CCmtdChildFrame::slot_WaveShowAnaSeq},
        {ActAnaStaEvn, &CCmtdChildFrame::slot_WaveShowAnaStaEvn},
        {ActCoordinateXY, &CCmtdChildFrame::slot_CoordinateXY},
        {ActAnaRX, &CCmtdChildFrame::slot_WaveShowAnaRX},
        {ActAnaHm, &CCmtdChildFrame::slot_WaveShowAnaHm},
        {ActAnaPqs, &CCmtdChildFrame::slot_WaveShowAnaPqs},
        {ActTrmPqs, &CCmtdChildFrame::slot_UntAnaTrmPqs},
        {ActTrmUf, &CCmtdChildFrame::slot_UntAnaTrmUf},
        {ActPwrPqs, &CCmtdChildFrame::slot_UntAnaPwrPqs},
        {ActPwrUf, &CCmtdChildFrame::slot_UntAnaPwrUf},
        {ActPwrAng, &CCmtdChildFrame::slot_UntAnaPwrAng},
        {ActToolExp, &CCmtdChildFrame::slot_ToolExp},
    };
    for (const auto &w : working) {
        m_actions[w.id]->setProperty("works", true);
        connect(m_actions[w.id], &QAction::triggered, this, w.slot);
    }
    m_actions[ActFileSaveAs]->setShortcut(QKeySequence::SaveAs);
    m_actions[ActEnvelope]->setChecked(QSettings(QStringLiteral("TRWK"), QStringLiteral("VELDRIX"))
                                           .value(QStringLiteral("envelopeDrawing"))
                                           .toBool());
}

void CCmtdChildFrame::retranslate()
{
    for (int i = 0; i < ActionCount; ++i)
        m_actions[i]->setText(MenuText(tr(kActions[i].text)));
    paneTabs->setTabText(0, tr("Wave"));
    paneTabs->setTabText(1, tr("Config"));
    if (unitSelector->count() > 0)
        unitSelector->setItemText(0, tr("[All Device]"));
    // The wave page's tool bar is filled once the page exists.
    QToolBar *bar = m_anaContainer->toolBar();
    if (bar->actions().isEmpty()) {
        const std::initializer_list<std::initializer_list<Action>> groups = {
            {ActValPri, ActValRms, ActValHm1, ActValAng},
            {ActChnPick, ActChnReSort, ActChnShowAll, ActChnHideS0, ActShowT0},
            {ActColorShift, ActNameAhead, ActDotMode},
            {ActZoomHorzOut, ActZoomHorzIn, ActZoomHorzFree, ActZoomHorzCompress, ActZoomHorzExtend,
             ActZoomHorzReset},
            {ActZoomVertScale, ActZoomVertExtend, ActZoomVertReset},
            {ActAnaVec, ActAnaSeq, ActAnaHm, ActAnaRX, ActAnaStaEvn, ActCoordinateXY},
            {ActToolClip},
        };
        for (const auto &group : groups) {
            if (!bar->actions().isEmpty())
                bar->addSeparator();
            for (Action id : group)
                bar->addAction(m_actions[id]);
        }
    }
}

void CCmtdChildFrame::buildMenus(QMenuBar *bar, const FileMenuAnchors &anchors)
{
    const bool data = m_file.loadedPoints >= 5;
    QMenu *file = anchors.file;
    file->insertAction(anchors.afterOpen, m_actions[ActFileSave]);
    file->insertAction(anchors.afterOpen, m_actions[ActFileSaveAs]);
    if (data)
        file->insertAction(anchors.combin, m_actions[ActFileCut]);
    file->insertAction(anchors.infMap, m_actions[ActFileInfExp]);
    file->insertAction(anchors.infMap, m_actions[ActFileInfImp]);
    file->insertAction(anchors.infMap, m_actions[ActFileGroupsSave]);
    file->insertAction(anchors.infMap, m_actions[ActFileGroupsOpen]);
    if (data) {
        file->insertSeparator(anchors.afterInfMap);
        file->insertAction(anchors.afterInfMap, m_actions[ActFilePntSel]);
        file->insertAction(anchors.afterInfMap, m_actions[ActFilePrint]);
    }
    if (!data)
        return;

    auto addGroups = [this](QMenu *menu, std::initializer_list<std::initializer_list<Action>> groups) {
        bool first = true;
        for (const auto &group : groups) {
            if (!first)
                menu->addSeparator();
            first = false;
            for (Action id : group)
                menu->addAction(m_actions[id]);
        }
    };
    addGroups(bar->addMenu(tr("View(&V)")),
              {{ActValPri, ActValRms, ActValHm1, ActValAng},
               {ActChnPick, ActChnReSort, ActChnShowAll, ActChnHideS0, ActShowT0},
               {ActT0cSet, ActT0cShow, ActT0cDel},
               {ActSaveStatus, ActLoadStatus},
               {ActGrpOver, ActEnvelope}});
    addGroups(bar->addMenu(tr("Tools(&S)")),
              {{ActToolClip, ActToolMark, ActToolChnGrp}, {ActToolExp}, {ActToolLineTst}});
    QMenu *analysis = bar->addMenu(tr("Multi-Channels Analysis(&A)"));
    addGroups(analysis, {{ActAnaVec, ActAnaSeq, ActAnaHm, ActAnaRX}, {ActAnaPqs, ActAnaBusDiff}});
    if (!m_file.statusChannels.empty()) {
        analysis->addSeparator();
        analysis->addAction(m_actions[ActAnaStaEvn]);
    }
    analysis->addSeparator();
    analysis->addAction(m_actions[ActCoordinateXY]);
    // The line, transformer and generator menus follow the plant units of the extension file.
    if (!m_file.lineUnits.empty()) {
        QMenu *line = bar->addMenu(tr("Line Analysis(&L)"));
        line->addAction(m_actions[ActLineDouble]);
        if (globalOptions.anaUseIoFlag)
            line->addAction(m_actions[ActLineComplex]);
    }
    if (!m_file.transformerUnits.empty()) {
        addGroups(bar->addMenu(tr("Trans. Analysis(&T)")),
                  {{ActTrmPqs, ActTrmUf}, {ActTrmDiff, ActTrmDiffCw, ActTrmDiff0}});
    }
    if (!m_file.powerUnits.empty()) {
        addGroups(bar->addMenu(tr("Generator Analysis(&P)")), {{ActPwrPqs, ActPwrUf, ActPwrAng},
                                                               {ActPwrLossExci, ActPwrLossStep, ActPwrPqG},
                                                               {ActPwrDiff, ActPwrDiffV, ActPwrDiffH}});
    }
    if (!m_file.transformerUnits.empty() && !m_file.powerUnits.empty())
        bar->addMenu(tr("G&T Analysis(&G)"))->addAction(m_actions[ActPTGDiff]);
}

void CCmtdChildFrame::updateActions()
{
    const bool data = m_file.loadedPoints >= 5;
    for (int i = 0; i < ActionCount; ++i) {
        QAction *action = m_actions[i];
        action->setEnabled(action->property("works").toBool() && (data || i == ActFileSaveAs));
    }
    m_actions[ActFileSave]->setEnabled(m_modified);
    m_actions[ActValPri]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ValuePrimary));
    m_actions[ActValHm1]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ValueFundamental));
    m_actions[ActValRms]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ValueTrueRms));
    m_actions[ActValAng]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ValueAngle));
    m_actions[ActChnHideS0]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::HideStatus0));
    m_actions[ActShowT0]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ShowT0Cursor));
    m_actions[ActT0cShow]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ShowT0cCursor));
    m_actions[ActNameAhead]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::NameAhead));
    m_actions[ActDotMode]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ShowDots));
    m_actions[ActZoomVertExtend]->setChecked(m_document.displayFlags.testFlag(CCmtdDocument::ShowVertExtend));
    m_actions[ActZoomHorzFree]->setChecked(m_document.zoomMode == ZoomHorzFree);
    m_actions[ActToolClip]->setChecked(m_waveView->clipMode());
    const bool customT0 = m_file.customT0 >= 0 && m_file.customT0 < m_file.loadedPoints;
    m_actions[ActT0cShow]->setEnabled(data && customT0);
    m_actions[ActT0cDel]->setEnabled(data && customT0);
    m_actions[ActZoomVertScale]->setChecked(m_document.zoomMode == ZoomVertDrag);
    const int form = m_anaContainer->currentFormNumber();
    const Action formActions[] = {ActAnaVec,     ActAnaSeq,    ActAnaHm,       ActAnaRX,
                                  ActAnaBusDiff, ActAnaStaEvn, ActCoordinateXY};
    const int formNumbers[] = {7, 8, 9, 10, 11, 12, 13};
    for (size_t i = 0; i < std::size(formActions); ++i)
        m_actions[formActions[i]]->setChecked(form == formNumbers[i]);
    m_actions[ActServerStop]->setEnabled(m_thread.pendingKind() != CCmtdThread::KindNone &&
                                         !(backgroundState() & StateClosing));
}

void CCmtdChildFrame::toggleFlag(CCmtdDocument::DisplayFlag flag)
{
    m_document.displayFlags ^= flag;
    updateActions();
    Q_EMIT m_document.displayChanged();
}

void CCmtdChildFrame::slot_WaveShowValPri()
{
    toggleFlag(CCmtdDocument::ValuePrimary);
}

void CCmtdChildFrame::slot_WaveShowValRms()
{
    // The true and the fundamental's effective value exclude each other.
    if (!(m_document.displayFlags.testFlag(CCmtdDocument::ValueTrueRms)))
        m_document.displayFlags.setFlag(CCmtdDocument::ValueFundamental, false);
    toggleFlag(CCmtdDocument::ValueTrueRms);
}

void CCmtdChildFrame::slot_WaveShowValHm1()
{
    if (!(m_document.displayFlags.testFlag(CCmtdDocument::ValueFundamental)))
        m_document.displayFlags.setFlag(CCmtdDocument::ValueTrueRms, false);
    toggleFlag(CCmtdDocument::ValueFundamental);
}

void CCmtdChildFrame::slot_WaveShowValAng()
{
    toggleFlag(CCmtdDocument::ValueAngle);
}

void CCmtdChildFrame::slot_BtnShowNameAhead()
{
    toggleFlag(CCmtdDocument::NameAhead);
}

void CCmtdChildFrame::setMapFlag(CCmtdDocument::DisplayFlag frameFlag, uint32_t mapFlag, bool analogOnly)
{
    // Each store takes the inverse of the frame's old bit, then the bit flips.
    const bool on = !m_document.displayFlags.testFlag(frameFlag);
    for (const auto &map : m_file.analogMaps)
        map->flags = on ? (map->flags | mapFlag) : (map->flags & ~mapFlag);
    if (!analogOnly) {
        for (const auto &map : m_file.statusMaps)
            map->flags = on ? (map->flags | mapFlag) : (map->flags & ~mapFlag);
    }
    toggleFlag(frameFlag);
}

void CCmtdChildFrame::slot_BtnShowDot()
{
    setMapFlag(CCmtdDocument::ShowDots, CChnMapBase::FlagDots, false);
}

void CCmtdChildFrame::slot_BtnZoomVertExtend()
{
    setMapFlag(CCmtdDocument::ShowVertExtend, CChnMapBase::FlagVertExtend, true);
}

void CCmtdChildFrame::slot_BtnShowColor()
{
    colorScheme = static_cast<int16_t>((colorScheme + 1) % 3);
    Q_EMIT m_document.displayChanged();
}

void CCmtdChildFrame::slot_WaveShowChnShowAll()
{
    for (const auto &map : m_file.analogMaps)
        map->flags &= ~static_cast<uint32_t>(CChnMapBase::FlagHidden);
    for (const auto &map : m_file.statusMaps)
        map->flags &= ~static_cast<uint32_t>(CChnMapBase::FlagHidden);
    m_document.displayFlags.setFlag(CCmtdDocument::HideStatus0, false);
    updateActions();
    Q_EMIT m_document.displayChanged();
}

void CCmtdChildFrame::slot_WaveShowChnHideS0()
{
    slot_PaneTabViewSwitch(0);
    const bool hide = !(m_document.displayFlags.testFlag(CCmtdDocument::HideStatus0));
    for (const auto &map : m_file.statusMaps) {
        if (map->flags & CChnMapBase::FlagShifts)
            continue;
        map->flags = hide ? (map->flags | CChnMapBase::FlagHidden) : (map->flags & ~CChnMapBase::FlagHidden);
    }
    m_document.displayFlags ^= CCmtdDocument::HideStatus0;
    updateActions();
    Q_EMIT m_document.displayChanged();
}

void CCmtdChildFrame::slot_WaveShowGrpOver()
{
    slot_PaneTabViewSwitch(0);
    m_waveView->groupOverlap();
}

void CCmtdChildFrame::slot_WaveShowT0()
{
    slot_PaneTabViewSwitch(0);
    toggleFlag(CCmtdDocument::ShowT0Cursor);
    if (m_document.displayFlags.testFlag(CCmtdDocument::ShowT0Cursor))
        m_waveView->showPoint(m_file.triggerIndex);
}

void CCmtdChildFrame::slot_WaveShowT0cSet()
{
    slot_PaneTabViewSwitch(0);
    if (!m_file.SetCustomT0(m_waveView->cursorT1))
        return;
    m_document.displayFlags.setFlag(CCmtdDocument::ShowT0cCursor);
    setModified(true);
    Q_EMIT m_document.displayChanged();
}

void CCmtdChildFrame::slot_WaveShowT0cShow()
{
    if (m_file.customT0 < 0 || m_file.customT0 >= m_file.loadedPoints)
        return;
    slot_PaneTabViewSwitch(0);
    toggleFlag(CCmtdDocument::ShowT0cCursor);
    if (m_document.displayFlags.testFlag(CCmtdDocument::ShowT0cCursor))
        m_waveView->showPoint(m_file.customT0);
}

void CCmtdChildFrame::slot_WaveShowT0cDel()
{
    m_file.SetCustomT0(-1);
    m_document.displayFlags.setFlag(CCmtdDocument::ShowT0cCursor, false);
    setModified(true);
    Q_EMIT m_document.displayChanged();
}

void CCmtdChildFrame::slot_ToolManClip()
{
    slot_PaneTabViewSwitch(0);
    m_waveView->setClipMode(!m_waveView->clipMode());
    updateActions();
}

void CCmtdChildFrame::slot_BtnZoomHorzScaleOut()
{
    m_waveView->setZoomFactor(0.5f);
}

void CCmtdChildFrame::slot_BtnZoomHorzScaleIn()
{
    m_waveView->setZoomFactor(2.0f);
}

void CCmtdChildFrame::slot_BtnZoomHorzFreeIn()
{
    setZoomMode(m_document.zoomMode == ZoomHorzFree ? ZoomNone : ZoomHorzFree);
}

void CCmtdChildFrame::slot_BtnZoomHorzCompressAll()
{
    m_waveView->setHorzScale(-1.0f);
}

void CCmtdChildFrame::slot_BtnZoomHorzExtendRange()
{
    m_waveView->zoomRange(-1, -1);
}

void CCmtdChildFrame::slot_BtnZoomVertScaleInOut()
{
    setZoomMode(m_document.zoomMode == ZoomVertDrag ? ZoomNone : ZoomVertDrag);
}

void CCmtdChildFrame::slot_BtnZoomHorzReset()
{
    m_waveView->setHorzScale(1.0f);
}

void CCmtdChildFrame::slot_BtnZoomVertReset()
{
    for (const auto &map : m_file.analogMaps)
        map->vScale = 1.0f;
    m_waveView->layoutRows(true);
}

void CCmtdChildFrame::slot_WaveShowEnvelope()
{
    // A preference of the engineer rather than of the recording: kept with the recent files.
    const bool on = m_actions[ActEnvelope]->isChecked();
    QSettings(QStringLiteral("TRWK"), QStringLiteral("VELDRIX"))
        .setValue(QStringLiteral("envelopeDrawing"), on);
    m_waveView->setEnvelopeMode(on);
}

void CCmtdChildFrame::slot_WaveShowChnPick()
{
    slot_PaneTabViewSwitch(0);
    QDialog dialog(this);
    dialog.setWindowTitle(tr("Choose Visible Channels(&K)...").remove(QLatin1String("(&K)...")));
    auto *list = new QListWidget(&dialog);
    std::vector<CChnMapBase *> maps;
    for (const auto &map : m_file.analogMaps)
        maps.push_back(map.get());
    for (const auto &map : m_file.statusMaps)
        maps.push_back(map.get());
    for (CChnMapBase *map : maps) {
        const QString prefix =
            map->chnType == CChnMapBase::TypeAnalog ? QStringLiteral("A") : QStringLiteral("D");
        auto *item = new QListWidgetItem(
            prefix + QString::number(map->Index()) + QStringLiteral("  ") + m_file.Text(map->Name()), list);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(map->flags & CChnMapBase::FlagHidden ? Qt::Unchecked : Qt::Checked);
    }
    QDialogButtonBox *buttons = OkCancelButtons(&dialog);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(list);
    layout->addWidget(buttons);
    dialog.resize(420, 520);
    if (dialog.exec() != QDialog::Accepted)
        return;
    for (size_t i = 0; i < maps.size(); ++i) {
        const bool shown = list->item(static_cast<int>(i))->checkState() == Qt::Checked;
        maps[i]->flags =
            shown ? (maps[i]->flags & ~CChnMapBase::FlagHidden) : (maps[i]->flags | CChnMapBase::FlagHidden);
    }
    m_waveView->layoutRows(true);
}

void CCmtdChildFrame::slot_WaveShowChnReSort()
{
    slot_PaneTabViewSwitch(0);
    m_waveView->buildRows(true);
}

QByteArray CCmtdChildFrame::lastStatusPath() const
{
    return CmtdBasePath(m_fileName.toLocal8Bit().constData()) + "_last.wvs";
}

void CCmtdChildFrame::slot_WaveShowSaveStatus()
{
    slot_PaneTabViewSwitch(0);
    const QString start = QFileInfo(m_fileName).path();
    const QString path = PathWithExtension(
        QFileDialog::getSaveFileName(this, QString(), start, tr("Wave View Status File(*.wvs)")), {"wvs"});
    if (path == QLatin1String(".wvs"))
        return;
    if (!m_waveView->saveStatus(path.toLocal8Bit().constData()))
        reportWarning("%s", tr("Failed to write %1").arg(path).toLocal8Bit().constData());
}

void CCmtdChildFrame::slot_WaveShowLoadStatus()
{
    slot_PaneTabViewSwitch(0);
    const QString start = QFileInfo(m_fileName).path();
    const QString path =
        QFileDialog::getOpenFileName(this, QString(), start, tr("Wave View Status File(*.wvs)"));
    if (path.isEmpty())
        return;
    if (!m_waveView->loadStatus(path.toLocal8Bit().constData()))
        reportWarning("%s", tr("'%1' does not belong to this recording.")
                                .arg(QFileInfo(path).fileName())
                                .toLocal8Bit()
                                .constData());
}

void CCmtdChildFrame::showAnaForm(int number)
{
    slot_PaneTabViewSwitch(0);
    m_anaContainer->showForm(number);
}

void CCmtdChildFrame::slot_FileCut()
{
    showAnaForm(1);
}

void CCmtdChildFrame::slot_WaveShowAnaVec()
{
    showAnaForm(7);
}

void CCmtdChildFrame::slot_WaveShowAnaSeq()
{
    showAnaForm(8);
}

void CCmtdChildFrame::slot_WaveShowAnaStaEvn()
{
    showAnaForm(12);
}

void CCmtdChildFrame::slot_CoordinateXY()
{
    showAnaForm(13);
}

void CCmtdChildFrame::slot_WaveShowAnaRX()
{
    showAnaForm(10);
}

void CCmtdChildFrame::slot_WaveShowAnaHm()
{
    showAnaForm(9);
}

void CCmtdChildFrame::slot_ToolExp()
{
    showAnaForm(3);
}

void CCmtdChildFrame::hideUnrelated(const std::vector<CChnMapBase *> &related)
{
    auto store = [this](const auto &maps) {
        for (const auto &map : maps)
            m_hiddenBefore.emplace_back(map.get(), (map->flags & CChnMapBase::FlagHidden) != 0);
    };
    // A second press while rows are hidden keeps the state from before the first.
    if (m_hiddenBefore.empty()) {
        store(m_file.analogMaps);
        store(m_file.statusMaps);
    }
    for (const auto &[map, hidden] : m_hiddenBefore) {
        const bool keep = std::find(related.begin(), related.end(), map) != related.end();
        map->flags = keep ? (map->flags & ~CChnMapBase::FlagHidden) : (map->flags | CChnMapBase::FlagHidden);
    }
    m_waveView->layoutRows(true);
    m_nameView->update();
}

void CCmtdChildFrame::showHidden()
{
    for (const auto &[map, hidden] : m_hiddenBefore)
        map->flags =
            hidden ? (map->flags | CChnMapBase::FlagHidden) : (map->flags & ~CChnMapBase::FlagHidden);
    m_hiddenBefore.clear();
    m_waveView->layoutRows(true);
    m_nameView->update();
}

void CCmtdChildFrame::slot_UntAnaLineDouble()
{
    // Any two open recordings with samples may be the ends; this one is End M.
    QList<CCmtdChildFrame *> recordings;
    for (CCmtdChildFrame *frame : window()->findChildren<CCmtdChildFrame *>()) {
        if (frame->recording().loadedPoints >= 5 && !(frame->backgroundState() & StateLoading))
            recordings << frame;
    }
    if (!recordings.contains(this))
        return;
    CFaultFind2Wizard wizard(recordings, this, this);
    wizard.exec();
}
