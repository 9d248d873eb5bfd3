// Loading the sample file of a large recording: throughput from the page cache and the
// process's peak memory against the size of the sample stores themselves.

#include "cmtd99file.h"

#include <benchmark/benchmark.h>

#include <QDir>

#include <sys/resource.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

std::string tempBase(const char *name)
{
    return (QDir::tempPath() + QLatin1Char('/') + QLatin1String(name)).toStdString();
}

// A recording of `analogs` analog and `statuses` status channels at 10 kHz, 50 Hz sines.
std::string writeRecording(const char *name, int analogs, int statuses, int points, bool ascii)
{
    const std::string base = tempBase(name);
    FILE *cfg = std::fopen((base + ".cfg").c_str(), "w");
    std::fprintf(cfg, "BENCH,LOAD,1999\n%d,%dA,%dD\n", analogs + statuses, analogs, statuses);
    for (int c = 1; c <= analogs; ++c)
        std::fprintf(cfg, "%d,U%d,A,,V,0.01,0,0,-32767,32767,1,1,S\n", c, c);
    for (int c = 1; c <= statuses; ++c)
        std::fprintf(cfg, "%d,D%d,,,0\n", c, c);
    std::fprintf(cfg, "50\n1\n10000,%d\n01/01/2025,00:00:00.000000\n01/01/2025,00:00:00.100000\n%s\n1\n",
                 points, ascii ? "ASCII" : "BINARY");
    std::fclose(cfg);

    FILE *dat = std::fopen((base + ".dat").c_str(), "wb");
    const int words = (statuses + 15) / 16;
    std::vector<int16_t> record(static_cast<size_t>(4 + analogs + words));
    for (int n = 0; n < points; ++n) {
        const int32_t number = n + 1;
        const int32_t stamp = n * 100;
        if (ascii) {
            std::fprintf(dat, "%d,%d", number, stamp);
            for (int c = 0; c < analogs; ++c)
                std::fprintf(dat, ",%d", (n * 37 + c * 1000) % 60000 - 30000);
            for (int c = 0; c < statuses; ++c)
                std::fprintf(dat, ",%d", (n / 1000 + c) & 1);
            std::fputc('\n', dat);
            continue;
        }
        std::memcpy(record.data(), &number, 4);
        std::memcpy(record.data() + 2, &stamp, 4);
        for (int c = 0; c < analogs; ++c)
            record[size_t(4 + c)] = static_cast<int16_t>((n * 37 + c * 1000) % 60000 - 30000);
        for (int w = 0; w < words; ++w)
            record[size_t(4 + analogs + w)] = static_cast<int16_t>((n / 1000) & 1 ? 0x5555 : 0);
        std::fwrite(record.data(), 2, record.size(), dat);
    }
    std::fclose(dat);
    return base + ".cfg";
}

long peakKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void BM_LoadBinary(benchmark::State &state)
{
    const int analogs = 96;
    const int statuses = 64;
    const int points = 1000000;
    const std::string path = writeRecording("veldrix_bench_bin", analogs, statuses, points, false);
    const double fileBytes = double(points) * ((analogs + 4) * 2 + ((statuses + 15) / 16) * 2);
    const double storeBytes =
        double(points) * (4.0 * analogs + 8.0) + double(statuses) * ((points + 31) / 32) * 4.0;
    const long before = peakKiB();
    for (auto _ : state) {
        CCmtd99File file;
        if (!file.LoadFile(path.c_str()) || !file.LoadDat(path.c_str(), nullptr, nullptr))
            state.SkipWithError("load failed");
        benchmark::DoNotOptimize(file.loadedPoints);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileBytes));
    state.counters["MB_per_s"] =
        benchmark::Counter(fileBytes * double(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
    state.counters["store_MB"] = storeBytes / 1e6;
    state.counters["peak_growth_MB"] = double(peakKiB() - before) * 1024.0 / 1e6;
    state.counters["peak_over_store"] = double(peakKiB() - before) * 1024.0 / storeBytes;
}
BENCHMARK(BM_LoadBinary)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_LoadAscii(benchmark::State &state)
{
    const std::string path = writeRecording("veldrix_bench_ascii", 32, 0, 100000, true);
    for (auto _ : state) {
        CCmtd99File file;
        if (!file.LoadFile(path.c_str()) || !file.LoadDat(path.c_str(), nullptr, nullptr))
            state.SkipWithError("load failed");
        benchmark::DoNotOptimize(file.loadedPoints);
    }
}
BENCHMARK(BM_LoadAscii)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
