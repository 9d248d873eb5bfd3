#include "faultend.h"

#include "chnmap.h"
#include "cmtd99file.h"

#include <QCoreApplication>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <memory>
#include <new>

namespace {

// Below this rate a cycle's first differences no longer resolve the fundamental well enough for
// a distance estimate, although the ordinary phasors still accept 500 Hz.
constexpr float kLowestRate = 600.0f;

QByteArray Utf8(const QString &text)
{
    return text.toUtf8();
}

// trunc(q + 0.5), and trunc(q - 0.5) for a negative quotient, held within int.
int RoundedCount(double q)
{
    if (std::isnan(q))
        return 0;
    const double r = q >= 0.0 ? q + 0.5 : q - 0.5;
    if (r >= double(INT_MAX))
        return INT_MAX;
    if (r <= double(INT_MIN))
        return INT_MIN;
    return static_cast<int>(r);
}

// The effective value of the one-cycle window that begins at `start`; 0 where the window leaves
// the channel's samples.
double WindowEffective(const CChnMapAnalog &chn, int start, int n, int step)
{
    if (start < 0 || n < 1 || int64_t(start) + n > chn.sampleCount)
        return 0.0;
    return Effective(DftPhasor(chn.Values() + start, n, 1, step));
}

int ChannelPoints(const CChnMapAnalog &chn, const RateSegment &segment)
{
    return PointsPerCycle(segment.rate, RatedFreq(chn));
}

// The sample of one phase of a current: each group's channel times its weight; a group without
// a channel for the phase adds nothing.
float WeightedCurrent(const FaultEnd &end, int phase, int i)
{
    const CChnMapAnalog *a = end.current[FaultEnd::Acc1][phase];
    const CChnMapAnalog *b = end.current[FaultEnd::Acc2][phase];
    if (a && b)
        return float(end.weight[0]) * a->Value(i) + float(end.weight[1]) * b->Value(i);
    if (a)
        return float(end.weight[0]) * a->Value(i);
    if (b)
        return float(end.weight[1]) * b->Value(i);
    return 0.0f;
}

ComplexD DifferencePhasor(const float *d, int n, double g)
{
    const ComplexD p = DftPhasorMethod(0, d, n, 1, 1);
    return ComplexD{p.re / g, p.im / g};
}

bool GroupComplete(const FaultEnd &end, int group)
{
    return end.current[group][0] && end.current[group][1] && end.current[group][2];
}

bool GroupEmpty(const FaultEnd &end, int group)
{
    return !end.current[group][0] && !end.current[group][1] && !end.current[group][2];
}

bool CheckRatings(const FaultEnd &end, const QByteArray &title, QStringList &messages)
{
    const float tvKv = end.tvPrimary / 1000.0f;
    if (!(tvKv >= 0.001f)) {
        messages << FaultText("%s: Primary of TV=%.3f(kV), Invalid!", title.constData(), double(tvKv));
        return false;
    }
    if (!(end.tvSecondary >= 0.001f)) {
        messages << FaultText("%s: Secondary of TV=%.3f(V), Invalid!", title.constData(),
                              double(end.tvSecondary));
        return false;
    }
    if (!(end.taPrimary >= 0.001f)) {
        messages << FaultText("%s: Primary of TA=%.3f(A), Invalid!", title.constData(),
                              double(end.taPrimary));
        return false;
    }
    if (!(end.taSecondary >= 0.001f)) {
        messages << FaultText("%s: Secondary of TA=%.3f(A), Invalid!", title.constData(),
                              double(end.taSecondary));
        return false;
    }
    return true;
}

} // namespace

QString FaultText(const char *key, ...)
{
    const QByteArray format = QCoreApplication::translate("CFaultFind2Wizard", key).toUtf8();
    va_list args;
    va_start(args, key);
    const QString text = QString::vasprintf(format.constData(), args);
    va_end(args);
    return text;
}

bool CheckFaultEnd(const FaultEnd &end, QStringList &messages)
{
    const QByteArray title = Utf8(end.title);
    if (!end.file) {
        messages << FaultText("%s: Choose COMTRADE file!", title.constData());
        return false;
    }
    if (!end.voltage[0] || !end.voltage[1] || !end.voltage[2]) {
        messages << FaultText("%s: ACV Channels Not Completed!", title.constData());
        return false;
    }
    if (!GroupComplete(end, FaultEnd::Acc1)) {
        messages << FaultText("%s: ACC1 Channels Not Completed!", title.constData());
        return false;
    }
    if (!GroupEmpty(end, FaultEnd::Acc2) && !GroupComplete(end, FaultEnd::Acc2)) {
        messages << FaultText("%s: ACC%d Channels Not Completed!", title.constData(), 2);
        return false;
    }
    if (!CheckRatings(end, title, messages))
        return false;
    if (!(end.Kf >= 0.01f && end.Kf <= 0.99f)) {
        messages << FaultText("%s: Kf=%.3f, Invalid!", title.constData(), double(end.Kf));
        return false;
    }
    return true;
}

bool CheckFaultLine(const FaultLine &line, QStringList &messages)
{
    if (!(line.length > 0)) {
        messages << FaultText("[Line Length = %.3f] Invalid!", line.length);
        return false;
    }
    if (!(line.R1 > 0)) {
        messages << FaultText("[R1 = %.4f] Invalid!", line.R1);
        return false;
    }
    if (!(line.X1 > 0)) {
        messages << FaultText("[X1 = %.4f] Invalid!", line.X1);
        return false;
    }
    if (!(line.C1 > 0)) {
        messages << FaultText("[C1 = %.4f] Invalid!", line.C1);
        return false;
    }
    return true;
}

int PointsPerWindow(const FaultEnd &end, float rate)
{
    const float f = end.voltage[0] ? RatedFreq(*end.voltage[0]) : 50.0f;
    return RoundedCount(double(rate) / double(f));
}

int PointsPerWindow(const FaultEnd &end)
{
    return PointsPerWindow(end, end.segment.rate);
}

bool CheckWindow(FaultEnd &end, int s, bool quiet, QStringList *messages)
{
    RateSegment segment;
    if (end.file && !FindRateSegment(*end.file, s, segment) && !end.file->segments.empty()) {
        // Beyond the last sample: that segment, which then has no room left.
        FindRateSegment(*end.file, end.file->segments.back().end - 1, segment);
    }
    const QByteArray title = Utf8(end.title);
    if (!(segment.rate >= kLowestRate)) {
        if (!quiet && messages)
            *messages << FaultText("%s: SampleRate too low! (StartPoint=%d, SampleRate=%.1fHz)",
                                   title.constData(), s + 1, double(segment.rate));
        return false;
    }
    if (s <= segment.first)
        s = segment.first + 1;
    const int p = PointsPerWindow(end, segment.rate);
    if (int64_t(segment.end) - s > int64_t(p) + 1) {
        end.segment = segment;
        end.StartPoint = s;
        return true;
    }
    if (!quiet && messages)
        *messages << FaultText("%s: Points Not enough! (StartPoint=%d, EndPoint=%d, PPW=%d)",
                               title.constData(), s + 1, segment.end, p);
    return false;
}

int FirstJump(const CChnMapAnalog &chn, const RateSegment &segment, float thr, int count, int from)
{
    const int n = ChannelPoints(chn, segment);
    if (n < 1 || int64_t(segment.end) - segment.first + 1 <= 2 * int64_t(n))
        return -1;
    from = std::max(from, segment.first);
    if (n >= int64_t(segment.end) - from)
        return -1;
    const float limit = std::fabs(thr);
    int run = 0;
    for (int i = std::max(segment.first + n, from); i < segment.end; ++i) {
        if (std::fabs(chn.Value(i) - chn.Value(i - n)) >= limit) {
            if (++run >= count)
                return i - count;
        } else {
            run = 0;
        }
    }
    return -1;
}

int FindFaultEnd(const CChnMapAnalog &chn, const RateSegment &segment, int start, float thr, int count,
                 int cycles)
{
    const int n = ChannelPoints(chn, segment);
    if (n < 1 || int64_t(segment.end) - segment.first + 1 <= 2 * int64_t(n))
        return -1;
    const int64_t reach = std::min<int64_t>(int64_t(start) + int64_t(n) * cycles, segment.end);
    const int stop = static_cast<int>(reach - n);
    if (n >= int64_t(stop) - start)
        return -1;
    const int step = DecimationStep(n);
    const int quarter = std::max(1, n / 4);
    const double half = WindowEffective(chn, start, n, step) * 0.5f;
    int k = -1;
    for (int j = start + quarter; j < stop; j += quarter) {
        if (WindowEffective(chn, j, n, step) >= half) {
            k = j;
            break;
        }
    }
    if (k < 0)
        return stop + n;
    const float limit = std::fabs(thr);
    float d = chn.Value(k) - chn.Value(k - n);
    int run = 0;
    for (int i = k + 1; i < stop + n; ++i) {
        const float change = chn.Value(i) - chn.Value(i - n);
        if (std::fabs(change - d) >= limit) {
            d = change;
            run = 0;
        } else if (++run >= count) {
            return i - count;
        }
    }
    return k;
}

int FindFaultEdge(const CChnMapAnalog &chn, const RateSegment &segment, float thr, int count, int from,
                  int cycles, int &faultEnd)
{
    faultEnd = -1;
    const int n = ChannelPoints(chn, segment);
    const int step = DecimationStep(n);
    const double limit = std::fabs(thr);
    int i = FirstJump(chn, segment, thr, count, from);
    while (i >= 0) {
        const double e1 = WindowEffective(chn, i, n, step);
        const double e0 = WindowEffective(chn, i - n, n, step);
        if (e1 - e0 >= limit)
            break;
        i = FirstJump(chn, segment, thr, count, i + n + 1);
    }
    if (i < 0)
        return -1;
    faultEnd = FindFaultEnd(chn, segment, i, thr, count, cycles);
    return i;
}

bool FaultEdgeOfEnd(const FaultEnd &end, const RateSegment &segment, int &edge, int &settled)
{
    edge = -1;
    settled = -1;
    const float thr = end.Kf * end.taSecondary;
    const int count = std::max(PointsPerWindow(end, segment.rate) / 4, 3);
    for (const CChnMapAnalog *chn : end.current[FaultEnd::Acc1]) {
        if (!chn)
            continue;
        int faultEnd = -1;
        const int a = FindFaultEdge(*chn, segment, thr, count, -1, 5, faultEnd);
        if (a < 0)
            continue;
        if (edge < 0 || a < edge)
            edge = a;
        if (faultEnd >= 0 && (settled < 0 || faultEnd < settled))
            settled = faultEnd;
    }
    return edge >= 0;
}

int AutoDataWindow(FaultEnd &end)
{
    if (!end.file)
        return -1;
    const int trigger = std::max(end.file->triggerIndex, 1);
    RateSegment segment;
    if (!FindRateSegment(*end.file, trigger, segment) && !FindRateSegment(*end.file, 0, segment))
        return -1;
    end.segment = segment;
    int a = -1;
    int b = -1;
    int start = trigger;
    if (FaultEdgeOfEnd(end, segment, a, b) && b >= 0) {
        const int p = PointsPerWindow(end);
        const int s = b - a;
        if (s > 3 * p) {
            start = b - 2 * p;
        } else {
            if (s > 2 * p)
                b -= p / 2;
            start = b - p;
        }
        if (start <= segment.first)
            start = segment.first + 1;
    }
    CheckWindow(end, start, true);
    return start;
}

int EndPhasors(const FaultEnd &end, int start, ComplexD voltage[3], ComplexD current[3])
{
    for (int phase = 0; phase < 3; ++phase)
        voltage[phase] = current[phase] = ComplexD();
    const int n = PointsPerWindow(end);
    const int total = end.file ? end.file->loadedPoints : 0;
    if (start < 1 || n < 1 || n > total)
        return EndWindowInvalid;
    std::unique_ptr<float[]> d(new (std::nothrow) float[size_t(n) + 1]);
    if (!d)
        return EndNoMemory;
    const double g = 2 * std::sin(3.141592653589793 / n);
    for (int phase = 0; phase < 3; ++phase) {
        const CChnMapAnalog *u = end.voltage[phase];
        for (int j = 0; j <= n; ++j)
            d[j] = u ? u->Value(start + j) - u->Value(start + j - 1) : 0.0f;
        voltage[phase] = DifferencePhasor(d.get(), n, g);
        for (int j = 0; j <= n; ++j)
            d[j] = WeightedCurrent(end, phase, start + j) - WeightedCurrent(end, phase, start + j - 1);
        current[phase] = DifferencePhasor(d.get(), n, g);
    }
    return EndOk;
}
