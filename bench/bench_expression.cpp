// A script of ten channel statements over a 1,000,000-sample recording at 10 kHz on 50 Hz (200
// points per cycle): plain arithmetic on whole channels, effective values, a harmonic, the DC
// part, a delta, a filter and active power, compiled, run and taken into the recording as
// virtual channels, as the expression form runs it. Target: the whole script under 2 s.

#include "benchmemory.h"
#include "expanamulti.h"
#include "expfunctions.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

constexpr int kPoints = 1000000;

const char *const kScript = "\"S1\" = \"UA\" * 2 + 1\n"
                            "\"S2\" = (\"UA\" - \"UB\") / SQRT3\n"
                            "\"S3\" = \"UA\" * \"IA\" - \"UB\" * \"IB\"\n"
                            "\"S4\" = eff(\"UA\")\n"
                            "\"S5\" = rms(\"IA\")\n"
                            "\"S6\" = harm_e(\"UA\", 3)\n"
                            "\"S7\" = dpart(\"IA\")\n"
                            "\"S8\" = delta_mn(\"IA\")\n"
                            "\"S9\" = flt_hamm(\"UA\", 100, 32)\n"
                            "\"S10\" = power_p(\"UA\", \"IA\")\n";

CCmtd99File &recording()
{
    static CCmtd99File file;
    if (file.analogMaps.empty()) {
        setOneRate(file, kPoints, 10000.0f, true);
        const auto wave = [](double amplitude, double degrees) {
            return [amplitude, degrees](int n) {
                const double t = n / 10000.0;
                return float(amplitude * std::sin(2 * M_PI * 50.0 * t + degrees * M_PI / 180) +
                             0.05 * amplitude * std::sin(2 * M_PI * 150.0 * t));
            };
        };
        addMemoryChannel(file, "UA", "V", wave(100.0, 0.0), "A");
        addMemoryChannel(file, "UB", "V", wave(100.0, -120.0), "B");
        addMemoryChannel(file, "IA", "A", wave(5.0, -30.0), "A");
        addMemoryChannel(file, "IB", "A", wave(5.0, -150.0), "B");
    }
    return file;
}

void BM_TenChannelStatements(benchmark::State &state)
{
    FillExpFunctionTable();
    CCmtd99File &file = recording();
    CExpAnaMulti program;
    for (auto _ : state) {
        program.Compile(file, QString::fromLatin1(kScript));
        if (!ExpMessages.empty() || !program.Evaluate()) {
            state.SkipWithError("the script did not run");
            break;
        }
        benchmark::DoNotOptimize(program.TakeResults());
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}
BENCHMARK(BM_TenChannelStatements)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
