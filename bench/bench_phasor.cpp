// The fundamental phasor at every sample of a long channel: 1,000,000 samples at 10 kHz on
// 50 Hz (200 points per cycle), for each of the four kernels.

#include "benchmemory.h"
#include "cmtd99file.h"
#include "complexd.h"
#include "globalsettings.h"
#include "slidingeval.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

void BM_PhasorEverySample(benchmark::State &state)
{
    const int points = 1000000;
    CCmtd99File file;
    setOneRate(file, points, 10000.0f);
    std::vector<float> x(points);
    for (int i = 0; i < points; ++i)
        x[size_t(i)] = static_cast<float>(100.0 * std::sin(2 * M_PI * 50.0 * i / 10000.0 + 0.3));
    std::vector<ComplexD> out(points);
    dftMethod = static_cast<int32_t>(state.range(0));
    for (auto _ : state) {
        PhasorSeries(file, 50.0f, x.data(), points, out.data());
        benchmark::DoNotOptimize(out.data());
    }
    dftMethod = 0;
    state.SetItemsProcessed(state.iterations() * points);
}
BENCHMARK(BM_PhasorEverySample)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

} // namespace
