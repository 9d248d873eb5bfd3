#pragma once

#include <QMainWindow>

class CCmtdChildFrame;
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

    // Shows form `number`, hiding the one on show; the analysis forms arrive with their own work,
    // so no number has a form yet and the page stays without one.
    void showForm(int number);
    QWidget *currentForm() const;
    int currentFormNumber() const { return m_nCurForm; }
    // Hides (or shows again) a floating form with the page, which would otherwise stay on the
    // screen as a window of its own.
    void setFormsVisible(bool visible);
    QToolBar *toolBar() const { return m_pToolBar; }
    // The area where the waves are drawn.
    void setWaveWidget(QWidget *widget);

private:
    QWidget *m_forms[kFormCount] = {};
    int m_nCurForm = -1;
    QToolBar *m_pToolBar = nullptr;
};
