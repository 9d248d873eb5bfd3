// The X-Y boundary file, read from bytes that may be anything: a hand-edited list, a truncated
// one, another program's settings file. What the reader keeps is written again and read back;
// the second read must find the same boundaries in the same order.
#include "diskfile.h"
#include "xybounds.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

int readBounds(std::vector<char> &text, std::vector<XYBound> &list)
{
    CDiskFile file;
    if (text.empty() || !file.Attach(fmemopen(text.data(), text.size(), "r")))
        return 0;
    return ReadXYBounds(file, list);
}

} // namespace

// Inputs of a few hundred boundaries make lists and texts of ever new sizes; with the default
// quarantine of freed blocks the allocator's size classes outgrow the memory limit of the runs
// after a million inputs or so, though nothing leaks. A smaller quarantine keeps them flat.
extern "C" const char *__asan_default_options()
{
    return "quarantine_size_mb=64";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::vector<char> text(data, data + size);
    std::vector<XYBound> first;
    readBounds(text, first);
    for (const XYBound &bound : first) {
        XYBoundKindText(bound);
        XYBoundSettingsText(bound);
    }

    const QByteArray written = XYBoundsFileText(first);
    std::vector<char> again(written.begin(), written.end());
    std::vector<XYBound> second;
    readBounds(again, second);
    if (second.size() != first.size())
        std::abort();
    for (size_t i = 0; i < first.size(); ++i) {
        if (second[i].kind != first[i].kind || second[i].colour != first[i].colour)
            std::abort();
    }
    return 0;
}
