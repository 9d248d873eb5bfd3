#pragma once

// The walk that every whole-curve computation shares: rate segment after rate segment, the
// running sample index entering each where the last one stopped, with the progress report and
// stop check of the worker. Used by the derived series (derivedseries.cpp, freqseries.cpp,
// exprseries.cpp) and by nothing else.

#include "cmtd99file.h"
#include "phasor.h"

#include <algorithm>
#include <cstdint>

// One channel's samples as a curve reads them.
struct SeriesSource
{
    const float *x = nullptr;
    int32_t count = 0;    // samples in x
    float freq = 50.0f;   // the channel's rated frequency (RatedFreq)
    int16_t chnClass = 0; // the signal class: 1 AC voltage, 2 AC current, ...
};

SeriesSource SourceOf(const CChnMapAnalog &chn);
// How many samples a curve of `source` has: the loaded samples that the channel holds.
int SeriesLength(const CCmtd99File &file, const SeriesSource &source);

// The progress of a curve on the worker: a report (code 10) and a stop poll (code 0) at every
// hundredth of the recording, and a poll after each segment. Without a progress function it
// never stops, which is how the expression language runs the same curves.
class SeriesProgress
{
public:
    SeriesProgress() = default;
    // Starts the range (code 8) and takes the step that the worker returns.
    SeriesProgress(ProgressFn fn, void *context, int total);

    // False when the job is to stop; checked at sample `i`.
    bool at(int i)
    {
        if (!m_fn || i % m_step != m_step - 1)
            return true;
        return report(i);
    }
    // False when the job is to stop; checked after a segment.
    bool segmentDone();
    bool stopped() const { return m_stopped; }

private:
    bool report(int i);

    ProgressFn m_fn = nullptr;
    void *m_context = nullptr;
    int m_total = 0;
    int m_step = 1;
    bool m_stopped = false;
};

// Calls fn(segment) for the rate segments in order, each beginning where the one before ended
// and cut at `total`; stops when fn gives false. Returns false when stopped.
template <typename Fn> bool ForEachRateSegment(const CCmtd99File &file, int total, Fn fn)
{
    int32_t first = 0;
    for (const SampleSegment &s : file.segments) {
        const int32_t end = std::min(s.end, total);
        if (end <= first)
            continue;
        const RateSegment segment{s.rate, first, end};
        first = end;
        if (!fn(segment))
            return false;
    }
    return true;
}

// The sample repeats the one before it; the first sample of the recording is 0.
inline void HoldSample(float *y, int i)
{
    y[i] = i > 0 ? y[i - 1] : 0.0f;
}

// The sliding evaluation frame over one usable segment with `n` points per cycle: every
// sample from segment.first that a window reaches gets value(start, n, step), the window start
// being that of the cursor; the samples behind the last window get tail(i, j), j = 1, 2, ...
// from the first of them. A window that would reach beyond `count` samples holds instead.
// Returns false when the progress asks to stop.
template <typename Value, typename Tail>
bool SlideSegment(const RateSegment &segment, int n, int total, int count, float *y, SeriesProgress &progress,
                  Value value, Tail tail)
{
    const int step = DecimationStep(n);
    const int64_t last = int64_t(DftWindowShift(n)) + segment.end - n;
    int i = segment.first;
    for (; i < last && i < segment.end; ++i) {
        const int start = DftWindowStart(i, n, segment, total);
        if (n >= 1 && start >= 0 && int64_t(start) + n <= count)
            y[i] = value(start, n, step);
        else
            HoldSample(y, i);
        if (!progress.at(i))
            return false;
    }
    for (int j = 1; i < segment.end; ++i, ++j) {
        tail(i, j);
        if (!progress.at(i))
            return false;
    }
    return true;
}

// A whole curve in the sliding frame with windows of one cycle of `freq`: usable segments by
// SlideSegment with a holding tail, other segments sample by sample by unusable(i).
template <typename Value, typename Unusable>
bool SlideCurve(const CCmtd99File &file, float freq, int total, int count, float *y, SeriesProgress &progress,
                Value value, Unusable unusable)
{
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        if (SegmentUsable(segment)) {
            const int n = PointsPerCycle(segment.rate, freq);
            const auto hold = [y](int i, int) { HoldSample(y, i); };
            if (!SlideSegment(segment, n, total, count, y, progress, value, hold))
                return false;
        } else {
            for (int i = segment.first; i < segment.end; ++i) {
                unusable(i);
                if (!progress.at(i))
                    return false;
            }
        }
        return progress.segmentDone();
    });
}
