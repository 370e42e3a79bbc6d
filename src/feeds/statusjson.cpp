#include "feeds/statusjson.h"

#include <QJsonDocument>

namespace zun {

QJsonObject receiverJson(const ReceiverStatus &status)
{
    return {
        {QStringLiteral("address"), status.address},   {QStringLiteral("name"), status.name},
        {QStringLiteral("freq"), status.frequencyMHz}, {QStringLiteral("rfa"), status.rfA},
        {QStringLiteral("rfb"), status.rfB},           {QStringLiteral("rfaDbm"), status.rfADbm},
        {QStringLiteral("rfbDbm"), status.rfBDbm},     {QStringLiteral("af"), status.audio},
        {QStringLiteral("clip"), status.audioClip},    {QStringLiteral("battery"), status.batteryPercent},
        {QStringLiteral("mute"), status.mute},         {QStringLiteral("online"), status.online},
    };
}

QByteArray receiverJsonText(const ReceiverStatus &status)
{
    return QJsonDocument(receiverJson(status)).toJson(QJsonDocument::Compact);
}

std::optional<ReceiverStatus> parseReceiverJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    const QJsonObject o = document.object();
    ReceiverStatus status;
    status.address = o.value(QStringLiteral("address")).toInt(0);
    if (!document.isObject() || status.address < 1 || status.address > 64)
        return std::nullopt;
    status.name = o.value(QStringLiteral("name")).toString();
    status.frequencyMHz = o.value(QStringLiteral("freq")).toDouble();
    status.rfA = o.value(QStringLiteral("rfa")).toInt();
    status.rfB = o.value(QStringLiteral("rfb")).toInt();
    status.rfADbm = o.value(QStringLiteral("rfaDbm")).toDouble();
    status.rfBDbm = o.value(QStringLiteral("rfbDbm")).toDouble();
    status.audio = o.value(QStringLiteral("af")).toInt();
    status.audioClip = o.value(QStringLiteral("clip")).toBool();
    status.batteryPercent = o.value(QStringLiteral("battery")).toInt(-1);
    status.mute = o.value(QStringLiteral("mute")).toBool();
    status.online = o.value(QStringLiteral("online")).toBool();
    return status;
}

} // namespace zun
