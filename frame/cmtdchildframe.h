#pragma once

#include "channeledit.h"
#include "cmtd99file.h"
#include "cmtddocument.h"
#include "cmtdthread.h"
#include "exactcopy.h"
#include "mdichildframe.h"
#include "unitedit.h"

#include <QList>
#include <QUndoStack>

#include <atomic>
#include <cstdint>
#include <utility>
#include <vector>

class CCmtdChildContainerAna;
class CCmtdChildContainerCfg;
class CCmtdViewAnaName;
class CCmtdViewAnaWave;
class QAction;
class QComboBox;
class QLabel;
class QMenu;
class QProgressBar;
class QTabBar;
class QToolBar;

// The window of one opened recording inside the main frame. It owns the recording and its
// worker, its two pages (waves and configuration), the tool bar with the cursor read-outs and
// every action that works on a recording. Views and forms reach the recording and the display
// flags through it.
class CCmtdChildFrame : public CMdiChildFrame
{
    Q_OBJECT

public:
    // An edit typed on the configuration page: taken (undoably) or refused with the reason in
    // the status bar. `applyChannelField` is the step the undo stack repeats.
    bool editChannelField(bool analog, int position, ChannelField field, const QString &text);
    void applyChannelField(bool analog, int position, ChannelField field, const QString &text);
    QUndoStack &undoStack() { return m_undo; }
    // Edits in force of fields that only the ".cfg" keeps (undo counts back).
    void countCfgOnlyEdit(ChannelField field, int step);
    int cfgOnlyEdits() const { return m_cfgOnlyEdits; }
    // Writes the extension file beside the recording; false (with a message box) when the disk
    // refused it, and the frame stays modified.
    bool saveFile(const QString &path);
    // Settings files (".tcfg"): the private sections of settings alone, written or read into
    // the recording (a read fills only what is still open).
    bool exportSettings(const QString &path);
    bool importSettings(const QString &path);
    // Channel-group files (".tcgp"): the Channels_Group sections alone; opened like settings.
    bool saveChannelGroups(const QString &path);
    // "[All Device]" and one entry per plant unit; the chosen entry stays where it still
    // exists. After a load, and after the units changed (a settings import, the setup).
    void refillUnitSelector();
    QComboBox *unitChooser() const { return unitSelector; }
    // Plant units by hand: each opens the unit setup (or asks, for a delete) and is one step
    // of the undo stack. They give the unit taken, or null when the engineer cancelled.
    const CmtdInfTrwk_Unit *addUnit(int kind);
    const CmtdInfTrwk_Unit *editUnit(const CmtdInfTrwk_Unit *unit);
    const CmtdInfTrwk_Unit *copyUnit(const CmtdInfTrwk_Unit *unit);
    bool deleteUnit(const CmtdInfTrwk_Unit *unit);
    // Proposes units from the channels; the engineer takes, edits or leaves each.
    int suggestUnits();
    // Puts the recording's units back as a snapshot held them (the undo step of the above).
    void restoreUnits(const UnitSnapshot &snapshot);
    // Save As to a chosen name: refuses the recording's own files, asks before a save that
    // would change channels' values, and says why a write failed.
    bool saveRecordingAs(const QString &chosen);
    using Action = CCmtdDocument::Action;
    using enum CCmtdDocument::Action;
    using enum CCmtdDocument::BackgroundBit;
    using enum CCmtdDocument::ZoomMode;

    explicit CCmtdChildFrame(QWidget *parent = nullptr);
    ~CCmtdChildFrame() override;

    bool openFile(const QString &path) override;
    void buildMenus(QMenuBar *bar, const FileMenuAnchors &anchors) override;
    void updateActions() override;

    const CCmtd99File &recording() const { return m_file; }
    // What the views and forms share with the frame.
    CCmtdDocument *document() { return &m_document; }
    const CCmtdDocument *document() const { return &m_document; }
    // The recording as the worker fills it; only the worker's job may write through this.
    CCmtd99File &recordingForJob() { return m_file; }
    CCmtdChildContainerCfg *cfgContainer() const { return m_cfgContainer; }
    CCmtdChildContainerAna *anaContainer() const { return m_anaContainer; }
    QAction *action(Action id) const { return m_actions[id]; }
    QToolBar *frameToolBar() const { return m_toolBar; }
    QProgressBar *progress() const { return m_progressBar; }
    CCmtdThread &worker() { return m_thread; }

    // The recording's station and device, then " - ", then the file name.
    QString titleText() const;
    QString currentFileName() const;
    // The time span after the load, "TT[...](n Points)".
    const QString &spanText() const { return m_spanText; }
    int currentPage() const { return m_currentPage; }

    bool isCancelled() const { return m_document.isCancelled(); }
    uint32_t backgroundState() const { return m_document.backgroundState(); }
    // Stores a job in the worker's slot; a request while the slot is full is dropped.
    bool submitJob(int kind, void *argument = nullptr);

    CCmtdViewAnaWave *waveView() const { return m_waveView; }
    CCmtdViewAnaName *nameView() const { return m_nameView; }
    // Sets the cursor read-outs from the wave view's T1 and T2.
    void updateCursorTexts();
    // A job of the worker is running: forms refuse to change their objects meanwhile.
    bool isBackgroundBusy() const { return (backgroundState() & StateBusy) != 0; }
    // "Hide Unrelated" of a form: the wave shows only `related` until `showHidden` puts every
    // row back as it was.
    void hideUnrelated(const std::vector<CChnMapBase *> &related);
    void showHidden();
    // A virtual channel of job `kind` (3 to 9) from `source`: the dialog, the new channel
    // under row `row`, and the job that fills it when the worker is free.
    void deriveVirtualChannel(int kind, CChnMapAnalog *source, int row);
    // Asks, then takes a virtual channel out of the view, the forms and the recording.
    bool deleteVirtualChannel(CChnMapAnalog *channel);
    // The curves of a plant unit in operation (jobs 10 to 12): the setup prefilled from `unit`
    // (none: empty), the new channels under the last of their inputs, and the job that fills
    // them when the worker is free. False when nothing was started.
    bool startPlantCurve(int kind, const CmtdInfTrwk_Unit *unit);
    // Virtual channels that the interface thread put into the recording whole (a script's
    // results): shown after the last analog row, and the scale groups, summaries and name
    // column taken anew. A channel that has its row already keeps it.
    void showAddedChannels(const std::vector<CChnMapAnalog *> &channels);
    // Switches to the wave page and shows analysis form `number`.
    void showAnaForm(int number);
    // Enters or leaves a zoom mode of the mouse (0, 4096 free horizontal, 8192 vertical).
    void setZoomMode(int mode);
    void setModified(bool modified);

Q_SIGNALS:
    // A job of the worker has ended and written its last value (kind as submitted).
    void jobEnded(int kind);

protected:
    void closeEvent(QCloseEvent *event) override;
    void customEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void createActions();
    void createToolBar();
    void retranslate();
    void progressEvent(const CCmtdEventProgress &event);
    void finishJob(int kind);
    void showSpan();
    void showNotices();

    bool saveAs(const QString &path);
    // Before a save of the extension file alone: asks when edits in force would be lost with it.
    bool confirmCfgOnlyEdits();
    void connectUnitRequests();
    // Runs the unit setup on `unit`; installs the result in place of `replacing`.
    const CmtdInfTrwk_Unit *runUnitSetup(std::unique_ptr<CmtdInfTrwk_Unit> unit,
                                         const CmtdInfTrwk_Unit *replacing, const QString &undoText);
    // One undo step from `before` to the units as they are now; shows `select` in the wave.
    void commitUnitChange(UnitSnapshot before, const QString &undoText, const CmtdInfTrwk_Unit *select);
    void showUnitChannels(const CmtdInfTrwk_Unit *unit);
    // The recording is modified; the selector, the waves and the pages show the units anew,
    // with `select` chosen (or "[All Device]").
    void showUnitsChanged(const CmtdInfTrwk_Unit *select);
    bool saveExactCopy(const QString &path, const ExactCopyFormat &format);
    enum class SaveKind
    {
        ExactCopy,
        AsIs,
        Cancel
    };
    SaveKind askSaveKind(const std::vector<ChangedChannel> &changed);
    QString absoluteTimeText(const char *label, int sample) const;
    void toggleFlag(CCmtdDocument::DisplayFlag flag);
    void setMapFlag(CCmtdDocument::DisplayFlag frameFlag, uint32_t mapFlag, bool analogOnly);

    void slot_PaneTabViewSwitch(int page);
    void slot_CmbWaveUntSelChanged(int index);
    void slot_FileSave();
    void slot_FileSaveAs();
    void slot_FileInfExp();
    void slot_FileInfImp();
    void slot_FileGroupsSave();
    void slot_FileGroupsOpen();
    void slot_FileCut();
    void slot_WaveShowValPri();
    void slot_WaveShowValRms();
    void slot_WaveShowValHm1();
    void slot_WaveShowValAng();
    void slot_WaveShowChnShowAll();
    void slot_WaveShowChnHideS0();
    void slot_BtnShowColor();
    void slot_BtnShowNameAhead();
    void slot_BtnShowDot();
    void slot_BtnZoomVertExtend();
    void slot_BtnServerStop();
    void slot_WaveShowGrpOver();
    void slot_WaveShowChnPick();
    void slot_WaveShowSaveStatus();
    void slot_WaveShowLoadStatus();
    QByteArray lastStatusPath() const;
    void slot_WaveShowChnReSort();
    void slot_WaveShowT0();
    void slot_WaveShowT0cSet();
    void slot_WaveShowT0cShow();
    void slot_WaveShowT0cDel();
    void slot_ToolManClip();
    void slot_BtnZoomHorzScaleOut();
    void slot_BtnZoomHorzScaleIn();
    void slot_BtnZoomHorzFreeIn();
    void slot_BtnZoomHorzCompressAll();
    void slot_BtnZoomHorzExtendRange();
    void slot_BtnZoomVertScaleInOut();
    void slot_BtnZoomHorzReset();
    void slot_BtnZoomVertReset();
    void slot_WaveShowEnvelope();
    void slot_UntAnaLineDouble();
    void slot_WaveShowAnaVec();
    void slot_WaveShowAnaSeq();
    void slot_WaveShowAnaStaEvn();
    void slot_CoordinateXY();
    void slot_WaveShowAnaRX();
    void slot_WaveShowAnaHm();
    // The curves of plant units: the chosen unit of the selector, or the first of the kind.
    const CmtdInfTrwk_Unit *unitForCurves(int kind) const;
    void slot_WaveShowAnaPqs();
    void slot_UntAnaTrmPqs();
    void slot_UntAnaTrmUf();
    void slot_UntAnaPwrPqs();
    void slot_UntAnaPwrUf();
    void slot_UntAnaPwrAng();
    void slot_ToolExp();

    QAction *m_actions[ActionCount] = {};
    QComboBox *unitSelector = nullptr;
    QToolBar *m_toolBar = nullptr;
    QTabBar *paneTabs = nullptr;
    QLabel *labelT1 = nullptr;
    QLabel *labelT2 = nullptr;
    QLabel *labelTd = nullptr;
    QLabel *m_spanLabel = nullptr;
    QLabel *m_noticeLabel = nullptr;
    QUndoStack m_undo;
    int m_cfgOnlyEdits = 0;
    const CmtdInfTrwk_Unit *m_currentUnit = nullptr; // the plant unit the wave is filtered to
    // The hidden flag of every channel before "Hide Unrelated"; empty while nothing is stored.
    std::vector<std::pair<CChnMapBase *, bool>> m_hiddenBefore;
    QProgressBar *m_progressBar = nullptr;
    QAction *m_progressAction = nullptr;
    CCmtdChildContainerAna *m_anaContainer = nullptr;
    CCmtdChildContainerCfg *m_cfgContainer = nullptr;
    CCmtdViewAnaWave *m_waveView = nullptr;
    CCmtdViewAnaName *m_nameView = nullptr;
    int m_currentPage = -1;
    QString m_spanText;
    // The worker before the recording: members go in reverse order, the recording first.
    CCmtdThread m_thread;
    CCmtd99File m_file;
    CCmtdDocument m_document{m_file};
};
