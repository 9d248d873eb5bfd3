// The line readers under every text format: sectioned files (options, language, extension
// file) go through ReadKeyLine, the positional ".cfg" through ReadDataLine and SplitTrimmed.
#include "diskfile.h"
#include "linereader.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

// The readers' own buffer sizes, on the heap so that a step past the end is caught exactly.
constexpr int kKeyLineSize = 1024;
constexpr int kDataLineSize = 2048;
constexpr int kFieldCapacity = 128;

// A memory stream over the recording text, so that no disk file is needed.
bool attach(CDiskFile &file, std::vector<char> &text)
{
    return file.Attach(fmemopen(text.data(), text.size(), "r"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    std::vector<char> text(data, data + size);
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;

    CDiskFile keyFile;
    if (attach(keyFile, text)) {
        auto buffer = std::make_unique<char[]>(kKeyLineSize);
        while (ReadKeyLine(keyFile, counter, buffer.get(), kKeyLineSize, key, value) != KeyLineEnd) {
        }
    }

    for (size_t offset = 0; offset < size; offset += kKeyLineSize) {
        const size_t length = size - offset < kKeyLineSize ? size - offset : kKeyLineSize;
        auto chunk = std::make_unique<char[]>(length + 1);
        std::memcpy(chunk.get(), data + offset, length);
        chunk[length] = 0;
        ParseKeyLine(chunk.get(), key, value);
    }

    CDiskFile dataFile;
    if (attach(dataFile, text)) {
        auto buffer = std::make_unique<char[]>(kDataLineSize);
        char *line = nullptr;
        char *fields[kFieldCapacity];
        while (ReadDataLine(dataFile, counter, buffer.get(), kDataLineSize, line) > 0)
            SplitTrimmed(line, fields, kFieldCapacity, ',');
    }
    return 0;
}
