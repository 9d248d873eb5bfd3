// The options file and the language file beside the program, read from bytes that may be
// anything: a hand-edited file, a truncated one, one from another program. The input is the
// options text, then after a 0xFF byte (if any) the language text. What a first load keeps
// is written back and read again, as the program does from one session to the next.
#include "fuzzfolder.h"
#include "globaloptions.h"
#include "globalsettings.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <tuple>
#include <unistd.h>

namespace {

// The drawing settings are process-wide; every input starts from those the program starts with.
std::tuple<int16_t, int32_t, int32_t, bool, int32_t> g_startSettings;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    MakeFuzzDirectory("options");
    g_startSettings = std::tie(colorScheme, dftWin, dftMethod, PhComp, statusMinWidth);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::tie(colorScheme, dftWin, dftMethod, PhComp, statusMinWidth) = g_startSettings;
    const uint8_t *split = static_cast<const uint8_t *>(std::memchr(data, 0xFF, size));
    const size_t optionsSize = split ? static_cast<size_t>(split - data) : size;
    PutFuzzFile(FuzzDirectory() + "X.INI", data, optionsSize);
    if (split)
        PutFuzzFile(FuzzDirectory() + "X.LANG", split + 1, size - optionsSize - 1);
    else
        unlink((FuzzDirectory() + "X.LANG").constData());

    CGlobalOptions options;
    options.loadFrom(FuzzDirectory(), "X");
    options.saveTo(FuzzDirectory() + "Y.INI");
    CGlobalOptions again;
    again.loadFrom(FuzzDirectory(), "Y");
    return 0;
}
