#pragma once

// Small recordings that the widget tests write for themselves, and the main frame they open in.

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"
#include "cmtdchildframe.h"
#include "cmtddocument.h"
#include "cmtdviewanawave.h"
#include "mainframe.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QRegularExpression>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <numbers>

// Writes an ASCII recording of `points` samples at 1 kHz with `analogs` channels and
// `statuses` status channels, so that a load takes a while when it needs to.
// `phases` gives the phase letter of each analog channel ("ABC" ...); all "A" when null.
inline QString writeRecording(const QTemporaryDir &dir, const char *name, int points, int analogs,
                              int statuses, bool withData = true, const char *phases = nullptr)
{
    const QString base = dir.filePath(QString::fromLatin1(name));
    FILE *cfg = std::fopen((base + QStringLiteral(".cfg")).toLocal8Bit().constData(), "w");
    std::fprintf(cfg, "Test Station,Recorder,1999\n%d,%dA,%dD\n", analogs + statuses, analogs, statuses);
    for (int c = 1; c <= analogs; ++c)
        std::fprintf(cfg, "%d,U%d,%c,,V,0.1,0,0,-32767,32767,1,1,S\n", c, c, phases ? phases[c - 1] : 'A');
    for (int c = 1; c <= statuses; ++c)
        std::fprintf(cfg, "%d,Trip%d,,,0\n", c, c);
    std::fprintf(cfg, "50\n1\n1000,%d\n01/01/2024,10:00:00.000000\n01/01/2024,10:00:00.100000\nASCII\n1\n",
                 points);
    std::fclose(cfg);
    FILE *dat = std::fopen((base + QStringLiteral(".dat")).toLocal8Bit().constData(), "w");
    for (int n = 0; withData && n < points; ++n) {
        std::fprintf(dat, "%d,%d", n + 1, n * 1000 - 100000);
        for (int c = 0; c < analogs; ++c)
            std::fprintf(dat, ",%d", (n * 7 + c) % 2000 - 1000);
        for (int c = 0; c < statuses; ++c)
            std::fprintf(dat, ",%d", n > points / 2 ? 1 : 0);
        std::fputc('\n', dat);
    }
    std::fclose(dat);
    return base + QStringLiteral(".cfg");
}

// Waits until the frame's worker has no job and the load has closed.
inline bool waitIdle(CCmtdChildFrame *frame, int ms = 20000)
{
    return QTest::qWaitFor(
        [frame] {
            return !(frame->backgroundState() &
                     (CCmtdChildFrame::StateBusy | CCmtdChildFrame::StateLoading)) &&
                   frame->worker().pendingKind() == CCmtdThread::KindNone;
        },
        ms);
}

// Three phase voltages Ua, Ub, Uc at 1 kHz: 50 Hz sines of 100 V peak (raw 1000 × 0.1 V), one
// status channel; the trigger at sample 100.
inline QString writeSineRecording(const QTemporaryDir &dir, const char *name, int points)
{
    const QString base = dir.filePath(QString::fromLatin1(name));
    FILE *cfg = std::fopen((base + QStringLiteral(".cfg")).toLocal8Bit().constData(), "w");
    std::fprintf(cfg, "Sine Station,Recorder,1999\n4,3A,1D\n");
    const char phases[] = "ABC";
    for (int c = 0; c < 3; ++c)
        std::fprintf(cfg, "%d,U%c,%c,,V,0.1,0,0,-32767,32767,1,1,S\n", c + 1, phases[c], phases[c]);
    std::fprintf(cfg,
                 "1,Trip,,,0\n50\n1\n1000,%d\n01/01/2024,10:00:00.000000\n01/01/2024,10:00:00.100000\n"
                 "ASCII\n1\n",
                 points);
    std::fclose(cfg);
    FILE *dat = std::fopen((base + QStringLiteral(".dat")).toLocal8Bit().constData(), "w");
    for (int n = 0; n < points; ++n) {
        std::fprintf(dat, "%d,%d", n + 1, n * 1000 - 100000);
        for (int c = 0; c < 3; ++c)
            std::fprintf(
                dat, ",%d",
                int(std::lround(1000.0 * std::sin(2 * M_PI * 50.0 * n / 1000.0 - c * 2 * M_PI / 3))));
        std::fprintf(dat, ",%d\n", n >= 150 ? 1 : 0);
    }
    std::fclose(dat);
    return base + QStringLiteral(".cfg");
}

// Three phase voltages and three phase currents at 1 kHz, 50 Hz sines A·sin(ωt + φ): the
// phasor of each at a whole cycle's sample is A∠φ. Raw steps of 0.01 keep the angles within
// a few thousandths of a degree.
struct PhaseSet
{
    double amplitude[6];
    double degrees[6];
};

inline QString writePhasorRecording(const QTemporaryDir &dir, const char *name, const PhaseSet &set,
                                    int points = 400)
{
    const QString base = dir.filePath(QString::fromLatin1(name));
    FILE *cfg = std::fopen((base + QStringLiteral(".cfg")).toLocal8Bit().constData(), "w");
    std::fprintf(cfg, "Phasor Station,Recorder,1999\n6,6A,0D\n");
    for (int c = 0; c < 6; ++c)
        std::fprintf(cfg, "%d,%c%c,%c,,%s,0.01,0,0,-32767,32767,1,1,S\n", c + 1, c < 3 ? 'U' : 'I',
                     'a' + c % 3, 'A' + c % 3, c < 3 ? "V" : "A");
    std::fprintf(cfg, "50\n1\n1000,%d\n01/01/2024,10:00:00.000000\n01/01/2024,10:00:00.100000\nASCII\n1\n",
                 points);
    std::fclose(cfg);
    FILE *dat = std::fopen((base + QStringLiteral(".dat")).toLocal8Bit().constData(), "w");
    for (int n = 0; n < points; ++n) {
        std::fprintf(dat, "%d,%d", n + 1, n * 1000);
        for (int c = 0; c < 6; ++c) {
            const double x = set.amplitude[c] * std::sin(2 * std::numbers::pi * 50.0 * n / 1000.0 +
                                                         set.degrees[c] * std::numbers::pi / 180);
            std::fprintf(dat, ",%ld", std::lround(x / 0.01));
        }
        std::fputc('\n', dat);
    }
    std::fclose(dat);
    return base + QStringLiteral(".cfg");
}

// Any warning that Qt prints while a test runs fails that test: a connection to an object that
// does not exist yet, a missing resource, a painter misuse all end up there. The offscreen
// platform's own remark about size hints is no fault of ours and stays allowed.
inline void failOnQtWarnings()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(
        "^(?!This plugin does not support (propagateSizeHints|raise|grabbing the keyboard)).*")));
}

// The message box that is up, or null.
inline QMessageBox *visibleMessageBox()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
            return box;
    }
    return nullptr;
}

// Presses a button of the message box that is up (for questions a test must answer).
inline void answerMessageBox(QMessageBox::StandardButton button)
{
    if (QMessageBox *box = visibleMessageBox())
        box->button(button)->click();
}

// After `delay` ms, presses the button labelled `button` of the message box that is up (Cancel
// when `button` is empty) and keeps the box's text in `said`, which must outlive the wait;
// nothing when no box is up.
inline void pressWhenUp(QString *said, const QString &button, int delay = 0)
{
    QTimer::singleShot(delay, qApp, [said, button] {
        QMessageBox *box = visibleMessageBox();
        if (!box)
            return;
        *said = box->text();
        for (QAbstractButton *b : box->buttons()) {
            if (b->text() == button || (button.isEmpty() && box->standardButton(b) == QMessageBox::Cancel))
                b->click();
        }
    });
}

// Runs `answer` on the modal dialog of type `Dialog` that the next step opens.
template <typename Dialog> void whenDialogUp(const std::function<void(Dialog *)> &answer)
{
    QTimer::singleShot(0, qApp, [answer] {
        if (auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget()))
            answer(dialog);
    });
}

// The bytes of a file, empty when it cannot be read.
inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces text in a file the test wrote (a recording's line frequency, a channel's unit).
inline bool replaceInFile(const QString &path, const QByteArray &before, const QByteArray &after)
{
    QByteArray text = fileBytes(path);
    if (!text.contains(before))
        return false;
    text.replace(before, after);
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size();
}

// Keeps the recent-file list of the tests away from the user's own settings.
inline void isolateSettings()
{
    static QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.path());
}

// A main frame with its menus, shown at the given size.
inline CMainFrame *showMainFrame(int width, int height)
{
    auto *main = new CMainFrame;
    main->initialize();
    main->resize(width, height);
    main->show();
    return main;
}

inline void closeMainFrame(CMainFrame *main)
{
    main->close();
    delete main;
}

// Opens a recording and gives the document it opened in (the newest), or null.
inline CCmtdChildFrame *openDocument(CMainFrame *main, const QString &path)
{
    main->openFile(path);
    const QList<CMdiChildFrame *> children = main->children();
    return children.isEmpty() ? nullptr : qobject_cast<CCmtdChildFrame *>(children.last());
}

// A recording built in memory, too large to write to disk in a test: one analog channel
// "U" of `points` samples at `rate`, values from `value(n)`, trigger at sample 0. The
// frame's wave view is sized to 1000 × 600 pixels and shows the whole extent.
inline CCmtdChildFrame *openInMemory(CMainFrame *main, int points, float rate,
                                     const std::function<float(int)> &value)
{
    auto *frame = new CCmtdChildFrame(main);
    CCmtd99File &file = frame->recordingForJob();
    SampleSegment segment;
    segment.index = 1;
    segment.rate = rate;
    segment.end = points;
    file.segments.push_back(segment);
    file.pointCount = file.loadedPoints = points;
    file.triggerIndex = 0;
    file.firstFreeChannelIndex = 2; // channel 1 is the file's own
    file.sampleTimes = static_cast<int64_t *>(AllocateSamples(size_t(points), sizeof(int64_t)));
    const double period = 1e6 / double(rate);
    for (int n = 0; n < points; ++n)
        file.sampleTimes[n] = int64_t(std::llround(double(n) * period));
    auto record = std::make_unique<CmtdChn_Analog>();
    record->Reset(1);
    record->ch_id = "U";
    record->uu = "V";
    file.analogChannels.push_back(std::move(record));
    auto map = std::make_unique<CChnMapAnalog>(file.analogChannels.back().get());
    map->allocate(points);
    float *v = map->Values();
    for (int n = 0; n < points; ++n)
        v[n] = value(n);
    map->RecalcExtremes();
    file.analogMaps.push_back(std::move(map));
    file.BuildScaleGroups();
    frame->resize(1000, 600);
    CCmtdViewAnaWave *view = frame->waveView();
    view->resize(1000, 600);
    view->m_pArea->resize(1000, 600);
    view->buildRows(false);
    view->setDrawnExtent(points, false);
    frame->document()->extendEnvelopes(points);
    return frame;
}

// What the wave view shows of its document from the current scroll position, as a picture
// of the view's size.
inline QImage paintView(CCmtdViewAnaWave *view)
{
    const QRect rect(view->scrollX(), view->scrollY(), view->width(), view->height());
    QImage image(rect.size(), QImage::Format_ARGB32);
    QPainter painter(&image);
    painter.translate(-rect.topLeft());
    view->drawContents(painter, rect);
    painter.end();
    return image;
}
