#include "showlog/showlogline.h"

#include <QStringList>

namespace zun {

namespace {
// A name may hold any character the receiver accepts, the separator included.
QString csvText(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString number(const std::optional<double> &value, int decimals)
{
    return value ? QString::number(*value, 'f', decimals) : QString();
}

QString number(const std::optional<int> &value)
{
    return value ? QString::number(*value) : QString();
}

QString flag(const std::optional<bool> &value)
{
    return value ? QString(*value ? QLatin1Char('1') : QLatin1Char('0')) : QString();
}
} // namespace

QString showLogHeader()
{
    return QStringLiteral("time,event,address,name,frequency_mhz,rf_a_dbm,rf_b_dbm,audio,battery_percent,"
                          "squelch,mute,online,antenna,drops\n");
}

QString showLogLine(const ShowLogRow &row)
{
    const QStringList fields = {
        row.time,
        row.event,
        QString::number(row.address),
        csvText(row.name),
        number(row.frequencyMHz, 3),
        number(row.rfADbm, 1),
        number(row.rfBDbm, 1),
        number(row.audio),
        number(row.batteryPercent),
        number(row.squelch),
        flag(row.mute),
        flag(row.online),
        row.antenna.isNull() ? QString() : QString(row.antenna),
        number(row.drops),
    };
    return fields.join(QLatin1Char(',')) + QLatin1Char('\n');
}

} // namespace zun
