#include "feeds/statusjson.h"

#include "receivers/frequency.h"

#include <QJsonDocument>

namespace zun {

QJsonObject receiverJson(const Receiver &status)
{
    return {
        {QStringLiteral("address"), status.address},
        {QStringLiteral("name"), status.shownName()},
        {QStringLiteral("freq"), status.frequencyMHz()},
        {QStringLiteral("rfa"), status.levels.rfA},
        {QStringLiteral("rfb"), status.levels.rfB},
        {QStringLiteral("rfaDbm"), status.rfADbm()},
        {QStringLiteral("rfbDbm"), status.rfBDbm()},
        {QStringLiteral("af"), status.audioPercent()},
        {QStringLiteral("clip"), status.levels.audioClip},
        {QStringLiteral("battery"), status.batteryPercent},
        {QStringLiteral("mute"), status.mute},
        {QStringLiteral("online"), status.online},
    };
}

QByteArray receiverJsonText(const Receiver &status)
{
    return QJsonDocument(receiverJson(status)).toJson(QJsonDocument::Compact);
}

std::optional<Receiver> parseReceiverJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    const QJsonObject o = document.object();
    Receiver status;
    status.address = o.value(QStringLiteral("address")).toInt(0);
    if (!document.isObject() || status.address < 1 || status.address > 64)
        return std::nullopt;
    status.name = o.value(QStringLiteral("name")).toString();
    // The feed carries what a listener sees; the receiver's own codes and
    // scales follow from it. Frequencies are on the receivers' 25 kHz raster,
    // and the dBm figures follow from the levels, so both come back exact.
    // A receiver whose frequency is not known yet publishes 0, which no code stands for.
    status.manualFreq = true;
    const double mhz = o.value(QStringLiteral("freq")).toDouble();
    if (mhz >= mhzFromCode(u"0000"))
        status.manualFreqCode = codeFromMhz(mhz);
    status.levels.rfA = o.value(QStringLiteral("rfa")).toInt();
    status.levels.rfB = o.value(QStringLiteral("rfb")).toInt();
    status.levels.audio = audioMeterFromPercent(o.value(QStringLiteral("af")).toInt());
    status.levels.audioClip = o.value(QStringLiteral("clip")).toBool();
    status.batteryPercent = o.value(QStringLiteral("battery")).toInt(-1);
    status.mute = o.value(QStringLiteral("mute")).toBool();
    status.online = o.value(QStringLiteral("online")).toBool();
    return status;
}

} // namespace zun
