#include "polylineraster.h"

#include <QImage>

#include <cstdlib>

namespace {

inline void plot(uint32_t *bits, int stride, int width, int height, int x, int y, uint32_t colour)
{
    if (unsigned(x) < unsigned(width) && unsigned(y) < unsigned(height))
        bits[size_t(y) * size_t(stride) + size_t(x)] = colour;
}

// Bresenham's line, both ends included.
void line(uint32_t *bits, int stride, int width, int height, int x0, int y0, int x1, int y1, uint32_t colour)
{
    // A stroke wholly outside the image touches nothing.
    if ((x0 < 0 && x1 < 0) || (y0 < 0 && y1 < 0) || (x0 >= width && x1 >= width) ||
        (y0 >= height && y1 >= height))
        return;
    if (x0 == x1) {
        int top = y0 < y1 ? y0 : y1;
        int bottom = y0 < y1 ? y1 : y0;
        if (unsigned(x0) >= unsigned(width))
            return;
        top = top < 0 ? 0 : top;
        bottom = bottom >= height ? height - 1 : bottom;
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
    const int ox = origin.x();
    const int oy = origin.y();
    if (count == 1) {
        plot(bits, stride, width, height, points[0].x() - ox, points[0].y() - oy, colour);
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
        const int x = points[i].x() - origin.x();
        const int y = points[i].y() - origin.y();
        line(bits, stride, image.width(), image.height(), x - 1, y, x + 1, y, colour);
        line(bits, stride, image.width(), image.height(), x, y - 1, x, y + 1, colour);
    }
}
