#pragma once

// The boundaries that an engineer draws on the X-Y plane of two channels (an impedance
// characteristic, a power limit): straight lines, plumb lines and circles in secondary values,
// kept in a ".txb" settings file so that one set of relay zones serves many recordings. The X-Y
// form and its boundary dialog own the list; this file reads, writes and describes it.

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

class CDiskFile;

// One boundary of the plane.
struct XYBound
{
    enum Kind : int32_t
    {
        KindLine = 0,      // Y = A·X + B
        KindPlumbLine = 1, // X = C
        KindCircle = 2     // centre (xc, yc), radius r
    };

    int32_t kind = KindLine;
    uint32_t colour = 0xFF000000u; // ARGB; the file keeps red, green and blue
    double a = 0.0;
    double b = 0.0;
    double c = 0.0;
    double xc = 0.0;
    double yc = 0.0;
    double r = 0.0;
};

// The list row of a boundary: "Line", "Plumb Line" or "Circle", and its settings.
QString XYBoundKindText(const XYBound &bound);
QString XYBoundSettingsText(const XYBound &bound);

// The whole ".txb" text: the heading comment, the section and one line per boundary in list
// order, in the local 8-bit encoding.
QByteArray XYBoundsFileText(const std::vector<XYBound> &list);
// Writes the list through the program's safe writer. On failure `message` holds
// "Create [path] Error When Save File!" and the earlier file stays as it was.
bool SaveXYBounds(const QString &path, const std::vector<XYBound> &list, QString &message);

// Reads the boundaries of section "common" from an open file into `list`, which is cleared
// first. Keys and the section name are compared without regard to case; a line with too few
// numbers for its kind is passed over. Returns the number of boundaries read.
int ReadXYBounds(CDiskFile &file, std::vector<XYBound> &list);
// Opens and reads a ".txb"; when it cannot be opened `message` holds
// "Open [path] Error When Loading it!" and the list is left as it was.
bool LoadXYBounds(const QString &path, std::vector<XYBound> &list, QString &message);
