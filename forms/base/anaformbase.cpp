#include "anaformbase.h"
#include "channelcombo.h"

#include "anaviewbase.h"
#include "chnmap.h"
#include "chntext.h"
#include "cmtdchildcontainer.h"
#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "dockwindow.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>

CAnaFormBase::CAnaFormBase(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *container)
    : m_pContainer(container), m_pFrame(frame), m_nNumber(number)
{
    // Each tick is one step of T1 and restarts the timer only after the step was drawn, so that
    // a slow form lowers the rate instead of piling up steps.
    m_timerPlay.setSingleShot(true);
    connect(&m_timerPlay, &QTimer::timeout, this, &CAnaFormBase::slot_timerPlay);
}

CAnaFormBase::~CAnaFormBase() = default;

QSize CAnaFormBase::sizeHint() const
{
    const QSize base = CAnaFormPanel::sizeHint();
    return QSize(m_nDockW > 0 ? m_nDockW : base.width(), m_nDockH > 0 ? m_nDockH : base.height());
}

void CAnaFormBase::setSubTitle(const QString *subTitle)
{
    if (subTitle)
        m_strSubTitle = *subTitle;
    if (!m_pDock)
        return;
    m_pDock->setWindowTitle(m_strSubTitle.isEmpty() ? m_strTitle
                                                    : m_strTitle + QStringLiteral(" - ") + m_strSubTitle);
}

bool CAnaFormBase::showDock(QMainWindow *page)
{
    if (!m_pDock) {
        m_pDock = new CDockWindow(m_strTitle, page);
        connect(m_pDock, &CDockWindow::dockClosed, m_pContainer,
                [container = m_pContainer](CDockWindow *dock) { container->slot_dockClosed(dock); });
        m_pDock->setFeatures(QDockWidget::DockWidgetFeatures(m_nDockFeatures));
        m_pDock->setAllowedAreas(Qt::DockWidgetAreas(m_nDockAreas));
        m_pDock->setWidget(this);
        page->addDockWidget(Qt::DockWidgetArea(m_nDockAreas), m_pDock);
        // Hidden until the form has its object, so that a refused choice leaves no empty panel.
        m_pDock->hide();
        setSubTitle(nullptr);
    }
    const bool shown = activate();
    m_pDock->setVisible(shown);
    return shown;
}

void CAnaFormBase::hideDock()
{
    if (!m_pDock)
        return;
    // A play must not walk the cursors of a hidden form.
    m_timerPlay.stop();
    stopPlayButtons();
    markRelated(false);
    m_pDock->hide();
}

QDockWidget *CAnaFormBase::dockWidget() const
{
    return m_pDock;
}

void CAnaFormBase::forgetChannel(const CChnMapBase *channel)
{
    if (std::find(m_chns.begin(), m_chns.end(), channel) == m_chns.end())
        return;
    m_timerPlay.stop();
    stopPlayButtons();
    markRelated(false);
    resetObject();
    refresh();
}

void CAnaFormBase::markRelated(bool on)
{
    for (CChnMapBase *chn : m_chns) {
        if (!chn)
            continue;
        chn->flags = on ? (chn->flags | CChnMapBase::FlagRelated) : (chn->flags & ~CChnMapBase::FlagRelated);
    }
    m_pFrame->nameView()->update();
}

bool CAnaFormBase::activate()
{
    markRelated(true);
    return true;
}

void CAnaFormBase::refresh()
{
    for (CAnaViewBase *view : m_views)
        view->update();
}

void CAnaFormBase::syncButtons()
{
    if (m_views.empty())
        return;
    if (m_btnAction)
        m_btnAction->setEnabled(!m_pFrame->isBackgroundBusy());
    const int mode = m_views.front()->mouseMode();
    const struct
    {
        QToolButton *button;
        int mode;
    } buttons[] = {{m_btnZoomWin, CScrollViewBase::ModeZoomWindow},
                   {m_btnHand, CScrollViewBase::ModeHand},
                   {m_btnClip, CScrollViewBase::ModeClip}};
    for (const auto &b : buttons) {
        if (!b.button)
            continue;
        const QSignalBlocker quiet(b.button);
        b.button->setChecked(mode == b.mode);
    }
}

QString CAnaFormBase::channelName(const CChnMapBase &chn, uint32_t displayFlags)
{
    return QString::fromLocal8Bit(DisplayName(chn, displayFlags)).trimmed();
}

void CAnaFormBase::fillChnTree(QTreeWidget *tree) const
{
    tree->clear();
    for (CChnMapBase *chn : m_chns) {
        if (!chn)
            continue;
        auto *item = new QTreeWidgetItem(tree);
        item->setText(0, channelName(*chn, 0));
        item->setForeground(0, QColor::fromRgba(chn->colour));
        item->setData(0, Qt::UserRole, QVariant::fromValue(quintptr(chn)));
        const int chnClass =
            chn->chnType == CChnMapBase::TypeAnalog ? static_cast<CChnMapAnalog *>(chn)->Class() : 0;
        item->setIcon(0, ChannelClassIcon(chnClass));
    }
}

void CAnaFormBase::slot_tblChnsDbClicked(QTreeWidgetItem *item, int)
{
    if (!item || m_chns.empty())
        return;
    auto *chn = reinterpret_cast<CChnMapBase *>(item->data(0, Qt::UserRole).value<quintptr>());
    if (std::find(m_chns.begin(), m_chns.end(), chn) != m_chns.end())
        m_pFrame->nameView()->showChannel(chn);
}

bool CAnaFormBase::refuseWhileBusy()
{
    if (!m_pFrame->isBackgroundBusy())
        return false;
    QMessageBox::warning(
        this, QString(),
        tr("A Background Service is Running Now, Please Retry this Operation for a moment!"));
    return true;
}

int CAnaFormBase::cursorT1() const
{
    return m_pFrame->waveView()->cursorT1;
}

int CAnaFormBase::cursorT2() const
{
    return m_pFrame->waveView()->cursorT2;
}

void CAnaFormBase::setCursorT1(int sample)
{
    m_pFrame->waveView()->setCursorT1(sample);
}

void CAnaFormBase::setCursorT2(int sample)
{
    m_pFrame->waveView()->setCursorT2(sample);
}
