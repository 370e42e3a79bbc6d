#include "receivers/replies.h"

#include "link/hex.h"

namespace zun {

namespace {
// 1-based position and length as the frame layouts are written; what lies
// beyond the end of the reply is simply not there.
QStringView field(QStringView reply, int position, int length)
{
    const qsizetype from = position - 1;
    if (from >= reply.size())
        return {};
    return reply.mid(from, length);
}

int hexField(QStringView reply, int position, int length)
{
    return parseHex(field(reply, position, length));
}

LevelReply levelBytes(QStringView reply)
{
    return LevelReply{hexField(reply, 4, 2), hexField(reply, 6, 2), hexField(reply, 8, 2),
                      hexField(reply, 10, 2)};
}
} // namespace

bool isReplyFrom(QStringView reply, int address)
{
    return reply.size() >= 3 && reply.at(0) == QLatin1Char('$') && reply.mid(1, 2) == formatHex(address, 2);
}

std::optional<Identification> parseIdentification(QStringView reply, int address)
{
    if (!isReplyFrom(reply, address))
        return std::nullopt;
    Identification id;
    id.name = field(reply, 4, 6).toString();
    id.group = hexField(reply, 10, 1);
    id.channel = hexField(reply, 11, 1);
    if (id.channel == 0)
        id.channel = 16;
    id.frequencyCode = field(reply, 12, 4).toString();
    id.squelch = hexField(reply, 16, 2);
    id.secondLevel = hexField(reply, 18, 2);
    id.groupTable = field(reply, 20, 12).toString();
    id.bandStartCode = field(reply, 32, 4).toString();
    id.bandWidth = hexField(reply, 36, 4);
    const int flags = hexField(reply, 40, 1);
    id.mute = flags >= 2;
    id.manualFreq = flags % 2 == 1;
    return id;
}

std::optional<LevelReply> parseLevels(QStringView reply, int address)
{
    if (!isReplyFrom(reply, address))
        return std::nullopt;
    return levelBytes(reply);
}

std::optional<ScanPointReply> parseScanPoint(QStringView reply, int address)
{
    if (!isReplyFrom(reply, address))
        return std::nullopt;
    return ScanPointReply{levelBytes(reply)};
}

std::optional<PresetReply> parsePreset(QStringView reply, int address)
{
    if (!isReplyFrom(reply, address))
        return std::nullopt;
    return PresetReply{field(reply, 4, 4).toString()};
}

std::optional<TextFieldA> parseTextA(QStringView reply)
{
    if (reply.isEmpty())
        return std::nullopt;
    return TextFieldA{field(reply, 4, 6).toString()};
}

std::optional<TextFieldB> parseTextB(QStringView reply)
{
    if (reply.isEmpty())
        return std::nullopt;
    return TextFieldB{field(reply, 4, 1).toString() + QLatin1Char('.') + field(reply, 5, 2).toString()};
}

std::optional<AddressCheck> parseAddressCheck(QStringView reply, int address)
{
    if (field(reply, 2, 2) != formatHex(address, 2))
        return std::nullopt;
    return AddressCheck{address};
}

} // namespace zun
