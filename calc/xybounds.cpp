#include "xybounds.h"

#include "diskfile.h"
#include "linereader.h"
#include "safewrite.h"
#include "settingsfile.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdlib>

namespace {

// Room for the longest line the writer makes: three numbers of the widest double in "%.6f".
constexpr int kLineSize = 4096;
constexpr int kMaxTokens = 16;

QString tr(const char *text)
{
    return QCoreApplication::translate("CAnaFormCoordinateXYBoundDlg", text);
}

int red(uint32_t colour)
{
    return static_cast<int>((colour >> 16) & 0xFFu);
}

int green(uint32_t colour)
{
    return static_cast<int>((colour >> 8) & 0xFFu);
}

int blue(uint32_t colour)
{
    return static_cast<int>(colour & 0xFFu);
}

// An opaque colour from the file's red, green and blue; each keeps its low byte.
uint32_t colourOf(const char *r, const char *g, const char *b)
{
    const auto byte = [](const char *text) { return static_cast<uint32_t>(std::atoi(text)) & 0xFFu; };
    return 0xFF000000u | byte(r) << 16 | byte(g) << 8 | byte(b);
}

struct KindKey
{
    const char *key;
    int32_t kind;
    int tokens; // red, green, blue and the numbers of the kind
};

constexpr KindKey kKinds[] = {{"LineAB", XYBound::KindLine, 5},
                              {"LineC", XYBound::KindPlumbLine, 4},
                              {"Circle", XYBound::KindCircle, 6}};

// A boundary from the value of one key line; false when the key is none of the kinds or the
// value has too few tokens. `atof` reads each number up to whatever follows it, so the last one
// ends at the comment that the writer puts behind it.
bool parseBound(const char *key, char *value, XYBound &bound)
{
    for (const KindKey &k : kKinds) {
        if (qstricmp(key, k.key) != 0)
            continue;
        char *tokens[kMaxTokens];
        if (SplitTrimmed(value, tokens, kMaxTokens, ',') < k.tokens)
            return false;
        bound = XYBound();
        bound.kind = k.kind;
        bound.colour = colourOf(tokens[0], tokens[1], tokens[2]);
        if (k.kind == XYBound::KindLine) {
            bound.a = std::atof(tokens[3]);
            bound.b = std::atof(tokens[4]);
        } else if (k.kind == XYBound::KindPlumbLine) {
            bound.c = std::atof(tokens[3]);
        } else {
            bound.xc = std::atof(tokens[3]);
            bound.yc = std::atof(tokens[4]);
            bound.r = std::atof(tokens[5]);
        }
        return true;
    }
    return false;
}

} // namespace

QString XYBoundKindText(const XYBound &bound)
{
    switch (bound.kind) {
    case XYBound::KindLine:
        return tr("Line");
    case XYBound::KindPlumbLine:
        return tr("Plumb Line");
    case XYBound::KindCircle:
        return tr("Circle");
    default:
        return QString();
    }
}

QString XYBoundSettingsText(const XYBound &bound)
{
    switch (bound.kind) {
    case XYBound::KindLine:
        return QString::asprintf(tr("Y=AX+B: A=%.6f, B=%.6f").toUtf8().constData(), bound.a, bound.b);
    case XYBound::KindPlumbLine:
        return QString::asprintf(tr("X=C: C=%.6f").toUtf8().constData(), bound.c);
    case XYBound::KindCircle:
        return QString::asprintf(tr("Xo=%.6f, Yo=%.6f, R=%.6f").toUtf8().constData(), bound.xc, bound.yc,
                                 bound.r);
    default:
        return QString();
    }
}

QByteArray XYBoundsFileText(const std::vector<XYBound> &list)
{
    CTextOutput out;
    out.Printf("//+++++++++++++++++++++++++++++++++++++++++++++++\n");
    out.Printf("%s",
               QStringLiteral("// TRWK.VELDRIX(X-Y)自定义平面分析边界参数文件\n").toLocal8Bit().constData());
    out.Printf("//+++++++++++++++++++++++++++++++++++++++++++++++\n\n");
    out.Printf("[common]\n");
    for (const XYBound &bound : list) {
        const int r = red(bound.colour);
        const int g = green(bound.colour);
        const int b = blue(bound.colour);
        if (bound.kind == XYBound::KindLine)
            out.Printf("LineAB=%d,%d,%d,%.6f,%.6f//R,G,B,a,b\n", r, g, b, bound.a, bound.b);
        else if (bound.kind == XYBound::KindPlumbLine)
            out.Printf("LineC=%d,%d,%d,%.6f//R,G,B,c\n", r, g, b, bound.c);
        else if (bound.kind == XYBound::KindCircle)
            out.Printf("Circle=%d,%d,%d,%.6f,%.6f,%.6f//R,G,B,xc,yc,r\n", r, g, b, bound.xc, bound.yc,
                       bound.r);
    }
    return out.bytes();
}

bool SaveXYBounds(const QString &path, const std::vector<XYBound> &list, QString &message)
{
    return SaveSettingsText(XYBoundsFileText(list), "CAnaFormCoordinateXYBoundDlg", path, message);
}

int ReadXYBounds(CDiskFile &file, std::vector<XYBound> &list)
{
    list.clear();
    char buffer[kLineSize];
    bool inCommon = false;
    // Lines are not cut at "//": the writer puts its comment behind the last number, where
    // `atof` stops at it, and the heading lines hold no key.
    while (file.Gets(buffer, sizeof buffer) > 0) {
        char *key = nullptr;
        char *value = nullptr;
        const int kind = ParseKeyLine(buffer, key, value);
        if (kind == KeyLineSection) {
            inCommon = qstricmp(key, "common") == 0;
            continue;
        }
        XYBound bound;
        if (kind == KeyLineKey && inCommon && parseBound(key, value, bound))
            list.push_back(bound);
    }
    return static_cast<int>(list.size());
}

bool LoadXYBounds(const QString &path, std::vector<XYBound> &list, QString &message)
{
    return LoadSettingsFile("CAnaFormCoordinateXYBoundDlg", path, message,
                            [&list](CDiskFile &file) { ReadXYBounds(file, list); });
}
