#include "feeds/feedstatus.h"

#include <QStringList>

namespace zun {

QString feedStatusText(const FeedStatus &status)
{
    QStringList parts;
    if (status.oscTargets > 0)
        parts << (status.oscTargets == 1 ? QStringLiteral("OSC: 1 target")
                                         : QStringLiteral("OSC: %1 targets").arg(status.oscTargets));
    switch (status.mqtt) {
    case FeedStatus::Mqtt::Off:
        break;
    case FeedStatus::Mqtt::Connecting:
        parts << QStringLiteral("MQTT: connecting");
        break;
    case FeedStatus::Mqtt::Connected:
        parts << QStringLiteral("MQTT: connected");
        break;
    case FeedStatus::Mqtt::Disconnected:
        parts << QStringLiteral("MQTT: disconnected");
        break;
    }
    if (!status.webUrl.isEmpty())
        parts << QStringLiteral("Web: ") + status.webUrl;
    if (!status.lastError.isEmpty())
        parts << status.lastError;
    return parts.join(QStringLiteral(" · "));
}

} // namespace zun
