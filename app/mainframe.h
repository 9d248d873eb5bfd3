#pragma once

#include "mdimainframe.h"

class QAction;
class QMenu;
class QTabBar;
class QToolBar;

// The program's top window: File menu, document routing and the About box. Files from the
// command line, File Open and drops all arrive at `openFile`.
class CMainFrame : public CMdiMainFrame
{
    Q_OBJECT

public:
    explicit CMainFrame(QWidget *parent = nullptr);

    static constexpr int kRecentFiles = 8;

    void openFile(const QString &path) override;
    void updateMenus() override;
    void childClosed(CMdiChildFrame *child) override;
    // Puts a path first in the recent-file list, kept in the user's settings.
    void addRecentFile(const QString &path);
    QStringList recentFiles() const;
    QToolBar *tabsBar() const { return m_tabsBar; }
    QTabBar *childTabs() const { return m_childTabs; }

protected:
    void createActions() override;
    void createFileMenu() override;
    CMdiChildFrame *createChild(const QString &path) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void retranslate();
    void updateRecentFiles();
    void updateTabs();
    void slot_FileOpen();
    void slot_FileRecentOpen();
    void slot_Options();
    void slot_About();
    void slot_FileCombin();
    void slot_childTabChanged(int index);

    QMenu *m_fileMenu = nullptr;
    QAction *m_openAction = nullptr;
    QAction *m_combinAction = nullptr;
    QAction *m_infMapAction = nullptr;
    QAction *m_optionsAction = nullptr;
    QAction *m_aboutAction = nullptr;
    QAction *m_quitAction = nullptr;
    QAction *m_recentActions[kRecentFiles] = {};
    QToolBar *m_tabsBar = nullptr;
    QTabBar *m_childTabs = nullptr;
    QString lastDirectory;
};
