// The extension file (".inf") beside a small valid description: read with the recording, read
// a second time into the same object as a settings import does, written back and read again.
#include "cmtd99file.h"
#include "fuzzfolder.h"
#include "safewrite.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

const char kCfg[] = "S,R,1999\r\n3,2A,1D\r\n1,IA,A,,A,0.25,0.5,,-32767,32767,600,1,S\r\n"
                    "2,UA,A,,kV,0.125,0,,-32767,32767,110,0.1,P\r\n1,Trip,,,1\r\n50\r\n1\r\n1000,20\r\n"
                    "15/03/2021,10:20:30.000123\r\n15/03/2021,10:20:30.010123\r\nascii\r\n1\r\n";

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    MakeFuzzDirectory("inf");
    PutFuzzFile(FuzzDirectory() + "r.cfg", kCfg, sizeof kCfg - 1);
    PutFuzzFile(FuzzDirectory() + "s.cfg", kCfg, sizeof kCfg - 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray read = FuzzDirectory() + "r.inf";
    const QByteArray saved = FuzzDirectory() + "s.inf";
    PutFuzzFile(read, data, size);
    unlink((saved + ".bak").constData());
    {
        CCmtd99File recording;
        recording.LoadFile((FuzzDirectory() + "r.cfg").constData());
        recording.LoadInf(read.constData());
        if (!recording.SaveInf(saved.constData()))
            std::abort();
    }
    CCmtd99File again;
    again.LoadFile((FuzzDirectory() + "s.cfg").constData());
    return 0;
}
