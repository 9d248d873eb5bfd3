#include "idblocking.h"

#include "idbounds.h"

#include <algorithm>
#include <cmath>

namespace {

// The longest run of `true` round a cycle of `n` marks: a run that wraps from the end to the
// start counts as one. All marks set give n.
template <typename Mark> int longestCyclicRun(int n, Mark mark)
{
    int best = 0;
    int run = 0;
    for (int k = 0; k < 2 * n; ++k) {
        run = mark(k % n) ? run + 1 : 0;
        best = std::max(best, std::min(run, n));
    }
    return best;
}

} // namespace

void IdHarmonicRatios(int32_t mode, uint32_t mask, const double id1[3], const double id2[3], double ratio[3])
{
    double ownRatio[3] = {};
    double max1 = 0.0;
    double max2 = 0.0;
    double maxRatio = 0.0;
    for (int p = 0; p < 3; ++p) {
        if (!(mask & (1u << p)))
            continue;
        ownRatio[p] = id1[p] > 0.0 ? id2[p] / id1[p] : 0.0;
        maxRatio = std::max(maxRatio, ownRatio[p]);
        max1 = std::max(max1, id1[p]);
        max2 = std::max(max2, id2[p]);
    }
    const double composite = max1 > 0.0 ? max2 / max1 : 0.0;
    for (int p = 0; p < 3; ++p) {
        if (!(mask & (1u << p)))
            ratio[p] = 0.0;
        else if (mode == IdHarmMaxPhase)
            ratio[p] = maxRatio;
        else if (mode == IdHarmComposite)
            ratio[p] = composite;
        else
            ratio[p] = ownRatio[p];
    }
}

double IdDeadAngle(const float *id, int n, double coef)
{
    if (!id || n < 2)
        return 0.0;
    double peak = 0.0;
    for (int k = 0; k < n; ++k)
        peak = std::max(peak, std::fabs(double(id[k])));
    if (!(peak > 0.0))
        return 0.0;
    const double level = coef * peak;
    const int run = longestCyclicRun(n, [&](int k) { return std::fabs(double(id[k])) <= level; });
    return 360.0 * run / n;
}

double IdWaveWidth(const float *id, int n, double coef, bool differenced)
{
    if (!id || n < 3)
        return 0.0;
    // The derivative round the cycle: sample k less sample k-1, the first against the last.
    const auto value = [&](int k) {
        return differenced ? double(id[k]) - double(id[(k + n - 1) % n]) : double(id[k]);
    };
    double peak = 0.0;
    for (int k = 0; k < n; ++k)
        peak = std::max(peak, std::fabs(value(k)));
    if (!(peak > 0.0))
        return 0.0;
    const double level = coef * peak;
    const int rising = longestCyclicRun(n, [&](int k) { return value(k) >= level && value(k) > 0.0; });
    const int falling = longestCyclicRun(n, [&](int k) { return -value(k) >= level && value(k) < 0.0; });
    return 360.0 * std::max(rising, falling) / n;
}

bool IdBlockedByDeadAngle(const IdBounds &b, double deadAngle)
{
    return deadAngle >= double(b.fa[0]);
}

bool IdBlockedByWaveWidth(const IdBounds &b, double waveWidth)
{
    return waveWidth < double(b.fb[0]);
}
