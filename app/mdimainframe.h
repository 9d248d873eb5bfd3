#pragma once

#include "mdichildframe.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QMainWindow>
#include <QString>

#include <cstdint>

class QAction;
class QUdpSocket;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QMenuBar;

// The top window: an MDI area holding the document frames. Every file name enters the program
// through `openFile`, whether it comes from the command line, a dialog or a drop.
class CMdiMainFrame : public QMainWindow
{
    Q_OBJECT

public:
    explicit CMdiMainFrame(QWidget *parent = nullptr);

    // Builds the interface: the MDI area as central widget, then actions and menus.
    virtual void initialize();
    virtual void openFile(const QString &path) = 0;
    virtual void childClosed(CMdiChildFrame *child);
    QList<CMdiChildFrame *> children() const;

    // Rebuilds the menu bar for the active document.
    virtual void updateMenus() {}
    CMdiChildFrame *activeFrame() const { return activeChild; }

    // The single-process link: a second start asks a running process over a local datagram
    // whether it is there, hands it its file names and leaves.
    struct DatagramRecord
    {
        uint32_t magic;
        uint32_t type;
        uint32_t length;
        uint32_t magic2;
        char payload[1008];
    };
    static constexpr uint32_t kLinkMagic = 0x20060215;
    static constexpr uint16_t kLinkPort = 533;
    static constexpr int kHeaderSize = 16;

    bool connectPort(uint16_t port);
    bool bindPort(uint16_t port);
    bool sendDatagram(uint16_t port, const DatagramRecord &record);
    bool send(uint16_t port, int type, int length, const void *data);
    bool waitDatagram(DatagramRecord &record, int timeout);
    bool askRunning(uint16_t port, int timeout);
    bool sendFile(uint16_t port, const QByteArray &text);
    // Acts on a datagram of another process; true when its type was known.
    virtual bool handleDatagram(const DatagramRecord &record);

    // Any local program can send to the port: a record is taken only when both magics are
    // right and its length agrees with the datagram's size.
    static bool isWellFormed(const QByteArray &datagram);
    // A handed-over path opens only when it is absolute and names an existing regular file
    // with a recording's extension: no FIFO, device or folder can stall the window.
    static bool isRecordingPath(const QString &path, QString *reason);
    static constexpr int kHandOversPerSecond = 64;
    // What a second start sends for an argument: its absolute path (the running process has a
    // folder of its own); false when it is too long for a record, `path` then holds it anyway.
    static bool handOverPath(const QByteArray &argument, QByteArray &path);

protected:
    virtual void createActions() = 0;
    virtual void createFileMenu() = 0;
    virtual CMdiChildFrame *createChild(const QString &path) = 0;
    // A file handed over by another start could not be opened: said without a modal box, so
    // the link keeps answering.
    virtual void reportHandOver(const QString &message);
    void addChild(CMdiChildFrame *child);
    CMdiChildFrame *findChild(const QString &canonicalPath) const;
    // Brings a document's window to the front of the area.
    void activateChild(CMdiChildFrame *child);

    QMdiArea *mdiArea = nullptr;
    CMdiChildFrame *activeChild = nullptr;
    QUdpSocket *m_socket = nullptr;

private:
    void slot_childActived(QMdiSubWindow *window);
    void slot_copyDataNotify();
    bool answer(int type);

    bool takeHandOver();

    QHostAddress m_senderAddress;
    uint16_t m_senderPort = 0;
    QElapsedTimer m_handOverSecond; // the second in which hand-overs are being counted
    int m_handOvers = 0;
};
