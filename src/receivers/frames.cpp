#include "receivers/frames.h"

#include "link/hex.h"
#include "receivers/receiver.h"

namespace zun::frames {

namespace {
// Blank padded and cut to exactly width characters.
QString padCut(const QString &text, int width)
{
    return (text + QString(width, QLatin1Char(' '))).left(width);
}

QString build(QChar prefix, int address, const QString &body)
{
    return prefix + formatHex(address, 2) + body + QLatin1Char('\r');
}
const QChar kQuery = QLatin1Char('%');
const QChar kSet = QLatin1Char('#');
} // namespace

Exchange identify(int address)
{
    return {build(kQuery, address, QStringLiteral("M")), 41, 100};
}

Exchange levels(int address)
{
    return {build(kQuery, address, QStringLiteral("N")), 12, 250};
}

Exchange presence(int address)
{
    return {build(kQuery, address, QStringLiteral("L")), 4, 250};
}

Exchange textA(int address)
{
    return {build(kQuery, address, QStringLiteral("A")), 14, 250};
}

Exchange textB(int address)
{
    return {build(kQuery, address, QStringLiteral("B")), 7, 250};
}

Exchange kobStart(int address)
{
    return {build(kQuery, address, QStringLiteral("O")), 0, 100};
}

Exchange backOnLine(int address)
{
    return {build(kSet, address, QStringLiteral("A1")), 4, 200};
}

Exchange wake(int address)
{
    return {build(kSet, address, QStringLiteral("A1")), 0, 50};
}

Exchange pilotKobStart(int address)
{
    return {build(kQuery, address, QStringLiteral("O")), 0, 200};
}

Exchange pilotBackOnLine(int address)
{
    return {build(kSet, address, QStringLiteral("A1")), 4, 100};
}

Exchange mute(int address, bool on)
{
    return {build(kSet, address, on ? QStringLiteral("B1") : QStringLiteral("B0")), 4, 250};
}

Exchange preset(int address, int group, int channel)
{
    return {build(kSet, address, QLatin1Char('D') + formatHex(group, 1) + formatHex(channel, 1)), 8, 250};
}

Exchange tune(int address, const QString &code)
{
    return {build(kSet, address, QLatin1Char('K') + code), 4, 250};
}

Exchange cursorTune(int address, const QString &code, int timeoutMillis)
{
    return {build(kSet, address, QLatin1Char('K') + code), 4, timeoutMillis};
}

Exchange scanTune(int address, const QString &code)
{
    return {build(kSet, address, QLatin1Char('E') + code), 12, 250};
}

Exchange squelch(int address, int squelch)
{
    return {build(kSet, address, QLatin1Char('F') + formatHex(squelch, 2)), 4, 250};
}

Exchange name(int address, const QString &name)
{
    return {build(kSet, address, QLatin1Char('C') + name), 4, 250};
}

Exchange newAddress(int address, int newAddress)
{
    return {build(kSet, address, QLatin1Char('L') + formatHex(newAddress, 2)), 4, 250};
}

Exchange detailClosed(int address)
{
    return {build(kSet, address, QStringLiteral("NS")), 4, 250};
}

Exchange settingsWrite(const Receiver &r)
{
    const QString name = padCut(r.name, 6);
    const QString code = padCut(r.manualFreq ? r.manualFreqCode : r.channelFreqCode, 4);
    const int mode = (r.manualFreq ? 1 : 0) + (r.mute ? 2 : 0);
    return {build(kSet, r.address,
                  QLatin1Char('M') + name + formatHex(r.group, 1) + formatHex(r.channel, 1) + code +
                      formatHex(r.squelch, 2) + formatHex(r.secondLevel, 2) + QString::number(mode)),
            4, 250};
}

Exchange hostLeaving()
{
    return {QStringLiteral("#00A0\r"), 0, 50};
}

Exchange detectionStart()
{
    return {QStringLiteral("#00A1\r"), 0, 50};
}

Exchange displayMode(int mode)
{
    return {QStringLiteral("#00O") + QString::number(mode) + QLatin1Char('\r'), 0, 250};
}

std::optional<Exchange> baudRate(int baudrate)
{
    QString code;
    switch (baudrate) {
    case 115200:
        code = QStringLiteral("01");
        break;
    case 57600:
        code = QStringLiteral("03");
        break;
    case 38400:
        code = QStringLiteral("05");
        break;
    case 9600:
        code = QStringLiteral("17");
        break;
    default:
        return std::nullopt;
    }
    return Exchange{QStringLiteral("#00H") + code + QLatin1Char('\r'), 0, 50};
}

} // namespace zun::frames
