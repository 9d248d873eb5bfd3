#include "harmonics.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "phasor.h"

#include <algorithm>
#include <cmath>

int HighestHarmonic(int n, int limit)
{
    // Below half the samples of a cycle an order is told apart from its mirror.
    return std::max(0, std::min({limit, 50, (n - 1) / 2}));
}

HarmonicSpectrum HarmonicSpectrumAt(const CCmtd99File &file, const CChnMapAnalog &chn, int cursor,
                                    int maxOrder)
{
    HarmonicSpectrum out;
    int start = cursor;
    int n = 0;
    int step = 0;
    RateSegment segment;
    if (!ChnSegmentWindow(file, chn, start, n, step, segment) || n < 3 || start < 0 ||
        start + n > chn.sampleCount || start + n > segment.end)
        return out;
    const float *x = chn.Values() + start;
    out.valid = true;
    out.windowStart = start;
    out.n = n;
    out.fundamentalHz = double(segment.rate) / n;
    double sum = 0.0;
    for (int i = 0; i < n; ++i)
        sum += x[i];
    const double mean = sum / n;
    const int highest = HighestHarmonic(n, maxOrder);
    out.orders.resize(size_t(highest) + 1);
    out.orders[0].phasor = ComplexD{mean, 0.0};
    out.orders[0].effective = std::fabs(mean);
    for (int k = 1; k <= highest; ++k) {
        HarmonicOrder &h = out.orders[size_t(k)];
        h.order = k;
        // Turned on to the cursor's own sample, as the name column turns the fundamental.
        h.phasor = RotatePhasor(DftPhasor(x, n, k, 1), double(k) * (cursor - start) * 6.283185307179586 / n);
        h.effective = Effective(h.phasor);
        h.angleDeg = std::atan2(h.phasor.im, h.phasor.re) * 57.29577957855229;
    }
    const double base = highest >= 1 ? out.orders[1].effective : 0.0;
    if (base > 0.0) {
        double distortion = 0.0;
        for (int k = 2; k <= std::min(highest, 40); ++k)
            distortion += out.orders[size_t(k)].effective * out.orders[size_t(k)].effective;
        out.thdPercent = std::sqrt(distortion) / base * 100.0;
        out.dcPercent = out.orders[0].effective / base * 100.0;
        for (HarmonicOrder &h : out.orders)
            h.percent = h.effective / base * 100.0;
    }
    return out;
}
