#include "rftools/lineraster.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zun {

namespace {
// Keeps a garbage coordinate from turning into a walk of billions of pixels.
constexpr int kLimit = 32767;

QPoint limited(QPoint p)
{
    return {std::clamp(p.x(), -kLimit, kLimit), std::clamp(p.y(), -kLimit, kLimit)};
}

void walk(QRgb *bits, qsizetype stride, int width, int height, QPoint from, QPoint to, QRgb color)
{
    int x = from.x();
    int y = from.y();
    const int x1 = to.x();
    const int y1 = to.y();
    const int dx = std::abs(x1 - x);
    const int dy = -std::abs(y1 - y);
    const int sx = x < x1 ? 1 : -1;
    const int sy = y < y1 ? 1 : -1;
    int err = dx + dy;
    while (x != x1 || y != y1) {
        if (static_cast<unsigned>(x) < static_cast<unsigned>(width) &&
            static_cast<unsigned>(y) < static_cast<unsigned>(height))
            bits[y * stride + x] = color;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y += sy;
        }
    }
}
} // namespace

void rasterLine(QImage &image, QPoint from, QPoint to, QRgb color)
{
    rasterPolyline(image, std::array<QPoint, 2>{from, to}.data(), 2, color);
}

void rasterPolyline(QImage &image, const QPoint *points, int count, QRgb color)
{
    if (count < 2 || image.isNull() || image.depth() != 32)
        return;
    auto *bits = reinterpret_cast<QRgb *>(image.bits());
    const qsizetype stride = image.bytesPerLine() / 4;
    for (int k = 1; k < count; ++k)
        walk(bits, stride, image.width(), image.height(), limited(points[k - 1]), limited(points[k]), color);
}

} // namespace zun
