#include "mainscreen/imageresources.h"

#include <QPixmapCache>

namespace zun {

QPixmap namedImage(const QString &name)
{
    if (name.isEmpty())
        return {};
    const QString key = QStringLiteral("zun-image:") + name;
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    if (!pixmap.load(QStringLiteral(":/") + name + QStringLiteral(".png")))
        return {};
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QIcon namedIcon(const QString &name)
{
    const QPixmap pixmap = namedImage(name);
    return pixmap.isNull() ? QIcon() : QIcon(pixmap);
}

} // namespace zun
