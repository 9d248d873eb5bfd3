// A recording in its single-file form (".cff") as a recorder, a converter or a damaged copy
// may leave it: section heads, a 2013 description, data of any of the four forms. What loaded
// is saved as parts, joined into one file again and read back, as when an engineer saves a
// recording and sends it on as a single file.
#include "cfffile.h"
#include "cmtd99file.h"
#include "fuzzfolder.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

const char *const kFiles[] = {"r.cff", "p.cfg", "p.dat", "s.cff"};

void removeFiles()
{
    for (const char *name : kFiles)
        unlink((FuzzDirectory() + name).constData());
}

bool load(CCmtd99File &recording, const QByteArray &path)
{
    // A description may promise millions of samples in a few bytes: the loader must size its
    // stores from the data, so every promise is loaded (under -rss_limit_mb=512).
    return recording.LoadFile(path.constData()) && recording.LoadDat(path.constData(), nullptr, nullptr);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    MakeFuzzDirectory("cff");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    removeFiles();
    const QByteArray read = FuzzDirectory() + "r.cff";
    FILE *file = std::fopen(read.constData(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    const QByteArray parts = FuzzDirectory() + "p";
    const QByteArray joined = FuzzDirectory() + "s.cff";
    QByteArray fileType;
    {
        CCmtd99File recording;
        if (!load(recording, read))
            return 0;
        if (!recording.SaveFile((parts + ".cfg").constData()))
            return 0;
        fileType = recording.fileDesc.fileType;
    }
    if (!JoinCff(parts, fileType, joined))
        return 0;
    CCmtd99File again;
    load(again, joined);
    return 0;
}
