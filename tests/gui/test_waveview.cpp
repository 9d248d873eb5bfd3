// The wave view: scales and their limits, cursors by mouse and keys, rows and their grouping,
// and what a paint actually puts on the screen.

#include "chnmap.h"
#include "cmtdchildframe.h"
#include "cmtdviewanawave.h"
#include "frametestcase.h"
#include "mainframe.h"
#include "polylineraster.h"

#include <QAction>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QTest>

#include <climits>
#include <limits>

class WaveViewTest : public FrameTestCase
{
    Q_OBJECT

public:
    WaveViewTest() : FrameTestCase(1000, 700) {}

private:
    // The top pixel row of the first row of waves, and the pixels of `pen` in one column of it.
    static int rowTop(const CCmtdViewAnaWave *view)
    {
        return view->m_nMarginT + 3 + view->rows[0].centerY - view->rowHeightBase / 2;
    }

    static int inkInColumn(const QImage &image, const CCmtdViewAnaWave *view, int x, QRgb pen)
    {
        int ink = 0;
        for (int y = rowTop(view); y < rowTop(view) + view->rowHeightBase; ++y)
            ink += image.pixel(x, y) == pen;
        return ink;
    }

private Q_SLOTS:
    void scalesSampleAtPixelAndZoomLimits()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 1000, 2, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        QCOMPARE(view->pointCount(), 1000);
        QCOMPARE(view->hScale, view->fitScale());
        // A drag of 20 pixels is no zoom window; right to left zooms out.
        QCOMPARE(view->zoomFactorFor(QPoint(100, 100), QPoint(120, 200)), -1.0f);
        QVERIFY(view->zoomFactorFor(QPoint(100, 100), QPoint(121, 200)) > 0.0f);
        QVERIFY(view->zoomFactorFor(QPoint(300, 300), QPoint(100, 100)) < 1.0f);
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
        // The zoom to T1..T2 is worked by hand in the tool bar tests; here cursors on one sample
        // leave scale and scroll as they were.
        view->setHorzScale(4.0f);
        QCOMPARE(view->hScale, 4.0f);
        QScrollBar *bar = view->m_pArea->horizontalScrollBar();
        bar->setValue(1200);
        QCOMPARE(bar->value(), 1200);
        view->setCursorT1(600);
        view->setCursorT2(600);
        view->zoomRange(-1, -1);
        QCOMPARE(view->hScale, 4.0f);
        QCOMPARE(bar->value(), 1200);
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
        // Labels fall on times of 1, 2 or 5 times a power of ten, at the fewest whole samples
        // that leave room for the label. At 1 kHz and 1 pixel per sample, 80 pixels need 80 ms:
        // 100 ms is the first such time.
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(80, 1.0f, 1000.0), 100);
        // 3 pixels per sample: 20 samples of 1 ms fill 60 pixels; 20 ms is round.
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(60, 3.0f, 1000.0), 20);
        // 1200 Hz: 60 samples are exactly 50 ms.
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(60, 1.0f, 1e6 / 1200.0), 60);
        // 960 Hz: 60 samples are 62.5 ms, not round; 96 samples are 100 ms (50 ms is 48 samples,
        // too few for the label).
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(60, 1.0f, 1e6 / 960.0), 96);
        // A period of 7/3 ms meets no round time in whole samples: a round sample count instead.
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(60, 6.0f, 1e6 / (3000.0 / 7.0)), 10);
        // Very wide zoom never goes below one sample.
        QCOMPARE(CCmtdViewAnaWave::labelSpacing(80, 500.0f, 1000.0), 1);
    }

    void longRecordingAtTheLargestZoomKeepsItsAxisToTheEnd()
    {
        // 10 million samples at 10 kHz: at the largest zoom the document is about 2e9 pixels
        // wide, far past the painter's fixed-point range. Scrolled to the very end, the axis
        // still carries its ticks and labels and the last sample is reachable.
        const int points = 10000000;
        CCmtdChildFrame *frame = openInMemory(m_main, points, 10000.0f, [](int n) {
            return float(100.0 * std::sin(2.0 * M_PI * 50.0 * n / 10000.0));
        });
        CCmtdViewAnaWave *view = frame->waveView();
        view->setHorzScale(view->maxScale());
        QVERIFY(view->hScale > 100.0f); // still far past one pixel per sample
        QScrollBar *bar = view->m_pArea->horizontalScrollBar();
        bar->setValue(bar->maximum());
        const int lastPixel = view->pixelOfSample(points - 1);
        QVERIFY2(lastPixel >= view->scrollX() && lastPixel < view->scrollX() + view->width(),
                 qPrintable(QStringLiteral("%1 vs %2").arg(lastPixel).arg(view->scrollX())));
        const QImage image = paintView(view);
        const QRgb tick = view->colour(2);
        const QRgb band = view->colour(3);
        const int tickRow = view->m_nMarginT - 3;
        int ticks = 0;
        int lettered = 0;
        for (int x = 150; x < image.width(); ++x) {
            ticks += image.pixel(x, tickRow) == tick;
            for (int y = 0; y < tickRow - 3; ++y)
                lettered += image.pixel(x, y) != band;
        }
        QVERIFY2(ticks >= 2, qPrintable(QString::number(ticks)));
        QVERIFY2(lettered > 20, qPrintable(QString::number(lettered)));
    }

    void nonFiniteSamplesAreGapsAndNeverHang()
    {
        // A FLOAT32 recording may hold NaN, infinities and values near the float limit; none
        // of them may stall the drawing, and NaN and infinity leave a gap in the line.
        const float inf = std::numeric_limits<float>::infinity();
        auto value = [inf](int n) -> float {
            if (n >= 400 && n < 420)
                return std::numeric_limits<float>::quiet_NaN();
            if (n == 600)
                return inf;
            if (n == 601)
                return -inf;
            if (n == 700)
                return 3.4e38f;
            if (n == 701)
                return -3.4e38f;
            return float(100.0 * std::sin(2.0 * M_PI * n / 100.0));
        };
        CCmtdChildFrame *frame = openInMemory(m_main, 1000, 1000.0f, value);
        CCmtdViewAnaWave *view = frame->waveView();
        CChnMapAnalog &map = *frame->recordingForJob().analogMaps[0];
        QElapsedTimer timer;
        timer.start();
        // Whatever the extremes say (an engine that lets an infinity in, or clean ones).
        for (const bool cleanExtremes : {false, true}) {
            if (cleanExtremes) {
                map.minValue = -100.0f;
                map.maxValue = 100.0f;
                map.absMax = 100.0f;
                frame->recordingForJob().BuildScaleGroups();
            }
            for (const float scale : {-1.0f, 1.0f, 4.0f, view->maxScale()}) {
                for (const bool envelope : {false, true}) {
                    view->setEnvelopeMode(envelope);
                    view->setHorzScale(scale);
                    view->showPoint(410);
                    paintView(view);
                }
            }
        }
        QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
        // At four pixels per sample, the columns of the NaN run carry no ink of the wave.
        view->setEnvelopeMode(false);
        view->setHorzScale(4.0f);
        view->showPoint(410);
        const QImage image = paintView(view);
        auto inkAt = [&](int sample) {
            return inkInColumn(image, view, view->pixelOfSample(sample) - view->scrollX(), map.colour);
        };
        QVERIFY(inkAt(395) > 0);
        for (int n = 402; n < 418; ++n)
            QCOMPARE(inkAt(n), 0);
    }

    void rasteriserBoundsItsWorkByTheImage()
    {
        // A segment from one end of the int range to the other crosses a small image on its
        // diagonal; walking it point by point would take 2^32 steps.
        QImage image(100, 100, QImage::Format_ARGB32);
        image.fill(0xff000000);
        const QPoint line[2] = {QPoint(INT_MIN, INT_MIN), QPoint(INT_MAX, INT_MAX)};
        QElapsedTimer timer;
        timer.start();
        RasterPolyline(image, QPoint(0, 0), line, 2, 0xffffffff);
        const QPoint across[2] = {QPoint(INT_MIN, 50), QPoint(INT_MAX, 50)};
        RasterPolyline(image, QPoint(0, 0), across, 2, 0xffff0000);
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        int diagonal = 0;
        for (int i = 1; i < 99; ++i)
            diagonal += image.pixel(i, i) == 0xffffffff || image.pixel(i - 1, i) == 0xffffffff;
        QVERIFY2(diagonal >= 95, qPrintable(QString::number(diagonal)));
        for (int x = 0; x < 100; ++x) {
            if (x != 50)
                QCOMPARE(image.pixel(x, 50), QRgb(0xffff0000));
        }
        // Outside the image nothing is touched.
        QCOMPARE(image.pixel(99, 0), QRgb(0xff000000));
    }

    void envelopeShowsTheTrueSwingOfACompressedWave()
    {
        // 50 Hz at 10 kHz, 900 cycles across about 900 pixels: one cycle per pixel column. Each
        // column's stroke must span the wave's swing, not a sample that happens to fall there.
        const int points = 180000;
        CCmtdChildFrame *frame = openInMemory(m_main, points, 10000.0f, [](int n) {
            return float(100.0 * std::sin(2.0 * M_PI * 50.0 * n / 10000.0));
        });
        CCmtdViewAnaWave *view = frame->waveView();
        view->setEnvelopeMode(true);
        view->setHorzScale(-1.0f);
        const QImage image = paintView(view);
        const QRgb pen = frame->recording().analogMaps[0]->colour;
        const int from = view->pixelOfSample(0) + 5;
        const int to = view->pixelOfSample(points - 1) - 5;
        std::vector<int> extents;
        for (int x = from; x < to; ++x) {
            int top = INT_MAX, bottom = INT_MIN;
            for (int y = rowTop(view); y < rowTop(view) + view->rowHeightBase; ++y) {
                if (image.pixel(x, y) == pen) {
                    top = qMin(top, y);
                    bottom = qMax(bottom, y);
                }
            }
            extents.push_back(bottom >= top ? bottom - top : 0);
        }
        const int widest = *std::max_element(extents.begin(), extents.end());
        QVERIFY2(widest >= 20, qPrintable(QString::number(widest)));
        const auto full =
            std::count_if(extents.begin(), extents.end(), [widest](int e) { return e >= widest - 2; });
        QVERIFY2(full >= qsizetype(extents.size() * 95 / 100),
                 qPrintable(QStringLiteral("%1 of %2").arg(full).arg(extents.size())));
    }

    void wavesAreDrawnAtTheScreensPixelRatio()
    {
        // On a screen of two device pixels per pixel the base line is one device pixel thin:
        // drawn at the device's density, not doubled.
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeSineRecording(dir, "s", 1000));
        CCmtdViewAnaWave *view = frame->waveView();
        const QRect rect(view->scrollX(), view->scrollY(), view->width(), view->height());
        QImage image(rect.size() * 2, QImage::Format_ARGB32);
        image.setDevicePixelRatio(2.0);
        QPainter painter(&image);
        painter.translate(-rect.topLeft());
        view->drawContents(painter, rect);
        painter.end();
        const int center = 2 * (view->m_nMarginT + 3 + view->rows[0].centerY);
        const int x = image.width() - 40;
        QCOMPARE(image.pixel(x, center), view->colour(4));
        QVERIFY(image.pixel(x, center + 1) != view->colour(4));
        QVERIFY(image.pixel(x, center - 1) != view->colour(4));
    }

    void envelopeOfARecordingReadFromDisk()
    {
        // The summary is built by the load itself: a 50 Hz sine at 1 kHz, 20 samples a cycle,
        // 50 cycles per 100 pixels at the fit scale, shows a full band in envelope drawing.
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeSineRecording(dir, "s", 20000));
        CCmtdViewAnaWave *view = frame->waveView();
        frame->action(CCmtdChildFrame::ActEnvelope)->trigger();
        QVERIFY(view->envelopeMode());
        view->setHorzScale(-1.0f);
        const QImage image = paintView(view);
        const QRgb pen = frame->recording().analogMaps[0]->colour;
        int full = 0, columns = 0;
        for (int x = view->pixelOfSample(0) + 5; x < view->pixelOfSample(19999) - 5; ++x, ++columns)
            full += inkInColumn(image, view, x, pen) >= view->rowHeightBase / 3;
        QVERIFY2(full >= columns * 95 / 100, qPrintable(QStringLiteral("%1 of %2").arg(full).arg(columns)));
        frame->action(CCmtdChildFrame::ActEnvelope)->trigger(); // off again for the other tests
    }

    void paintShowsCursorsAndWaves()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 1000, 1, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        view->setCursorT1(500);
        const QImage image = paintView(view); // at the fit scale: not scrolled
        const QRgb background = view->colour(1);
        const QRgb t1 = view->colour(6);
        // The T1 line stands at its sample's pixel over the rows.
        const int x = view->pixelOfSample(500);
        const int y = view->m_nMarginT + 3 + view->rows[0].centerY + view->rowHeightBase / 2 - 2;
        QCOMPARE(image.pixel(x, y), t1);
        // The wave leaves pixels of its own colour inside its row.
        int inked = 0;
        for (int xx = 0; xx < image.width(); ++xx)
            inked += inkInColumn(image, view, xx, frame->recording().analogMaps[0]->colour);
        QVERIFY2(inked > 100, qPrintable(QString::number(inked)));
        QVERIFY(image.pixel(x + 3, view->height() - 2) == background);
    }

    void fourSamplesDrawNothing()
    {
        QTemporaryDir dir;
        CCmtdChildFrame *frame = open(writeRecording(dir, "r", 300, 1, 0));
        CCmtdViewAnaWave *view = frame->waveView();
        view->setDrawnExtent(4, false);
        const QImage image = paintView(view);
        const QRgb background = view->colour(1);
        for (int y = 0; y < 200; y += 7) {
            for (int x = 0; x < 200; x += 7)
                QCOMPARE(image.pixel(x, y), background);
        }
    }
};

QTEST_MAIN(WaveViewTest)
#include "test_waveview.moc"
