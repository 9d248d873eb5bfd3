#include "cursorvalue.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "phasor.h"

ChnCursorValue ChnCursorValueAt(const CCmtd99File &file, const CChnMapAnalog &chn, int cursor)
{
    ChnCursorValue value;
    if (chn.direct) {
        // A virtual channel whose samples already are the values to show.
        const double sample = chn.Value(cursor);
        value.flags = ChnCursorValue::HasValue | ChnCursorValue::HasMean;
        value.effective = sample;
        value.phasor.re = sample;
        value.windowStart = cursor;
        return value;
    }

    int start = cursor;
    int n = 0;
    int step = 0;
    RateSegment segment;
    const bool found = ChnSegmentWindow(file, chn, start, n, step, segment);
    if (chn.IsAC()) {
        const RateSegment *known = found ? &segment : nullptr;
        if (RealEffectiveAt(file, known, &chn, start, value.effective) == EffectiveValue)
            value.flags |= ChnCursorValue::HasValue;
        int used = start;
        value.code = BasePhasorAt(file, known, &chn, used, value.phasor);
        if (value.code == PhasorValue) {
            value.flags |= ChnCursorValue::HasPhasor;
            const int cycle = found ? PointsPerCycle(segment.rate, RatedFreq(chn)) : 0;
            // The window begins before the cursor: turn the phasor on to the cursor's sample.
            if (used != cursor && cycle > 0)
                value.phasor = RotatePhasor(value.phasor, double(cursor - used) * 6.283185307179586 / cycle);
            value.n = cycle;
            value.step = DecimationStep(cycle);
        } else if (value.code == MeanValue) {
            value.flags |= ChnCursorValue::HasMean;
        }
        value.windowStart = used;
        return value;
    }

    if (found) {
        double mean = 0.0;
        if (LowRateMeanAt(file, segment, &chn, cursor, mean) == MeanValue) {
            value.flags |= ChnCursorValue::HasMean;
            value.phasor.re = mean;
            value.code = MeanValue;
        }
    }
    if (RealEffectiveAt(file, found ? &segment : nullptr, &chn, cursor, value.effective) == EffectiveValue)
        value.flags |= ChnCursorValue::HasValue;
    value.windowStart = cursor;
    return value;
}
