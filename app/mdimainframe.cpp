#include "mdimainframe.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScreen>

CMdiMainFrame::CMdiMainFrame(QWidget *parent) : QMainWindow(parent) {}

void CMdiMainFrame::initialize()
{
    mdiArea = new QMdiArea(this);
    mdiArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdiArea->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(mdiArea);
    connect(mdiArea, &QMdiArea::subWindowActivated, this, &CMdiMainFrame::slot_childActived);
    createActions();
    createFileMenu();
}

void CMdiMainFrame::childClosed(CMdiChildFrame *child)
{
    if (activeChild == child)
        activeChild = nullptr;
    updateMenus();
}

QList<CMdiChildFrame *> CMdiMainFrame::children() const
{
    QList<CMdiChildFrame *> list;
    if (!mdiArea)
        return list;
    const QList<QMdiSubWindow *> windows = mdiArea->subWindowList();
    for (QMdiSubWindow *window : windows) {
        if (auto *child = qobject_cast<CMdiChildFrame *>(window->widget()))
            list.append(child);
    }
    return list;
}

void CMdiMainFrame::addChild(CMdiChildFrame *child)
{
    connect(child, &CMdiChildFrame::closed, this, &CMdiMainFrame::childClosed);
    connect(child, &CMdiChildFrame::menusChanged, this, [this](CMdiChildFrame *changed) {
        if (activeChild == changed)
            updateMenus();
    });
    // Queued: the asking form finishes its own step before a new window takes the focus.
    connect(
        child, &CMdiChildFrame::openRequested, this, [this](const QString &path) { openFile(path); },
        Qt::QueuedConnection);
    QMdiSubWindow *window = mdiArea->addSubWindow(child);
    window->setWindowIcon(child->windowIcon());
}

CMdiChildFrame *CMdiMainFrame::findChild(const QString &canonicalPath) const
{
    const QList<CMdiChildFrame *> list = children();
    for (CMdiChildFrame *child : list) {
        if (child->fileName() == canonicalPath)
            return child;
    }
    return nullptr;
}

void CMdiMainFrame::activateChild(CMdiChildFrame *child)
{
    const QList<QMdiSubWindow *> windows = mdiArea->subWindowList();
    for (QMdiSubWindow *window : windows) {
        if (window->widget() == child)
            mdiArea->setActiveSubWindow(window);
    }
}

void CMdiMainFrame::slot_childActived(QMdiSubWindow *window)
{
    activeChild = window ? qobject_cast<CMdiChildFrame *>(window->widget()) : nullptr;
    updateMenus();
}
