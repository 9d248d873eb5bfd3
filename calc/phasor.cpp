#include "phasor.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "globalsettings.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

namespace {

// Two pi as the nearest 32-bit float; its small phase error is part of every phasor.
constexpr float kTwoPiF = 6.2831855f;
// 20 ms as a 32-bit float: one 50 Hz cycle, whatever the rated frequency.
constexpr float kCycle50 = 0.02f;

// sin(j·k·w) and cos(j·k·w) for j = 0 .. N-1, w = 2π/N with the float two pi: exactly the
// values a per-term evaluation gives, kept for the (N, k) pairs used lately on this thread.
struct TrigTable
{
    int n = 0;
    int k = 0;
    std::vector<double> sine;
    std::vector<double> cosine;
};

const TrigTable &trigTable(int n, int k)
{
    constexpr int kSlots = 8;
    thread_local TrigTable tables[kSlots];
    thread_local int next = 0;
    for (const TrigTable &table : tables) {
        if (table.n == n && table.k == k)
            return table;
    }
    TrigTable &table = tables[next];
    next = (next + 1) % kSlots;
    table.n = n;
    table.k = k;
    table.sine.resize(static_cast<size_t>(n));
    table.cosine.resize(static_cast<size_t>(n));
    const double w = double(kTwoPiF) / n;
    for (int j = 0; j < n; ++j) {
        const double angle = double(j * k) * w;
        table.sine[size_t(j)] = std::sin(angle);
        table.cosine[size_t(j)] = std::cos(angle);
    }
    return table;
}

// The segment a caller handed in, or the one that holds `index`; null when there is none.
const RateSegment *segmentOf(const CCmtd99File &file, const RateSegment *given, int index, RateSegment &found)
{
    if (given)
        return given;
    return FindRateSegment(file, index, found) ? &found : nullptr;
}

// trunc(x) as a sample count. A rate of infinity or NaN, or one so large that a cycle holds more
// samples than any recording, gives a count no window can reach instead of an undefined
// conversion.
int heldCount(double x)
{
    if (!(x >= 0.0))
        return 0;
    return x < double(INT_MAX) ? static_cast<int>(x) : INT_MAX;
}

int roundedCycle50(float rate)
{
    const float span = rate * kCycle50;
    return heldCount(double(span) + 0.5);
}

// A window touching a missing value (a gap of a 2013 recording) has no value.
bool touchesGap(const float *x, int n)
{
    for (int i = 0; i < n; ++i) {
        if (std::isnan(x[i]))
            return true;
    }
    return false;
}

// The sine and cosine sums of M channels in one pass. Each channel's sums take their terms in
// the order of DftPhasorMethod, so that the rounding is the same; only the channels are
// interleaved, and with M fixed every sum stays in a register.
template <int M>
void batchSums(const float *const *x, int n, int step, bool trapezoid, const TrigTable &t, double *s,
               double *k)
{
    const double *sine = t.sine.data();
    const double *cosine = t.cosine.data();
    double ss[M] = {};
    double kk[M] = {};
    const float *xc[M];
    for (int c = 0; c < M; ++c)
        xc[c] = x[c];
    if (trapezoid) {
        for (int i = 0; i + 1 < n; ++i) {
            const double si = sine[i + 1];
            const double ci = cosine[i + 1];
            const int a = i * step;
            const int b = a + step;
#pragma GCC unroll 8
            for (int c = 0; c < M; ++c) {
                const double pair = double(xc[c][a]) + double(xc[c][b]);
                ss[c] += si * pair;
                kk[c] += ci * pair;
            }
        }
    } else {
        for (int i = 0; i < n; ++i) {
            const double si = sine[i];
            const double ci = cosine[i];
            const int a = i * step;
#pragma GCC unroll 8
            for (int c = 0; c < M; ++c) {
                const double v = xc[c][a];
                ss[c] += si * v;
                kk[c] += ci * v;
            }
        }
    }
    for (int c = 0; c < M; ++c) {
        s[c] = ss[c];
        k[c] = kk[c];
    }
}

} // namespace

float RatedFreq(const CChnMapAnalog &chn)
{
    const float f = chn.config ? chn.config->ratedFreq : 0.0f;
    return f >= 1.0f ? f : 50.0f;
}

int PointsPerCycle(float rate, float freq)
{
    return heldCount(double(rate) / double(freq) + 0.5);
}

int Cycle50Points(float rate)
{
    return roundedCycle50(rate);
}

ComplexD DftPhasorMethod(int method, const float *x, int count, int harmonic, int step)
{
    ComplexD out;
    if (!x || count < 1 || step < 1)
        return out;
    const int n = count / step;
    if (n < 1)
        return out;
    const TrigTable &t = trigTable(n, harmonic);
    const double *sine = t.sine.data();
    const double *cosine = t.cosine.data();
    double s = 0.0;
    double c = 0.0;
    if (method == 2 || method == 3) {
        // Each sample pairs with the next at the angle of the right-hand one; the pair that
        // would close the cycle is left out. The pair is summed in double like the rest: in
        // float it would lose the low bits of one sample against the other.
        for (int i = 0; i + 1 < n; ++i) {
            const double pair = double(x[i * step]) + double(x[(i + 1) * step]);
            s += sine[i + 1] * pair;
            c += cosine[i + 1] * pair;
        }
        if (method == 2) {
            out.re = s / n;
            out.im = c / n;
        } else {
            out.re = c / n;
            out.im = -(s / n);
        }
        return out;
    }
    for (int i = 0; i < n; ++i) {
        const double v = x[i * step];
        s += sine[i] * v;
        c += cosine[i] * v;
    }
    if (method == 1) {
        out.re = 2 * c / n;
        out.im = -(2 * s / n);
    } else {
        out.re = 2 * s / n;
        out.im = 2 * c / n;
    }
    return out;
}

ComplexD DftPhasor(const float *samples, int count, int harmonic, int step)
{
    const int method = dftMethod >= 0 && dftMethod <= 3 ? dftMethod : 0;
    return DftPhasorMethod(method, samples, count, harmonic, step);
}

void DftPhasors(const float *const *x, int channels, int count, int harmonic, int step, ComplexD *out)
{
    const int method = dftMethod >= 0 && dftMethod <= 3 ? dftMethod : 0;
    const int m = std::clamp(channels, 0, kDftBatch);
    for (int c = 0; c < m; ++c)
        out[c] = ComplexD{};
    const int n = step >= 1 ? count / step : 0;
    if (count < 1 || n < 1)
        return;
    for (int c = 0; c < m; ++c) {
        if (!x[c]) {
            // A missing channel goes the single way, which knows what it gives.
            for (int d = 0; d < m; ++d)
                out[d] = DftPhasorMethod(method, x[d], count, harmonic, step);
            return;
        }
    }
    const TrigTable &t = trigTable(n, harmonic);
    double s[kDftBatch] = {};
    double k[kDftBatch] = {};
    const bool trapezoid = method == 2 || method == 3;
    // Batches of six (three voltages, three currents), then three, then one at a time.
    for (int c = 0; c < m;) {
        if (m - c >= 6) {
            batchSums<6>(x + c, n, step, trapezoid, t, s + c, k + c);
            c += 6;
        } else if (m - c >= 3) {
            batchSums<3>(x + c, n, step, trapezoid, t, s + c, k + c);
            c += 3;
        } else {
            batchSums<1>(x + c, n, step, trapezoid, t, s + c, k + c);
            c += 1;
        }
    }
    for (int c = 0; c < m; ++c) {
        switch (method) {
        case 1:
            out[c] = ComplexD{2 * k[c] / n, -(2 * s[c] / n)};
            break;
        case 2:
            out[c] = ComplexD{s[c] / n, k[c] / n};
            break;
        case 3:
            out[c] = ComplexD{k[c] / n, -(s[c] / n)};
            break;
        default:
            out[c] = ComplexD{2 * s[c] / n, 2 * k[c] / n};
            break;
        }
    }
}

double Effective(const ComplexD &p)
{
    return std::sqrt((p.re * p.re + p.im * p.im) * 0.5);
}

int DftWindowShift(int n)
{
    switch (dftWin) {
    case 0:
        return n;
    case 1:
        return n / 2;
    default:
        return 0;
    }
}

int DftWindowStart(int index, int n, const RateSegment &segment, int total)
{
    // In 64 bits: a window length from a broken rate may be near the largest int.
    int64_t start = int64_t(index) - DftWindowShift(n);
    if (start + n > segment.end)
        start = int64_t(segment.end) - n;
    if (start < segment.first)
        start = segment.first;
    // One sample stays free at the end of the recording.
    if (start + n >= total)
        start = start - 1;
    return static_cast<int>(std::clamp<int64_t>(start, INT_MIN, INT_MAX));
}

bool HoldsNoGap(const CChnMapAnalog &chn)
{
    return !chn.Values() || !touchesGap(chn.Values(), chn.sampleCount);
}

bool SegmentUsable(const RateSegment &segment)
{
    return segment.rate >= 500.0f && int64_t(segment.end) - segment.first + 1 > roundedCycle50(segment.rate);
}

bool FindRateSegment(const CCmtd99File &file, int index, RateSegment &segment)
{
    // A stretch begins where the one before it ended: segments derived from the stamps carry
    // no start of their own.
    int32_t first = 0;
    for (const SampleSegment &s : file.segments) {
        if (s.end > index) {
            segment.rate = s.rate;
            segment.first = first;
            segment.end = s.end;
            return true;
        }
        first = s.end;
    }
    return false;
}

bool SegmentWindow(const CCmtd99File &file, float freq, int &index, int &n, int &step, RateSegment &segment)
{
    n = 0;
    step = 0;
    if (!FindRateSegment(file, index, segment))
        return false;
    // A known stretch that is not usable is still given back, with no window length.
    if (!SegmentUsable(segment))
        return true;
    n = PointsPerCycle(segment.rate, freq);
    step = DecimationStep(n);
    index = DftWindowStart(index, n, segment, file.loadedPoints);
    if (int64_t(segment.end) - segment.first + 1 < n)
        n = 0;
    return true;
}

bool ChnSegmentWindow(const CCmtd99File &file, const CChnMapAnalog &chn, int &index, int &n, int &step,
                      RateSegment &segment)
{
    if (!chn.IsAC()) {
        n = 0;
        step = 0;
        return FindRateSegment(file, index, segment);
    }
    return SegmentWindow(file, RatedFreq(chn), index, n, step, segment);
}

int ChnWindowStart(const CCmtd99File &file, float freq, int index)
{
    RateSegment segment;
    if (!FindRateSegment(file, index, segment) || !SegmentUsable(segment))
        return index;
    const int n = PointsPerCycle(segment.rate, freq);
    return DftWindowStart(index, n, segment, file.loadedPoints);
}

int LowRateMeanAt(const CCmtd99File &file, const RateSegment &segment, const CChnMapAnalog *chn, int index,
                  double &out)
{
    out = 0.0;
    if (!chn)
        return NoValue;
    const int m = roundedCycle50(segment.rate);
    int64_t stop = int64_t(index) + m;
    stop = std::min<int64_t>(stop, file.loadedPoints - 1);
    stop = std::min<int64_t>(stop, segment.end - 1);
    const int count = static_cast<int>(std::min<int64_t>(stop - index + 1, m));
    // Where the window lies outside the samples there is no value to show.
    if (count < 1 || index < 0 || index + count > chn->sampleCount)
        return NoValue;
    if (touchesGap(chn->Values() + index, count))
        return NoValue;
    out = StridedMean(chn->Values() + index, count, 1);
    return MeanValue;
}

namespace {

// The window of a channel's fundamental at `index`: -1 with `n`, `step` and the window start in
// `index` when a transform is due; otherwise the code of the value that stands in `out` (the
// mean of a slow rate, or none).
int baseWindow(const CCmtd99File &file, const RateSegment &segment, const CChnMapAnalog *chn, int &index,
               int &n, int &step, ComplexD &out, bool gapFree = false)
{
    out = ComplexD();
    n = PointsPerCycle(segment.rate, RatedFreq(*chn));
    if (n < 4) {
        double mean = 0.0;
        const int code = LowRateMeanAt(file, segment, chn, index, mean);
        out.re = mean;
        return code;
    }
    step = DecimationStep(n);
    int64_t stop = int64_t(index) + n;
    if (stop >= file.loadedPoints)
        stop = file.loadedPoints - 1;
    if (stop > segment.end)
        stop = segment.end;
    if (stop - segment.first < n)
        return NoValue;
    index = static_cast<int>(stop - n);
    if (index < segment.first)
        index = segment.first;
    if (index < 0 || index + n > chn->sampleCount || (!gapFree && touchesGap(chn->Values() + index, n)))
        return NoValue;
    return -1;
}

// The angle compensation of the channel's transformer, where the channel has a table.
void compensate(const CChnMapAnalog &chn, ComplexD &phasor)
{
    if (PhComp && chn.config && (chn.config->flags & CmtdChn_Analog::CompAngleGiven))
        phasor = RotatePhasor(phasor, PhaseCompAngle(chn, Effective(phasor)));
}

} // namespace

int BasePhasorAt(const CCmtd99File &file, const RateSegment *given, const CChnMapAnalog *chn, int &index,
                 ComplexD &out)
{
    out = ComplexD();
    if (!chn)
        return NoValue;
    RateSegment found;
    const RateSegment *known = segmentOf(file, given, index, found);
    if (!known)
        return NoValue;
    int n = 0;
    int step = 1;
    const int code = baseWindow(file, *known, chn, index, n, step, out);
    if (code >= 0)
        return code;
    out = DftPhasor(chn->Values() + index, n, 1, step);
    compensate(*chn, out);
    return PhasorValue;
}

void BasePhasorsAt(const CCmtd99File &file, const RateSegment *given, const CChnMapAnalog *const *chns,
                   int count, int index, ComplexD *out, int *codes, const bool *gapFree)
{
    RateSegment found;
    const RateSegment *known = segmentOf(file, given, index, found);
    // Channels whose transform is due, with their window.
    int due[kDftBatch];
    int start[kDftBatch];
    int length[kDftBatch];
    int stride[kDftBatch];
    int pending = 0;
    for (int c = 0; c < count; ++c) {
        out[c] = ComplexD();
        codes[c] = NoValue;
        if (!chns[c] || !known)
            continue;
        int at = index;
        int n = 0;
        int step = 1;
        codes[c] = baseWindow(file, *known, chns[c], at, n, step, out[c], gapFree && gapFree[c]);
        if (codes[c] >= 0)
            continue;
        if (pending == kDftBatch) {
            // More channels than one pass takes: this one alone.
            out[c] = DftPhasor(chns[c]->Values() + at, n, 1, step);
            compensate(*chns[c], out[c]);
            codes[c] = PhasorValue;
            continue;
        }
        due[pending] = c;
        start[pending] = at;
        length[pending] = n;
        stride[pending] = step;
        ++pending;
    }
    // Channels of one window length and start go through one pass.
    bool done[kDftBatch] = {};
    for (int first = 0; first < pending; ++first) {
        if (done[first])
            continue;
        const float *x[kDftBatch];
        int members[kDftBatch];
        int m = 0;
        for (int j = first; j < pending; ++j) {
            if (done[j] || start[j] != start[first] || length[j] != length[first] ||
                stride[j] != stride[first])
                continue;
            members[m] = j;
            x[m++] = chns[due[j]]->Values() + start[j];
            done[j] = true;
        }
        ComplexD result[kDftBatch];
        DftPhasors(x, m, length[first], 1, stride[first], result);
        for (int k = 0; k < m; ++k) {
            const int c = due[members[k]];
            out[c] = result[k];
            compensate(*chns[c], out[c]);
            codes[c] = PhasorValue;
        }
    }
}

int RealEffectiveAt(const CCmtd99File &file, const RateSegment *given, const CChnMapAnalog *chn, int index,
                    double &out)
{
    out = 0.0;
    if (!chn)
        return NoValue;
    RateSegment found;
    const RateSegment *known = segmentOf(file, given, index, found);
    if (!known)
        return NoValue;
    const RateSegment &segment = *known;
    float f = chn->IsAC() ? RatedFreq(*chn) : file.fileDesc.lineFreq;
    if (!(f >= 1.0f))
        f = 50.0f;
    const int n = PointsPerCycle(segment.rate, f);
    int64_t stop = int64_t(index) + n;
    stop = std::min<int64_t>(stop, file.loadedPoints - 1);
    stop = std::min<int64_t>(stop, segment.end);
    if (stop - segment.first < n)
        return NoValue;
    const int start = static_cast<int>(std::max<int64_t>(stop - n, segment.first));
    if (n < 1 || start < 0 || start + n > chn->sampleCount || touchesGap(chn->Values() + start, n))
        return NoValue;
    out = CycleEffective(chn->Values() + start, n);
    return EffectiveValue;
}

double CycleEffective(const float *x, int n)
{
    if (!x || n <= 0)
        return 0.0;
    double sum = 0.0;
    for (int i = 0; i < n; ++i)
        sum += double(x[i]) * double(x[i]);
    return std::sqrt(sum / n);
}

double StridedMean(const float *x, int n, int step)
{
    if (!x || step < 1)
        return 0.0;
    const int c = n / step;
    if (c < 1)
        return 0.0;
    double sum = 0.0;
    for (int i = 0; i < c; i += step)
        sum += x[i * step];
    return sum / c;
}

double PhaseCompAngle(const CChnMapAnalog &chn, double e)
{
    const CmtdChn_Analog *c = chn.config;
    if (!c || c->angleCount < 1)
        return 0.0;
    const int count = std::min(c->angleCount, 3);
    const double raw = (e - c->b) / c->a;
    const float cell = (c->max - c->min) / float(2 * c->angleCount);
    const double place = raw / cell;
    // Clamped into the table: a raw code beyond its cells reads the nearest entry.
    int slot = std::isfinite(place) ? static_cast<int>(std::clamp(place, -1.0, double(count))) : 0;
    slot = std::clamp(slot, 0, count - 1);
    return c->compAngle[slot];
}

ComplexD RotatePhasor(const ComplexD &phasor, double angle)
{
    ComplexD out = phasor;
    return out.divide(ComplexD{std::cos(-angle), std::sin(-angle)});
}

void SymmetricalParts(const ComplexD &A, const ComplexD &B, const ComplexD &C, ComplexD &zero,
                      ComplexD &positive, ComplexD &negative)
{
    const double third = 0.3333333333333333;
    const ComplexD a{-0.5, std::sqrt(3.0) * 0.5};
    const ComplexD a2{-0.5, -std::sqrt(3.0) * 0.5};
    zero = (A + B + C).scaled(third);
    positive = (A + a * B + a2 * C).scaled(third);
    negative = (A + a2 * B + a * C).scaled(third);
}
