#include "envelope.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

bool SampleRange(const float *values, int first, int last, float &low, float &high)
{
    float lo = std::numeric_limits<float>::infinity();
    float hi = -std::numeric_limits<float>::infinity();
    for (int i = first; i <= last; ++i) {
        const float v = values[i];
        // A NaN fails both tests and so stays out; infinities are no reading either.
        if (v < lo && std::isfinite(v))
            lo = v;
        if (v > hi && std::isfinite(v))
            hi = v;
    }
    if (lo > hi)
        return false;
    low = lo;
    high = hi;
    return true;
}

bool CSampleEnvelope::Reserve(int samples)
{
    m_runs.store(0, std::memory_order_relaxed);
    const int runs = samples > 0 ? samples / kRun : 0;
    m_minMax.reset(runs > 0 ? new (std::nothrow) float[size_t(runs) * 2] : nullptr);
    m_capacity = m_minMax ? runs : 0;
    return m_minMax || runs == 0;
}

void CSampleEnvelope::Extend(const float *values, int loaded)
{
    const int target = std::min(loaded / kRun, m_capacity);
    int run = m_runs.load(std::memory_order_relaxed);
    for (; run < target; ++run) {
        float low = std::numeric_limits<float>::quiet_NaN();
        float high = low;
        SampleRange(values, run * kRun, run * kRun + kRun - 1, low, high);
        m_minMax[size_t(run) * 2] = low;
        m_minMax[size_t(run) * 2 + 1] = high;
    }
    m_runs.store(run, std::memory_order_release);
}

bool CSampleEnvelope::Range(const float *values, int first, int last, float &low, float &high) const
{
    float lo = std::numeric_limits<float>::infinity();
    float hi = -std::numeric_limits<float>::infinity();
    auto take = [&](float a, float b) {
        if (a < lo)
            lo = a;
        if (b > hi)
            hi = b;
    };
    const int runs = Runs();
    int i = first;
    // Loose samples up to the first whole run, then runs, then the loose rest.
    const int firstRun = (first + kRun - 1) / kRun;
    const int endRun = std::min((last + 1) / kRun, runs);
    float a, b;
    if (firstRun < endRun) {
        if (i < firstRun * kRun && SampleRange(values, i, firstRun * kRun - 1, a, b))
            take(a, b);
        for (int r = firstRun; r < endRun; ++r)
            take(m_minMax[size_t(r) * 2], m_minMax[size_t(r) * 2 + 1]); // NaN pairs change nothing
        i = endRun * kRun;
    }
    if (i <= last && SampleRange(values, i, last, a, b))
        take(a, b);
    if (lo > hi)
        return false;
    low = lo;
    high = hi;
    return true;
}
