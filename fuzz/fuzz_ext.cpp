// The older positional extension file (".ext") beside a small valid description: read with the
// recording, so that every record it names is carried into the channels and units.
#include "cmtd99file.h"
#include "extfile.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

QByteArray g_directory; // one per process, with a trailing "/"

const char kCfg[] = "S,R,1999\r\n4,2A,2D\r\n1,UA,A,,V,0.25,0.5,,-32767,32767\r\n"
                    "2,IA,A,,A,0.125,0,,-32767,32767\r\n1,Trip,,,1\r\n2,Send,,,0\r\n50\r\n1\r\n1000,20\r\n"
                    "15/03/2021,10:20:30.000123\r\n15/03/2021,10:20:30.010123\r\nascii\r\n1\r\n";

void removeDirectory()
{
    for (const char *name : {"r.cfg", "r.ext"})
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
    QByteArray pattern = QByteArray(tmp && *tmp ? tmp : "/tmp") + "/veldrix-fuzz-ext-XXXXXX";
    if (!mkdtemp(pattern.data()))
        std::abort();
    g_directory = pattern + '/';
    std::atexit(removeDirectory);
    put(g_directory + "r.cfg", kCfg, sizeof kCfg - 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    put(g_directory + "r.ext", data, size);
    CCmtd99File recording;
    recording.LoadFile((g_directory + "r.cfg").constData());
    // Every unit made names channels the recording has or none.
    if (ExtMadeUnitCount(recording) != static_cast<int>(recording.lineUnits.size()))
        std::abort();
    return 0;
}
