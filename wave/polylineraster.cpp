#include "polylineraster.h"

#include <QImage>

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

inline void plot(uint32_t *bits, int stride, int width, int height, int x, int y, uint32_t colour)
{
    if (unsigned(x) < unsigned(width) && unsigned(y) < unsigned(height))
        bits[size_t(y) * size_t(stride) + size_t(x)] = colour;
}

// Cuts the segment (x0,y0)-(x1,y1) to the rectangle 0..w-1 × 0..h-1 (Liang-Barsky in double,
// so that ends anywhere in the 64-bit plane are fine). False when nothing of it is inside.
bool clipSegment(int64_t &x0, int64_t &y0, int64_t &x1, int64_t &y1, int width, int height)
{
    const double dx = double(x1 - x0);
    const double dy = double(y1 - y0);
    double t0 = 0.0, t1 = 1.0;
    const double p[4] = {-dx, dx, -dy, dy};
    const double q[4] = {double(x0), double(width - 1) - double(x0), double(y0),
                         double(height - 1) - double(y0)};
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0.0) {
            if (q[i] < 0.0)
                return false;
            continue;
        }
        const double t = q[i] / p[i];
        if (p[i] < 0.0) {
            if (t > t1)
                return false;
            if (t > t0)
                t0 = t;
        } else {
            if (t < t0)
                return false;
            if (t < t1)
                t1 = t;
        }
    }
    const double ox = double(x0), oy = double(y0);
    if (t1 < 1.0) {
        x1 = int64_t(std::llround(ox + t1 * dx));
        y1 = int64_t(std::llround(oy + t1 * dy));
    }
    if (t0 > 0.0) {
        x0 = int64_t(std::llround(ox + t0 * dx));
        y0 = int64_t(std::llround(oy + t0 * dy));
    }
    return true;
}

// Bresenham's line, both ends included. The ends may lie anywhere: the part outside the image
// is cut off first, so the work is bounded by the image, not by the segment's length.
void line(uint32_t *bits, int stride, int width, int height, int64_t ax, int64_t ay, int64_t bx, int64_t by,
          uint32_t colour)
{
    // A stroke wholly outside the image touches nothing.
    if ((ax < 0 && bx < 0) || (ay < 0 && by < 0) || (ax >= width && bx >= width) ||
        (ay >= height && by >= height))
        return;
    const bool inside =
        ax >= 0 && bx >= 0 && ay >= 0 && by >= 0 && ax < width && bx < width && ay < height && by < height;
    if (!inside && !clipSegment(ax, ay, bx, by, width, height))
        return;
    int x0 = int(ax), y0 = int(ay);
    const int x1 = int(bx), y1 = int(by);
    if (x0 == x1) {
        const int top = qBound(0, y0 < y1 ? y0 : y1, height - 1);
        const int bottom = qBound(0, y0 < y1 ? y1 : y0, height - 1);
        if (unsigned(x0) >= unsigned(width))
            return;
        uint32_t *p = bits + size_t(top) * size_t(stride) + size_t(x0);
        for (int y = top; y <= bottom; ++y, p += stride)
            *p = colour;
        return;
    }
    const int dx = std::abs(x1 - x0);
    const int dy = -std::abs(y1 - y0);
    const int sx = x0 < x1 ? 1 : -1;
    const int sy = y0 < y1 ? 1 : -1;
    int error = dx + dy;
    for (;;) {
        plot(bits, stride, width, height, x0, y0, colour);
        if (x0 == x1 && y0 == y1)
            break;
        const int twice = 2 * error;
        if (twice >= dy) {
            error += dy;
            x0 += sx;
        }
        if (twice <= dx) {
            error += dx;
            y0 += sy;
        }
    }
}

} // namespace

void RasterPolyline(QImage &image, QPoint origin, const QPoint *points, int count, QRgb colour)
{
    if (count < 1 || image.isNull())
        return;
    auto *bits = reinterpret_cast<uint32_t *>(image.bits());
    const int stride = static_cast<int>(image.bytesPerLine() / 4);
    const int width = image.width();
    const int height = image.height();
    const int64_t ox = origin.x();
    const int64_t oy = origin.y();
    if (count == 1) {
        const int64_t x = points[0].x() - ox, y = points[0].y() - oy;
        if (x >= 0 && y >= 0 && x < width && y < height)
            plot(bits, stride, width, height, int(x), int(y), colour);
        return;
    }
    for (int i = 1; i < count; ++i) {
        line(bits, stride, width, height, points[i - 1].x() - ox, points[i - 1].y() - oy, points[i].x() - ox,
             points[i].y() - oy, colour);
    }
}

void RasterPlusSigns(QImage &image, QPoint origin, const QPoint *points, int count, QRgb colour)
{
    if (image.isNull())
        return;
    auto *bits = reinterpret_cast<uint32_t *>(image.bits());
    const int stride = static_cast<int>(image.bytesPerLine() / 4);
    for (int i = 0; i < count; ++i) {
        const int64_t x = points[i].x() - int64_t(origin.x());
        const int64_t y = points[i].y() - int64_t(origin.y());
        line(bits, stride, image.width(), image.height(), x - 1, y, x + 1, y, colour);
        line(bits, stride, image.width(), image.height(), x, y - 1, x, y + 1, colour);
    }
}
