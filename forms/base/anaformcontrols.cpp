// The controls every form shares: the play through the cursor range, "Hide Unrelated", the
// object choice and the mouse modes of the first view.

#include "anaformbase.h"
#include "anaviewbase.h"
#include "cmtdchildframe.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QSpinBox>
#include <QToolButton>

#include <cstdlib>

QToolButton *CAnaFormBase::makeButton(const char *icon, bool checkable)
{
    auto *button = new QToolButton(this);
    button->setIcon(QIcon(QStringLiteral(":/images/") + QLatin1String(icon)));
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setCheckable(checkable);
    button->setAutoRaise(true);
    return button;
}

void CAnaFormBase::addPlayControls(QBoxLayout *row)
{
    m_labelRate = new QLabel(this);
    m_spinRate = new QSpinBox(this);
    m_spinRate->setObjectName(QStringLiteral("spinRate"));
    m_spinRate->setRange(1, 1000);
    m_spinRate->setSingleStep(10);
    m_spinRate->setValue(10);
    m_labelDistance = new QLabel(this);
    m_spinDistance = new QSpinBox(this);
    m_spinDistance->setObjectName(QStringLiteral("spinDistance"));
    m_spinDistance->setRange(1, 10000);
    m_spinDistance->setValue(1);
    m_btnPlay = makeButton("ctrlPlay.png", true);
    m_btnPlay->setObjectName(QStringLiteral("btnPlay"));
    m_btnPause = makeButton("ctrlPause.png", true);
    m_btnPause->setObjectName(QStringLiteral("btnPause"));
    m_btnPause->setEnabled(false);
    m_btnReplay = makeButton("ctrlReplay.png");
    m_btnReplay->setObjectName(QStringLiteral("btnReplay"));
    for (QWidget *w : {static_cast<QWidget *>(m_labelRate), static_cast<QWidget *>(m_spinRate),
                       static_cast<QWidget *>(m_labelDistance), static_cast<QWidget *>(m_spinDistance),
                       static_cast<QWidget *>(m_btnPlay), static_cast<QWidget *>(m_btnPause),
                       static_cast<QWidget *>(m_btnReplay)})
        row->addWidget(w);
    connect(m_btnPlay, &QToolButton::clicked, this, &CAnaFormBase::slot_btnPlay);
    connect(m_btnPause, &QToolButton::clicked, this, &CAnaFormBase::slot_btnPause);
    connect(m_btnReplay, &QToolButton::clicked, this, &CAnaFormBase::slot_btnReplay);
}

void CAnaFormBase::addMouseModeButtons(QBoxLayout *row, bool withZoom)
{
    if (withZoom) {
        m_btnZoomWin = makeButton("ZoomWin.png", true);
        m_btnHand = makeButton("IconHand.png", true);
        connect(m_btnZoomWin, &QToolButton::toggled, this, &CAnaFormBase::slot_btnZoomWin);
        connect(m_btnHand, &QToolButton::toggled, this, &CAnaFormBase::slot_btnHandMove);
    }
    m_btnClip = makeButton("ToolsManClip.png", true);
    m_btnClip->setObjectName(QStringLiteral("btnClip"));
    connect(m_btnClip, &QToolButton::toggled, this, &CAnaFormBase::slot_btnClip);
    for (QToolButton *b : {m_btnZoomWin, m_btnHand, m_btnClip}) {
        if (!b)
            continue;
        b->setToolButtonStyle(Qt::ToolButtonIconOnly);
        row->addWidget(b);
    }
}

void CAnaFormBase::addObjectButtons(QBoxLayout *row)
{
    m_btnChoose = makeButton("WaveShowChnPick.png");
    m_btnChoose->setObjectName(QStringLiteral("btnChoose"));
    m_btnHide = makeButton("ChnHide.png", true);
    m_btnHide->setObjectName(QStringLiteral("btnHide"));
    row->addWidget(m_btnChoose);
    row->addWidget(m_btnHide);
    connect(m_btnChoose, &QToolButton::clicked, this, [this] {
        if (!refuseWhileBusy())
            chooseObject();
    });
    connect(m_btnHide, &QToolButton::toggled, this, &CAnaFormBase::slot_btnHide);
}

void CAnaFormBase::retranslateShared()
{
    if (m_labelRate) {
        m_labelRate->setText(tr("Play Rate"));
        m_spinRate->setSuffix(tr(" ms/Point"));
        m_labelDistance->setText(tr("Sample Distance"));
        m_spinDistance->setSuffix(tr("Point"));
        m_spinDistance->setSpecialValueText(tr("Continuous"));
        m_btnPlay->setToolTip(tr("Play"));
        m_btnPause->setToolTip(tr("Pause"));
        m_btnReplay->setToolTip(tr("Replay"));
    }
    if (m_btnChoose) {
        m_btnChoose->setText(tr("Choose Object"));
        m_btnHide->setText(tr("Hide Unrelated"));
    }
    if (m_btnZoomWin) {
        m_btnZoomWin->setToolTip(tr("Zoom Window"));
        m_btnHand->setToolTip(tr("Move"));
    }
    if (m_btnClip)
        m_btnClip->setToolTip(tr("Copy an area of the diagram to the clipboard"));
}

void CAnaFormBase::stopPlayButtons()
{
    if (!m_btnPlay)
        return;
    const QSignalBlocker quietPlay(m_btnPlay);
    const QSignalBlocker quietPause(m_btnPause);
    m_btnPlay->setChecked(false);
    m_btnPause->setChecked(false);
    m_btnPause->setEnabled(false);
}

void CAnaFormBase::slot_btnPlay(bool on)
{
    if (!m_btnPlay)
        return;
    if (m_chns.empty()) {
        if (on)
            stopPlayButtons();
        return;
    }
    if (!on) {
        m_timerPlay.stop();
        stopPlayButtons();
        return;
    }
    const int t1 = cursorT1();
    const int t2 = cursorT2();
    const int distance = m_spinDistance->value();
    if (std::abs(t2 - t1) < 5 * distance) {
        // After a completed run the stored range is played again.
        if (m_nPlayFrom >= 0) {
            slot_btnReplay();
            return;
        }
        stopPlayButtons();
        QMessageBox::warning(
            this, QString(),
            tr("The Range to Play Is Too Short! Please Choose Not Less Then 5 Sampling Points!"));
        return;
    }
    m_nPlayFrom = qMin(t1, t2);
    m_nPlayTo = qMax(t1, t2);
    setCursorT2(m_nPlayTo);
    setCursorT1(m_nPlayFrom);
    m_timerPlay.start(m_spinRate->value());
    const QSignalBlocker quietPlay(m_btnPlay);
    const QSignalBlocker quietPause(m_btnPause);
    m_btnPause->setEnabled(true);
    m_btnPause->setChecked(false);
    m_btnPlay->setChecked(true);
}

void CAnaFormBase::slot_timerPlay()
{
    if (!m_btnPlay || m_btnPause->isChecked())
        return;
    const int t1 = cursorT1();
    if (t1 < m_nPlayTo) {
        setCursorT1(qMin(t1 + m_spinDistance->value() + 1, m_nPlayTo));
        m_timerPlay.start(m_spinRate->value());
        return;
    }
    // The range start stays, so that a later press of play or replay runs it again.
    stopPlayButtons();
}

void CAnaFormBase::slot_btnPause(bool paused)
{
    if (!m_chns.empty() && m_nPlayFrom >= 0 && !paused)
        m_timerPlay.start(m_spinRate->value());
}

void CAnaFormBase::slot_btnReplay()
{
    if (m_chns.empty() || m_nPlayFrom < 0)
        return;
    setCursorT1(m_nPlayFrom);
    m_nPlayFrom = -1;
    slot_btnPlay(true);
}

void CAnaFormBase::slot_btnHide(bool on)
{
    if (m_chns.empty()) {
        if (on) {
            const QSignalBlocker quiet(m_btnHide);
            m_btnHide->setChecked(false);
        }
        return;
    }
    if (on)
        m_pFrame->hideUnrelated(m_chns);
    else
        m_pFrame->showHidden();
}

void CAnaFormBase::setMouseModeOfFirstView(int mode, bool on)
{
    if (m_views.empty())
        return;
    m_views.front()->setMouseMode(on ? mode : CScrollViewBase::ModePlain);
}

void CAnaFormBase::slot_btnZoomWin(bool on)
{
    setMouseModeOfFirstView(CScrollViewBase::ModeZoomWindow, on);
}

void CAnaFormBase::slot_btnHandMove(bool on)
{
    setMouseModeOfFirstView(CScrollViewBase::ModeHand, on);
}

void CAnaFormBase::slot_btnClip(bool on)
{
    setMouseModeOfFirstView(CScrollViewBase::ModeClip, on);
}
