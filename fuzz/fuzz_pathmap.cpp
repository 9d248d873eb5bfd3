// The settings path map: read, looked up with paths taken from the input itself, written and read
// back to the same number of entries.
#include "linereader.h"
#include "pathmap.h"

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

QByteArray g_directory; // one per process, with a trailing "/"

void removeDirectory()
{
    for (const char *name : {"map.ini", "saved.ini"})
        unlink((g_directory + name).constData());
    rmdir(g_directory.constData());
}

void put(const QByteArray &path, const void *data, size_t size)
{
    FILE *file = std::fopen(path.constData(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    const char *tmp = std::getenv("TMPDIR");
    QByteArray pattern = QByteArray(tmp && *tmp ? tmp : "/tmp") + "/veldrix-fuzz-pathmap-XXXXXX";
    if (!mkdtemp(pattern.data()))
        std::abort();
    g_directory = pattern + '/';
    std::atexit(removeDirectory);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    put(g_directory + "map.ini", data, size);
    const int count = LoadPathMapFrom(g_directory + "map.ini");
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
    if (SavePathMapTo(g_directory + "saved.ini") != count)
        std::abort();
    const int again = LoadPathMapFrom(g_directory + "saved.ini");
    if (again > count)
        std::abort();
    return 0;
}
