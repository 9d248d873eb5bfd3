// The recording description (".cfg") as a recorder, a converter or a damaged copy may leave
// it, alone in its folder: no data file and no extension file. What was read is written back
// and read again, as when an engineer saves an edited description and opens it later.
#include "cmtd99file.h"
#include "fuzzfolder.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    MakeFuzzDirectory("cfg");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray read = FuzzDirectory() + "r.cfg";
    const QByteArray saved = FuzzDirectory() + "s.cfg";
    FILE *file = std::fopen(read.constData(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    {
        CCmtd99File recording;
        recording.LoadFile(read.constData());
        if (!recording.SaveCfg(saved.constData()))
            std::abort();
    }
    CCmtd99File again;
    again.LoadFile(saved.constData());
    return 0;
}
