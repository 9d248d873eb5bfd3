#include "mdichildframe.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>

CMdiChildFrame::CMdiChildFrame(QWidget *parent) : QMainWindow(parent)
{
    setAttribute(Qt::WA_DeleteOnClose);
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QSize desktop = screen->availableSize();
        setMinimumSize(desktop.width() / 4, desktop.height() / 4);
    }
}

void CMdiChildFrame::closeEvent(QCloseEvent *event)
{
    event->accept();
    Q_EMIT closed(this);
}
