#pragma once

#include "receivers/addresstext.h"
#include "receivers/receiver.h"

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace zun {

// One receiver as the MQTT topics and the dashboard carry it: address, name,
// freq (MHz), rfa/rfb (0..99), rfaDbm/rfbDbm, af (0..99), clip, battery
// (percent, -1 unknown), mute, online.
[[nodiscard]] QJsonObject receiverJson(const Receiver &status);

// The same as compact UTF-8 text; quotes and control characters escaped.
[[nodiscard]] QByteArray receiverJsonText(const Receiver &status);

// A receiver back from that text; nothing unless it is an object with an
// address 1..64. Missing fields keep their defaults.
[[nodiscard]] std::optional<Receiver> parseReceiverJson(const QByteArray &json);

} // namespace zun
