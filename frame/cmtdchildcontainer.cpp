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

namespace {
AnaFormFactory formFactory = nullptr;
}

void CCmtdChildContainerAna::setFormFactory(AnaFormFactory factory)
{
    formFactory = factory;
}

void CCmtdChildContainerAna::showForm(int number)
{
    if (number < 0 || number >= kFormCount)
        return;
    if (!m_forms[number] && formFactory)
        m_forms[number] = formFactory(number, m_pFrame, this);
    if (m_nCurForm >= 0 && m_nCurForm != number) {
        if (CAnaFormPanel *current = m_forms[m_nCurForm])
            current->hideDock();
        m_nCurForm = -1;
    }
    CAnaFormPanel *form = m_forms[number];
    m_nCurForm = form && form->showDock(this) ? number : -1;
    m_pFrame->updateActions();
}

void CCmtdChildContainerAna::showFormFor(int number, CChnMapBase *channel)
{
    if (number < 0 || number >= kFormCount)
        return;
    if (!m_forms[number] && formFactory)
        m_forms[number] = formFactory(number, m_pFrame, this);
    if (m_forms[number])
        m_forms[number]->offerChannel(channel);
    showForm(number);
}

CAnaFormPanel *CCmtdChildContainerAna::currentForm() const
{
    return m_nCurForm >= 0 ? m_forms[m_nCurForm] : nullptr;
}

CAnaFormPanel *CCmtdChildContainerAna::form(int number) const
{
    return number >= 0 && number < kFormCount ? m_forms[number] : nullptr;
}

void CCmtdChildContainerAna::forgetChannel(const CChnMapBase *channel)
{
    for (CAnaFormPanel *form : m_forms) {
        if (form)
            form->forgetChannel(channel);
    }
}

void CCmtdChildContainerAna::refreshCurrentForm()
{
    if (CAnaFormPanel *form = currentForm())
        form->refresh();
}

void CCmtdChildContainerAna::slot_dockClosed(QDockWidget *dock)
{
    CAnaFormPanel *form = currentForm();
    if (!form || form->dockWidget() != dock)
        return;
    m_nCurForm = -1;
    m_pFrame->updateActions();
}

void CCmtdChildContainerAna::setFormsVisible(bool visible)
{
    CAnaFormPanel *form = currentForm();
    QDockWidget *dock = form ? form->dockWidget() : nullptr;
    if (!dock || !dock->isFloating())
        return;
    dock->setVisible(visible);
}
