// Every field recording of other makers' equipment opens in a document, loads, paints its
// waves and names, and answers cursor moves and display switches without a fault. Skipped
// where the folder of recordings is not beside the project.

#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdviewananame.h"
#include "cmtdviewanawave.h"
#include "mainframe.h"
#include "recordingwriter.h"

#include <QAction>
#include <QDirIterator>
#include <QImage>
#include <QPainter>
#include <QStandardPaths>
#include <QTest>

class FieldRecordingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        isolateSettings();
    }

    void init() { failOnQtWarnings(); }

    void everyRecordingOpensAndPaints()
    {
        const QString folder = QStringLiteral(VELDRIX_SAMPLES_DIR);
        if (!QFileInfo(folder).isDir())
            QSKIP("no field recordings beside the project");
        QStringList paths;
        QDirIterator it(folder,
                        {QStringLiteral("*.cfg"), QStringLiteral("*.CFG"), QStringLiteral("*.cff"),
                         QStringLiteral("*.CFF")},
                        QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            paths << it.next();
        QVERIFY(!paths.isEmpty());
        CMainFrame main;
        main.initialize();
        main.resize(1200, 800);
        main.show();
        int opened = 0;
        for (const QString &path : std::as_const(paths)) {
            // A refused recording would stop the run on its warning box; the engine tests cover it.
            CCmtd99File probe;
            if (!probe.LoadFile(path.toLocal8Bit().constData()))
                continue;
            main.openFile(path);
            auto *frame = qobject_cast<CCmtdChildFrame *>(main.activeFrame());
            if (!frame || QFileInfo(frame->fileName()) != QFileInfo(path))
                continue; // refused with its reasons (checked by the engine tests)
            QVERIFY2(waitIdle(frame), qPrintable(path));
            ++opened;
            CCmtdViewAnaWave *wave = frame->waveView();
            const int points = frame->recording().loadedPoints;
            wave->setCursorT1(points / 3);
            wave->setCursorT2(points - 1);
            for (CCmtdChildFrame::Action id : {CCmtdChildFrame::ActValAng, CCmtdChildFrame::ActValPri,
                                               CCmtdChildFrame::ActValRms, CCmtdChildFrame::ActGrpOver})
                if (frame->action(id)->isEnabled())
                    frame->action(id)->trigger();
            QImage image(900, 600, QImage::Format_ARGB32_Premultiplied);
            QPainter painter(&image);
            wave->drawContents(painter, QRect(0, 0, 900, 600));
            painter.end();
            // The name column over its own image: whatever the recording, the read-out band
            // runs across its top in the band colour.
            CCmtdViewAnaName *names = frame->nameView();
            QImage column(names->width(), 600, QImage::Format_ARGB32);
            QPainter columnPainter(&column);
            names->drawContents(columnPainter, column.rect());
            columnPainter.end();
            QCOMPARE(column.pixel(column.width() - 4, 1), names->colour(3));
            wave->setZoomFactor(2.0f);
            wave->zoomRange(-1, -1);
            frame->parentWidget()->close();
            QTest::qWait(1);
        }
        QVERIFY(opened > 30);
    }
};

QTEST_MAIN(FieldRecordingsTest)
#include "test_fieldrecordings.moc"
