// Loading the sample file of a large recording, against three targets:
// - the first progress report with samples (the moment the frame can draw waves) under 300 ms
//   from the start of the load;
// - the whole load within 1.10 × a plain C loop that reads the same file and scales the same
//   samples, both timed in the same run;
// - the peak memory of the load within 1.2 × the size of the samples' own stores.

#include "benchrecording.h"
#include "cmtd99file.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The progress function as the frame's worker hands it to the loader: a step of one hundredth
// of the range, reports of samples done, cancel polls. `stopAfterFirst` cancels the load at the
// poll after the first report, when only that moment is of interest.
struct Progress
{
    Clock::time_point start;
    double firstReportMs = -1.0;
    int reports = 0;
    bool stopAfterFirst = false;

    static int fn(void *context, int code, int total, int current)
    {
        auto *self = static_cast<Progress *>(context);
        switch (code) {
        case 8: {
            const int step = static_cast<int>((double(total) - double(current)) * 0.01 + 0.5);
            return step < 1 ? 1 : step;
        }
        case 10:
            if (self->reports++ == 0)
                self->firstReportMs = msSince(self->start);
            return 0;
        case 0:
            return self->stopAfterFirst && self->reports > 0 ? -1 : 0;
        default:
            return 0;
        }
    }
};

// Reads the data file in 4 MiB blocks and writes the times and the scaled analog values into
// freshly allocated stores, record by record: the least a loader has to do.
double plainLoopMs(const BenchRecording &rec, double &checksum)
{
    const Clock::time_point start = Clock::now();
    const int recordSize = rec.recordSize();
    const size_t blockRecords = (size_t(4) << 20) / size_t(recordSize);
    auto *block = static_cast<unsigned char *>(std::malloc(blockRecords * size_t(recordSize)));
    auto *times = static_cast<int64_t *>(std::calloc(size_t(rec.points), sizeof(int64_t)));
    std::vector<float *> stores(size_t(rec.analogs));
    for (float *&store : stores)
        store = static_cast<float *>(std::calloc(size_t(rec.points), sizeof(float)));
    FILE *f = std::fopen(rec.datPath.c_str(), "rb");
    const double a = rec.a;
    const double b = rec.b;
    int n = 0;
    size_t got;
    while (n < rec.points && (got = std::fread(block, size_t(recordSize), blockRecords, f)) > 0) {
        for (size_t r = 0; r < got && n < rec.points; ++r, ++n) {
            const unsigned char *record = block + r * size_t(recordSize);
            int32_t stamp;
            std::memcpy(&stamp, record + 4, 4);
            times[n] = int64_t(stamp);
            for (int c = 0; c < rec.analogs; ++c) {
                int16_t raw;
                std::memcpy(&raw, record + 8 + 2 * c, 2);
                stores[size_t(c)][n] = static_cast<float>(raw * a + b);
            }
        }
    }
    std::fclose(f);
    const double ms = msSince(start);
    checksum = double(times[rec.points - 1]) + stores[0][rec.points / 2];
    for (float *store : stores)
        std::free(store);
    std::free(times);
    std::free(block);
    return ms;
}

// Time from the start of the load to its first report of samples.
void BM_FirstReport(benchmark::State &state)
{
    const BenchRecording &rec = largeBinaryRecording();
    double total = 0.0;
    for (auto _ : state) {
        CCmtd99File file;
        if (!file.LoadFile(rec.cfgPath.c_str())) {
            state.SkipWithError("configuration not read");
            return;
        }
        Progress progress;
        progress.stopAfterFirst = true;
        progress.start = Clock::now();
        file.LoadDat(rec.cfgPath.c_str(), &Progress::fn, &progress);
        if (progress.firstReportMs < 0.0) {
            state.SkipWithError("no report");
            return;
        }
        state.SetIterationTime(progress.firstReportMs / 1000.0);
        total += progress.firstReportMs;
    }
    state.counters["first_report_ms"] = total / double(state.iterations());
    state.counters["file_MB"] = rec.fileBytes() / 1e6;
}
BENCHMARK(BM_FirstReport)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(10);

// The whole load and the plain loop over the same file, alternately, in one run.
void BM_LoadVsPlainLoop(benchmark::State &state)
{
    const BenchRecording &rec = largeBinaryRecording();
    double loadMs = 0.0;
    double plainMs = 0.0;
    double checksum = 0.0;
    // A first pass of each brings the file into the page cache and the allocator to its steady state.
    plainLoopMs(rec, checksum);
    for (auto _ : state) {
        CCmtd99File file;
        if (!file.LoadFile(rec.cfgPath.c_str())) {
            state.SkipWithError("configuration not read");
            return;
        }
        Progress progress;
        progress.start = Clock::now();
        const bool loaded = file.LoadDat(rec.cfgPath.c_str(), &Progress::fn, &progress);
        const double ms = msSince(progress.start);
        if (!loaded || file.loadedPoints != rec.points) {
            state.SkipWithError("load failed");
            return;
        }
        state.SetIterationTime(ms / 1000.0);
        loadMs += ms;
        plainMs += plainLoopMs(rec, checksum);
        benchmark::DoNotOptimize(checksum);
    }
    const double runs = double(state.iterations());
    state.counters["load_ms"] = loadMs / runs;
    state.counters["plain_ms"] = plainMs / runs;
    state.counters["load_over_plain"] = loadMs / plainMs;
    state.counters["load_MB_per_s"] = rec.fileBytes() / 1e6 / (loadMs / runs / 1000.0);
}
BENCHMARK(BM_LoadVsPlainLoop)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

long residentBytes()
{
    long pages = 0;
    long resident = 0;
    if (FILE *f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(f);
    }
    return resident * sysconf(_SC_PAGESIZE);
}

// The load in a child process of its own, so that its peak resident size is the load's alone: the
// child resets its high-water mark (which a fork inherits), loads, and sends back how far its
// peak rose above where it started.
void BM_LoadPeakMemory(benchmark::State &state)
{
    const BenchRecording &rec = largeBinaryRecording();
    double growth = 0.0;
    for (auto _ : state) {
        int pipeEnds[2];
        if (pipe(pipeEnds) != 0) {
            state.SkipWithError("no pipe");
            return;
        }
        const pid_t child = fork();
        if (child == 0) {
            close(pipeEnds[0]);
            if (FILE *clear = std::fopen("/proc/self/clear_refs", "w")) {
                std::fputs("5", clear);
                std::fclose(clear);
            }
            const long before = residentBytes();
            double result = -1.0;
            {
                CCmtd99File file;
                if (file.LoadFile(rec.cfgPath.c_str()) &&
                    file.LoadDat(rec.cfgPath.c_str(), nullptr, nullptr)) {
                    rusage usage{};
                    getrusage(RUSAGE_SELF, &usage);
                    result = double(usage.ru_maxrss) * 1024.0 - double(before);
                }
            }
            if (write(pipeEnds[1], &result, sizeof result) != sizeof result)
                _exit(1);
            _exit(0);
        }
        close(pipeEnds[1]);
        double result = -1.0;
        const bool got = read(pipeEnds[0], &result, sizeof result) == sizeof result;
        close(pipeEnds[0]);
        int status = 0;
        waitpid(child, &status, 0);
        if (!got || result < 0.0) {
            state.SkipWithError("load in the child failed");
            return;
        }
        growth = std::max(growth, result);
    }
    state.counters["store_MB"] = rec.storeBytes() / 1e6;
    state.counters["peak_growth_MB"] = growth / 1e6;
    state.counters["peak_over_store"] = growth / rec.storeBytes();
}
BENCHMARK(BM_LoadPeakMemory)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_LoadAscii(benchmark::State &state)
{
    static const BenchRecording rec = writeBenchRecording("veldrix_bench_ascii", 32, 0, 100000, true);
    for (auto _ : state) {
        CCmtd99File file;
        if (!file.LoadFile(rec.cfgPath.c_str()) || !file.LoadDat(rec.cfgPath.c_str(), nullptr, nullptr))
            state.SkipWithError("load failed");
        benchmark::DoNotOptimize(file.loadedPoints);
    }
}
BENCHMARK(BM_LoadAscii)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
