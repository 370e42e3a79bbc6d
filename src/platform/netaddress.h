#pragma once

#include <QString>

#include <optional>

namespace zun {

// A serial line reached over the network: "tcp://HOST:PORT" is a raw byte
// stream (a serial server's raw mode), "rfc2217://HOST:PORT" a Telnet session
// that also carries the line settings to the far port.
struct NetAddress
{
    enum class Kind { Raw, Rfc2217 };
    Kind kind = Kind::Raw;
    QString host; // without the brackets of an IPv6 literal
    quint16 port = 0;

    bool operator==(const NetAddress &) const = default;
};

// Empty when the text is not such an address (a device path, a typo).
[[nodiscard]] std::optional<NetAddress> parseNetAddress(const QString &text);

// True when the text claims to be a network address, well-formed or not, so
// that a typo is reported as a bad address instead of a missing device.
[[nodiscard]] bool looksLikeNetAddress(const QString &text);

} // namespace zun
