#pragma once

#include "mdichildframe.h"

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

protected:
    virtual void createActions() = 0;
    virtual void createFileMenu() = 0;
    virtual CMdiChildFrame *createChild(const QString &path) = 0;
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

    QHostAddress m_senderAddress;
    uint16_t m_senderPort = 0;
};
