#pragma once

// The large recording that the loading benchmarks read: written once per process into the
// system's temporary folder, binary (or ASCII), 10 kHz, analog saw-tooth values and status
// channels that toggle every thousand samples.

#include <QDir>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

struct BenchRecording
{
    std::string cfgPath;
    std::string datPath;
    int analogs = 0;
    int statuses = 0;
    int points = 0;
    double a = 0.01; // the multiplier of every analog channel
    double b = 0.0;

    int recordSize() const { return (analogs + 4) * 2 + ((statuses + 15) / 16) * 2; }
    double fileBytes() const { return double(points) * recordSize(); }
    // What the recording holds once loaded: the times, the analog stores and the status bits.
    double storeBytes() const
    {
        return double(points) * (4.0 * analogs + 8.0) + double(statuses) * ((points + 31) / 32) * 4.0;
    }
};

inline int16_t benchAnalogRaw(int n, int c)
{
    return static_cast<int16_t>((n * 37 + c * 1000) % 60000 - 30000);
}

inline BenchRecording writeBenchRecording(const char *name, int analogs, int statuses, int points, bool ascii)
{
    BenchRecording rec;
    rec.analogs = analogs;
    rec.statuses = statuses;
    rec.points = points;
    const std::string base = (QDir::tempPath() + QLatin1Char('/') + QLatin1String(name)).toStdString();
    rec.cfgPath = base + ".cfg";
    rec.datPath = base + ".dat";
    FILE *cfg = std::fopen(rec.cfgPath.c_str(), "w");
    std::fprintf(cfg, "BENCH,LOAD,1999\n%d,%dA,%dD\n", analogs + statuses, analogs, statuses);
    for (int c = 1; c <= analogs; ++c)
        std::fprintf(cfg, "%d,U%d,A,,V,%g,%g,0,-32767,32767,1,1,S\n", c, c, rec.a, rec.b);
    for (int c = 1; c <= statuses; ++c)
        std::fprintf(cfg, "%d,D%d,,,0\n", c, c);
    std::fprintf(cfg, "50\n1\n10000,%d\n01/01/2025,00:00:00.000000\n01/01/2025,00:00:00.100000\n%s\n1\n",
                 points, ascii ? "ASCII" : "BINARY");
    std::fclose(cfg);

    FILE *dat = std::fopen(rec.datPath.c_str(), "wb");
    const int words = (statuses + 15) / 16;
    std::vector<int16_t> record(static_cast<size_t>(4 + analogs + words));
    for (int n = 0; n < points; ++n) {
        const int32_t number = n + 1;
        const int32_t stamp = n * 100;
        if (ascii) {
            std::fprintf(dat, "%d,%d", number, stamp);
            for (int c = 0; c < analogs; ++c)
                std::fprintf(dat, ",%d", benchAnalogRaw(n, c));
            for (int c = 0; c < statuses; ++c)
                std::fprintf(dat, ",%d", (n / 1000 + c) & 1);
            std::fputc('\n', dat);
            continue;
        }
        std::memcpy(record.data(), &number, 4);
        std::memcpy(record.data() + 2, &stamp, 4);
        for (int c = 0; c < analogs; ++c)
            record[size_t(4 + c)] = benchAnalogRaw(n, c);
        for (int w = 0; w < words; ++w)
            record[size_t(4 + analogs + w)] = static_cast<int16_t>((n / 1000) & 1 ? 0x5555 : 0);
        std::fwrite(record.data(), 2, record.size(), dat);
    }
    std::fclose(dat);
    return rec;
}

// The 138 MB recording of the first-waves and whole-load targets: 64 analog and 32 status
// channels, 140-byte records.
inline const BenchRecording &largeBinaryRecording()
{
    static const BenchRecording rec =
        writeBenchRecording("veldrix_bench_138mb", 64, 32, 138000000 / 140, false);
    return rec;
}
