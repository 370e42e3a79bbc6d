#pragma once

#include <QSerialPort>
#include <QString>

#include <optional>

namespace zun {

// Speed and framing of the line as given by a settings text such as
// "115200,N,8,1": baud rate, parity letter (N, E, O, M, S), data bits (5..8),
// stop bits (1, 1.5, 2).
struct LineSettings
{
    qint32 baudRate = 9600;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;

    bool operator==(const LineSettings &) const = default;
};

// Empty when the text is not understood.
[[nodiscard]] std::optional<LineSettings> parseLineSettings(const QString &text);

} // namespace zun
