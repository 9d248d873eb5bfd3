// A location with automatic data windows on two recordings of 2 s at 10 kHz (a fault on a 100 km
// line computed from its long-line equations): both windows found from the current edges, the
// phasors of both ends, and the search. The target is well under 0.5 s.

#include "benchmemory.h"
#include "cmtd99file.h"
#include "faultend.h"
#include "faultsolver.h"
#include "linefault.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr int kPoints = 20000;
constexpr int kFaultAt = 12000;

// One end's recording in memory: three voltages and three currents in secondary values.
struct BenchEnd
{
    explicit BenchEnd(const linefault::End &e, const char *title)
    {
        setOneRate(file, kPoints, 10000.0f);
        file.triggerIndex = kFaultAt;
        for (int c = 0; c < 6; ++c) {
            const int p = c % 3;
            const std::vector<float> x =
                c < 3 ? linefault::Wave(e.preU[p], e.u[p], 2200, 10000.0, kPoints, kFaultAt)
                      : linefault::Wave(e.preI[p], e.i[p], 250, 10000.0, kPoints, kFaultAt);
            auto record = std::make_unique<CmtdChn_Analog>();
            record->Reset(c + 1);
            record->ratedFreq = 50.0f;
            file.analogChannels.push_back(std::move(record));
            auto map = std::make_unique<CChnMapAnalog>(file.analogChannels.back().get());
            map->allocate(kPoints);
            std::copy(x.begin(), x.end(), map->Values());
            (c < 3 ? end.voltage[p] : end.current[0][p]) = map.get();
            file.analogMaps.push_back(std::move(map));
        }
        end.title = QString::fromLatin1(title);
        end.file = &file;
        end.tvPrimary = 220000.0f;
        end.tvSecondary = 100.0f;
        end.taPrimary = 1250.0f;
        end.taSecondary = 5.0f;
    }
    CCmtd99File file;
    FaultEnd end;
};

void BM_LocateWithAutomaticWindows(benchmark::State &state)
{
    linefault::Case c;
    c.x = 41.7L;
    c.kind = linefault::Kind::BCG;
    linefault::End m, n;
    linefault::Solve(c, m, n);
    BenchEnd endM(m, "End M");
    BenchEnd endN(n, "End N");
    FaultLine line;
    line.length = 100;
    line.R1 = 0.03;
    line.X1 = 0.3;
    line.C1 = 0.012;
    FaultSolver solver;
    for (auto _ : state) {
        AutoDataWindow(endM.end);
        AutoDataWindow(endN.end);
        benchmark::DoNotOptimize(LocateFault(endM.end, endN.end, line, solver));
    }
    state.counters["positionKm"] = solver.position;
}
BENCHMARK(BM_LocateWithAutomaticWindows)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
