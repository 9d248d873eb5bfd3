// The options file and the language file beside the program, read from bytes that may be
// anything: a hand-edited file, a truncated one, one from another program. The input is the
// options text, then after a 0xFF byte (if any) the language text. What a first load keeps
// is written back and read again, as the program does from one session to the next.
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

QByteArray g_directory; // one per process, with a trailing "/"
// The drawing settings are process-wide; every input starts from those the program starts with.
std::tuple<int16_t, int32_t, int32_t, bool, int32_t> g_startSettings;

void writeFile(const QByteArray &path, const uint8_t *data, size_t size)
{
    FILE *file = std::fopen(path.constData(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);
}

void removeDirectory()
{
    for (const char *name : {"X.INI", "X.LANG", "Y.INI"})
        unlink((g_directory + name).constData());
    rmdir(g_directory.constData());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    const char *tmp = std::getenv("TMPDIR");
    QByteArray pattern = QByteArray(tmp && *tmp ? tmp : "/tmp") + "/veldrix-fuzz-options-XXXXXX";
    if (!mkdtemp(pattern.data()))
        std::abort();
    g_directory = pattern + '/';
    std::atexit(removeDirectory);
    g_startSettings = std::tie(colorScheme, dftWin, dftMethod, PhComp, statusMinWidth);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::tie(colorScheme, dftWin, dftMethod, PhComp, statusMinWidth) = g_startSettings;
    const uint8_t *split = static_cast<const uint8_t *>(std::memchr(data, 0xFF, size));
    const size_t optionsSize = split ? static_cast<size_t>(split - data) : size;
    writeFile(g_directory + "X.INI", data, optionsSize);
    if (split)
        writeFile(g_directory + "X.LANG", split + 1, size - optionsSize - 1);
    else
        unlink((g_directory + "X.LANG").constData());

    CGlobalOptions options;
    options.loadFrom(g_directory, "X");
    options.saveTo(g_directory + "Y.INI");
    CGlobalOptions again;
    again.loadFrom(g_directory, "Y");
    return 0;
}
