#pragma once

#include <QString>

namespace zun {

class SettingsStore;
struct LineOptions;

inline const QString kAppName = QStringLiteral("KESTA_ZUN");

// Reads "CommPort", "Retry" and "Baudrate", replacing anything invalid by its
// default. Nothing is written back.
void loadLinkOptions(const SettingsStore &store, LineOptions &options);

// "TVtype" repaired to 0..5 (default 4).
[[nodiscard]] int readTvType(const SettingsStore &store);

// "ChangeBaudrate" / "MainKOB": only the exact text "1" switches them on.
[[nodiscard]] bool readFunctionFlag(const SettingsStore &store, const QString &key);

// VB's IsNumeric for the texts a settings file or an input box may hold:
// optional blanks and sign, digits with an optional decimal point and exponent.
[[nodiscard]] bool isNumericText(const QString &text, double *value = nullptr);

} // namespace zun
