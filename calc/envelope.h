#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

// The least and the largest value of each run of `kRun` samples of one channel: an eighth of
// the samples' own memory. A view that shows thousands of samples per pixel column finds the
// column's extremes from the runs instead of touching every sample, so a 50 Hz wave compressed
// to one sample per cycle still shows its true envelope rather than an alias.
class CSampleEnvelope
{
public:
    static constexpr int kRun = 16;

    // Room for the runs of `samples` values; forgets what was summed before.
    bool Reserve(int samples);
    // Sums the whole runs among the first `loaded` values (called as a load advances).
    void Extend(const float *values, int loaded);
    // The whole runs summed so far.
    int Runs() const { return m_runs.load(std::memory_order_acquire); }

    // Least and largest finite value of values[first..last]; false when none is finite (a gap).
    bool Range(const float *values, int first, int last, float &low, float &high) const;

private:
    std::unique_ptr<float[]> m_minMax; // two per run: least, largest (NaN for a run of gaps)
    int m_capacity = 0;
    std::atomic<int> m_runs{0};
};

// Least and largest finite value of values[first..last], sample by sample.
bool SampleRange(const float *values, int first, int last, float &low, float &high);
