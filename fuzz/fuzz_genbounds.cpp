// The three generator boundary files (loss of excitation, pole slip, capability), read from
// bytes that may be anything. The first byte picks the reader. What was read is written and
// read back to the same text, and the geometry of each diagram must take whatever came in.
#include "diskfile.h"
#include "genboundfile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

template <typename Bounds, typename Read> void readInto(std::vector<char> &text, Bounds &b, Read read)
{
    CDiskFile file;
    b = Bounds();
    if (text.empty() || !file.Attach(fmemopen(text.data(), text.size(), "r")))
        return;
    read(file, b);
}

template <typename Bounds, typename Read, typename Text>
void roundTrip(std::vector<char> &text, Read read, Text write)
{
    Bounds first;
    readInto(text, first, read);
    const QByteArray written = write(first);
    std::vector<char> again(written.begin(), written.end());
    Bounds second;
    readInto(again, second, read);
    if (write(second) != written)
        std::abort();
}

GenMachine machine(bool salient)
{
    GenMachine m;
    m.ratedMw = 300.0;
    m.pf = 0.85;
    m.ratedKv = 20.0;
    m.uf0 = 150.0;
    m.xd = salient ? 1.0 : 1.8;
    m.xq = salient ? 0.6 : 1.7;
    m.xdT = 0.25;
    m.xs = 0.1;
    m.salient = salient;
    return m;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const int kind = data[0] % 3;
    std::vector<char> text(data + 1, data + size);
    const bool salient = data[0] & 4;
    if (kind == 0) {
        roundTrip<ExciBounds>(text, ReadExciBounds, ExciBoundsFileText);
        ExciBounds b;
        readInto(text, b, ReadExciBounds);
        ExciBoundsProblems(b);
        ExciRecalc(b, machine(salient), ExciScales());
    } else if (kind == 1) {
        roundTrip<StepBounds>(text, ReadStepBounds, StepBoundsFileText);
        StepBounds b;
        readInto(text, b, ReadStepBounds);
        StepBoundsProblems(b);
        StepRecalc(b, machine(salient), ExciScales());
        StepRegion(b, 0.5, 0.5);
        StepPowerAngle(b, 0.5, 0.5);
    } else {
        roundTrip<PQGBounds>(text, ReadPQGBounds, PQGBoundsFileText);
        PQGBounds b;
        readInto(text, b, ReadPQGBounds);
        PQGBoundsProblems(b);
        // The curve walks a fixed ladder of angles and a bounded iteration whatever the numbers.
        PQGRecalc(b, machine(salient));
    }
    return 0;
}
