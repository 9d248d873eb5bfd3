#pragma once

// The operate characteristic of a differential relay on the Id-Ir plane: a pick-up level
// (lowest trigger current) held up to the first inflection point, then one rising line (two-line
// characteristic) or three lines of their own slopes through two inflection points, and the
// unrestrained high-speed level above which the relay trips whatever the braking. Values are
// secondary amperes and plain slopes in 32-bit floats, as the boundary dialog shows them; the
// wave-check thresholds of inrush blocking ride along.

#include <QString>

#include <cstdint>

struct IdBounds
{
    int32_t nRes = 2;                 // number of lines: two or three
    float fIcdsd = 6.0f;              // high-speed differential current
    float fIocd = 0.5f;               // lowest trigger current
    float fIres[2] = {1.0f, 3.0f};    // inflection points of the braking current
    float fk[3] = {0.5f, 0.5f, 0.7f}; // slopes of lines 1 to 3
    float fa[2] = {65.0f, 0.25f};     // dead angle: fixed threshold (degrees), floating coefficient
    float fb[2] = {140.0f, 0.25f};    // wave width: fixed threshold (degrees), floating coefficient
    uint32_t nColor = 0xFF0000FFu;
};

// The high-speed line's colour.
constexpr uint32_t kIdHighSpeedColor = 0xFFFF0000u;

struct IdPlanePoint
{
    double ir = 0.0;
    double id = 0.0;
};

// The restraint polyline from Ir = 0 to Ir = `irEnd`: its corners in order, at most 4. Two
// lines: flat at the trigger level to fIres[0], then slope fk[0]. Three lines: from the trigger
// level at Ir = 0 with slope fk[0] to fIres[0], fk[1] to fIres[1], then fk[2]; a second
// inflection below the first is taken as equal to it, so that line 2 vanishes.
int IdCharacteristic(const IdBounds &bounds, double irEnd, IdPlanePoint points[4]);

// The operate level of the restraint lines at braking current `ir`.
double IdOperateLevel(const IdBounds &bounds, double ir);

// Whether (ir, id) lies in the operate area: above the restraint lines or above the high-speed
// level. The border belongs to the restraint area.
bool IdInOperateArea(const IdBounds &bounds, double ir, double id);

// The boundary dialog's checks on the texts of its edits (high-speed current, trigger
// current, inflection points 1 and 2, slopes 1 to 3), the line count (2 or 3, 0 for none
// chosen) and the braking mode (1 to 4, 0 for none chosen), in the order the user meets the
// messages. `ratedIn` is the object's rated secondary current. Edits that the line count does
// not use are not checked. On success the values go into `bounds`; on failure `error` holds the
// message and `bounds` is unchanged.
bool IdStoreBounds(const QString edits[7], int lines, int mode, double ratedIn, IdBounds &bounds,
                   QString &error);
