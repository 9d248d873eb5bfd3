// The main frame: routing of every file name to its recording, recent files, the tab bar, and
// the datagrams of the single-process link.

#include "cmtdchildframe.h"
#include "fileinfpathmapdlg.h"
#include "frametestcase.h"
#include "globaloptions.h"
#include "mainframe.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QStatusBar>

#include <QSettings>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QUdpSocket>

#include <cstring>
#include <sys/stat.h>
#include <thread>

namespace {

// A free high port on the loopback interface for the link under test.
uint16_t freePort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress(QHostAddress::LocalHost), 0);
    return probe.localPort();
}

QByteArray datagram(uint32_t type, const QByteArray &payload = QByteArray(), uint32_t magic = 0x20060215)
{
    QByteArray bytes(16, 0);
    const uint32_t header[4] = {magic, type, uint32_t(payload.size()), magic};
    std::memcpy(bytes.data(), header, 16);
    return bytes + payload;
}

} // namespace

class MainFrameTest : public FrameTestCase
{
    Q_OBJECT

public:
    MainFrameTest() : FrameTestCase(1000, 700) {}

private Q_SLOTS:
    void initTestCase()
    {
        FrameTestCase::initTestCase();
        QSettings(QStringLiteral("TRWK"), QStringLiteral("VELDRIX")).clear();
    }

    // The picture of the user guide (tools/screenshots.sh); skipped without VELDRIX_SCREENSHOTS.
    void screenshotsForTheGuide()
    {
        GUIDE_PICTURES_OR_SKIP(folder);
        PathMapEntries() = {
            {"/DATA/RECORDERS/SUBSTATION NORTH", "/data/settings/north.tcfg", "/data/settings/north.tcgp"},
            {"/DATA/RECORDERS", "/data/settings/common.tcfg", ""}};
        CFileInfPathMapDlg map;
        map.show();
        QTest::qWait(200);
        QVERIFY(map.grab().save(folder + QStringLiteral("/path-map.png")));
        PathMapEntries().clear();
    }

    void pathMapDialogsCheckAndWriteTheMap()
    {
        // The map file goes beside the program: here a folder of the test's own.
        setProgramPath(m_dir.filePath(QStringLiteral("veldrix")).toLocal8Bit().constData());
        CFileInfPathMapDlgItem item(PathMapEntry{});
        QString said;
        pressWhenUp(&said, QStringLiteral("OK"));
        item.accept();
        QCOMPARE(said, QStringLiteral("Please specify [Data File Path]!"));
        item.folderEdit()->setText(QStringLiteral("/data/Site A"));
        pressWhenUp(&said, QStringLiteral("OK"));
        item.accept();
        QCOMPARE(said, QStringLiteral("Please specify Settings Files!"));
        item.groupsEdit()->setText(QStringLiteral("/cfg/a.tcgp"));
        item.accept();
        QCOMPARE(item.result(), int(QDialog::Accepted));
        QCOMPARE(item.entry().rootPath, QByteArray("/DATA/SITE A"));

        CFileInfPathMapDlg map;
        map.putEntry(item.entry());
        map.putEntry(PathMapEntry{"/DATA", "/cfg/all.tcfg", ""});
        pressWhenUp(&said, QStringLiteral("&No"));
        QVERIFY(!map.deleteEntry(1));
        QCOMPARE(said, QStringLiteral("Are you sure to delete the item [/DATA]?"));
        map.accept();
        QCOMPARE(PathMapEntries().size(), size_t(2));
        const QByteArray written = fileBytes(m_dir.filePath(QStringLiteral("TRWKCFGMAP.INI")));
        QVERIFY(written.contains("ROOT_PATH=/DATA/SITE A\nTCFG_FILE=\nTCGP_FILE=/cfg/a.tcgp\n"));
        // The longer root wins for a recording under both.
        QCOMPARE(findPathMapEntry("/data/site a/2024/r.cfg")->groupFile, QByteArray("/cfg/a.tcgp"));
        PathMapEntries().clear();
    }

    void everyFileOfARecordingOpensOneDocument()
    {
        const QString cfg = writeRecording(m_dir, "route", 300, 2, 1);
        const QString base = cfg.left(cfg.size() - 4);
        m_main->openFile(base + QStringLiteral(".dat"));
        QCOMPARE(m_main->children().size(), 1);
        auto *frame = qobject_cast<CCmtdChildFrame *>(m_main->children().first());
        QVERIFY(waitIdle(frame));
        QCOMPARE(frame->fileName(), QFileInfo(cfg).canonicalFilePath());
        // The same recording again, by another of its files: no second document.
        m_main->openFile(cfg);
        QCOMPARE(m_main->children().size(), 1);
        QCOMPARE(m_main->recentFiles().first(), QFileInfo(cfg).canonicalFilePath());
        // One document: no tab bar; a second shows it.
        QVERIFY(!m_main->tabsBar()->isVisible());
        m_main->openFile(writeRecording(m_dir, "second", 300, 1, 0));
        QCOMPARE(m_main->children().size(), 2);
        QVERIFY(m_main->tabsBar()->isVisible());
        QCOMPARE(m_main->childTabs()->count(), 2);
    }

    void quitClosesOnceEveryDocumentAgreed()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *a = open(writeRecording(dir, "a", 300, 1, 0));
        CCmtdChildFrame *b = open(writeRecording(dir, "b", 300, 1, 0));
        QVERIFY(a && b);
        // A modified document whose owner cancels keeps the program, and every other document,
        // open: nothing is closed before all have agreed.
        a->setModified(true);
        QTimer::singleShot(0, this, [] { answerMessageBox(QMessageBox::Cancel); });
        QVERIFY(!m_main->close());
        QCOMPARE(m_main->children().size(), 2);
        // Answering Yes saves the extension file and the program ends.
        QTimer::singleShot(0, this, [] { answerMessageBox(QMessageBox::Yes); });
        QVERIFY(m_main->close());
        QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("a.inf"))));
    }

    void ninthRecentFilePushesOutTheOldest()
    {
        for (int i = 0; i < 9; ++i)
            m_main->addRecentFile(QStringLiteral("/data/rec%1.cfg").arg(i));
        const QStringList files = m_main->recentFiles();
        QCOMPARE(files.size(), 8);
        QCOMPARE(files.first(), QStringLiteral("/data/rec8.cfg"));
        QVERIFY(!files.contains(QStringLiteral("/data/rec0.cfg")));
        // A repeated path moves to the front instead of standing twice.
        m_main->addRecentFile(QStringLiteral("/data/rec4.cfg"));
        QCOMPARE(m_main->recentFiles().first(), QStringLiteral("/data/rec4.cfg"));
        QCOMPARE(m_main->recentFiles().count(QStringLiteral("/data/rec4.cfg")), 1);
    }

    void secondStartAsksAndHandsOver()
    {
        // A running process stands in as a plain responder on its own thread, since the second
        // start waits for the answer on this one.
        for (const uint32_t magic : {0x20060215u, 0x12345678u}) {
            const uint16_t port = freePort();
            QByteArray received;
            std::thread responder([&] {
                QUdpSocket socket;
                socket.bind(QHostAddress(QHostAddress::LocalHost), port);
                for (int i = 0; i < 2; ++i) {
                    if (!socket.waitForReadyRead(2000))
                        return;
                    QByteArray bytes(int(socket.pendingDatagramSize()), 0);
                    QHostAddress from;
                    quint16 fromPort = 0;
                    socket.readDatagram(bytes.data(), bytes.size(), &from, &fromPort);
                    if (i == 0)
                        socket.writeDatagram(datagram(1, QByteArray(), magic), from, fromPort);
                    else
                        received = bytes;
                }
            });
            QTest::qWait(50);
            CMainFrame second;
            second.connectPort(port);
            const bool running = second.askRunning(port, 1000);
            QCOMPARE(running, magic == 0x20060215u);
            // A path too long for one datagram travels with no payload.
            QVERIFY(second.sendFile(port, QByteArray(1008, 'x')));
            responder.join();
            QCOMPARE(received.size(), 16);
            uint32_t header[4];
            std::memcpy(header, received.constData(), 16);
            QCOMPARE(header[1], 4u);
            QCOMPARE(header[2], 0u);
        }
    }

    void secondStartSendsAbsolutePaths()
    {
        QByteArray path;
        QVERIFY(CMdiMainFrame::handOverPath("rec/one.cfg", path));
        QCOMPARE(path, QFile::encodeName(QDir::current().absoluteFilePath(QStringLiteral("rec/one.cfg"))));
        QVERIFY(CMdiMainFrame::handOverPath("/data/two.cfg", path));
        QCOMPARE(path, QByteArray("/data/two.cfg"));
        // 1007 bytes and the terminator fill a record; one more is too long.
        const QByteArray longest = "/" + QByteArray(1002, 'x') + ".cfg";
        QCOMPARE(longest.size(), 1007);
        QVERIFY(CMdiMainFrame::handOverPath(longest, path));
        QVERIFY(!CMdiMainFrame::handOverPath("/" + QByteArray(1003, 'x') + ".cfg", path));
        QCOMPARE(path.size(), 1008);
    }

    void linkAnswersAndHandsOverOnlyRecordings()
    {
        const uint16_t port = freePort();
        QVERIFY(m_main->bindPort(port));
        QUdpSocket peer;
        QVERIFY(peer.bind(QHostAddress(QHostAddress::LocalHost), 0));
        auto send = [&](const QByteArray &bytes) {
            peer.writeDatagram(bytes, QHostAddress(QHostAddress::LocalHost), port);
            QTest::qWait(100); // the frame reads it on its event loop
        };
        auto answer = [&peer]() -> QByteArray {
            if (!peer.waitForReadyRead(300) && !peer.hasPendingDatagrams())
                return QByteArray();
            QByteArray bytes(int(peer.pendingDatagramSize()), 0);
            peer.readDatagram(bytes.data(), bytes.size());
            return bytes;
        };
        auto path = [](const QString &text) { return QFile::encodeName(text) + QByteArray(1, '\0'); };
        // Types 2 and 3 are answered with type 1.
        for (uint32_t type : {2u, 3u}) {
            send(datagram(type));
            const QByteArray reply = answer();
            QCOMPARE(reply.size(), 16);
            uint32_t header[4];
            std::memcpy(header, reply.constData(), 16);
            QCOMPARE(header[1], 1u);
            QCOMPARE(header[0], 0x20060215u);
        }
        // A stranger's type and a short datagram get no answer.
        send(datagram(7));
        QVERIFY(answer().isEmpty());
        send(QByteArray("short", 5));
        QVERIFY(answer().isEmpty());

        const QString cfg = writeRecording(m_dir, "handed", 300, 1, 0);
        // Wrong magics, or a length that disagrees with the datagram: dropped.
        send(datagram(4, path(cfg), 0x12345678));
        QByteArray lying = datagram(4, path(cfg));
        lying[8] = 3;
        send(lying);
        // A relative path, a FIFO and a link to a device named like recordings, a folder, a
        // missing file and a recording without its data: refused without a box.
        send(datagram(4, path(QStringLiteral("handed.cfg"))));
        const QString fifo = m_dir.filePath(QStringLiteral("pipe.cff"));
        QVERIFY(::mkfifo(QFile::encodeName(fifo).constData(), 0600) == 0);
        const QString device = m_dir.filePath(QStringLiteral("zero.cff"));
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), device));
        QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("folder.cfg")));
        QElapsedTimer timer;
        timer.start();
        send(datagram(4, path(fifo)));
        send(datagram(4, path(device)));
        send(datagram(4, path(m_dir.filePath(QStringLiteral("folder.cfg")))));
        send(datagram(4, path(m_dir.filePath(QStringLiteral("missing.cfg")))));
        const QString lonely = writeRecording(m_dir, "lonely", 300, 1, 0);
        QVERIFY(QFile::remove(lonely.left(lonely.size() - 4) + QStringLiteral(".dat")));
        send(datagram(4, path(lonely)));
        QVERIFY(!visibleMessageBox());
        QCOMPARE(m_main->children().size(), 0);
        QVERIFY2(m_main->statusBar()->currentMessage().contains(QStringLiteral("lonely.dat")),
                 qPrintable(m_main->statusBar()->currentMessage()));
        // The link still answers at once.
        peer.writeDatagram(datagram(2), QHostAddress(QHostAddress::LocalHost), port);
        QElapsedTimer answered;
        answered.start();
        QVERIFY(QTest::qWaitFor([&] { return peer.hasPendingDatagrams(); }, 1000));
        QVERIFY2(answered.elapsed() < 100, qPrintable(QString::number(answered.elapsed())));
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        // Type 4 with the absolute path of a recording opens it, read up to its first zero byte.
        send(datagram(4, cfg.toLocal8Bit() + QByteArray("\0tail", 5)));
        QCOMPARE(m_main->children().size(), 1);
    }
};

QTEST_MAIN(MainFrameTest)
#include "test_mainframe.moc"
