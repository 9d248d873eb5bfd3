#include "slidingeval.h"

#include "cmtd99file.h"
#include "complexd.h"
#include "phasor.h"

#include <algorithm>

namespace {

// One pass of the frame over the segments; `evaluate(i, start, n, step)` writes the value of
// sample i from the window at `start`, `hold(i, lastWritten)` fills a sample without one.
template <typename Evaluate, typename Hold>
void walkSegments(const CCmtd99File &file, float freq, int sampleCount, Evaluate evaluate, Hold hold)
{
    const int total = std::min(file.loadedPoints, sampleCount);
    int i = 0;
    int lastWritten = -1;
    int first = 0;
    for (const SampleSegment &s : file.segments) {
        const RateSegment segment{s.rate, first, std::min(s.end, total)};
        first = s.end;
        if (i >= segment.end)
            continue;
        if (!SegmentUsable(segment)) {
            for (; i < segment.end; ++i)
                hold(i, lastWritten, false);
            continue;
        }
        const int n = PointsPerCycle(segment.rate, freq);
        const int step = DecimationStep(n);
        const int last = DftWindowShift(n) + segment.end - n;
        for (; i < last && i < segment.end; ++i) {
            const int start = DftWindowStart(i, n, segment, total);
            if (start >= 0 && start + n <= sampleCount) {
                evaluate(i, start, n, step);
                lastWritten = i;
            } else {
                hold(i, lastWritten, true);
            }
        }
        for (; i < segment.end; ++i)
            hold(i, lastWritten, true);
    }
    for (; i < total; ++i)
        hold(i, lastWritten, true);
}

} // namespace

void SlidingEvaluate(const CCmtd99File &file, float freq, const float *samples, int sampleCount, float *out,
                     HoldRule rule, WindowValueFn fn, void *context)
{
    walkSegments(
        file, freq, sampleCount,
        [&](int i, int start, int n, int step) { out[i] = fn(context, samples + start, n, step); },
        [&](int i, int lastWritten, bool tail) {
            // Behind the windows the last value stands; a stretch too slow for a window is
            // filled by the curve's own rule.
            if (tail || rule == HoldRule::Last)
                out[i] = lastWritten >= 0 ? out[lastWritten] : 0.0f;
            else
                out[i] = 0.0f;
        });
}

void PhasorSeries(const CCmtd99File &file, float freq, const float *samples, int sampleCount, ComplexD *out)
{
    walkSegments(
        file, freq, sampleCount,
        [&](int i, int start, int n, int step) { out[i] = DftPhasor(samples + start, n, 1, step); },
        [&](int i, int lastWritten, bool tail) {
            out[i] = tail && lastWritten >= 0 ? out[lastWritten] : ComplexD();
        });
}
