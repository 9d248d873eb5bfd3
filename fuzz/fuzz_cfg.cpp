// The recording description (".cfg") as a recorder, a converter or a damaged copy may leave
// it, alone in its folder: no data file and no extension file. What was read is written back
// and read again, as when an engineer saves an edited description and opens it later.
#include "cmtd99file.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

QByteArray g_directory; // one per process, with a trailing "/"

void removeDirectory()
{
    for (const char *name : {"r.cfg", "s.cfg"})
        unlink((g_directory + name).constData());
    rmdir(g_directory.constData());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    const char *tmp = std::getenv("TMPDIR");
    QByteArray pattern = QByteArray(tmp && *tmp ? tmp : "/tmp") + "/veldrix-fuzz-cfg-XXXXXX";
    if (!mkdtemp(pattern.data()))
        std::abort();
    g_directory = pattern + '/';
    std::atexit(removeDirectory);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray read = g_directory + "r.cfg";
    const QByteArray saved = g_directory + "s.cfg";
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
