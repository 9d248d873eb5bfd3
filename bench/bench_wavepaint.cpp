// A full repaint of the wave view into an offscreen image: 1600 × 1000 pixels, 64 analog
// channels of 1,000,000 samples, at the fit scale, at one pixel per sample, and at the fit
// scale with envelope drawing. The target is under 16 ms for each.

#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdviewanawave.h"
#include "mainframe.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

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
        SampleSegment segment;
        segment.index = 1;
        segment.rate = 10000.0f;
        segment.end = kPoints;
        file.segments.push_back(segment);
        file.pointCount = file.loadedPoints = kPoints;
        file.sampleTimes = static_cast<int64_t *>(AllocateSamples(kPoints, sizeof(int64_t)));
        for (int n = 0; n < kPoints; ++n)
            file.sampleTimes[n] = int64_t(n) * 100 - 100000;
        for (int c = 0; c < kChannels; ++c) {
            auto record = std::make_unique<CmtdChn_Analog>();
            record->Reset(c + 1);
            record->ch_id = "U";
            record->uu = "V";
            file.analogChannels.push_back(std::move(record));
            auto map = std::make_unique<CChnMapAnalog>(file.analogChannels.back().get());
            map->allocate(kPoints);
            float *v = map->Values();
            for (int n = 0; n < kPoints; ++n)
                v[n] = static_cast<float>(100.0 * std::sin(2 * M_PI * 50.0 * n / 10000.0 + c));
            map->RecalcExtremes();
            file.analogMaps.push_back(std::move(map));
        }
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

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
