#include "receivers/receivername.h"

#include <algorithm>

namespace zun {

bool nameCharAllowed(int code)
{
    return code == 32 || (code >= 42 && code <= 57) || (code >= 65 && code <= 90);
}

bool nameTextAllowed(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return nameCharAllowed(c.unicode()); });
}

} // namespace zun
