// The impedance boundary file, read from bytes that may be anything: a hand-edited set, a
// truncated one, another program's settings. What the reader keeps is written and read back;
// the text written the second time must be the first one again, and the geometry, the range
// and the zone tests must take whatever numbers came in.
#include "diskfile.h"
#include "rxboundfile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

void readSet(std::vector<char> &text, RxBoundSet &set)
{
    CDiskFile file;
    set = RxBoundSet();
    if (text.empty() || !file.Attach(fmemopen(text.data(), text.size(), "r")))
        return;
    ReadRxBounds(file, set);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::vector<char> text(data, data + size);
    RxBoundSet first;
    readSet(text, first);
    RxBoundSetProblems(first);
    RxComputeBoundGeometry(first);
    float l, b, r, t;
    RxComputeRange(first, l, b, r, t);
    RxInsidePoly(first.poly, 1.0, 1.0);
    RxInsideCircle(first.circle, 1.0, 1.0);
    RxBoundNumberText(first.poly.fRight);

    const QByteArray written = RxBoundsFileText(first);
    std::vector<char> again(written.begin(), written.end());
    RxBoundSet second;
    readSet(again, second);
    if (second.nBounds != first.nBounds || second.poly.nColor != first.poly.nColor ||
        second.rect.nColor != first.rect.nColor)
        std::abort();
    if (RxBoundsFileText(second) != written)
        std::abort();
    return 0;
}
