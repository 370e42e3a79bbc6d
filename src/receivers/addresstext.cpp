#include "receivers/addresstext.h"

namespace zun {

QString addressText(int address)
{
    return QStringLiteral("%1").arg(address, 2, 10, QLatin1Char('0'));
}

} // namespace zun
