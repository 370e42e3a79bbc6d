#pragma once

#include <QColor>
#include <QtGlobal>

namespace zun {

// Colours arrive as 24-bit blue-green-red values (0xBBGGRR, 255 is red), the
// order the receivers' documentation and the panel design use. This is the
// only place that turns them into QColor.
[[nodiscard]] QColor bgrColor(quint32 bgr);

namespace bgr {
inline constexpr quint32 White = 0xFFFFFF;
inline constexpr quint32 Teal = 0x808000;
inline constexpr quint32 Red = 0x0000FF;
inline constexpr quint32 Blue = 0xFF0000;
inline constexpr quint32 LightBlue = 0xFF8080;
inline constexpr quint32 Green = 0x00C000;
inline constexpr quint32 LightYellow = 0xC0FFFF;
} // namespace bgr

// The desktop's button-face colour: an offline name blinks between red and this.
[[nodiscard]] QColor buttonFaceColor();

} // namespace zun
