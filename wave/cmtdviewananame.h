#pragma once

#include "cursorvalue.h"
#include "scrollviewbase.h"

#include <QHash>
#include <QPair>

class CCmtdDocument;
class CCmtdViewAnaWave;
class CChnMapAnalog;
class CChnMapBase;
struct CWaveRow;
class QAction;
class QMenu;

// The row and channel under a pointer.
struct RowHit
{
    int point = 0;
    int rowIndex = -1;
    CChnMapBase *channel = nullptr;
    int channelIndex = -1;
};

// The column left of the waves: each channel's number, name and its values at T1 and T2 in
// the channel's colour, in the wave view's rows and at its vertical position. It keeps the
// values in a cache that the analysis forms read too, and carries the channel menu.
class CCmtdViewAnaName : public CScrollViewBase
{
    Q_OBJECT

public:
    // The entries of the channel menu, in their order.
    enum MenuEntry
    {
        MenuPick,
        MenuOver,
        MenuInsert,
        MenuComeback,
        MenuHide,
        MenuColour,
        MenuDot,
        MenuVertExt,
        MenuInvert,
        MenuHmChart,
        MenuApt,
        MenuValSearch,
        MenuSetAC,
        MenuSetDC,
        MenuSetSC,
        MenuDelta,
        MenuAvg,
        MenuHm,
        MenuFltHamm,
        MenuFltDiff,
        MenuFreqX0,
        MenuFreqDft,
        MenuVirDelete,
        MenuEntryCount
    };

    CCmtdViewAnaName(CCmtdDocument *document, CCmtdViewAnaWave *wave, QWidget *parent = nullptr);

    // The values of a channel at T1 and T2 from the cache, rebuilt when the channel is missing.
    QPair<ChnCursorValue, ChnCursorValue> channelValueAtCursor(CChnMapBase *channel);
    void rebuildValues();
    bool hitTest(int y, RowHit &hit) const;
    // A channel is leaving the recording: its cached values and selection go.
    void forgetChannel(const CChnMapBase *channel);
    // Scrolls the rows to `channel` and selects it (a double click in a form's channel list).
    void showChannel(CChnMapBase *channel);
    void retranslateTexts() override;
    // The menu for the channel under a document point, or null where none is offered.
    QMenu *buildMenu(QPoint docPoint);
    QAction *menuAction(MenuEntry entry) const { return m_actions[entry]; }
    const RowHit &picked() const { return m_picked; }
    const RowHit &hit() const { return m_hit; }
    // The text of one channel's line, as drawn.
    QString lineText(const CChnMapBase *channel);
    int lineHeight() const;

    void drawContents(QPainter &painter, const QRect &rect) override;
    void onRightPress(QMouseEvent *event) override;

    // The number of the single-channel harmonic chart among the analysis forms.
    static constexpr int kFormHmChart = 4;

Q_SIGNALS:
    // The engineer asked for a virtual channel of job `kind` (3 to 9) derived from `source`,
    // to stand after row `row`; the frame runs the dialog and the job.
    void virtualChannelRequested(int kind, CChnMapAnalog *source, int row);
    void virtualChannelDeleteRequested(CChnMapAnalog *channel);
    // The engineer asked for analysis form `number` on one channel (the harmonic chart).
    void formRequested(int number, CChnMapBase *channel);

private:
    void slot_ChnPick();
    void slot_ChnOver();
    void slot_ChnInsert();
    void slot_ChnComeback();
    void slot_ChnHide();
    void slot_ChnShowColorSet();
    void slot_ChnShowDot();
    void slot_ChnShowVertExt();
    void slot_ChnShowInvert();
    QString readout(const char *label, int cursor, int other, bool first) const;

    CCmtdDocument *m_doc;
    CCmtdViewAnaWave *m_wave;
    RowHit m_hit;
    RowHit m_picked;
    QHash<const CChnMapBase *, QPair<ChnCursorValue, ChnCursorValue>> m_values;
    QAction *m_actions[MenuEntryCount] = {};
    QMenu *m_virtualMenu = nullptr;
    int m_insertAt = -1;
};
