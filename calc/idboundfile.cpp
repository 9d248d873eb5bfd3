#include "idboundfile.h"

#include "diskfile.h"
#include "linereader.h"
#include "safewrite.h"
#include "settingsfile.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdlib>

namespace {

constexpr int kLineSize = 4096;
constexpr int kMaxTokens = 8;
constexpr const char *kContext = "CAnaFormUnitIdBoundDlg";

bool is(const char *key, const char *name)
{
    return qstricmp(key, name) == 0;
}

// `count` comma-separated floats; fewer tokens leave all of them as they were.
void readList(char *value, float *target, int count)
{
    char *tokens[kMaxTokens];
    if (SplitTrimmed(value, tokens, kMaxTokens, ',') < count)
        return;
    for (int i = 0; i < count; ++i)
        target[i] = float(std::atof(tokens[i]));
}

// "r,g,b" as an opaque colour: green and blue keep their low byte, red is shifted in unmasked.
void readColour(char *value, uint32_t &colour)
{
    char *tokens[kMaxTokens];
    if (SplitTrimmed(value, tokens, kMaxTokens, ',') < 3)
        return;
    const uint32_t red = uint32_t(std::atoi(tokens[0]));
    const uint32_t green = uint32_t(std::atoi(tokens[1])) & 0xFFu;
    const uint32_t blue = uint32_t(std::atoi(tokens[2])) & 0xFFu;
    colour = 0xFF000000u | red << 16 | green << 8 | blue;
}

void readCommon(IdBounds &b, const char *key, char *value)
{
    if (is(key, "Res"))
        b.nRes = std::atoi(value);
    else if (is(key, "fIcdsd"))
        b.fIcdsd = float(std::atof(value));
    else if (is(key, "fIocd"))
        b.fIocd = float(std::atof(value));
    else if (is(key, "fIres"))
        readList(value, b.fIres, 2);
    else if (is(key, "fk"))
        readList(value, b.fk, 3);
    else if (is(key, "fa"))
        readList(value, b.fa, 2);
    else if (is(key, "fb"))
        readList(value, b.fb, 2);
    else if (is(key, "Color"))
        readColour(value, b.nColor);
}

} // namespace

QByteArray IdBoundsFileText(const IdBounds &b)
{
    CTextOutput out;
    out.Printf("//+++++++++++++++++++++++++++++++++++\n");
    out.Printf("%s", QStringLiteral("// TRWK.VELDRIX差动分析边界参数文件\n").toLocal8Bit().constData());
    out.Printf("//+++++++++++++++++++++++++++++++++++\n\n");
    out.Printf("[common]\n");
    out.Printf("Res=%d\n", int(b.nRes));
    out.Printf("fIcdsd=%.4f\n", double(b.fIcdsd));
    out.Printf("fIocd=%.4f\n", double(b.fIocd));
    out.Printf("fIres=%.4f,%.4f\n", double(b.fIres[0]), double(b.fIres[1]));
    out.Printf("fk=%.4f,%.4f,%.4f\n", double(b.fk[0]), double(b.fk[1]), double(b.fk[2]));
    out.Printf("fa=%.4f,%.4f\n", double(b.fa[0]), double(b.fa[1]));
    out.Printf("fb=%.4f,%.4f\n", double(b.fb[0]), double(b.fb[1]));
    out.Printf("Color=%d,%d,%d\n", int((b.nColor >> 16) & 0xFFu), int((b.nColor >> 8) & 0xFFu),
               int(b.nColor & 0xFFu));
    return out.bytes();
}

bool saveIdBounds(const IdBounds &bounds, const QString &path, QString &message)
{
    return SaveSettingsText(IdBoundsFileText(bounds), kContext, path, message);
}

void ReadIdBounds(CDiskFile &file, IdBounds &bounds)
{
    bounds = IdBounds();
    char buffer[kLineSize];
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;
    bool common = false;
    for (;;) {
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        if (kind == KeyLineEnd)
            return;
        if (kind == KeyLineSection)
            common = is(key, "common");
        else if (common)
            readCommon(bounds, key, value);
    }
}

bool loadIdBounds(IdBounds &bounds, const QString &path, QString &message)
{
    return LoadSettingsFile(kContext, path, message,
                            [&bounds](CDiskFile &file) { ReadIdBounds(file, bounds); });
}
