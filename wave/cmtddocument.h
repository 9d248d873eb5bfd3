#pragma once

#include "chntext.h"
#include "envelope.h"

#include <QFlags>
#include <QObject>

#include <atomic>
#include <cstdint>
#include <memory>

class CCmtd99File;
class QAction;

// What the views and forms of one recording share: the recording, the display switches, the
// mouse's zoom mode, the state of the background work and the frame's actions. The document
// frame owns it and keeps it current; the views below the frame read it and ask for changes
// through it, and the frame hears those requests by signals.
class CCmtdDocument : public QObject
{
    Q_OBJECT

public:
    // Display switches of the frame: the bits of the engine's channel texts, which are also
    // the values written into ".wvs" files.
    enum DisplayFlag : uint32_t
    {
        ShowDots = DisplayDots,
        ShowVertExtend = DisplayVertExtend,
        ShowT0Cursor = DisplayT0,
        ShowT0cCursor = DisplayT0Custom,
        HideStatus0 = DisplayHideStill,
        ValuePrimary = DisplayPrimary,
        ValueFundamental = DisplayBaseEffective, // one-cycle Fourier effective value
        ValueTrueRms = DisplayRealEffective,
        ValueAngle = DisplayAngle,
        ValueFrequency = DisplayFrequency,
        NameAhead = DisplayNameAhead,
        NameWithoutIndex = DisplayNoIndex
    };
    Q_DECLARE_FLAGS(DisplayFlags, DisplayFlag)

    // Bits of the background state, shared with the worker thread.
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
        ActEnvelope,
        ActFileGroupsSave,
        ActFileGroupsOpen,
        ActionCount
    };

    explicit CCmtdDocument(CCmtd99File &file, QObject *parent = nullptr);

    const CCmtd99File &recording() const { return m_file; }

    DisplayFlags displayFlags = ValueFundamental;
    int zoomMode = ZoomNone;

    uint32_t backgroundState() const { return m_backgroundState.load(std::memory_order_relaxed); }
    bool isLoading() const { return backgroundState() & StateLoading; }
    bool isCancelled() const { return backgroundState() & StateCancel; }
    void setBackgroundBit(BackgroundBit bit, bool on);

    // Sums the least and largest values of the analog channels up to `loaded` samples: called
    // by the worker as a load advances, and once more by the frame at its end.
    void extendEnvelopes(int loaded);
    // Sums every analog store anew (after a derived channel was filled or removed).
    void rebuildEnvelopes();
    // The summary of an analog store (by its place in the recording); to be read only while
    // no load runs. Null when none was made.
    const CSampleEnvelope *envelope(size_t analogIndex) const
    {
        return analogIndex < m_envelopeCount ? &m_envelopes[analogIndex] : nullptr;
    }

    // The frame's actions, so that the views' keys trigger the same commands as the menus.
    QAction *action(Action id) const { return m_actions[id]; }
    void setAction(Action id, QAction *action) { m_actions[id] = action; }
    // Runs an action as its menu entry would; false when it is missing or disabled.
    bool trigger(Action id) const;

    // Requests of the views, heard by the frame.
    void requestZoomMode(int mode) { Q_EMIT zoomModeRequested(mode); }
    void cursorsMoved() { Q_EMIT cursorsChanged(); }
    void actionsChanged() { Q_EMIT actionStatesChanged(); }
    void displaySwitched() { Q_EMIT displayChanged(); }

Q_SIGNALS:
    // The display switches or the colour scheme changed: the views repaint.
    void displayChanged();
    // The samples drawn reach this many points (during a load and at its end).
    void extentChanged(int points);
    void zoomModeRequested(int mode);
    void cursorsChanged();
    void actionStatesChanged();

private:
    CCmtd99File &m_file;
    std::atomic<uint32_t> m_backgroundState{0};
    QAction *m_actions[ActionCount] = {};
    std::unique_ptr<CSampleEnvelope[]> m_envelopes;
    size_t m_envelopeCount = 0;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(CCmtdDocument::DisplayFlags)
