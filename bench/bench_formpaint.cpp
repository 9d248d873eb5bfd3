// One cursor step with the vector, the sequence or the harmonic form on show, on a recording of 96 AC
// channels (48 voltages, 48 currents) of 200,000 samples at 10 kHz: T1 moves one sample, the
// name column takes the values at the cursors, the form computes its phasors and the whole form
// (table and diagram) is painted into an offscreen image. The target is under 16 ms.

#include "anaformchngrpseq.h"
#include "anaformchngrpvec.h"
#include "anaformhmchart.h"
#include "benchmemory.h"
#include "cmtd99file.h"
#include "cmtdchildframe.h"
#include "cmtdviewanawave.h"
#include "mainframe.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QStandardPaths>

#include <cmath>

namespace {

constexpr int kChannels = 96;
constexpr int kPoints = 200000;

struct Scene
{
    CMainFrame main;
    CCmtdChildFrame *frame = nullptr;

    Scene()
    {
        main.initialize();
        frame = new CCmtdChildFrame(&main);
        CCmtd99File &file = frame->recordingForJob();
        setOneRate(file, kPoints, 10000.0f, true);
        for (int c = 0; c < kChannels; ++c) {
            const bool voltage = c < kChannels / 2;
            const double peak = voltage ? 100.0 : 5.0;
            const double shift = (c % 3) * 2 * M_PI / 3;
            const char phase[2] = {char('A' + c % 3), 0};
            addMemoryChannel(
                file, QByteArray(voltage ? "U" : "I") + char('a' + c % 3) + QByteArray::number(c / 3),
                voltage ? "V" : "A",
                [peak, shift](int n) {
                    return float(peak * std::sin(2 * M_PI * 50.0 * n / 10000.0 - shift));
                },
                phase);
        }
        file.BuildScaleGroups();
        frame->resize(1600, 1000);
        frame->waveView()->buildRows(false);
        frame->waveView()->setDrawnExtent(kPoints, false);
    }

    CChnMapAnalog *channel(int index) { return frame->recordingForJob().analogMaps[size_t(index)].get(); }
};

Scene &scene()
{
    static Scene s;
    return s;
}

void stepAndPaint(benchmark::State &state, CAnaFormBase &form)
{
    Scene &s = scene();
    form.resize(1400, 320);
    QImage image(form.size(), QImage::Format_ARGB32_Premultiplied);
    int t1 = 1000;
    for (auto _ : state) {
        s.frame->waveView()->setCursorT1(++t1);
        form.refresh();
        form.render(&image);
    }
}

void BM_VectorFormCursorStep(benchmark::State &state)
{
    Scene &s = scene();
    CAnaFormChnGrpVec form(7, s.frame, s.frame->anaContainer());
    std::vector<CChnMapAnalog *> chosen;
    for (int c : {0, 1, 2, 48, 49, 50, 3, 51})
        chosen.push_back(s.channel(c));
    form.setChannels(chosen);
    stepAndPaint(state, form);
}
BENCHMARK(BM_VectorFormCursorStep)->Unit(benchmark::kMillisecond);

void BM_SequenceFormCursorStep(benchmark::State &state)
{
    Scene &s = scene();
    CAnaFormChnGrpSeq form(8, s.frame, s.frame->anaContainer());
    form.setGroups({s.channel(0), s.channel(1), s.channel(2)}, {s.channel(48), s.channel(49), s.channel(50)});
    stepAndPaint(state, form);
}
BENCHMARK(BM_SequenceFormCursorStep)->Unit(benchmark::kMillisecond);

// The harmonic chart of a three-phase group: three spectra of 50 orders (200 points a cycle),
// the table of 51 rows and the bars.
void BM_HarmonicChartCursorStep(benchmark::State &state)
{
    Scene &s = scene();
    CAnaFormChnGrpHmChart form(9, s.frame, s.frame->anaContainer());
    form.setChartChannels({s.channel(48), s.channel(49), s.channel(50)});
    stepAndPaint(state, form);
}
BENCHMARK(BM_HarmonicChartCursorStep)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
