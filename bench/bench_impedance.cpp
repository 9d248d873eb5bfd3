// The impedance trace over a long range: 1,000,000 samples of three voltages and three
// currents, the compensated phase-to-earth loops of all three phases. Two rates: 1 kHz (20
// points per cycle) and 10 kHz (200 points per cycle), where six phasors per sample dominate.

#include "benchmemory.h"
#include "cmtd99file.h"
#include "rxobject.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

void BM_ImpedanceTrace(benchmark::State &state)
{
    const int points = 1000000;
    const float rate = float(state.range(0));
    CCmtd99File file;
    setOneRate(file, points, rate);
    RxObject object;
    object.pRecording = &file;
    static const char *const phases[] = {"A", "B", "C"};
    for (int p = 0; p < 3; ++p) {
        const double shift = -2.0 * M_PI * p / 3.0;
        object.chnU[p] = &addMemoryChannel(
            file, QByteArray("U") + phases[p], "V",
            [&](int n) { return float(60.0 * std::sin(2 * M_PI * 50.0 * n / rate + shift)); }, phases[p]);
        object.chnI[0][p] = &addMemoryChannel(
            file, QByteArray("I") + phases[p], "A",
            [&](int n) { return float(5.0 * std::sin(2 * M_PI * 50.0 * n / rate + shift - 1.2)); },
            phases[p]);
    }
    object.fR1 = 0.1, object.fX1 = 0.4, object.fR0 = 0.3, object.fX0 = 1.2;
    object.nMask = RxObject::AllRows;
    RxFinishObject(object);
    for (auto _ : state) {
        RxComputeTraces(object, 0, points - 1, nullptr, nullptr);
        benchmark::DoNotOptimize(object.trace[0].data());
    }
    state.SetItemsProcessed(state.iterations() * points);
}
BENCHMARK(BM_ImpedanceTrace)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
