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

QString addressText(int address)
{
    return QStringLiteral("%1").arg(address, 2, 10, QLatin1Char('0'));
}

} // namespace zun
