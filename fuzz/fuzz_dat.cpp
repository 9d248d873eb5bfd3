// The sample file of a recording as a recorder, a converter or a damaged copy may leave it,
// behind a fixed description of 40 samples: 3 analog and 18 status channels, two rates.
// Byte 0 picks the description: binary, ASCII, or an unknown form with a zero rate (the file's
// first bytes then decide the form and the stamps the rates). Byte 1 cancels on the Nth poll
// (low six bits, 0 = never) and with 0x40 writes the samples as numbered parts to be joined,
// split at byte 2. What loaded is saved in the other form and read again.
#include "cmtd99file.h"
#include "fuzzfolder.h"

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

const char *const kBases[] = {"b", "a", "x"};

struct Progress
{
    int polls = 0;
    int cancelAt = 0; // 0: never
};

int progress(void *context, int code, int, int)
{
    auto *state = static_cast<Progress *>(context);
    if (code == 8)
        return 7;
    return code == 0 && ++state->polls == state->cancelAt ? -1 : 0;
}

// Every name an input may leave behind; joined parts come back as a ".dat".
const char *const kInputFiles[] = {"b.dat", "b.d00", "b.d01", "a.dat", "a.d00", "a.d01",
                                   "x.dat", "x.d00", "x.d01", "s.dat", "s.cfg"};

void removeInputFiles()
{
    for (const char *name : kInputFiles)
        unlink((FuzzDirectory() + name).constData());
}

void writeConfiguration(const char *base, const char *rates, const char *type)
{
    QByteArray text = "Fuzz Substation,Recorder 1,1999\n21,3A,18D\n"
                      "1,UA,A,Busbar 1,kV,0.01,0,0,-32767,32767,110,0.1,P\n"
                      "2,IA,A,Feeder 1,A,0.001,0.5,0,-32767,32767,600,1,S\n"
                      "3,UX,,Shunt,mV,1,0,0,-32767,32767,1,1,S\n";
    for (int i = 1; i <= 18; ++i)
        text += QByteArray::number(i) + ",Contact " + QByteArray::number(i) + ",,Breaker Q0,0\n";
    text += QByteArray("50\n") + rates + "01/01/2024,00:00:00.000000\n01/01/2024,00:00:00.100000\n" + type +
            "\n1.0\n";
    PutFuzzFile(FuzzDirectory() + base + ".cfg", text.constData(), static_cast<size_t>(text.size()));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    MakeFuzzDirectory("dat");
    writeConfiguration("b", "2\n1000,20\n500,40\n", "BINARY");
    writeConfiguration("a", "2\n1000,20\n500,40\n", "ASCII");
    writeConfiguration("x", "1\n0,40\n", "xyz");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 3)
        return 0;
    removeInputFiles();
    const int form = data[0] % 3;
    const QByteArray base = FuzzDirectory() + kBases[form];
    const uint8_t *samples = data + 3;
    const size_t length = size - 3;
    if (data[1] & 0x40) {
        const size_t split = data[2] < length ? data[2] : length;
        PutFuzzFile(base + ".d00", samples, split);
        PutFuzzFile(base + ".d01", samples + split, length - split);
    } else {
        PutFuzzFile(base + ".dat", samples, length);
    }

    const QByteArray saved = FuzzDirectory() + "s.cfg";
    {
        CCmtd99File recording;
        Progress state{0, data[1] & 0x3f};
        if (!recording.LoadFile((base + ".cfg").constData()))
            std::abort(); // the description is fixed and valid
        if (!recording.LoadDat((base + ".dat").constData(), progress, &state))
            return 0;
        // The other form; an unknown one stays, so the binary writer's output must be recognised.
        if (form == 0)
            recording.fileDesc.fileType = "ASCII";
        else if (form == 1)
            recording.fileDesc.fileType = "BINARY";
        if (!recording.SaveFile(saved.constData()))
            return 0;
    }
    CCmtd99File again;
    Progress state;
    if (again.LoadFile(saved.constData()))
        again.LoadDat(saved.constData(), progress, &state);
    return 0;
}
