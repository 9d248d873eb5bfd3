#pragma once

#include "mdimainframe.h"

class QAction;
class QMenu;

// The program's top window: File menu, document routing and the About box. Files from the
// command line, File Open and drops all arrive at `openFile`.
class CMainFrame : public CMdiMainFrame
{
    Q_OBJECT

public:
    explicit CMainFrame(QWidget *parent = nullptr);

    void openFile(const QString &path) override;
    void updateMenus() override;

protected:
    void createActions() override;
    void createFileMenu() override;
    CMdiChildFrame *createChild(const QString &path) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void retranslate();
    void slot_FileOpen();
    void slot_About();

    QMenu *m_fileMenu = nullptr;
    QAction *m_openAction = nullptr;
    QAction *m_combinAction = nullptr;
    QAction *m_infMapAction = nullptr;
    QAction *m_optionsAction = nullptr;
    QAction *m_aboutAction = nullptr;
    QAction *m_quitAction = nullptr;
    QString lastDirectory;
};
