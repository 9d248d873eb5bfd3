#pragma once

#include "anaformpanel.h"

#include <QMainWindow>

class CCmtdChildFrame;
class QDockWidget;
class QToolBar;

// A page of a document frame: a small main window, so that it can hold tool bars and dock
// areas of its own, inside the frame.
class CMdiSubViewContainer : public QMainWindow
{
    Q_OBJECT

public:
    explicit CMdiSubViewContainer(QWidget *parent = nullptr);
};

class CCmtdChildContainer : public CMdiSubViewContainer
{
    Q_OBJECT

public:
    explicit CCmtdChildContainer(CCmtdChildFrame *frame);

protected:
    CCmtdChildFrame *m_pFrame;
};

// The wave page: the waves, the tool bar of analysis actions and the docked analysis forms,
// of which at most one is on show.
class CCmtdChildContainerAna : public CCmtdChildContainer
{
    Q_OBJECT

public:
    static constexpr int kFormCount = 24;

    explicit CCmtdChildContainerAna(CCmtdChildFrame *frame);

    // The maker of the forms, installed once by the program before any frame opens.
    static void setFormFactory(AnaFormFactory factory);

    // Shows form `number` (made on first use), hiding the one on show. A form that refuses to
    // show (no object chosen) leaves the page without a form.
    void showForm(int number);
    // Shows form `number` with `channel` as its object.
    void showFormFor(int number, CChnMapBase *channel);
    CAnaFormPanel *currentForm() const;
    CAnaFormPanel *form(int number) const;
    // Every form made so far lets go of a channel that leaves the recording.
    void forgetChannel(const CChnMapBase *channel);
    int currentFormNumber() const { return m_nCurForm; }
    // Hides (or shows again) a floating form with the page, which would otherwise stay on the
    // screen as a window of its own.
    void setFormsVisible(bool visible);
    QToolBar *toolBar() const { return m_pToolBar; }
    // The area where the waves are drawn.
    void setWaveWidget(QWidget *widget);
    // The form on show follows the cursors; the others recompute when they are shown again.
    void refreshCurrentForm();
    // The user closed a form's dock.
    void slot_dockClosed(QDockWidget *dock);

private:
    CAnaFormPanel *m_forms[kFormCount] = {};
    int m_nCurForm = -1;
    QToolBar *m_pToolBar = nullptr;
};
