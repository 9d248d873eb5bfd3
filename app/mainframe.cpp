#include "mainframe.h"

#include "anaforms.h"
#include "filecombindlg.h"
#include "fileinfpathmapdlg.h"

#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "globaloptions.h"
#include "optionsdialog.h"
#include "reportwarning.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QTabBar>
#include <QToolBar>

static void registerImages()
{
    Q_INIT_RESOURCE(images);
}

CMainFrame::CMainFrame(QWidget *parent) : CMdiMainFrame(parent)
{
    registerImages();
    InstallAnaForms();
    setWindowTitle(QStringLiteral("VELDRIX"));
    setWindowIcon(QIcon(QStringLiteral(":/images/veldrix.svg")));
    setAcceptDrops(true);
    lastDirectory = QDir::homePath();
}

void CMainFrame::createActions()
{
    m_openAction = new QAction(QIcon(QStringLiteral(":/images/FileOpen.png")), QString(), this);
    m_openAction->setShortcut(QKeySequence::Open);
    connect(m_openAction, &QAction::triggered, this, &CMainFrame::slot_FileOpen);
    m_combinAction = new QAction(this);
    connect(m_combinAction, &QAction::triggered, this, &CMainFrame::slot_FileCombin);
    m_infMapAction = new QAction(this);
    connect(m_infMapAction, &QAction::triggered, this, [this] {
        CFileInfPathMapDlg dialog(this);
        dialog.exec();
    });
    m_optionsAction = new QAction(this);
    m_optionsAction->setEnabled(false);
    m_aboutAction = new QAction(this);
    connect(m_aboutAction, &QAction::triggered, this, &CMainFrame::slot_About);
    m_quitAction = new QAction(this);
    m_quitAction->setShortcut(QKeySequence::Quit);
    connect(m_quitAction, &QAction::triggered, this, &QWidget::close);
    m_optionsAction->setEnabled(true);
    connect(m_optionsAction, &QAction::triggered, this, &CMainFrame::slot_Options);
    for (QAction *&recent : m_recentActions) {
        recent = new QAction(this);
        connect(recent, &QAction::triggered, this, &CMainFrame::slot_FileRecentOpen);
    }

    m_tabsBar = addToolBar(QString());
    m_tabsBar->setObjectName(QStringLiteral("Children Tabs"));
    m_tabsBar->setMovable(false);
    m_childTabs = new QTabBar(m_tabsBar);
    m_childTabs->setDocumentMode(true);
    m_childTabs->setExpanding(false);
    m_childTabs->setDrawBase(false);
    m_tabsBar->addWidget(m_childTabs);
    m_tabsBar->hide();
    connect(m_childTabs, &QTabBar::currentChanged, this, &CMainFrame::slot_childTabChanged);
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
    m_tabsBar->setWindowTitle(tr("Children Tabs"));
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
    for (QAction *recent : m_recentActions)
        m_fileMenu->addAction(recent);
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(m_optionsAction);
    m_fileMenu->addAction(m_aboutAction);
    m_fileMenu->addAction(m_quitAction);
    updateRecentFiles();
    updateTabs();
    if (activeChild) {
        activeChild->buildMenus(bar, anchors);
        activeChild->updateActions();
    }
}

QStringList CMainFrame::recentFiles() const
{
    QSettings settings(QStringLiteral("TRWK"), QStringLiteral("VELDRIX"));
    return settings.value(QStringLiteral("recentFileList")).toStringList();
}

void CMainFrame::addRecentFile(const QString &path)
{
    QSettings settings(QStringLiteral("TRWK"), QStringLiteral("VELDRIX"));
    QStringList files = settings.value(QStringLiteral("recentFileList")).toStringList();
    files.removeAll(path);
    files.prepend(path);
    while (files.size() > kRecentFiles)
        files.removeLast();
    settings.setValue(QStringLiteral("recentFileList"), files);
    updateRecentFiles();
}

void CMainFrame::updateRecentFiles()
{
    const QStringList files = recentFiles();
    for (int i = 0; i < kRecentFiles; ++i) {
        QAction *action = m_recentActions[i];
        if (i < files.size()) {
            action->setText(QStringLiteral("&%1 %2").arg(i + 1).arg(QFileInfo(files[i]).fileName()));
            action->setData(files[i]);
            action->setStatusTip(files[i]);
            action->setVisible(true);
        } else {
            action->setVisible(false);
        }
    }
}

void CMainFrame::slot_FileRecentOpen()
{
    if (auto *action = qobject_cast<QAction *>(sender()))
        openFile(action->data().toString());
}

void CMainFrame::updateTabs()
{
    const QList<CMdiChildFrame *> list = children();
    m_childTabs->blockSignals(true);
    while (m_childTabs->count() > 0)
        m_childTabs->removeTab(0);
    for (CMdiChildFrame *child : list) {
        const int tab = m_childTabs->addTab(child->windowIcon(), QFileInfo(child->fileName()).fileName());
        m_childTabs->setTabData(tab, QVariant::fromValue<QObject *>(child));
        m_childTabs->setTabToolTip(tab, child->fileName());
        if (child == activeChild)
            m_childTabs->setCurrentIndex(tab);
    }
    m_childTabs->blockSignals(false);
    // The tabs help only where there is a choice.
    m_tabsBar->setVisible(list.size() >= 2);
}

void CMainFrame::slot_childTabChanged(int index)
{
    auto *child = qobject_cast<CMdiChildFrame *>(m_childTabs->tabData(index).value<QObject *>());
    if (child)
        activateChild(child);
}

void CMainFrame::childClosed(CMdiChildFrame *child)
{
    CMdiMainFrame::childClosed(child);
    // The closing frame is still listed until it is deleted: rebuild the tabs without it.
    QMetaObject::invokeMethod(
        this, [this] { updateMenus(); }, Qt::QueuedConnection);
}

void CMainFrame::slot_Options()
{
    COptionsDialog dialog(globalOptions, this);
    if (dialog.exec() == QDialog::Accepted) {
        dialog.apply();
        QString error;
        if (!globalOptions.save(&error))
            reportWarning("%s", error.toLocal8Bit().constData());
        for (CMdiChildFrame *child : children())
            child->update();
    }
}

void CMainFrame::dragEnterEvent(QDragEnterEvent *event)
{
    event->acceptProposedAction();
}

void CMainFrame::dragMoveEvent(QDragMoveEvent *event)
{
    event->acceptProposedAction();
}

void CMainFrame::dropEvent(QDropEvent *event)
{
    event->acceptProposedAction();
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            openFile(url.toLocalFile());
    }
}

void CMainFrame::openFile(const QString &path)
{
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    // The engine's rules for a recording's files: the last extension goes, and ".CFG" stands
    // in where only the upper-case name exists.
    const QByteArray base = CmtdBasePath(QFileInfo(path).absoluteFilePath().toLocal8Bit().constData());
    auto sibling = [&base](const char *extension) {
        return QString::fromLocal8Bit(CmtdSiblingPath(base, extension));
    };
    if (globalOptions.cvtToCmtd) {
        // A recorder's native file is turned into COMTRADE beside it, unless a current
        // extension file already stands there.
        CCmtd99File probe;
        const int version = probe.ReadInfVersion((base + ".inf").constData());
        QString native = sibling(".trd");
        if (!QFileInfo::exists(native))
            native = sibling(".trh");
        if (QFileInfo::exists(native) && version < 2) {
            QApplication::setOverrideCursor(Qt::WaitCursor);
            globalOptions.convertRecorderFile(native.toLocal8Bit().constData());
            QApplication::restoreOverrideCursor();
        }
    }
    // A single-file recording holds its configuration and data inside.
    if (path.endsWith(QStringLiteral(".cff"), Qt::CaseInsensitive)) {
        if (CMdiChildFrame *open = findChild(QFileInfo(path).canonicalFilePath())) {
            activateChild(open);
            return;
        }
        lastDirectory = QFileInfo(path).absolutePath();
        createChild(QFileInfo(path).absoluteFilePath());
        return;
    }
    const QString cfg = sibling(".cfg");
    if (!QFileInfo::exists(cfg)) {
        reportWarning("File is not exist: %s\n", cfg.toLocal8Bit().constData());
        return;
    }
    const QString dat = sibling(".dat");
    if (!QFileInfo::exists(dat) && !QFileInfo::exists(sibling(".d00"))) {
        reportWarning("File is not exist: %s\n", dat.toLocal8Bit().constData());
        return;
    }
    lastDirectory = QFileInfo(cfg).absolutePath();
    if (CMdiChildFrame *open = findChild(QFileInfo(cfg).canonicalFilePath())) {
        activateChild(open);
        addRecentFile(QFileInfo(cfg).canonicalFilePath());
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
    addRecentFile(child->fileName());
    updateMenus();
    return child;
}

void CMainFrame::slot_FileOpen()
{
    const QString patterns =
        globalOptions.cvtToCmtd
            ? QStringLiteral("(*.cfg *.inf *.cff *.trd *.trh *.CFG *.INF *.CFF *.TRD *.TRH)")
            : QStringLiteral("(*.cfg *.inf *.cff *.CFG *.INF *.CFF)");
    const QString filter = tr("All Supported File") + patterns;
    const QStringList paths = QFileDialog::getOpenFileNames(this, QString(), lastDirectory, filter);
    for (const QString &path : paths)
        openFile(path);
}

void CMainFrame::slot_FileCombin()
{
    // Any open recording with its samples may take part.
    QList<CCmtdChildFrame *> recordings;
    for (CCmtdChildFrame *frame : findChildren<CCmtdChildFrame *>()) {
        if (frame->recording().loadedPoints >= 5 && !frame->isBackgroundBusy())
            recordings << frame;
    }
    if (recordings.isEmpty()) {
        QMessageBox::warning(this, QString(), tr("No Opened Files to Chooese!"));
        return;
    }
    // The recording on show is the proposed base.
    if (auto *active = qobject_cast<CCmtdChildFrame *>(activeChild); active && recordings.contains(active))
        recordings.move(recordings.indexOf(active), 0);
    CFileCombinDlg dialog(recordings, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (QMessageBox::question(this, QString(), tr("Combin Success, open it now?")) == QMessageBox::Yes)
        openFile(dialog.resultPath());
}

void CMainFrame::slot_About()
{
    QMessageBox::about(this, QStringLiteral("VELDRIX ") + tr("About"),
                       tr(" Multi-Platform Power-System Fault-Wave Analysis Program(%s)")
                           .replace(QStringLiteral("%s"), QStringLiteral("2.0")));
}

void CMainFrame::closeEvent(QCloseEvent *event)
{
    // The documents with unsaved work are asked first: if one of them stays (its owner
    // cancelled, or its save failed), nothing else is closed either.
    const QList<QMdiSubWindow *> windows = mdiArea->subWindowList();
    for (QMdiSubWindow *window : windows) {
        auto *child = qobject_cast<CMdiChildFrame *>(window->widget());
        if (child && child->isModified() && !window->close()) {
            event->ignore();
            return;
        }
    }
    mdiArea->closeAllSubWindows();
    // A closed window leaves the list only when it is deleted, a moment later: what counts
    // is whether one is still shown.
    const QList<QMdiSubWindow *> remaining = mdiArea->subWindowList();
    for (QMdiSubWindow *window : remaining) {
        if (window->isVisible()) {
            event->ignore();
            return;
        }
    }
    event->accept();
}
