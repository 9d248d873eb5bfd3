// The settings path map: read, looked up with paths taken from the input itself, written and read
// back to the same number of entries.
#include "fuzzfolder.h"
#include "linereader.h"
#include "pathmap.h"

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    MakeFuzzDirectory("pathmap");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    PutFuzzFile(FuzzDirectory() + "map.ini", data, size);
    const int count = LoadPathMapFrom(FuzzDirectory() + "map.ini");
    // Each line of the input, as a path, finds an entry whose root it contains, or none.
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    for (const QByteArray &line : text.split('\n')) {
        const QByteArray path = line.left(line.indexOf('\0') < 0 ? line.size() : line.indexOf('\0'));
        const PathMapEntry *entry = findPathMapEntry(path.constData());
        QByteArray upper = path.left(511);
        ToUpperAscii(upper.data());
        if (entry && !upper.contains(entry->rootPath))
            std::abort();
    }
    // Entries read back as written. A value that the reader cuts (a "//" or trailing blanks)
    // may read differently; the count never changes unless a root or both files were cut away.
    if (SavePathMapTo(FuzzDirectory() + "saved.ini") != count)
        std::abort();
    const int again = LoadPathMapFrom(FuzzDirectory() + "saved.ini");
    if (again > count)
        std::abort();
    return 0;
}
