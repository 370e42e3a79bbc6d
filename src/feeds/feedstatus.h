#pragma once

#include <QString>

namespace zun {

// What the status line says about the feeds.
struct FeedStatus
{
    enum class Mqtt { Off, Connecting, Connected, Disconnected };

    int oscTargets = 0;
    Mqtt mqtt = Mqtt::Off;
    QString webUrl;    // with the token; empty while the dashboard is off
    QString lastError; // the most recent failure of any feed, empty when none
};

// "OSC: 2 targets · MQTT: connected · Web: http://…" and the last error; empty
// when every feed is off and nothing failed.
[[nodiscard]] QString feedStatusText(const FeedStatus &status);

} // namespace zun
