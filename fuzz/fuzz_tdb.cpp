// The differential boundary file, read from bytes that may be anything: a hand-edited set, a
// truncated one, another program's settings. What the reader keeps is written and read back;
// the text written the second time must be the first one again, and the characteristic and
// the operate test must take whatever numbers came in.
#include "diskfile.h"
#include "idboundfile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

void readSet(std::vector<char> &text, IdBounds &bounds)
{
    CDiskFile file;
    bounds = IdBounds();
    if (text.empty() || !file.Attach(fmemopen(text.data(), text.size(), "r")))
        return;
    ReadIdBounds(file, bounds);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::vector<char> text(data, data + size);
    IdBounds first;
    readSet(text, first);
    IdPlanePoint points[4];
    if (IdCharacteristic(first, 10.0, points) > 4)
        std::abort();
    IdInOperateArea(first, 2.0, 1.0);

    const QByteArray written = IdBoundsFileText(first);
    std::vector<char> again(written.begin(), written.end());
    IdBounds second;
    readSet(again, second);
    if (second.nRes != first.nRes || second.nColor != first.nColor)
        std::abort();
    if (IdBoundsFileText(second) != written)
        std::abort();
    return 0;
}
