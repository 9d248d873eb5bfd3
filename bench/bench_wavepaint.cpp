// A full repaint of the wave view into an offscreen image: 1600 × 1000 pixels, 64 analog
// channels of 1,000,000 samples, at the fit scale, at one pixel per sample, and at the fit
// scale with envelope drawing. The target is under 16 ms for each.
// And the first waves of a 138 MB binary recording: from the open of the file to the first
// paint of the wave view with samples, while the worker still reads. The target is 300 ms.

#include "benchmemory.h"
#include "benchrecording.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdviewanawave.h"
#include "mainframe.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStandardPaths>

#include <chrono>
#include <cmath>
#include <memory>

namespace {

constexpr int kChannels = 64;
constexpr int kPoints = 1000000;

struct Scene
{
    CMainFrame main;
    CCmtdChildFrame *frame = nullptr;
    CCmtdViewAnaWave *view = nullptr;

    Scene()
    {
        main.initialize();
        frame = new CCmtdChildFrame(&main);
        CCmtd99File &file = frame->recordingForJob();
        setOneRate(file, kPoints, 10000.0f, true, -100000);
        for (int c = 0; c < kChannels; ++c)
            addMemoryChannel(file, "U", "V", [c](int n) {
                return static_cast<float>(100.0 * std::sin(2 * M_PI * 50.0 * n / 10000.0 + c));
            });
        file.BuildScaleGroups();
        frame->resize(1600, 1000);
        view = frame->waveView();
        view->resize(1600, 1000);
        view->m_pArea->resize(1600, 1000);
        view->buildRows(false);
        view->setDrawnExtent(kPoints, false);
        frame->document()->extendEnvelopes(kPoints);
    }
};

Scene &scene()
{
    static Scene s;
    return s;
}

void paintOnce(benchmark::State &state, float scale, bool envelope = false)
{
    Scene &s = scene();
    s.view->setEnvelopeMode(envelope);
    s.view->setHorzScale(scale);
    QImage image(1600, 1000, QImage::Format_ARGB32_Premultiplied);
    const QRect rect(s.view->scrollX(), s.view->scrollY(), 1600, 1000);
    for (auto _ : state) {
        QPainter painter(&image);
        painter.translate(-rect.topLeft());
        s.view->drawContents(painter, rect);
    }
    state.counters["stride"] = s.view->stride;
}

void BM_PaintFit(benchmark::State &state)
{
    paintOnce(state, -1.0f);
}
BENCHMARK(BM_PaintFit)->Unit(benchmark::kMillisecond);

void BM_PaintOnePixelPerSample(benchmark::State &state)
{
    paintOnce(state, 1.0f);
}
BENCHMARK(BM_PaintOnePixelPerSample)->Unit(benchmark::kMillisecond);

// Envelope drawing at the fit scale: each pixel column from the min/max summary of the load.
void BM_PaintFitEnvelope(benchmark::State &state)
{
    paintOnce(state, -1.0f, true);
}
BENCHMARK(BM_PaintFitEnvelope)->Unit(benchmark::kMillisecond);

// Runs the event loop until `done` holds.
template <typename Done> void waitFor(Done done)
{
    while (!done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void BM_FirstWavesPaint(benchmark::State &state)
{
    const BenchRecording &rec = largeBinaryRecording();
    const QString path = QString::fromLocal8Bit(rec.cfgPath.c_str());
    CMainFrame main;
    main.initialize();
    main.resize(1600, 1000);
    main.show();
    QImage image(1600, 1000, QImage::Format_ARGB32_Premultiplied);
    double total = 0.0;
    int firstPoints = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        main.openFile(path);
        auto *frame = qobject_cast<CCmtdChildFrame *>(main.activeFrame());
        if (!frame) {
            state.SkipWithError("recording not opened");
            return;
        }
        CCmtdViewAnaWave *view = frame->waveView();
        waitFor([view] { return view->pointCount() > 0; });
        {
            QPainter painter(&image);
            view->drawContents(painter, QRect(0, 0, 1600, 1000));
        }
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(seconds);
        total += seconds;
        firstPoints = view->pointCount();
        // The load runs to its end before the frame is closed.
        waitFor([frame] {
            return !(frame->backgroundState() & (CCmtdDocument::StateBusy | CCmtdDocument::StateLoading)) &&
                   frame->worker().pendingKind() == CCmtdThread::KindNone;
        });
        frame->parentWidget()->close();
        QCoreApplication::processEvents();
    }
    state.counters["first_paint_ms"] = total * 1000.0 / double(state.iterations());
    state.counters["first_points"] = firstPoints;
}
BENCHMARK(BM_FirstWavesPaint)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true); // the frames' options stay out of the user's files
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
