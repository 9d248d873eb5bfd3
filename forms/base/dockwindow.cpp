#include "dockwindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>

CDockWindow::CDockWindow(const QString &title, QWidget *parent) : QDockWidget(title, parent)
{
    setObjectName(QStringLiteral("AnaFormDock"));
}

void CDockWindow::closeEvent(QCloseEvent *event)
{
    QDockWidget::closeEvent(event);
    Q_EMIT dockClosed(this);
}

void CDockWindow::showEvent(QShowEvent *event)
{
    QDockWidget::showEvent(event);
    if (!m_bFirstShow)
        return;
    m_bFirstShow = false;
    // A docked form is placed by the page's layout; one that floats gets at most three quarters
    // of the desktop and stands in its middle.
    const QScreen *screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
    if (!isFloating() || !screen)
        return;
    const QRect desk = screen->availableGeometry();
    const QSize frame = frameGeometry().size();
    const int w = qMin(frame.width(), desk.width() * 3 / 4);
    const int h = qMin(frame.height(), desk.height() * 3 / 4);
    resize(w, h);
    move(desk.left() + (desk.width() - w) / 2, desk.top() + (desk.height() - h) / 2);
}
