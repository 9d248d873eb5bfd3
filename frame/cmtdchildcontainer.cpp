#include "cmtdchildcontainer.h"

#include "cmtdchildframe.h"

#include <QDockWidget>
#include <QToolBar>

CMdiSubViewContainer::CMdiSubViewContainer(QWidget *parent) : QMainWindow(parent)
{
    // A page inside the frame, not a window of its own.
    setWindowFlags(Qt::Widget);
}

CCmtdChildContainer::CCmtdChildContainer(CCmtdChildFrame *frame)
    : CMdiSubViewContainer(frame), m_pFrame(frame)
{}

CCmtdChildContainerAna::CCmtdChildContainerAna(CCmtdChildFrame *frame) : CCmtdChildContainer(frame)
{
    m_pToolBar = new QToolBar(this);
    m_pToolBar->setObjectName(QStringLiteral("AnaViewTabs"));
    m_pToolBar->setIconSize(QSize(16, 16));
    m_pToolBar->setMovable(false);
    addToolBar(Qt::TopToolBarArea, m_pToolBar);
}

void CCmtdChildContainerAna::setWaveWidget(QWidget *widget)
{
    setCentralWidget(widget);
}

void CCmtdChildContainerAna::showForm(int number)
{
    if (number < 0 || number >= kFormCount)
        return;
    QWidget *form = m_forms[number];
    if (m_nCurForm >= 0 && m_nCurForm != number) {
        if (QWidget *current = m_forms[m_nCurForm])
            current->hide();
        m_nCurForm = -1;
    }
    m_nCurForm = form ? number : -1;
    if (form)
        form->show();
    m_pFrame->updateActions();
}

QWidget *CCmtdChildContainerAna::currentForm() const
{
    return m_nCurForm >= 0 ? m_forms[m_nCurForm] : nullptr;
}

void CCmtdChildContainerAna::setFormsVisible(bool visible)
{
    auto *dock = qobject_cast<QDockWidget *>(currentForm());
    if (!dock || !dock->isFloating())
        return;
    dock->setVisible(visible);
}
