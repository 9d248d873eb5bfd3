#pragma once

#include "cmtd99file.h"
#include "cmtdthread.h"
#include "mdimainframe.h"

#include <QList>

#include <atomic>
#include <cstdint>

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
    // Bits of `backgroundState`.
    enum BackgroundBit : uint32_t
    {
        StateClosing = 1,
        StateCancel = 2,
        StateBusy = 4,
        StateLoading = 8
    };
    enum ZoomMode
    {
        ZoomNone = 0,
        ZoomHorzFree = 4096,
        ZoomVertDrag = 8192
    };

    // Every action of the frame, in the order in which they are built.
    enum Action
    {
        ActFileSave,
        ActFileSaveAs,
        ActFileCut,
        ActFileInfExp,
        ActFileInfImp,
        ActFilePntSel,
        ActFilePrint,
        ActValPri,
        ActValRms,
        ActValHm1,
        ActValAng,
        ActChnPick,
        ActChnReSort,
        ActChnShowAll,
        ActChnHideS0,
        ActShowT0,
        ActT0cSet,
        ActT0cShow,
        ActT0cDel,
        ActSaveStatus,
        ActLoadStatus,
        ActGrpOver,
        ActToolClip,
        ActToolMark,
        ActToolChnGrp,
        ActToolExp,
        ActToolLineTst,
        ActAnaVec,
        ActAnaSeq,
        ActAnaRX,
        ActAnaHm,
        ActAnaPqs,
        ActAnaBusDiff,
        ActAnaStaEvn,
        ActCoordinateXY,
        ActLineSingle,
        ActLineDouble,
        ActLineComplex,
        ActTrmPqs,
        ActTrmUf,
        ActTrmDiff,
        ActTrmDiffCw,
        ActTrmDiff0,
        ActTrmComplex,
        ActPwrPqs,
        ActPwrUf,
        ActPwrAng,
        ActPwrLossExci,
        ActPwrLossStep,
        ActPwrPqG,
        ActPwrDiff,
        ActPwrDiffV,
        ActPwrDiffH,
        ActPwrComplex,
        ActPTGDiff,
        ActColorShift,
        ActNameAhead,
        ActDotMode,
        ActZoomHorzOut,
        ActZoomHorzIn,
        ActZoomHorzFree,
        ActZoomHorzCompress,
        ActZoomHorzExtend,
        ActZoomVertScale,
        ActZoomVertExtend,
        ActZoomHorzReset,
        ActZoomVertReset,
        ActServerStop,
        ActionCount
    };

    explicit CCmtdChildFrame(CMdiMainFrame *mainFrame);
    ~CCmtdChildFrame() override;

    bool openFile(const QString &path) override;
    void buildMenus(QMenuBar *bar, const FileMenuAnchors &anchors) override;
    void updateActions() override;

    const CCmtd99File &recording() const { return m_file; }
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

    bool isCancelled() const { return m_backgroundState.load(std::memory_order_relaxed) & StateCancel; }
    uint32_t backgroundState() const { return m_backgroundState.load(std::memory_order_relaxed); }
    // Stores a job in the worker's slot; a request while the slot is full is dropped.
    bool submitJob(int kind, void *argument = nullptr);

    uint32_t displayFlags = 0x200000;
    int32_t zoomMode = ZoomNone;

    CCmtdViewAnaWave *waveView() const { return m_waveView; }
    CCmtdViewAnaName *nameView() const { return m_nameView; }
    // Sets the cursor read-outs from the wave view's T1 and T2.
    void updateCursorTexts();
    // Enters or leaves a zoom mode of the mouse (0, 4096 free horizontal, 8192 vertical).
    void setZoomMode(int mode);
    void setModified(bool modified);

Q_SIGNALS:
    // The display flags or the colour scheme changed: the views repaint.
    void displayChanged();
    // The samples drawn reach this many points (during a load and at its end).
    void extentChanged(int points);

protected:
    void closeEvent(QCloseEvent *event) override;
    void customEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void createActions();
    void createToolBar();
    void retranslate();
    void progressEvent(const CCmtdEventProgress &event);
    void finishJob();
    void showSpan();
    bool saveAs(const QString &path);
    void setBackgroundBit(uint32_t bit, bool on);
    QString absoluteTimeText(const char *label, int sample) const;
    void toggleFlag(uint32_t flag);
    void setMapFlag(uint32_t frameFlag, uint32_t mapFlag, bool analogOnly);

    void slot_PaneTabViewSwitch(int page);
    void slot_CmbWaveUntSelChanged(int index);
    void slot_FileSaveAs();
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

    QAction *m_actions[ActionCount] = {};
    QComboBox *unitSelector = nullptr;
    QToolBar *m_toolBar = nullptr;
    QTabBar *paneTabs = nullptr;
    QLabel *labelT1 = nullptr;
    QLabel *labelT2 = nullptr;
    QLabel *labelTd = nullptr;
    QProgressBar *m_progressBar = nullptr;
    QAction *m_progressAction = nullptr;
    CCmtdChildContainerAna *m_anaContainer = nullptr;
    CCmtdChildContainerCfg *m_cfgContainer = nullptr;
    CCmtdViewAnaWave *m_waveView = nullptr;
    CCmtdViewAnaName *m_nameView = nullptr;
    int m_currentPage = -1;
    QString m_spanText;
    std::atomic<uint32_t> m_backgroundState{0};
    // The worker before the recording: members go in reverse order, the recording first.
    CCmtdThread m_thread;
    CCmtd99File m_file;
};
