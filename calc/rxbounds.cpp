#include "rxbounds.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kDegToRad = 0.017453292519943295;

QString tr(const char *context, const char *text)
{
    return QCoreApplication::translate(context, text);
}

// An edit's number; `ok` false when the text is none.
float parsed(const QString &text, bool &ok)
{
    return text.trimmed().toFloat(&ok);
}

bool within(float v, bool ok, float lo, float hi)
{
    return ok && v >= lo && v <= hi;
}

// The reach tests that polygon, line and circle share.
bool checkReach(const char *context, float r, bool rOk, float x, bool xOk, QString &error)
{
    if (!(rOk && r >= 1.0f)) {
        error = tr(context, "[Rset] Can NOT Less Than 1.0!");
        return false;
    }
    if (!(xOk && x >= 1.0f)) {
        error = tr(context, "[Xset] Can NOT Less Than 1.0!");
        return false;
    }
    return true;
}

// The values of a page with whether each was a number; a record's own values always are.
struct PageValues
{
    float v[5] = {};
    bool ok[5] = {true, true, true, true, true};
};

bool checkPoly(const PageValues &p, QString &error)
{
    const char *context = "CAnaFormChnGrpRxBoundForm1Poly";
    if (!checkReach(context, p.v[0], p.ok[0], p.v[1], p.ok[1], error))
        return false;
    if (!within(p.v[2], p.ok[2], 0.0f, 0.5f)) {
        error = tr(context, "[tgBeta(0~0.5)] Setting Error!");
        return false;
    }
    if (!within(p.v[3], p.ok[3], 0.0f, 45.0f)) {
        error = tr(context, "[(Ang)Alfa(0~45(Deg))] Setting Error!");
        return false;
    }
    if (!within(p.v[4], p.ok[4], 0.0f, 135.0f)) {
        error = tr(context, "[(Ang)Sita(0~135(Deg))] Setting Error!");
        return false;
    }
    // A flat top and a right side along the R axis would never meet.
    if (p.v[4] == 0.0f && p.v[2] == 0.0f) {
        error = tr(context, "[tgBeta(0~0.5)] and [(Ang)Sita(0~135(Deg))] Can NOT Set to Zero simultaneity!");
        return false;
    }
    return true;
}

bool checkLine(const PageValues &p, QString &error)
{
    const char *context = "CAnaFormChnGrpRxBoundForm2Line";
    if (!checkReach(context, p.v[0], p.ok[0], p.v[1], p.ok[1], error))
        return false;
    if (!within(p.v[2], p.ok[2], -80.0f, 80.0f)) {
        error = tr(context, "[Beta(-80~+80(Deg))] Setting Error!");
        return false;
    }
    return true;
}

bool checkCircle(const PageValues &p, QString &error)
{
    const char *context = "CAnaFormChnGrpRxBoundForm3Cir";
    if (!checkReach(context, p.v[0], p.ok[0], p.v[1], p.ok[1], error))
        return false;
    if (!within(p.v[2], p.ok[2], -0.5f, 1.0f)) {
        error = tr(context, "[Alfa(-0.5~1.0)] Setting Error");
        return false;
    }
    return true;
}

// Rectangle and coordinate range: maximum minus minimum at least 1 in both directions.
bool checkSpan(const char *context, const char *rText, const char *xText, float rmax, float rmin, float xmax,
               float xmin, QString &error)
{
    if (!(rmax - rmin >= 1.0f)) {
        error = tr(context, rText);
        return false;
    }
    if (!(xmax - xmin >= 1.0f)) {
        error = tr(context, xText);
        return false;
    }
    return true;
}

bool checkRect(float rmax, float rmin, float xmax, float xmin, QString &error)
{
    return checkSpan(
        "CAnaFormChnGrpRxBoundForm4Rect",
        QT_TRANSLATE_NOOP("CAnaFormChnGrpRxBoundForm4Rect", "[Rset1 - Rset2] Can NOT Less Than 1.0!"),
        QT_TRANSLATE_NOOP("CAnaFormChnGrpRxBoundForm4Rect", "[Xset1 - Xset2] Can NOT Less Than 1.0!"), rmax,
        rmin, xmax, xmin, error);
}

bool checkRange(float rmax, float rmin, float xmax, float xmin, QString &error)
{
    return checkSpan("CAnaFormChnGrpRxBoundDlg",
                     QT_TRANSLATE_NOOP("CAnaFormChnGrpRxBoundDlg", "[Rmax - Rmin] Can NOT Less Than 1.0!"),
                     QT_TRANSLATE_NOOP("CAnaFormChnGrpRxBoundDlg", "[Xmax - Xmin] Can NOT Less Than 1.0!"),
                     rmax, rmin, xmax, xmin, error);
}

PageValues parsePage(const QString *edits, int count)
{
    PageValues p;
    for (int i = 0; i < count; ++i)
        p.v[i] = parsed(edits[i], p.ok[i]);
    return p;
}

void widen(float &left, float &bottom, float &right, float &top, float l, float b, float r, float t)
{
    left = std::min(left, l);
    bottom = std::min(bottom, b);
    right = std::max(right, r);
    top = std::max(top, t);
}

} // namespace

void RxComputePolyGeometry(RxBoundPoly &p)
{
    const double tA = std::tan(p.fAlfa * kDegToRad);
    const double tS = std::tan(p.fSita * kDegToRad);
    const double t = p.fTgBeta;
    const double R = p.fRset;
    const double X = p.fXset;
    p.ptRight[0] = float(R);
    p.ptRight[1] = float(-tA * R);
    const double a = tA * X / (1 - tA * t);
    const double b = X + a * t;
    p.ptLeft[0] = float(-a);
    p.ptLeft[1] = float(b);
    const double d = (X - t * R) / (tS + t);
    p.ptTop[0] = float(R + d);
    p.ptTop[1] = float(d * tS);
    p.fLeft = float(-a);
    p.fBottom = float(-tA * R);
    p.fRight = float(R + d);
    p.fTop = float(b);
}

void RxComputeCircleGeometry(RxBoundCircle &c)
{
    const double half = (1 - c.fAlfa) * 0.5;
    c.fCenterR = float(half * c.fZsetR);
    c.fCenterX = float(half * c.fZsetX);
    const double dr = double(c.fZsetR) - c.fCenterR;
    const double dx = double(c.fZsetX) - c.fCenterX;
    c.fRadius = float(std::sqrt(dr * dr + dx * dx));
    c.fLeft = c.fCenterR - c.fRadius;
    c.fBottom = c.fCenterX - c.fRadius;
    c.fRight = c.fCenterR + c.fRadius;
    c.fTop = c.fCenterX + c.fRadius;
}

void RxComputeBoundGeometry(RxBoundSet &set)
{
    RxComputePolyGeometry(set.poly);
    RxComputeCircleGeometry(set.circle);
}

void RxPolyOutline(const RxBoundPoly &p, RxPlanePoint points[6])
{
    points[0] = RxPlanePoint{};
    points[1] = RxPlanePoint{p.ptLeft[0], p.ptLeft[1]};
    points[2] = RxPlanePoint{p.ptTop[0], p.ptTop[1]};
    points[3] = RxPlanePoint{p.fRset, 0.0};
    points[4] = RxPlanePoint{p.ptRight[0], p.ptRight[1]};
    points[5] = RxPlanePoint{};
}

void RxComputeRange(const RxBoundSet &s, float &left, float &bottom, float &right, float &top)
{
    left = s.fRmin;
    bottom = s.fXmin;
    right = s.fRmax;
    top = s.fXmax;
    if (s.nBounds & RxBoundSet::BoundPoly)
        widen(left, bottom, right, top, s.poly.fLeft, s.poly.fBottom, s.poly.fRight, s.poly.fTop);
    if (s.nBounds & RxBoundSet::BoundCircle)
        widen(left, bottom, right, top, s.circle.fLeft, s.circle.fBottom, s.circle.fRight, s.circle.fTop);
    if (s.nBounds & RxBoundSet::BoundRect)
        widen(left, bottom, right, top, s.rect.fRmin, s.rect.fXmin, s.rect.fRmax, s.rect.fXmax);
    if (s.nBounds & RxBoundSet::BoundLine)
        widen(left, bottom, right, top, s.line.fZsetR, s.line.fZsetX, s.line.fZsetR, s.line.fZsetX);
    // The origin, where every impedance vector starts, always shows.
    left = std::min(left, 0.0f);
    bottom = std::min(bottom, 0.0f);
    right = std::max(right, 0.0f);
    top = std::max(top, 0.0f);
    left = float(left * 1.1);
    bottom = float(bottom * 1.1);
    right = float(right * 1.1);
    top = float(top * 1.1);
}

double RxLineXAt(const RxBoundLine &line, double r)
{
    return line.fZsetX + (r - line.fZsetR) * std::tan(line.fBeta * kDegToRad);
}

bool RxInsidePoly(const RxBoundPoly &poly, double r, double x)
{
    RxPlanePoint p[6];
    RxPolyOutline(poly, p);
    // Crossing count of a ray towards +R; a point on a side counts as inside.
    bool inside = false;
    for (int i = 0, j = 4; i < 5; j = i++) {
        const double ri = p[i].r, xi = p[i].x, rj = p[j].r, xj = p[j].x;
        const double cross = (rj - ri) * (x - xi) - (xj - xi) * (r - ri);
        if (cross == 0.0 && r >= std::min(ri, rj) && r <= std::max(ri, rj) && x >= std::min(xi, xj) &&
            x <= std::max(xi, xj))
            return true;
        if ((xi > x) != (xj > x) && r < (rj - ri) * (x - xi) / (xj - xi) + ri)
            inside = !inside;
    }
    return inside;
}

bool RxInsideCircle(const RxBoundCircle &c, double r, double x)
{
    const double dr = r - c.fCenterR;
    const double dx = x - c.fCenterX;
    return std::sqrt(dr * dr + dx * dx) <= c.fRadius;
}

bool RxInsideRect(const RxBoundRect &rect, double r, double x)
{
    return r >= rect.fRmin && r <= rect.fRmax && x >= rect.fXmin && x <= rect.fXmax;
}

bool RxBelowLine(const RxBoundLine &line, double r, double x)
{
    return x <= RxLineXAt(line, r);
}

QString RxBoundNumberText(double value)
{
    // By magnitude; only zero (or a value that is no number) reaches the last format.
    const double m = std::fabs(value);
    const char *format = "%.9f";
    if (m > 10000)
        format = "%.1f";
    else if (m > 1000)
        format = "%.2f";
    else if (m > 100)
        format = "%.3f";
    else if (m > 0)
        format = "%.4f";
    return QString::asprintf(format, value);
}

bool RxStorePolyPage(const QString edits[5], RxBoundPoly &poly, QString &error)
{
    const PageValues p = parsePage(edits, 5);
    if (!checkPoly(p, error))
        return false;
    poly.fRset = p.v[0];
    poly.fXset = p.v[1];
    poly.fTgBeta = p.v[2];
    poly.fAlfa = p.v[3];
    poly.fSita = p.v[4];
    return true;
}

bool RxStoreLinePage(const QString edits[3], RxBoundLine &line, QString &error)
{
    const PageValues p = parsePage(edits, 3);
    if (!checkLine(p, error))
        return false;
    line.fZsetR = p.v[0];
    line.fZsetX = p.v[1];
    line.fBeta = p.v[2];
    return true;
}

bool RxStoreCirclePage(const QString edits[3], RxBoundCircle &circle, QString &error)
{
    const PageValues p = parsePage(edits, 3);
    if (!checkCircle(p, error))
        return false;
    circle.fZsetR = p.v[0];
    circle.fZsetX = p.v[1];
    circle.fAlfa = p.v[2];
    return true;
}

bool RxStoreRectPage(const QString edits[4], RxBoundRect &rect, QString &error)
{
    // A text that is no number simply reads 0 here.
    const PageValues p = parsePage(edits, 4);
    if (!checkRect(p.v[0], p.v[1], p.v[2], p.v[3], error))
        return false;
    rect.fRmax = p.v[0];
    rect.fRmin = p.v[1];
    rect.fXmax = p.v[2];
    rect.fXmin = p.v[3];
    return true;
}

bool RxStoreRange(const QString edits[4], RxBoundSet &set, QString &error)
{
    const PageValues p = parsePage(edits, 4);
    if (!checkRange(p.v[0], p.v[1], p.v[2], p.v[3], error))
        return false;
    set.fRmax = p.v[0];
    set.fRmin = p.v[1];
    set.fXmax = p.v[2];
    set.fXmin = p.v[3];
    return true;
}

QStringList RxBoundSetProblems(const RxBoundSet &s)
{
    QStringList problems;
    QString error;
    PageValues poly;
    const float polyValues[5] = {s.poly.fRset, s.poly.fXset, s.poly.fTgBeta, s.poly.fAlfa, s.poly.fSita};
    std::copy(polyValues, polyValues + 5, poly.v);
    if (!checkPoly(poly, error))
        problems << error;
    const PageValues line{{s.line.fZsetR, s.line.fZsetX, s.line.fBeta}};
    if (!checkLine(line, error))
        problems << error;
    const PageValues circle{{s.circle.fZsetR, s.circle.fZsetX, s.circle.fAlfa}};
    if (!checkCircle(circle, error))
        problems << error;
    if (!checkRect(s.rect.fRmax, s.rect.fRmin, s.rect.fXmax, s.rect.fXmin, error))
        problems << error;
    if (!checkRange(s.fRmax, s.fRmin, s.fXmax, s.fXmin, error))
        problems << error;
    return problems;
}
