#pragma once

#include "receivers/receiver.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace zun {

// One retained discovery message; an empty payload takes the entity away.
struct DiscoveryMessage
{
    QString topic;
    QByteArray payload;
};

// What Home Assistant needs to show one receiver as a device: battery, RF of
// both antennas, audio, mute and online, all read from the receiver's state
// topic, available while zunoria/<line>/status says "online". With control
// on, mute is a switch that writes the receiver's set topic; without it a
// binary sensor, and the other kind's config is emptied so that a program
// restarted the other way leaves no stale entity.
[[nodiscard]] QList<DiscoveryMessage> discoveryMessages(const QString &prefix, const QString &line,
                                                        const Receiver &status, bool control);

// The same topics with empty payloads: the receiver's device goes away.
[[nodiscard]] QList<DiscoveryMessage> discoveryRemoval(const QString &prefix, const QString &line,
                                                       int address);

// An ID Home Assistant takes: only [a-zA-Z0-9_-]. Any other character
// becomes '_' and a short digest of the original keeps "a.b" and "a_b" apart.
[[nodiscard]] QString discoveryId(const QString &text);

} // namespace zun
