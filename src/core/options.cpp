#include "core/options.h"

#include "platform/settingsstore.h"
#include "receivers/receiverbus.h"

#include <QRegularExpression>

#include <cmath>

namespace zun {

bool isNumericText(const QString &text, double *value)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?\s*$)"));
    if (!pattern.match(text).hasMatch())
        return false;
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (value)
        *value = v;
    return ok;
}

namespace {
int numericOr(const QString &text, int low, int high, int fallback)
{
    double v = 0;
    if (!isNumericText(text, &v) || v < low || v > high)
        return fallback;
    return static_cast<int>(std::nearbyint(v));
}
} // namespace

void loadLinkOptions(const SettingsStore &store, LineOptions &state)
{
    const QString section = QStringLiteral("MSComm");
    state.port = numericOr(store.get(kAppName, section, QStringLiteral("CommPort")), 1, 6, 2);
    state.retries = numericOr(store.get(kAppName, section, QStringLiteral("Retry")), 0, 4, 2);

    double baud = 0;
    const QString baudText = store.get(kAppName, section, QStringLiteral("Baudrate"));
    state.baudRate = 115200;
    if (isNumericText(baudText, &baud) && (baud == 9600 || baud == 38400 || baud == 57600 || baud == 115200))
        state.baudRate = static_cast<int>(baud);
}

int readTvType(const SettingsStore &store)
{
    return numericOr(store.get(kAppName, QStringLiteral("Function"), QStringLiteral("TVtype")), 0, 5, 4);
}

bool readFunctionFlag(const SettingsStore &store, const QString &key)
{
    return store.get(kAppName, QStringLiteral("Function"), key) == QStringLiteral("1");
}

} // namespace zun
