#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

namespace zun {

// The indicator pictures by their names ("GreenBall", "SpeakerOFF", "logo",
// ...). An unknown or empty name gives a null pixmap, which shows nothing.
// Pictures come from the compiled-in resources and are kept in Qt's pixmap
// cache, so a panel update can ask for one on every poll.
[[nodiscard]] QPixmap namedImage(const QString &name);
[[nodiscard]] QIcon namedIcon(const QString &name);

} // namespace zun
