// The extension file (".inf") beside a small valid description: read with the recording, read
// a second time into the same object as a settings import does, written back and read again.
#include "cmtd99file.h"
#include "safewrite.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

QByteArray g_directory; // one per process, with a trailing "/"

const char kCfg[] = "S,R,1999\r\n3,2A,1D\r\n1,IA,A,,A,0.25,0.5,,-32767,32767,600,1,S\r\n"
                    "2,UA,A,,kV,0.125,0,,-32767,32767,110,0.1,P\r\n1,Trip,,,1\r\n50\r\n1\r\n1000,20\r\n"
                    "15/03/2021,10:20:30.000123\r\n15/03/2021,10:20:30.010123\r\nascii\r\n1\r\n";

void removeDirectory()
{
    for (const char *name : {"r.cfg", "r.inf", "s.cfg", "s.inf", "s.inf.bak"})
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
    QByteArray pattern = QByteArray(tmp && *tmp ? tmp : "/tmp") + "/veldrix-fuzz-inf-XXXXXX";
    if (!mkdtemp(pattern.data()))
        std::abort();
    g_directory = pattern + '/';
    std::atexit(removeDirectory);
    put(g_directory + "r.cfg", kCfg, sizeof kCfg - 1);
    put(g_directory + "s.cfg", kCfg, sizeof kCfg - 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray read = g_directory + "r.inf";
    const QByteArray saved = g_directory + "s.inf";
    put(read, data, size);
    unlink((saved + ".bak").constData());
    {
        CCmtd99File recording;
        recording.LoadFile((g_directory + "r.cfg").constData());
        recording.LoadInf(read.constData());
        if (!recording.SaveInf(saved.constData()))
            std::abort();
    }
    CCmtd99File again;
    again.LoadFile((g_directory + "s.cfg").constData());
    return 0;
}
