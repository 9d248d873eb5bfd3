// The wave view: scales and their limits, cursors by mouse and keys, rows and their grouping,
// and what a paint actually puts on the screen.

#include "chnmap.h"
#include "cmtdchildframe.h"
#include "cmtdviewanawave.h"
#include "mainframe.h"
#include "recordingwriter.h"

#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QStandardPaths>
#include <QTest>

class WaveViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        isolateSettings();
    }

    void init()
    {
        failOnQtWarnings();
        m_main = showMainFrame(1000, 700);
    }

    void cleanup() { closeMainFrame(m_main); }

    CCmtdChildFrame *open(const QString &path)
    {
        CCmtdChildFrame *frame = openDocument(m_main, path);
        if (frame)
            waitIdle(frame);
        return frame;
    }

    void scalesAndSampleAtPixel()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 1000, 2, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        QCOMPARE(view->pointCount(), 1000);
        QCOMPARE(view->hScale, view->fitScale());
        // Half a pixel rounds away from zero; outside the recording the index is held.
        view->setHorzScale(2.0f);
        QCOMPARE(view->sampleAtPixel(3), 2);
        QCOMPARE(view->sampleAtPixel(5), 3);
        QCOMPARE(view->sampleAtPixel(-50), 0);
        QCOMPARE(view->sampleAtPixel(1000000), 999);
        // Zoom is held between the fit and one sample across the view.
        view->setZoomFactor(0.001f);
        QCOMPARE(view->hScale, view->fitScale());
        view->setHorzScale(view->maxScale());
        const float top = view->hScale;
        view->setZoomFactor(2.0f);
        QCOMPARE(view->hScale, top);
    }

    void zoomRangeTakesEitherOrder()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 1000, 1, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        view->setCursorT1(600);
        view->setCursorT2(400);
        view->zoomRange(-1, -1);
        const float expected =
            float(qMax(view->m_pArea->viewport()->width() - view->m_nMarginL - view->m_nMarginR - 22, 1)) /
            202.0f;
        QCOMPARE(view->hScale, expected);
        // Less than one sample apart: nothing happens.
        view->setCursorT2(600);
        view->zoomRange(-1, -1);
        QCOMPARE(view->hScale, expected);
    }

    void keysMoveTheCursors()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 1000, 1, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        QCOMPARE(view->cursorT1, 100); // the trigger
        QKeyEvent right(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
        QVERIFY(view->onKeyPress(&right));
        QCOMPARE(view->cursorT1, 101);
        QKeyEvent end(QEvent::KeyPress, Qt::Key_End, Qt::ShiftModifier);
        view->onKeyPress(&end);
        QCOMPARE(view->cursorT2, 999);
        QKeyEvent home(QEvent::KeyPress, Qt::Key_Home, Qt::NoModifier);
        view->onKeyPress(&home);
        QKeyEvent left(QEvent::KeyPress, Qt::Key_Left, Qt::NoModifier);
        view->onKeyPress(&left);
        QCOMPARE(view->cursorT1, 0); // held to the first sample
        // The read-outs follow: T1 at the start of the recording, T2 1.899 s later.
        QVERIFY(frame->findChildren<QLabel *>().size() >= 3);
    }

    void groupOverlapAndHiddenRows()
    {
        QTemporaryDir dir;
        // Ua, Ub, Uc, then a phase-A and a phase-C channel with no B between them.
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 300, 5, 1, true, "ABCAC"));
        CCmtdViewAnaWave *view = frame->waveView();
        QCOMPARE(int(view->rows.size()), 6);
        view->groupOverlap();
        QCOMPARE(int(view->rows.size()), 4);
        QCOMPARE(view->rows[0].channels.size(), 3);
        QCOMPARE(view->rows[1].channels.size(), 1);
        QCOMPARE(view->rows[2].channels.size(), 1); // phase C without B stays alone
        // A hidden row takes no height.
        const int before = view->m_nDocH;
        frame->recordingForJob().analogMaps[3]->flags |= CChnMapBase::FlagHidden;
        view->layoutRows(false);
        QVERIFY(view->rows[1].centerY < 0);
        QCOMPARE(view->m_nDocH, before - view->rowHeightBase);
    }

    void labelStepOfTheTimeAxis()
    {
        // One label per 80 pixels: at 1 pixel per sample every 100 samples, at 0.1 every
        // 1000, at 40 every 2; never below one sample.
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(80, 1.0f), 100);
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(80, 0.1f), 1000);
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(80, 40.0f), 2);
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(80, 500.0f), 1);
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(80, 0.3f), 500); // 267 samples round up to 500
    }

    void zoomWindowOfTwentyPixelsDoesNothing()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 300, 1, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        QCOMPARE(view->zoomFactorFor(QPoint(100, 100), QPoint(120, 200)), -1.0f);
        QVERIFY(view->zoomFactorFor(QPoint(100, 100), QPoint(121, 200)) > 0.0f);
        QVERIFY(view->zoomFactorFor(QPoint(300, 300), QPoint(100, 100)) < 1.0f); // right to left zooms out
    }

    void paintShowsCursorsAndWaves()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 1000, 1, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        view->setCursorT1(500);
        QImage image(view->size(), QImage::Format_ARGB32);
        QPainter painter(&image);
        view->drawContents(painter, QRect(QPoint(0, 0), view->size()));
        painter.end();
        const QRgb background = view->colour(1);
        const QRgb t1 = view->colour(6);
        // The T1 line stands at its sample's pixel over the rows.
        const int x = view->pixelOfSample(500);
        const int y = view->m_nMarginT + 3 + view->rows[0].centerY + view->rowHeightBase / 2 - 2;
        QCOMPARE(image.pixel(x, y), t1);
        // The wave leaves pixels of its own colour inside its row.
        const QRgb pen = frame->recording().analogMaps[0]->colour;
        int inked = 0;
        const int rowTop = view->m_nMarginT + 3 + view->rows[0].centerY - view->rowHeightBase / 2;
        for (int yy = rowTop; yy < rowTop + view->rowHeightBase; ++yy) {
            for (int xx = 0; xx < image.width(); ++xx)
                inked += image.pixel(xx, yy) == pen;
        }
        QVERIFY2(inked > 100, qPrintable(QString::number(inked)));
        QVERIFY(image.pixel(x + 3, view->height() - 2) == background);
    }

    void fourSamplesDrawNothing()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 300, 1, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        view->setDrawnExtent(4, false);
        QImage image(200, 200, QImage::Format_ARGB32);
        QPainter painter(&image);
        view->drawContents(painter, QRect(0, 0, 200, 200));
        painter.end();
        const QRgb background = view->colour(1);
        for (int y = 0; y < 200; y += 7) {
            for (int x = 0; x < 200; x += 7)
                QCOMPARE(image.pixel(x, y), background);
        }
    }

private:
    CMainFrame *m_main = nullptr;
};

QTEST_MAIN(WaveViewTest)
#include "test_waveview.moc"
