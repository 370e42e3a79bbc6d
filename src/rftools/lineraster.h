#pragma once

#include <QImage>
#include <QPoint>

namespace zun {

// One-pixel lines straight into a 32-bit image, for traces of thousands of
// short segments where a general painter spends most of its time per call.
// The end point is left out, so a vertex shared by two segments is set once
// and a zero-length segment sets nothing. Pixels outside the image are
// skipped; coordinates are in device pixels.
void rasterLine(QImage &image, QPoint from, QPoint to, QRgb color);
void rasterPolyline(QImage &image, const QPoint *points, int count, QRgb color);

} // namespace zun
