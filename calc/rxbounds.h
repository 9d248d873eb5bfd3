#pragma once

// The relay characteristics drawn on the impedance plane: a quadrilateral distance zone, a
// straight line (a directional or load-encroachment blinder), a mho circle and a rectangle,
// with the coordinate range of the diagram. All values are secondary ohm, degrees or plain
// ratios in 32-bit floats, as the setup dialog shows them. The impedance view holds one set by
// value; this file derives its geometry, checks the dialog's edits and formats its numbers.

#include <QString>
#include <QStringList>

#include <cstdint>

struct RxBoundPoly
{
    uint32_t nColor = 0xFFFF00FFu;
    float fRset = 20.0f;    // resistive reach on the R axis
    float fXset = 20.0f;    // reactive reach on the X axis
    float fTgBeta = 0.125f; // tangent of the slope of the top side
    float fAlfa = 15.0f;    // degrees: the left side beyond the X axis, the lower side below R
    float fSita = 60.0f;    // degrees: the right side through (Rset, 0)
    // Derived when the dialog ends with OK.
    float ptRight[2] = {};
    float ptLeft[2] = {};
    float ptTop[2] = {};
    float fLeft = 0.0f;
    float fBottom = 0.0f;
    float fRight = 0.0f;
    float fTop = 0.0f;
};

struct RxBoundLine
{
    uint32_t nColor = 0xFF00FFFFu;
    float fZsetR = 5.0f;
    float fZsetX = 20.0f;
    float fBeta = 15.0f; // degrees
};

struct RxBoundCircle
{
    uint32_t nColor = 0xFF008000u;
    float fZsetR = 20.0f;
    float fZsetX = 20.0f;
    float fAlfa = 0.5f; // the far end of the diameter lies at -fAlfa·Z
    // Derived when the dialog ends with OK.
    float fCenterR = 0.0f;
    float fCenterX = 0.0f;
    float fRadius = 0.0f;
    float fLeft = 0.0f;
    float fBottom = 0.0f;
    float fRight = 0.0f;
    float fTop = 0.0f;
};

struct RxBoundRect
{
    uint32_t nColor = 0xFF000080u;
    float fRmin = -5.0f;
    float fXmin = -5.0f;
    float fRmax = 20.0f;
    float fXmax = 20.0f;
};

struct RxBoundSet
{
    enum Bound : uint32_t
    {
        BoundPoly = 0x1,
        BoundLine = 0x2,
        BoundCircle = 0x4,
        BoundRect = 0x8
    };
    uint32_t nBounds = 0;
    float fRmin = -50.0f;
    float fXmin = -50.0f;
    float fRmax = 50.0f;
    float fXmax = 50.0f;
    RxBoundPoly poly;
    RxBoundLine line;
    RxBoundCircle circle;
    RxBoundRect rect;
};

// A point of the R-X plane in secondary ohm.
struct RxPlanePoint
{
    double r = 0.0;
    double x = 0.0;
};

// The derived corners and bounding boxes of polygon and circle, whether enabled or not.
void RxComputePolyGeometry(RxBoundPoly &poly);
void RxComputeCircleGeometry(RxBoundCircle &circle);
void RxComputeBoundGeometry(RxBoundSet &set);

// The outline of the polygon as drawn: origin, upper left, upper right, (Rset, 0), lower
// right, origin again. Uses the derived corners.
void RxPolyOutline(const RxBoundPoly &poly, RxPlanePoint points[6]);

// The coordinate range of the diagram: the set's own range widened by every enabled
// characteristic, always holding the origin, and then 10 % larger.
void RxComputeRange(const RxBoundSet &set, float &left, float &bottom, float &right, float &top);

// X of the line at resistance r: the line runs through its reach point with slope tan(fBeta).
double RxLineXAt(const RxBoundLine &line, double r);

// Whether the impedance (r, x) lies within the characteristic; the border counts as inside.
// The polygon and circle use the derived geometry. For the line: on it or below it.
bool RxInsidePoly(const RxBoundPoly &poly, double r, double x);
bool RxInsideCircle(const RxBoundCircle &circle, double r, double x);
bool RxInsideRect(const RxBoundRect &rect, double r, double x);
bool RxBelowLine(const RxBoundLine &line, double r, double x);

// A number as the setup dialog's edits show it: more decimals the smaller its magnitude, and
// nine decimals for zero.
QString RxBoundNumberText(double value);

// The checks of the setup pages on the texts of their edits, in the order the user meets the
// messages. On success the values go into the record; on failure `error` holds the message and
// the record is unchanged.
bool RxStorePolyPage(const QString edits[5], RxBoundPoly &poly,
                     QString &error); // Rset, Xset, tgBeta, Alfa, Sita
bool RxStoreLinePage(const QString edits[3], RxBoundLine &line, QString &error);       // Rset, Xset, Beta
bool RxStoreCirclePage(const QString edits[3], RxBoundCircle &circle, QString &error); // Rset, Xset, Alfa
bool RxStoreRectPage(const QString edits[4], RxBoundRect &rect, QString &error); // Rset1, Rset2, Xset1, Xset2
// The dialog's own check of the coordinate range: Rmax, Rmin, Xmax, Xmin.
bool RxStoreRange(const QString edits[4], RxBoundSet &set, QString &error);
// Every message that a set's values would raise in the dialog (pages in tab order, then the
// range); empty when the dialog would accept it.
QStringList RxBoundSetProblems(const RxBoundSet &set);
