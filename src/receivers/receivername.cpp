#include "receivers/receivername.h"

#include <algorithm>

namespace zun {

bool nameCharAllowed(int code)
{
    // '*' to '9' lets ',' and '.' through as well, although the refusal's
    // message names only "+-*/": receivers store them, so names keep them.
    return code == ' ' || (code >= '*' && code <= '9') || (code >= 'A' && code <= 'Z');
}

bool nameTextAllowed(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return nameCharAllowed(c.unicode()); });
}

} // namespace zun
