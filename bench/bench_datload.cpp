// Loading the sample file of a large recording, against three targets:
// - the first progress report with samples (the moment the frame can draw waves) under 300 ms
//   from the start of the load;
// - the whole load within 1.10 × a plain C loop that reads the same file and scales the same
//   samples, both timed in the same run;
// - the peak memory of the load within 1.2 × the size of the samples' own stores (times and
//   values), measured in a process of its own.

#include "benchrecording.h"
#include "cmtd99file.h"

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The processor time of the calling thread, page faults and reads in the kernel included: on a
// machine shared with other work it varies far less than the elapsed time.
double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t half = values.size() / 2;
    return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2.0;
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
// freshly allocated stores, record by record: the least a loader has to do. The stores are one
// allocation, so that their places do not depend on the allocator's history.
double plainLoopMs(const BenchRecording &rec, double &checksum, double *cpuMs = nullptr)
{
    const double cpuStart = threadCpuMs();
    const Clock::time_point start = Clock::now();
    const int recordSize = rec.recordSize();
    const size_t points = size_t(rec.points);
    const size_t blockRecords = (size_t(4) << 20) / size_t(recordSize);
    auto *block = static_cast<unsigned char *>(std::malloc(blockRecords * size_t(recordSize)));
    auto *times = static_cast<int64_t *>(std::calloc(points * (2 + size_t(rec.analogs)), sizeof(float)));
    auto *values = reinterpret_cast<float *>(times + points);
    FILE *f = std::fopen(rec.datPath.c_str(), "rb");
    const double a = rec.a;
    const double b = rec.b;
    size_t n = 0;
    size_t got;
    while (n < points && (got = std::fread(block, size_t(recordSize), blockRecords, f)) > 0) {
        for (size_t r = 0; r < got && n < points; ++r, ++n) {
            const unsigned char *record = block + r * size_t(recordSize);
            int32_t stamp;
            std::memcpy(&stamp, record + 4, 4);
            times[n] = int64_t(stamp);
            for (int c = 0; c < rec.analogs; ++c) {
                int16_t raw;
                std::memcpy(&raw, record + 8 + 2 * c, 2);
                values[size_t(c) * points + n] = static_cast<float>(raw * a + b);
            }
        }
    }
    std::fclose(f);
    const double ms = msSince(start);
    if (cpuMs)
        *cpuMs = threadCpuMs() - cpuStart;
    checksum = double(times[points - 1]) + values[points / 2];
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

// The whole load and the plain loop over the same file, alternately, in one run: the medians of
// their elapsed and processor times and the ratios of these.
void BM_LoadVsPlainLoop(benchmark::State &state)
{
    const BenchRecording &rec = largeBinaryRecording();
    std::vector<double> loadMs, loadCpuMs, plainMs, plainCpuMs;
    double checksum = 0.0;
    // A first pass brings the file into the page cache.
    plainLoopMs(rec, checksum);
    for (auto _ : state) {
        CCmtd99File file;
        if (!file.LoadFile(rec.cfgPath.c_str())) {
            state.SkipWithError("configuration not read");
            return;
        }
        Progress progress;
        const double cpuStart = threadCpuMs();
        progress.start = Clock::now();
        const bool loaded = file.LoadDat(rec.cfgPath.c_str(), &Progress::fn, &progress);
        const double ms = msSince(progress.start);
        loadCpuMs.push_back(threadCpuMs() - cpuStart);
        if (!loaded || file.loadedPoints != rec.points) {
            state.SkipWithError("load failed");
            return;
        }
        state.SetIterationTime(ms / 1000.0);
        loadMs.push_back(ms);
        double cpuMs = 0.0;
        plainMs.push_back(plainLoopMs(rec, checksum, &cpuMs));
        plainCpuMs.push_back(cpuMs);
        benchmark::DoNotOptimize(checksum);
    }
    state.counters["load_ms"] = median(loadMs);
    state.counters["plain_ms"] = median(plainMs);
    state.counters["load_over_plain"] = median(loadMs) / median(plainMs);
    state.counters["load_cpu_ms"] = median(loadCpuMs);
    state.counters["plain_cpu_ms"] = median(plainCpuMs);
    state.counters["cpu_load_over_plain"] = median(loadCpuMs) / median(plainCpuMs);
}
BENCHMARK(BM_LoadVsPlainLoop)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(7);

// A figure of /proc/self/status in bytes ("VmRSS", "VmHWM").
double statusBytes(const char *field)
{
    double kib = -1.0;
    if (FILE *f = std::fopen("/proc/self/status", "r")) {
        char line[256];
        const size_t length = std::strlen(field);
        while (std::fgets(line, sizeof line, f)) {
            if (std::strncmp(line, field, length) == 0 && line[length] == ':')
                kib = std::atof(line + length + 1);
        }
        std::fclose(f);
    }
    return kib * 1024.0;
}

// Run in a process of its own (this program started again with "--load-peak <cfg>"): loads the
// recording and prints how far the peak resident size rose above where it started.
int loadPeakChild(const char *cfgPath)
{
    const double before = statusBytes("VmRSS");
    CCmtd99File file;
    if (!file.LoadFile(cfgPath) || !file.LoadDat(cfgPath, nullptr, nullptr))
        return 1;
    std::printf("%.0f\n", statusBytes("VmHWM") - before);
    return 0;
}

// The load in a new process, so that its peak is the load's alone: a forked child would share
// the pages of this process, which has loaded the recording before.
void BM_LoadPeakMemory(benchmark::State &state)
{
    const BenchRecording &rec = largeBinaryRecording();
    char self[4096] = {};
    if (readlink("/proc/self/exe", self, sizeof self - 1) <= 0) {
        state.SkipWithError("program path unknown");
        return;
    }
    const std::string command = std::string("'") + self + "' --load-peak '" + rec.cfgPath + "'";
    double growth = 0.0;
    for (auto _ : state) {
        FILE *child = popen(command.c_str(), "r");
        double bytes = -1.0;
        if (!child || std::fscanf(child, "%lf", &bytes) != 1)
            bytes = -1.0;
        if (child && pclose(child) != 0)
            bytes = -1.0;
        if (bytes < 0.0) {
            state.SkipWithError("load in the child failed");
            return;
        }
        growth = std::max(growth, bytes);
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

int main(int argc, char **argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--load-peak") == 0)
        return loadPeakChild(argv[2]);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
