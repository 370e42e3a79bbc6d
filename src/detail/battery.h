#pragma once

#include <QColor>
#include <QString>

#include <optional>

namespace zun {

// The battery label's background for a battery text; nothing for the plain
// button face.
[[nodiscard]] std::optional<QColor> batteryColour(const QString &text);

} // namespace zun
