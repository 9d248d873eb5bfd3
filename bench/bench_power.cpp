// Power curves over a long range: 1,000,000 samples of three voltages and three currents, every
// curve of a power job (P, Q and S of each phase and of the total). Two rates: 1 kHz (20 points
// per cycle) and 10 kHz (200 points per cycle), where six one-cycle phasors per sample dominate.

#include "benchmemory.h"
#include "cmtd99file.h"
#include "powercurves.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

void BM_PowerCurves(benchmark::State &state)
{
    const int points = 1000000;
    const float rate = float(state.range(0));
    CCmtd99File file;
    setOneRate(file, points, rate);
    PowerInputs in;
    static const char *const phases[] = {"A", "B", "C"};
    for (int p = 0; p < 3; ++p) {
        const double shift = -2.0 * M_PI * p / 3.0;
        in.u[p] = SourceOf(addMemoryChannel(
            file, QByteArray("U") + phases[p], "V",
            [&](int n) { return float(60.0 * std::sin(2 * M_PI * 50.0 * n / rate + shift)); }, phases[p]));
        in.i[0][p] = SourceOf(addMemoryChannel(
            file, QByteArray("I") + phases[p], "A",
            [&](int n) { return float(5.0 * std::sin(2 * M_PI * 50.0 * n / rate + shift - 0.5)); },
            phases[p]));
    }
    std::vector<float> curves(size_t(points) * 3 * kPowerPlaces);
    PowerOutputs out;
    for (int place = 0; place < kPowerPlaces; ++place) {
        out.p[place] = curves.data() + size_t(place * 3 + 0) * points;
        out.q[place] = curves.data() + size_t(place * 3 + 1) * points;
        out.s[place] = curves.data() + size_t(place * 3 + 2) * points;
    }
    for (auto _ : state) {
        PowerCurves(file, in, out, 0.0f);
        benchmark::DoNotOptimize(curves.data());
    }
    state.SetItemsProcessed(state.iterations() * points);
}
BENCHMARK(BM_PowerCurves)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
