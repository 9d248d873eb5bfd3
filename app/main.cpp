// The process entry (the main frame registers the compiled-in images): codecs, the options file beside the
// program, the application object, style, font and language, the main frame, and the recordings named on the
// command line.

#include "expfunctions.h"
#include "globaloptions.h"
#include "mainframe.h"
#include "textcodec.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QScreen>
#include <QStyle>
#include <QTextCodec>

#include <cstdio>
#include <cstring>

namespace {

// argv[0] as typed may be a bare name found through PATH; the options file lies beside the
// executable itself.
QByteArray executablePath(const char *argv0)
{
    const QFileInfo self(QStringLiteral("/proc/self/exe"));
    if (self.exists() && !self.symLinkTarget().isEmpty())
        return self.symLinkTarget().toLocal8Bit();
    return QByteArray(argv0);
}

} // namespace

int main(int argc, char **argv)
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForLocale());
    setProgramPath(executablePath(argv[0]).constData());
    globalOptions.load();
    if (QTextCodec *codec = QTextCodec::codecForName(globalOptions.codec))
        QTextCodec::setCodecForLocale(codec);
    // Recordings whose text is not UTF-8 are read in the configured codec first.
    SetPreferredTextCodec(globalOptions.codec);

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VELDRIX"));
    QApplication::addLibraryPath(QString::fromLocal8Bit(programDirectory()));
    QApplication::setWheelScrollLines(globalOptions.wheelScrollLines);
    if (!globalOptions.style.isEmpty())
        QApplication::setStyle(QString::fromLocal8Bit(globalOptions.style));
    if (!globalOptions.font.isEmpty()) {
        QFont font = QApplication::font();
        font.setFamily(QString::fromLocal8Bit(globalOptions.font));
        QApplication::setFont(font);
    }
    globalOptions.selectLanguage();
    // The expression library's titles and help follow the language just chosen; the table is
    // read-only from here on.
    FillExpFunctionTable();

    CMainFrame frame;
    // One process works for the user: a second start hands its files over and leaves.
    if (globalOptions.stateMask & CGlobalOptions::SingleInstance) {
        frame.connectPort(CMdiMainFrame::kLinkPort);
        if (frame.askRunning(CMdiMainFrame::kLinkPort, 500)) {
            // The running process has a folder of its own: it gets absolute paths.
            for (int i = 1; i < argc; ++i) {
                if (std::strstr(argv[i], "parent="))
                    continue;
                QByteArray path;
                if (!CMdiMainFrame::handOverPath(argv[i], path)) {
                    std::fprintf(stderr, "veldrix: path too long to hand over (%lld bytes): %s\n",
                                 static_cast<long long>(path.size()), path.constData());
                    continue;
                }
                frame.sendFile(CMdiMainFrame::kLinkPort, path);
            }
            return 1;
        }
        frame.bindPort(CMdiMainFrame::kLinkPort);
    }
    frame.initialize();
    // Maximised where a window manager honours it; sized to the screen where none runs.
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        frame.setGeometry(screen->availableGeometry());
    frame.showMaximized();

    for (int i = 1; i < argc; ++i) {
        // A parent window handle from a launching program, not a file.
        if (std::strstr(argv[i], "parent="))
            continue;
        frame.openFile(QString::fromLocal8Bit(argv[i]));
    }

    const int code = QApplication::exec();
    QString error;
    if (!globalOptions.save(&error))
        std::fprintf(stderr, "veldrix: the options were not saved: %s\n", error.toLocal8Bit().constData());
    return code;
}
