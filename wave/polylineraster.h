#pragma once

#include <QPoint>
#include <QRgb>

class QImage;

// One-pixel lines straight into an image. A compressed view of a long recording draws a
// hundred thousand short, mostly vertical strokes per paint; written as pixels they cost
// almost nothing, where a general painter spends microseconds on each.
// Points are in document coordinates; `origin` is the document point of the image's top left.
void RasterPolyline(QImage &image, QPoint origin, const QPoint *points, int count, QRgb colour);
// A plus sign of three pixels at each point, for the dot display.
void RasterPlusSigns(QImage &image, QPoint origin, const QPoint *points, int count, QRgb colour);
