#pragma once

#include <QMainWindow>
#include <QString>

class QAction;
class QMenu;
class QMenuBar;

// The places in the main frame's File menu where a document frame puts its own entries.
struct FileMenuAnchors
{
    QMenu *file = nullptr;
    QAction *afterOpen = nullptr;   // entries go right behind "Open(&O)..."
    QAction *combin = nullptr;      // entries go before "Combin Files(&C)..."
    QAction *infMap = nullptr;      // entries go before the path map's entry
    QAction *afterInfMap = nullptr; // entries go behind the path map's entry
};

// Base of every document inside the main frame: a small main window of its own, so that it
// can carry tool bars. It deletes itself when closed. It knows nothing of the main frame
// above it: what the main frame must hear, it says by signals.
class CMdiChildFrame : public QMainWindow
{
    Q_OBJECT

public:
    explicit CMdiChildFrame(QWidget *parent = nullptr);

    // Opens the document; false when it cannot be shown (the frame is then closed).
    virtual bool openFile(const QString &path) = 0;
    // Puts the document's entries into the File menu and its menus into the menu bar.
    virtual void buildMenus(QMenuBar *bar, const FileMenuAnchors &anchors) {}
    // Sets every action's enabled and checked state.
    virtual void updateActions() {}
    // The canonical path of the document, used to find an already open one.
    const QString &fileName() const { return m_fileName; }
    bool isModified() const { return m_modified; }
    // Asks the main frame to open another document (a recording this one has written).
    void requestOpen(const QString &path) { Q_EMIT openRequested(path); }

Q_SIGNALS:
    // The window accepted its close; it is deleted right after.
    void closed(CMdiChildFrame *child);
    // The document's menus changed (for example the units present): the menu bar is rebuilt
    // if this document is the active one.
    void menusChanged(CMdiChildFrame *child);
    // A document to open beside this one.
    void openRequested(const QString &path);

protected:
    void closeEvent(QCloseEvent *event) override;

    QString m_fileName;
    bool m_modified = false;
};
