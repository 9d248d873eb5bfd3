#include "rxboundfile.h"

#include "diskfile.h"
#include "linereader.h"
#include "safewrite.h"
#include "settingsfile.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdlib>
#include <cstring>

namespace {

constexpr int kLineSize = 4096;
constexpr int kMaxTokens = 8;

void printColour(CTextOutput &out, uint32_t colour)
{
    out.Printf("Color=%d,%d,%d\n", int((colour >> 16) & 0xFFu), int((colour >> 8) & 0xFFu),
               int(colour & 0xFFu));
}

enum Section
{
    SectionNone,
    SectionCommon,
    SectionPoly,
    SectionLine,
    SectionCircle,
    SectionRect
};

Section sectionOf(const char *name)
{
    static const char *const names[] = {"common", "poly", "line", "circle", "rect"};
    for (int i = 0; i < 5; ++i) {
        if (qstricmp(name, names[i]) == 0)
            return Section(SectionCommon + i);
    }
    return SectionNone;
}

bool is(const char *key, const char *name)
{
    return qstricmp(key, name) == 0;
}

// "a,b" into two floats; a value of fewer tokens leaves both as they were.
void readPair(char *value, float &a, float &b)
{
    char *tokens[kMaxTokens];
    if (SplitTrimmed(value, tokens, kMaxTokens, ',') < 2)
        return;
    a = float(std::atof(tokens[0]));
    b = float(std::atof(tokens[1]));
}

// "r,g,b" as an opaque colour. Green and blue keep their low byte; red is merged in unmasked
// above the alpha, so that a red beyond 255 spills into it.
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

void readFloat(const char *value, float &target)
{
    target = float(std::atof(value));
}

// Which characteristics are on: the names must be spelt with their capitals.
uint32_t boundsOf(const char *value)
{
    uint32_t bits = 0;
    if (std::strstr(value, "Poly"))
        bits |= RxBoundSet::BoundPoly;
    if (std::strstr(value, "Line"))
        bits |= RxBoundSet::BoundLine;
    if (std::strstr(value, "Circle"))
        bits |= RxBoundSet::BoundCircle;
    if (std::strstr(value, "Rect"))
        bits |= RxBoundSet::BoundRect;
    return bits;
}

void readCommon(RxBoundSet &s, const char *key, char *value)
{
    if (is(key, "Zmax"))
        readPair(value, s.fRmax, s.fXmax);
    else if (is(key, "Zmin"))
        readPair(value, s.fRmin, s.fXmin);
    else if (is(key, "Bounds"))
        s.nBounds = boundsOf(value);
}

void readPoly(RxBoundPoly &p, const char *key, char *value)
{
    if (is(key, "Rset"))
        readFloat(value, p.fRset);
    else if (is(key, "Xset"))
        readFloat(value, p.fXset);
    else if (is(key, "tgBeta"))
        readFloat(value, p.fTgBeta);
    else if (is(key, "Alfa"))
        readFloat(value, p.fAlfa);
    else if (is(key, "Sita"))
        readFloat(value, p.fSita);
    else if (is(key, "Color"))
        readColour(value, p.nColor);
}

void readLine(RxBoundLine &l, const char *key, char *value)
{
    if (is(key, "Zset"))
        readPair(value, l.fZsetR, l.fZsetX);
    else if (is(key, "Beta"))
        readFloat(value, l.fBeta);
    else if (is(key, "Color"))
        readColour(value, l.nColor);
}

void readCircle(RxBoundCircle &c, const char *key, char *value)
{
    if (is(key, "Zset"))
        readPair(value, c.fZsetR, c.fZsetX);
    else if (is(key, "Alfa"))
        readFloat(value, c.fAlfa);
    else if (is(key, "Color"))
        readColour(value, c.nColor);
}

void readRect(RxBoundRect &r, const char *key, char *value)
{
    if (is(key, "Zmax"))
        readPair(value, r.fRmax, r.fXmax);
    else if (is(key, "Zmin"))
        readPair(value, r.fRmin, r.fXmin);
    else if (is(key, "Color"))
        readColour(value, r.nColor);
}

} // namespace

QByteArray RxBoundsFileText(const RxBoundSet &s)
{
    CTextOutput out;
    out.Printf("//+++++++++++++++++++++++++++++++++++\n");
    out.Printf("%s", QStringLiteral("// TRWK.VELDRIX阻抗分析边界参数文件\n").toLocal8Bit().constData());
    out.Printf("//+++++++++++++++++++++++++++++++++++\n\n");
    out.Printf("[common]\n");
    out.Printf("Zmax=%.4f,%.4f\n", s.fRmax, s.fXmax);
    out.Printf("Zmin=%.4f,%.4f\n", s.fRmin, s.fXmin);
    out.Printf("Bounds=%s%s%s%s\n\n", s.nBounds & RxBoundSet::BoundPoly ? "Poly," : "",
               s.nBounds & RxBoundSet::BoundLine ? "Line," : "",
               s.nBounds & RxBoundSet::BoundCircle ? "Circle," : "",
               s.nBounds & RxBoundSet::BoundRect ? "Rect," : "");
    out.Printf("[poly]\n");
    out.Printf("Rset=%.4f\n", s.poly.fRset);
    out.Printf("Xset=%.4f\n", s.poly.fXset);
    out.Printf("tgBeta=%.4f\n", s.poly.fTgBeta);
    out.Printf("Alfa=%.4f\n", s.poly.fAlfa);
    out.Printf("Sita=%.4f\n", s.poly.fSita);
    printColour(out, s.poly.nColor);
    out.Printf("\n[line]\n");
    out.Printf("Zset=%.4f,%.4f\n", s.line.fZsetR, s.line.fZsetX);
    out.Printf("Beta=%.4f\n", s.line.fBeta);
    printColour(out, s.line.nColor);
    out.Printf("\n[circle]\n");
    out.Printf("Zset=%.4f,%.4f\n", s.circle.fZsetR, s.circle.fZsetX);
    out.Printf("Alfa=%.4f\n", s.circle.fAlfa);
    printColour(out, s.circle.nColor);
    out.Printf("\n[rect]\n");
    out.Printf("Zmax=%.4f,%.4f\n", s.rect.fRmax, s.rect.fXmax);
    out.Printf("Zmin=%.4f,%.4f\n", s.rect.fRmin, s.rect.fXmin);
    printColour(out, s.rect.nColor);
    out.Printf("\n");
    return out.bytes();
}

bool saveRxBounds(const RxBoundSet &set, const QString &path, QString &message)
{
    return SaveSettingsText(RxBoundsFileText(set), "CAnaFormChnGrpRxBoundDlg", path, message);
}

void ReadRxBounds(CDiskFile &file, RxBoundSet &set)
{
    set = RxBoundSet();
    char buffer[kLineSize];
    int counter = 0;
    char *key = nullptr;
    char *value = nullptr;
    Section section = SectionNone;
    for (;;) {
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        if (kind == KeyLineEnd)
            return;
        if (kind == KeyLineSection) {
            section = sectionOf(key);
            continue;
        }
        switch (section) {
        case SectionCommon:
            readCommon(set, key, value);
            break;
        case SectionPoly:
            readPoly(set.poly, key, value);
            break;
        case SectionLine:
            readLine(set.line, key, value);
            break;
        case SectionCircle:
            readCircle(set.circle, key, value);
            break;
        case SectionRect:
            readRect(set.rect, key, value);
            break;
        case SectionNone:
            break;
        }
    }
}

bool loadRxBounds(RxBoundSet &set, const QString &path, QString &message)
{
    return LoadSettingsFile("CAnaFormChnGrpRxBoundDlg", path, message,
                            [&set](CDiskFile &file) { ReadRxBounds(file, set); });
}
