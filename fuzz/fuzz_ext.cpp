// The older positional extension file (".ext") beside a small valid description: read with the
// recording, so that every record it names is carried into the channels and units.
#include "cmtd99file.h"
#include "extfile.h"
#include "fuzzfolder.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

const char kCfg[] = "S,R,1999\r\n4,2A,2D\r\n1,UA,A,,V,0.25,0.5,,-32767,32767\r\n"
                    "2,IA,A,,A,0.125,0,,-32767,32767\r\n1,Trip,,,1\r\n2,Send,,,0\r\n50\r\n1\r\n1000,20\r\n"
                    "15/03/2021,10:20:30.000123\r\n15/03/2021,10:20:30.010123\r\nascii\r\n1\r\n";

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    MakeFuzzDirectory("ext");
    PutFuzzFile(FuzzDirectory() + "r.cfg", kCfg, sizeof kCfg - 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    PutFuzzFile(FuzzDirectory() + "r.ext", data, size);
    CCmtd99File recording;
    recording.LoadFile((FuzzDirectory() + "r.cfg").constData());
    // Every unit made names channels the recording has or none.
    if (ExtMadeUnitCount(recording) != static_cast<int>(recording.lineUnits.size()))
        std::abort();
    return 0;
}
