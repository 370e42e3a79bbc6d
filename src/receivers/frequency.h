#pragma once

#include <QString>
#include <QStringView>

namespace zun {

// Frequency codes are 25 kHz steps above 65.750 MHz, carried as 4 hex digits.

// Code text to MHz. Text shorter than 4 characters, or a code too large for
// the receivers' 32-bit arithmetic, gives 0.
[[nodiscard]] double mhzFromCode(QStringView code);

// MHz to the nearest code (halves to even) as 4 upper-case hex digits.
// A value that is not a number or lies beyond any code gives "0000".
[[nodiscard]] QString codeFromMhz(double mhz);

// "000.000": at least three integer digits, exactly three decimals, rounded
// half away from zero on the decimal digits a user would read.
[[nodiscard]] QString formatFreq(double mhz);

// The number a text starts with, as the line's old BASIC Val() reads it:
// leading blanks skipped, digits, one point, an exponent; 0 when none.
[[nodiscard]] double leadingValue(QStringView text);

// A double as plain text with up to 15 significant digits ("182.275",
// "470", "565.999975585938"), the form the band comparisons work on.
[[nodiscard]] QString numberText(double value);

} // namespace zun
