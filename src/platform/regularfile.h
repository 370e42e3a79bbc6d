#pragma once

#include <QFile>
#include <QString>

namespace zun {

// Opens path for reading only when it names a regular file. Opening a FIFO
// would wait for a writer forever, and a device or a directory has no end a
// size check could trust. Returns an empty text on success, else the reason
// to show the user.
[[nodiscard]] QString openRegularFile(QFile &file, const QString &path);

} // namespace zun
