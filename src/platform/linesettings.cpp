#include "platform/linesettings.h"

#include <QStringList>

namespace zun {

namespace {
// Well above anything a UART driver accepts; keeps the number inside qint32.
constexpr qint64 kMaxBaudRate = 4'000'000;

std::optional<qint32> parseBaudRate(const QString &text)
{
    if (text.isEmpty() || text.size() > 7)
        return std::nullopt;
    qint64 value = 0;
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return std::nullopt;
        value = value * 10 + (c.unicode() - '0');
    }
    if (value < 1 || value > kMaxBaudRate)
        return std::nullopt;
    return static_cast<qint32>(value);
}

std::optional<QSerialPort::Parity> parseParity(const QString &text)
{
    if (text.size() != 1)
        return std::nullopt;
    switch (text.at(0).toUpper().unicode()) {
    case 'N':
        return QSerialPort::NoParity;
    case 'E':
        return QSerialPort::EvenParity;
    case 'O':
        return QSerialPort::OddParity;
    case 'M':
        return QSerialPort::MarkParity;
    case 'S':
        return QSerialPort::SpaceParity;
    default:
        return std::nullopt;
    }
}

std::optional<QSerialPort::DataBits> parseDataBits(const QString &text)
{
    if (text == QLatin1String("5"))
        return QSerialPort::Data5;
    if (text == QLatin1String("6"))
        return QSerialPort::Data6;
    if (text == QLatin1String("7"))
        return QSerialPort::Data7;
    if (text == QLatin1String("8"))
        return QSerialPort::Data8;
    return std::nullopt;
}

std::optional<QSerialPort::StopBits> parseStopBits(const QString &text)
{
    if (text == QLatin1String("1"))
        return QSerialPort::OneStop;
    if (text == QLatin1String("1.5"))
        return QSerialPort::OneAndHalfStop;
    if (text == QLatin1String("2"))
        return QSerialPort::TwoStop;
    return std::nullopt;
}
} // namespace

std::optional<LineSettings> parseLineSettings(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 4)
        return std::nullopt;
    const auto baudRate = parseBaudRate(parts.at(0).trimmed());
    const auto parity = parseParity(parts.at(1).trimmed());
    const auto dataBits = parseDataBits(parts.at(2).trimmed());
    const auto stopBits = parseStopBits(parts.at(3).trimmed());
    if (!baudRate || !parity || !dataBits || !stopBits)
        return std::nullopt;
    return LineSettings{*baudRate, *parity, *dataBits, *stopBits};
}

} // namespace zun
