#pragma once

#include <QString>

namespace zun {

// A receiver's name is six characters of its own small alphabet: blank,
// "*+,-./", digits and upper-case letters. Lower case is refused, not folded:
// the name box has always refused it key by key.
[[nodiscard]] bool nameCharAllowed(int code);

// Every character of text is one the receiver takes; the empty text is.
[[nodiscard]] bool nameTextAllowed(const QString &text);

} // namespace zun
