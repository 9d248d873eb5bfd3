#include "inception.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "phasor.h"

#include <algorithm>
#include <cmath>

int FirstJumpSample(const CCmtd99File &file, const std::vector<const CChnMapAnalog *> &channels, int from)
{
    int found = -1;
    for (const CChnMapAnalog *chn : channels) {
        if (!chn || !chn->Values())
            continue;
        RateSegment segment;
        if (!FindRateSegment(file, std::max(from, 0), segment))
            continue;
        const int first = std::max(from, 0);
        int n = PointsPerCycle(segment.rate, RatedFreq(*chn));
        if (n < 2)
            continue;
        // The reference: the largest magnitude of the first cycle.
        double peak = 0.0;
        for (int i = first; i < first + n && i < chn->sampleCount; ++i)
            peak = std::max(peak, double(std::fabs(chn->Value(i))));
        // A channel that is quiet before the fault (a residual current or voltage) holds only
        // noise in its first cycle: its jump must also be a part of its own largest value.
        const double extent = std::max(std::fabs(double(chn->maxValue)), std::fabs(double(chn->minValue)));
        const double threshold = std::max({0.2 * peak, 0.05 * extent, 1e-6});
        const int stop = found >= 0 ? found : std::min(file.loadedPoints, chn->sampleCount);
        for (int i = first + n; i < stop; ++i) {
            if (i >= segment.end) {
                // A new rate: the cycle counts anew.
                if (!FindRateSegment(file, i, segment))
                    break;
                n = PointsPerCycle(segment.rate, RatedFreq(*chn));
                if (n < 2 || i - n < first)
                    continue;
            }
            if (std::fabs(double(chn->Value(i)) - double(chn->Value(i - n))) > threshold) {
                found = i;
                break;
            }
        }
    }
    return found;
}
