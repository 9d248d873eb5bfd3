// The single-process link of the main frame: datagrams on the local host between a running
// process and a second start.

#include "mdimainframe.h"

#include "reportwarning.h"

#include <QApplication>
#include <QFileInfo>
#include <QStatusBar>
#include <QUdpSocket>

#include <cstring>
#include <sys/stat.h>

namespace {

CMdiMainFrame::DatagramRecord makeRecord(int type)
{
    CMdiMainFrame::DatagramRecord record;
    std::memset(&record, 0, sizeof record);
    record.magic = CMdiMainFrame::kLinkMagic;
    record.magic2 = CMdiMainFrame::kLinkMagic;
    record.type = static_cast<uint32_t>(type);
    return record;
}

} // namespace

bool CMdiMainFrame::connectPort(uint16_t port)
{
    if (!m_socket)
        m_socket = new QUdpSocket(this);
    m_socket->abort();
    m_socket->connectToHost(QHostAddress(QHostAddress::LocalHost), port, QIODevice::ReadWrite);
    return m_socket->state() == QAbstractSocket::ConnectedState;
}

bool CMdiMainFrame::bindPort(uint16_t port)
{
    if (!m_socket)
        m_socket = new QUdpSocket(this);
    m_socket->abort();
    // A port that another program holds, or that the system keeps for privileged users, leaves
    // this process working alone.
    if (!m_socket->bind(QHostAddress(QHostAddress::LocalHost), port))
        return false;
    connect(m_socket, &QUdpSocket::readyRead, this, &CMdiMainFrame::slot_copyDataNotify);
    return true;
}

bool CMdiMainFrame::sendDatagram(uint16_t port, const DatagramRecord &record)
{
    if (!m_socket)
        m_socket = new QUdpSocket(this);
    const qint64 size = kHeaderSize + qint64(record.length <= sizeof record.payload ? record.length : 0);
    const auto *bytes = reinterpret_cast<const char *>(&record);
    const qint64 written =
        m_socket->state() == QAbstractSocket::ConnectedState
            ? m_socket->write(bytes, size)
            : m_socket->writeDatagram(bytes, size, QHostAddress(QHostAddress::LocalHost), port);
    return written == size;
}

bool CMdiMainFrame::send(uint16_t port, int type, int length, const void *data)
{
    DatagramRecord record = makeRecord(type);
    if (length < 0 || length > int(sizeof record.payload)) {
        length = 0; // too long to travel: the type goes alone
    } else if (length > 0 && data) {
        std::memcpy(record.payload, data, static_cast<size_t>(length));
    }
    record.length = static_cast<uint32_t>(length);
    return sendDatagram(port, record);
}

bool CMdiMainFrame::waitDatagram(DatagramRecord &record, int timeout)
{
    std::memset(&record, 0, sizeof record);
    if (!m_socket || !m_socket->waitForReadyRead(timeout))
        return false;
    if (!m_socket->hasPendingDatagrams() || m_socket->pendingDatagramSize() < kHeaderSize)
        return false;
    QHostAddress address;
    quint16 port = 0;
    const qint64 got =
        m_socket->readDatagram(reinterpret_cast<char *>(&record), sizeof record, &address, &port);
    m_senderAddress = address;
    m_senderPort = port;
    return got >= kHeaderSize;
}

bool CMdiMainFrame::askRunning(uint16_t port, int timeout)
{
    if (!send(port, 3, 0, nullptr))
        return false;
    DatagramRecord reply;
    if (!waitDatagram(reply, timeout))
        return false;
    return reply.type == 1 && reply.magic == kLinkMagic && reply.magic2 == kLinkMagic &&
           reply.length <= sizeof reply.payload;
}

bool CMdiMainFrame::sendFile(uint16_t port, const QByteArray &text)
{
    return send(port, 4, static_cast<int>(text.size()) + 1, text.constData());
}

bool CMdiMainFrame::isWellFormed(const QByteArray &datagram)
{
    if (datagram.size() < kHeaderSize)
        return false;
    uint32_t header[4];
    std::memcpy(header, datagram.constData(), sizeof header);
    const uint32_t length = header[2];
    return header[0] == kLinkMagic && header[3] == kLinkMagic && length <= sizeof(DatagramRecord::payload) &&
           qint64(datagram.size()) == kHeaderSize + qint64(length);
}

bool CMdiMainFrame::isRecordingPath(const QString &path, QString *reason)
{
    auto refuse = [reason](const QString &text) {
        if (reason)
            *reason = text;
        return false;
    };
    if (path.isEmpty() || !QFileInfo(path).isAbsolute())
        return refuse(tr("Not an absolute path: %1").arg(path));
    const QString suffix = QFileInfo(path).suffix().toLower();
    static const QStringList recordings = {QStringLiteral("cfg"), QStringLiteral("cff"),
                                           QStringLiteral("dat"), QStringLiteral("inf")};
    if (!recordings.contains(suffix))
        return refuse(tr("Not a recording: %1").arg(path));
    // stat follows links: a link to a device is a device.
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return refuse(tr("File is not exist: %1").arg(path));
    if (!S_ISREG(info.st_mode))
        return refuse(tr("Not a regular file: %1").arg(path));
    return true;
}

bool CMdiMainFrame::handOverPath(const QByteArray &argument, QByteArray &path)
{
    path = QFile::encodeName(QFileInfo(QFile::decodeName(argument)).absoluteFilePath());
    return path.size() + 1 <= qsizetype(sizeof(DatagramRecord::payload)); // the terminator travels too
}

bool CMdiMainFrame::takeHandOver()
{
    // A flood of hand-overs would open window after window: a second's worth is taken, the
    // rest dropped.
    if (!m_handOverSecond.isValid() || m_handOverSecond.elapsed() >= 1000) {
        m_handOverSecond.start();
        m_handOvers = 0;
    }
    return ++m_handOvers <= kHandOversPerSecond;
}

void CMdiMainFrame::reportHandOver(const QString &message)
{
    statusBar()->showMessage(message, 10000);
    std::fprintf(stderr, "veldrix: %s\n", message.toLocal8Bit().constData());
}

void CMdiMainFrame::slot_copyDataNotify()
{
    while (m_socket && m_socket->hasPendingDatagrams()) {
        QByteArray datagram(qMax<qint64>(m_socket->pendingDatagramSize(), 0), Qt::Uninitialized);
        QHostAddress address;
        quint16 port = 0;
        const qint64 got = m_socket->readDatagram(datagram.data(), datagram.size(), &address, &port);
        datagram.resize(qMax<qint64>(got, 0));
        if (!isWellFormed(datagram))
            continue; // a stranger's bytes: dropped without a word
        // The record is cleared before the copy and one byte longer than any payload may be,
        // so a text payload always ends with a zero.
        DatagramRecord record;
        std::memset(&record, 0, sizeof record);
        std::memcpy(&record, datagram.constData(), size_t(datagram.size()));
        m_senderAddress = address;
        m_senderPort = port;
        handleDatagram(record);
    }
}

bool CMdiMainFrame::answer(int type)
{
    const DatagramRecord record = makeRecord(type);
    const auto *bytes = reinterpret_cast<const char *>(&record);
    return m_socket &&
           m_socket->writeDatagram(bytes, kHeaderSize, m_senderAddress, m_senderPort) == kHeaderSize;
}

bool CMdiMainFrame::handleDatagram(const DatagramRecord &record)
{
    switch (record.type) {
    case 2:
        answer(1);
        return true;
    case 3:
        answer(1);
        QApplication::alert(this, 3000);
        if (isMinimized())
            showMaximized();
        raise();
        activateWindow();
        return true;
    case 4: {
        if (!takeHandOver())
            return true;
        const QByteArray bytes(record.payload,
                               static_cast<qsizetype>(strnlen(record.payload, sizeof record.payload)));
        const QString path = QFile::decodeName(bytes);
        QString reason;
        if (!isRecordingPath(path, &reason)) {
            reportHandOver(reason);
            return true;
        }
        // Whatever the readers object to is said in the status bar, not in a box that would
        // stop the link until it is answered.
        QuietWarnings quiet([this](const QString &text) { reportHandOver(text.simplified()); });
        openFile(path);
        return true;
    }
    default:
        return false; // a stranger's datagram gets no answer
    }
}
