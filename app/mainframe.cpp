#include "mainframe.h"

#include "cmtdchildframe.h"
#include "globaloptions.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

namespace {

// The base path of a recording: the absolute path without its last extension.
QString basePathOf(const QString &path)
{
    const QFileInfo info(path);
    const QString absolute = info.absoluteFilePath();
    const int slash = absolute.lastIndexOf(QLatin1Char('/'));
    const int dot = absolute.lastIndexOf(QLatin1Char('.'));
    return dot > slash ? absolute.left(dot) : absolute;
}

// base + extension, or the upper-case variant where only that exists: recorders running on
// other systems often write ".CFG" and ".DAT".
QString siblingOf(const QString &base, const QString &extension)
{
    const QString lower = base + extension.toLower();
    if (QFileInfo::exists(lower))
        return lower;
    const QString upper = base + extension.toUpper();
    return QFileInfo::exists(upper) ? upper : lower;
}

} // namespace

static void registerImages()
{
    Q_INIT_RESOURCE(images);
}

CMainFrame::CMainFrame(QWidget *parent) : CMdiMainFrame(parent)
{
    registerImages();
    setWindowTitle(QStringLiteral("VELDRIX"));
    setWindowIcon(QIcon(QStringLiteral(":/images/veldrix.svg")));
    lastDirectory = QDir::homePath();
}

void CMainFrame::createActions()
{
    m_openAction = new QAction(QIcon(QStringLiteral(":/images/FileOpen.png")), QString(), this);
    m_openAction->setShortcut(QKeySequence::Open);
    connect(m_openAction, &QAction::triggered, this, &CMainFrame::slot_FileOpen);
    // Joining recordings, the settings path map and the options dialog come with their own
    // work; until then their entries are shown but cannot be chosen.
    m_combinAction = new QAction(this);
    m_combinAction->setEnabled(false);
    m_infMapAction = new QAction(this);
    m_infMapAction->setEnabled(false);
    m_optionsAction = new QAction(this);
    m_optionsAction->setEnabled(false);
    m_aboutAction = new QAction(this);
    connect(m_aboutAction, &QAction::triggered, this, &CMainFrame::slot_About);
    m_quitAction = new QAction(this);
    m_quitAction->setShortcut(QKeySequence::Quit);
    connect(m_quitAction, &QAction::triggered, this, &QWidget::close);
    retranslate();
}

void CMainFrame::createFileMenu()
{
    updateMenus();
}

void CMainFrame::retranslate()
{
    m_openAction->setText(tr("Open(&O)..."));
    m_combinAction->setText(tr("Combin Files(&C)..."));
    m_infMapAction->setText(tr("Set Auto-ralting Path of TRWK Settings(&M)..."));
    m_optionsAction->setText(tr("Options(&T)"));
    m_aboutAction->setText(tr("Version(&A)"));
    m_quitAction->setText(tr("Quit(&Q)"));
    if (m_fileMenu)
        m_fileMenu->setTitle(tr("File(&F)"));
}

void CMainFrame::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange && m_openAction)
        retranslate();
    CMdiMainFrame::changeEvent(event);
}

void CMainFrame::updateMenus()
{
    if (!m_openAction)
        return;
    const int open = mdiArea ? static_cast<int>(mdiArea->subWindowList().size()) : 0;
    QMenuBar *bar = menuBar();
    bar->clear();
    m_fileMenu = bar->addMenu(tr("File(&F)"));
    FileMenuAnchors anchors;
    anchors.file = m_fileMenu;
    m_fileMenu->addAction(m_openAction);
    anchors.afterOpen = m_fileMenu->addSeparator();
    anchors.afterOpen->setVisible(open >= 1);
    m_fileMenu->addAction(m_combinAction);
    m_combinAction->setVisible(open >= 2);
    anchors.combin = m_combinAction;
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(m_infMapAction);
    anchors.infMap = m_infMapAction;
    anchors.afterInfMap = m_fileMenu->addSeparator();
    m_fileMenu->addAction(m_optionsAction);
    m_fileMenu->addAction(m_aboutAction);
    m_fileMenu->addAction(m_quitAction);
    if (activeChild) {
        activeChild->buildMenus(bar, anchors);
        activeChild->updateActions();
    }
}

void CMainFrame::openFile(const QString &path)
{
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    const QString base = basePathOf(path);
    const QString cfg = siblingOf(base, QStringLiteral(".cfg"));
    if (!QFileInfo::exists(cfg)) {
        reportWarning("File is not exist: %s\n", cfg.toLocal8Bit().constData());
        return;
    }
    const QString dat = siblingOf(base, QStringLiteral(".dat"));
    if (!QFileInfo::exists(dat) && !QFileInfo::exists(siblingOf(base, QStringLiteral(".d00")))) {
        reportWarning("File is not exist: %s\n", dat.toLocal8Bit().constData());
        return;
    }
    lastDirectory = QFileInfo(cfg).absolutePath();
    if (CMdiChildFrame *open = findChild(QFileInfo(cfg).canonicalFilePath())) {
        const QList<QMdiSubWindow *> windows = mdiArea->subWindowList();
        for (QMdiSubWindow *window : windows) {
            if (window->widget() == open)
                mdiArea->setActiveSubWindow(window);
        }
        return;
    }
    createChild(cfg);
}

CMdiChildFrame *CMainFrame::createChild(const QString &path)
{
    if (!QFileInfo::exists(path))
        return nullptr;
    auto *child = new CCmtdChildFrame(this);
    addChild(child);
    if (!child->openFile(path)) {
        child->parentWidget()->close();
        return nullptr;
    }
    QWidget *window = child->parentWidget();
    window->setWindowIcon(child->windowIcon());
    window->showMaximized();
    updateMenus();
    return child;
}

void CMainFrame::slot_FileOpen()
{
    const QString filter = tr("All Supported File") + QStringLiteral(" (*.cfg *.CFG *.inf *.INF)");
    const QStringList paths = QFileDialog::getOpenFileNames(this, QString(), lastDirectory, filter);
    for (const QString &path : paths)
        openFile(path);
}

void CMainFrame::slot_About()
{
    QMessageBox::about(this, QStringLiteral("VELDRIX ") + tr("About"),
                       tr(" Multi-Platform Power-System Fault-Wave Analysis Program(%s)")
                           .replace(QStringLiteral("%s"), QStringLiteral("2.0")));
}

void CMainFrame::closeEvent(QCloseEvent *event)
{
    mdiArea->closeAllSubWindows();
    if (!mdiArea->subWindowList().isEmpty()) {
        event->ignore();
        return;
    }
    event->accept();
}
