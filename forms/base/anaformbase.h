#pragma once

#include "anaformpanel.h"

#include <QString>
#include <QTimer>

#include <vector>

class CAnaViewBase;
class CChnMapBase;
class CCmtdChildContainerAna;
class CCmtdChildFrame;
class CDockWindow;
class QBoxLayout;
class QLabel;
class QPushButton;
class QSpinBox;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

// The base of every analysis form: a panel docked on the wave page of one recording. It owns
// the dock, the list of channels the form works on (marked in the wave, optionally the only
// ones shown), the play function that walks T1 through the range between the cursors, and the
// buttons shared by the forms. The concrete form chooses its object in `activate`, computes at
// T1 in `refresh` and draws in its views.
class CAnaFormBase : public CAnaFormPanel
{
    Q_OBJECT

public:
    // The dock areas and features of the forms: bottom; closable, movable and floatable.
    enum : int
    {
        DockBottom = 8,
        DockFeaturesAll = 7
    };

    CAnaFormBase(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container);
    ~CAnaFormBase() override;

    // Sets every visible text through the translation system.
    virtual void retranslateTexts() {}
    // Stores the second part of the dock title (when given) and titles the dock anew.
    virtual void setSubTitle(const QString *subTitle);
    bool showDock(QMainWindow *page) override;
    void hideDock() override;
    // Marks (or unmarks) the form's channels as related in the wave.
    virtual void markRelated(bool on);
    // Called at every show: a form that needs an object asks for it and may refuse to show.
    virtual bool activate();
    // Repaints the views; a concrete form computes at the cursors first and then calls this.
    void refresh() override;
    // Enables the action button and checks the mouse-mode buttons as the first view stands.
    virtual void syncButtons();
    QDockWidget *dockWidget() const override;
    void forgetChannel(const CChnMapBase *channel) override;

    // A channel's name as the forms list it: number and name, without the name column's padding.
    static QString channelName(const CChnMapBase &chn, uint32_t displayFlags);
    // The related-channels list from the form's channels.
    void fillChnTree(QTreeWidget *tree) const;
    // While a job runs on the worker, a form's object must not change: says so and gives true.
    bool refuseWhileBusy();

    int number() const { return m_nNumber; }
    CCmtdChildFrame *frame() const { return m_pFrame; }
    const std::vector<CChnMapBase *> &channels() const { return m_chns; }
    int playFrom() const { return m_nPlayFrom; }
    QSize sizeHint() const override;

    // The play, its pause and replay, "Hide Unrelated" and the mouse modes of the first view.
    void slot_timerPlay();
    void slot_btnPlay(bool on);
    void slot_btnPause(bool paused);
    void slot_btnReplay();
    void slot_btnHide(bool on);
    void slot_btnZoomWin(bool on);
    void slot_btnHandMove(bool on);
    void slot_btnClip(bool on);
    // A double click in the related-channels list shows that channel in the wave.
    void slot_tblChnsDbClicked(QTreeWidgetItem *item, int column);

protected:
    // A tool button with an icon of ":/images/" and a text; checkable where asked.
    QToolButton *makeButton(const char *icon, bool checkable = false);
    // The rate and distance boxes and the play, pause and replay buttons, added to `row`.
    void addPlayControls(QBoxLayout *row);
    // The zoom-window, hand and clip buttons, added to `row`; a diagram without a world range
    // (a phasor circle) offers the clip alone.
    void addMouseModeButtons(QBoxLayout *row, bool withZoom = true);
    // "Choose Object" and "Hide Unrelated", added to `row`; choosing calls `chooseObject`.
    void addObjectButtons(QBoxLayout *row);
    // Runs the form's choice of its object (a dialog); empty in the base.
    virtual bool chooseObject() { return false; }
    // Drops the object (its channels are gone): the form waits for a new choice.
    virtual void resetObject() { m_chns.clear(); }
    int cursorT1() const;
    int cursorT2() const;
    void setCursorT1(int sample);
    void setCursorT2(int sample);
    void retranslateShared();

    int m_nDockW = 0;
    int m_nDockH = 0;
    CCmtdChildContainerAna *m_pContainer;
    CCmtdChildFrame *m_pFrame;
    std::vector<CAnaViewBase *> m_views;
    CDockWindow *m_pDock = nullptr;
    int m_nDockAreas = DockBottom;
    QString m_strTitle;
    QString m_strSubTitle;
    int m_nDockFeatures = 0;
    std::vector<CChnMapBase *> m_chns;
    QTimer m_timerPlay;
    int m_nPlayFrom = -1;
    int m_nPlayTo = 0;

    QLabel *m_labelRate = nullptr;
    QSpinBox *m_spinRate = nullptr;
    QLabel *m_labelDistance = nullptr;
    QSpinBox *m_spinDistance = nullptr;
    QPushButton *m_btnAction = nullptr;
    QToolButton *m_btnPlay = nullptr;
    QToolButton *m_btnPause = nullptr;
    QToolButton *m_btnReplay = nullptr;
    QToolButton *m_btnChoose = nullptr;
    QToolButton *m_btnHide = nullptr;
    QToolButton *m_btnZoomWin = nullptr;
    QToolButton *m_btnHand = nullptr;
    QToolButton *m_btnClip = nullptr;

private:
    void setMouseModeOfFirstView(int mode, bool on);
    void stopPlayButtons();

    int m_nNumber;
};
