// veldrix-gendemo: writes the bundled demo recording, a single-phase-to-ground fault on a 220 kV
// overhead line cleared by single-pole tripping and followed by a successful single-pole reclose.
//
// Usage: veldrix-gendemo OUTDIR   (writes OUTDIR/demo_line_fault.cfg, .dat and .inf)
//
// The output is deterministic: the measurement noise comes from a fixed-seed generator whose raw output
// is turned into numbers by hand, so repeated runs write byte-identical files.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kFreq = 50.0;
constexpr double kOmega = 2.0 * kPi * kFreq;

// Secondary quantities: VT 220000/100 and CT 1200/5 on the line side of the breaker.
const double kPhaseVolts = 100.0 / std::sqrt(3.0); // nominal phase-to-ground, secondary rms
constexpr double kLoadAmps = 300.0 * 5.0 / 1200.0; // 300 A primary load, secondary rms
constexpr double kLoadLag = 20.0;                  // load power factor angle, degrees
constexpr double kFaultAmps = 8.0 * kLoadAmps;     // phase-A fault current, secondary rms
constexpr double kLineAngle = 80.0;                // fault current lags the source voltage by the line angle
constexpr double kTau = 0.040;                     // primary time constant of the decaying DC offset, s
// Phase-A voltage angle at every whole cycle (and so at the fault instant): striking 30 degrees after
// the voltage zero gives the fault current a large DC offset.
constexpr double kUaAngle = 30.0;

constexpr int kFastSamples = 2500; // 5000 Hz, 0 s .. 0.5 s
constexpr int kSlowSamples = 1500; // 1000 Hz, 0.5 s .. 2.0 s
constexpr int kSamples = kFastSamples + kSlowSamples;

struct AnalogChannel
{
    const char *id;
    const char *ph;
    const char *unit;
    double primary;
    double secondary;
};

const AnalogChannel kAnalogs[8] = {
    {"Ua", "A", "V", 220000, 100},  {"Ub", "B", "V", 220000, 100}, {"Uc", "C", "V", 220000, 100},
    {"3U0", "N", "V", 220000, 100}, {"Ia", "A", "A", 1200, 5},     {"Ib", "B", "A", 1200, 5},
    {"Ic", "C", "A", 1200, 5},      {"3I0", "N", "A", 1200, 5},
};

struct StatusChannel
{
    const char *id;
    const char *ph;
};

const StatusChannel kStatuses[8] = {
    {"Trip A", "A"}, {"Trip B", "B"},         {"Trip C", "C"},         {"Trip 3Ph", ""},
    {"Reclose", ""}, {"Breaker A Open", "A"}, {"Breaker B Open", "B"}, {"Breaker C Open", "C"},
};

// Instants of the protection sequence, seconds from the first sample.
struct Sequence
{
    double fault;     // flashover to ground on phase A (the recorder trigger)
    double trip;      // distance protection issues a single-pole trip on phase A
    double open;      // pole A interrupts at a natural current zero
    double tripReset; // trip contact drops off once the pole is seen open
    double reclose;   // end of the single-pole dead time: reclose command
    double close;     // pole A recloses onto the healthy line
};

using Sample = std::array<double, 8>; // Ua Ub Uc 3U0 Ia Ib Ic 3I0, secondary units

double wave(double rms, double degrees, double t)
{
    return std::sqrt(2.0) * rms * std::sin(kOmega * t + degrees * kPi / 180.0);
}

double loadCurrentA(double t)
{
    return wave(kLoadAmps, kUaAngle - kLoadLag, t);
}

// The line inductance keeps the current continuous when the fault strikes: the jump between the load
// and fault waveforms is carried by a DC offset that dies away with the primary time constant.
double faultCurrentA(double t, double fault)
{
    const double offset = loadCurrentA(fault) - wave(kFaultAmps, kUaAngle - kLineAngle, fault);
    return wave(kFaultAmps, kUaAngle - kLineAngle, t) + offset * std::exp(-(t - fault) / kTau);
}

Sequence planSequence()
{
    Sequence s{};
    s.fault = 0.100;
    s.trip = s.fault + 0.025;
    // The breaker contacts part 35 ms after the trip, but the arc only goes out at the next zero of
    // the (still offset) fault current, here a few milliseconds later.
    double t = s.trip + 0.035;
    const double step = 1e-6;
    while (std::signbit(faultCurrentA(t, s.fault)) == std::signbit(faultCurrentA(t + step, s.fault)))
        t += step;
    s.open = t + step;
    s.tripReset = s.open + 0.020;
    s.reclose = s.open + 0.600;
    s.close = s.reclose + 0.050;
    return s;
}

// Noise-free secondary values at time t; the neutral channels are the residual sums of the phases.
Sample cleanSample(double t, const Sequence &s)
{
    Sample x{};
    const bool faulted = t >= s.fault && t < s.open;
    const bool poleOpen = t >= s.open && t < s.close;
    double ua = wave(kPhaseVolts, kUaAngle, t);
    double ub = wave(kPhaseVolts, kUaAngle - 120.0, t);
    double uc = wave(kPhaseVolts, kUaAngle + 120.0, t);
    double ia = loadCurrentA(t);
    if (faulted) {
        // Faulted phase collapses, the healthy phases swell slightly through the zero-sequence path;
        // a short high-frequency ring follows the collapse of the line charge.
        const double ring = std::exp(-(t - s.fault) / 0.003) * std::cos(2.0 * kPi * 750.0 * (t - s.fault));
        ua = wave(0.40 * kPhaseVolts, kUaAngle - 5.0, t) + 0.25 * kPhaseVolts * ring;
        ub = wave(1.05 * kPhaseVolts, kUaAngle - 123.0, t);
        uc = wave(1.04 * kPhaseVolts, kUaAngle + 122.0, t);
        ia = faultCurrentA(t, s.fault);
    } else if (poleOpen) {
        // The de-energised conductor only carries what couples in capacitively from phases B and C.
        ua = wave(0.06 * kPhaseVolts, kUaAngle + 180.0, t);
        ia = 0.0;
    } else if (t >= s.close) {
        // Load picks up again on reclosing with its own small decaying offset.
        ia = loadCurrentA(t) - loadCurrentA(s.close) * std::exp(-(t - s.close) / kTau);
    }
    x[0] = ua;
    x[1] = ub;
    x[2] = uc;
    x[4] = ia;
    x[5] = wave(kLoadAmps, kUaAngle - 120.0 - kLoadLag, t);
    x[6] = wave(kLoadAmps, kUaAngle + 120.0 - kLoadLag, t);
    return x;
}

uint16_t statusWord(double t, const Sequence &s)
{
    uint16_t word = 0;
    if (t >= s.trip && t < s.tripReset)
        word |= 1u << 0; // Trip A
    if (t >= s.reclose && t < s.reclose + 0.100)
        word |= 1u << 4; // Reclose pulse
    if (t >= s.open && t < s.close)
        word |= 1u << 5; // Breaker A Open
    return word;
}

int64_t sampleMicros(int n)
{
    if (n < kFastSamples)
        return int64_t(n) * 200;
    // The last 5 kHz sample is followed by one 5 kHz period, then the 1 kHz periods begin,
    // which is where the rate table alone places the samples.
    return 500000 + int64_t(n - kFastSamples) * 1000;
}

// Smallest multiplier with three significant digits that keeps |peak| within 90 % of the raw range,
// leaving headroom for the noise.
double scaleFor(double peak)
{
    const double exact = peak / (0.90 * 32767.0);
    const double decade = std::pow(10.0, std::floor(std::log10(exact)) - 2.0);
    return std::ceil(exact / decade) * decade;
}

// Multiplier in plain decimal notation (readers and engineers both prefer 0.00006 to 6e-05).
std::string decimal(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9f", value);
    std::string out = text;
    out.erase(out.find_last_not_of('0') + 1);
    if (out.back() == '.')
        out.pop_back();
    return out;
}

void putLe(std::string &out, uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(char((value >> (8 * i)) & 0xff));
}

bool writeFile(const std::string &path, const std::string &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), std::streamsize(bytes.size()));
    return bool(out);
}

// The extension file: the line the recorder watches, with its data and channels, so that the
// plant-unit selector and the line analysis have something to work on.
std::string makeInf()
{
    return "[Public Record_Information]\n"
           "Source=VELDRIX demo generator\n"
           "Location=Demo substation, bay Line 1\n"
           "[TRWK Line_#1]\n"
           "DEV_ID=1,Line 1\n"
           "SYS_ID=220kV\n"
           "OBJECT_TYPE=LINE\n"
           "LENGTH=48.000(km)\n"
           "RX=0.0700000000(\xce\xa9/km), 0.4000000000(\xce\xa9/km), 0.2000000000(\xce\xa9/km), "
           "1.2000000000(\xce\xa9/km)\n"
           "TA_CHNS=5, 6, 7, 8, 1\n"
           "TV_CHNS=1, 2, 3, 4\n"
           "STATUS_CHNS=1, 2, 3, 4, 5, 6, 7, 8\n";
}

std::string makeCfg(const std::array<double, 8> &scale)
{
    std::string cfg;
    char line[256];
    auto add = [&](int n) { cfg.append(line, size_t(n)).append("\r\n"); };
    add(std::snprintf(line, sizeof line, "VELDRIX DEMO SUBSTATION,LINE-1 DFR,1999"));
    add(std::snprintf(line, sizeof line, "16,8A,8D"));
    for (int i = 0; i < 8; ++i) {
        const AnalogChannel &c = kAnalogs[i];
        add(std::snprintf(line, sizeof line, "%d,%s,%s,Line 1,%s,%s,0,0,-32767,32767,%g,%g,S", i + 1, c.id,
                          c.ph, c.unit, decimal(scale[size_t(i)]).c_str(), c.primary, c.secondary));
    }
    for (int i = 0; i < 8; ++i)
        add(std::snprintf(line, sizeof line, "%d,%s,%s,Line 1,0", i + 1, kStatuses[i].id, kStatuses[i].ph));
    add(std::snprintf(line, sizeof line, "50"));
    add(std::snprintf(line, sizeof line, "2"));
    add(std::snprintf(line, sizeof line, "5000,%d", kFastSamples));
    add(std::snprintf(line, sizeof line, "1000,%d", kSamples));
    add(std::snprintf(line, sizeof line, "15/03/2025,10:21:33.400000"));
    add(std::snprintf(line, sizeof line, "15/03/2025,10:21:33.500000"));
    add(std::snprintf(line, sizeof line, "BINARY"));
    add(std::snprintf(line, sizeof line, "1"));
    return cfg;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: veldrix-gendemo OUTDIR\n");
        return 2;
    }
    const std::string base = std::string(argv[1]) + "/demo_line_fault";
    const Sequence seq = planSequence();

    std::vector<Sample> samples(kSamples);
    std::array<double, 8> peak{};
    for (int n = 0; n < kSamples; ++n) {
        Sample &x = samples[size_t(n)] = cleanSample(double(sampleMicros(n)) / 1e6, seq);
        x[3] = x[0] + x[1] + x[2];
        x[7] = x[4] + x[5] + x[6];
        for (int c = 0; c < 8; ++c)
            peak[size_t(c)] = std::max(peak[size_t(c)], std::abs(x[size_t(c)]));
    }
    std::array<double, 8> scale{};
    for (int c = 0; c < 8; ++c)
        scale[size_t(c)] = scaleFor(peak[size_t(c)]);

    // Transducer and converter noise of about 0.2 % of each phase channel's full scale; the residual
    // channels are summed afterwards so they carry the phases' noise, as a real residual connection does.
    std::mt19937 rng(1999);
    auto unit = [&rng] { return double(rng()) / 4294967296.0; };
    std::string dat;
    for (int n = 0; n < kSamples; ++n) {
        Sample x = samples[size_t(n)];
        for (int c : {0, 1, 2, 4, 5, 6})
            x[size_t(c)] += (unit() + unit() - 1.0) * 0.002 * 32767.0 * scale[size_t(c)];
        x[3] = x[0] + x[1] + x[2];
        x[7] = x[4] + x[5] + x[6];
        const int64_t micros = sampleMicros(n);
        putLe(dat, uint32_t(n + 1), 4);
        putLe(dat, uint32_t(micros), 4);
        for (int c = 0; c < 8; ++c) {
            const long raw = std::clamp(std::lround(x[size_t(c)] / scale[size_t(c)]), -32767L, 32767L);
            putLe(dat, uint32_t(int16_t(raw)) & 0xffffu, 2);
        }
        putLe(dat, statusWord(double(micros) / 1e6, seq), 2);
    }

    if (!writeFile(base + ".cfg", makeCfg(scale)) || !writeFile(base + ".dat", dat) ||
        !writeFile(base + ".inf", makeInf())) {
        std::fprintf(stderr, "veldrix-gendemo: cannot write %s.cfg/.dat/.inf\n", base.c_str());
        return 1;
    }
    std::printf("wrote %s.cfg and %s.dat (%d samples, pole A open %.4f s .. %.4f s)\n", base.c_str(),
                base.c_str(), kSamples, seq.open, seq.close);
    return 0;
}
