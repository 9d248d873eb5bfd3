#include "zonesverb.h"

#include "jsonwriter.h"
#include "rxboundfile.h"

#include <QFile>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void usage()
{
    std::fprintf(stderr, "usage: veldrix-cli zones --json FILE.tzb [--inside R,X]\n");
}

// "R,X" as two finite numbers.
bool readPoint(const char *text, double &r, double &x)
{
    char *end = nullptr;
    r = std::strtod(text, &end);
    if (end == text || *end != ',')
        return false;
    const char *second = end + 1;
    x = std::strtod(second, &end);
    return end != second && *end == 0 && std::isfinite(r) && std::isfinite(x);
}

void writeColour(JsonWriter &json, uint32_t colour)
{
    char text[16];
    std::snprintf(text, sizeof text, "#%08X", colour);
    json.field("color", text);
}

void writeBox(JsonWriter &json, float left, float bottom, float right, float top)
{
    json.key("box");
    json.beginArray();
    for (const float v : {left, bottom, right, top})
        json.valueFloat(v);
    json.endArray();
}

void writePoint(JsonWriter &json, const char *name, double r, double x)
{
    json.key(name);
    json.beginArray();
    json.valueDouble(r);
    json.valueDouble(x);
    json.endArray();
}

void writePoly(JsonWriter &json, const RxBoundPoly &p)
{
    json.key("poly");
    json.beginObject();
    writeColour(json, p.nColor);
    json.fieldFloat("Rset", p.fRset);
    json.fieldFloat("Xset", p.fXset);
    json.fieldFloat("tgBeta", p.fTgBeta);
    json.fieldFloat("Alfa", p.fAlfa);
    json.fieldFloat("Sita", p.fSita);
    RxPlanePoint outline[6];
    RxPolyOutline(p, outline);
    json.key("outline");
    json.beginArray();
    for (const RxPlanePoint &point : outline) {
        json.beginArray();
        json.valueDouble(point.r);
        json.valueDouble(point.x);
        json.endArray();
    }
    json.endArray();
    writeBox(json, p.fLeft, p.fBottom, p.fRight, p.fTop);
    json.endObject();
}

void writeShapes(JsonWriter &json, const RxBoundSet &s)
{
    writePoly(json, s.poly);
    json.key("line");
    json.beginObject();
    writeColour(json, s.line.nColor);
    writePoint(json, "Zset", s.line.fZsetR, s.line.fZsetX);
    json.fieldFloat("Beta", s.line.fBeta);
    json.endObject();
    json.key("circle");
    json.beginObject();
    writeColour(json, s.circle.nColor);
    writePoint(json, "Zset", s.circle.fZsetR, s.circle.fZsetX);
    json.fieldFloat("Alfa", s.circle.fAlfa);
    writePoint(json, "center", s.circle.fCenterR, s.circle.fCenterX);
    json.fieldFloat("radius", s.circle.fRadius);
    writeBox(json, s.circle.fLeft, s.circle.fBottom, s.circle.fRight, s.circle.fTop);
    json.endObject();
    json.key("rect");
    json.beginObject();
    writeColour(json, s.rect.nColor);
    writePoint(json, "Zmax", s.rect.fRmax, s.rect.fXmax);
    writePoint(json, "Zmin", s.rect.fRmin, s.rect.fXmin);
    json.endObject();
}

void writeSet(JsonWriter &json, const RxBoundSet &s)
{
    json.key("bounds");
    json.beginArray();
    static const char *const names[] = {"Poly", "Line", "Circle", "Rect"};
    for (int bit = 0; bit < 4; ++bit) {
        if (s.nBounds & (1u << bit))
            json.value(names[bit]);
    }
    json.endArray();
    writePoint(json, "Zmax", s.fRmax, s.fXmax);
    writePoint(json, "Zmin", s.fRmin, s.fXmin);
    float range[4];
    RxComputeRange(s, range[0], range[1], range[2], range[3]);
    json.key("range");
    json.beginArray();
    for (const float v : range)
        json.valueFloat(v);
    json.endArray();
    writeShapes(json, s);
}

// The enabled zones that hold (r, x); the line, having no inside, counts when the point lies
// on it or below it.
void writeInside(JsonWriter &json, const RxBoundSet &s, double r, double x)
{
    writePoint(json, "point", r, x);
    json.key("inside");
    json.beginArray();
    if ((s.nBounds & RxBoundSet::BoundPoly) && RxInsidePoly(s.poly, r, x))
        json.value("Poly");
    if ((s.nBounds & RxBoundSet::BoundLine) && RxBelowLine(s.line, r, x))
        json.value("Line");
    if ((s.nBounds & RxBoundSet::BoundCircle) && RxInsideCircle(s.circle, r, x))
        json.value("Circle");
    if ((s.nBounds & RxBoundSet::BoundRect) && RxInsideRect(s.rect, r, x))
        json.value("Rect");
    json.endArray();
}

} // namespace

int RunZones(int argc, char **argv)
{
    const char *path = nullptr;
    const char *inside = nullptr;
    for (int i = 0; i < argc; ++i) {
        const char *arg = argv[i];
        if (std::strcmp(arg, "--json") == 0)
            continue;
        if (std::strcmp(arg, "--inside") == 0 && i + 1 < argc) {
            inside = argv[++i];
        } else if (arg[0] != '-' && !path) {
            path = arg;
        } else {
            usage();
            return 2;
        }
    }
    double r = 0.0;
    double x = 0.0;
    if (!path || (inside && !readPoint(inside, r, x))) {
        usage();
        return 2;
    }
    RxBoundSet set;
    QString message;
    if (!loadRxBounds(set, QFile::decodeName(path), message)) {
        std::fprintf(stderr, "veldrix-cli zones: %s\n", message.toLocal8Bit().constData());
        return 2;
    }
    // The geometry as the setup dialog's OK leaves it.
    RxComputeBoundGeometry(set);
    JsonWriter json;
    json.beginObject();
    writeSet(json, set);
    json.key("messages");
    json.beginArray();
    for (const QString &problem : RxBoundSetProblems(set))
        json.value(problem);
    json.endArray();
    if (inside)
        writeInside(json, set, r, x);
    json.endObject();
    std::fwrite(json.text().data(), 1, json.text().size(), stdout);
    std::fputc('\n', stdout);
    return 0;
}
