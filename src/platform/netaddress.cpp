#include "platform/netaddress.h"

#include <QRegularExpression>

namespace zun {

namespace {
const QRegularExpression &addressForm()
{
    // Host: a name, an IPv4 address or a bracketed IPv6 literal.
    static const QRegularExpression form(
        QStringLiteral("^(tcp|rfc2217)://(?:\\[([0-9A-Fa-f:.]+)\\]|([A-Za-z0-9._-]+)):(\\d{1,5})$"),
        QRegularExpression::CaseInsensitiveOption);
    return form;
}
} // namespace

std::optional<NetAddress> parseNetAddress(const QString &text)
{
    const auto match = addressForm().match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const int port = match.captured(4).toInt();
    if (port < 1 || port > 65535)
        return std::nullopt;
    NetAddress address;
    address.kind = match.captured(1).compare(QLatin1String("tcp"), Qt::CaseInsensitive) == 0
                       ? NetAddress::Kind::Raw
                       : NetAddress::Kind::Rfc2217;
    address.host = match.captured(2).isEmpty() ? match.captured(3) : match.captured(2);
    address.port = static_cast<quint16>(port);
    return address;
}

bool looksLikeNetAddress(const QString &text)
{
    return text.trimmed().contains(QLatin1String("://"));
}

} // namespace zun
