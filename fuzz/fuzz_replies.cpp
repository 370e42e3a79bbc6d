// Every other reply parser fed the same bytes: each gives a value exactly
// when the reply carries what it is keyed on, and fields never overrun.
#include "receivers/replies.h"

#include "link/hex.h"

#include <QString>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 1)
        return 0;
    const int address = data[0] % 66; // 0 and 65 are out of range on purpose
    const QString reply =
        QString::fromLatin1(reinterpret_cast<const char *>(data + 1), static_cast<qsizetype>(size - 1));
    const bool fromAddress = reply.startsWith(QLatin1Char('$') + zun::formatHex(address, 2));
    if (zun::isReplyFrom(reply, address) != fromAddress)
        __builtin_trap();

    const auto scan = zun::parseScanPoint(reply, address);
    if (scan.has_value() != fromAddress)
        __builtin_trap();
    if (scan) {
        const zun::LevelReply &raw = scan->raw;
        for (int byte : {raw.audio, raw.rfA, raw.rfB, raw.battery})
            if (byte < 0 || byte > 255)
                __builtin_trap();
        const auto levels = zun::parseLevels(reply, address);
        if (!levels || levels->audio != raw.audio || levels->rfA != raw.rfA || levels->rfB != raw.rfB ||
            levels->battery != raw.battery)
            __builtin_trap();
    }

    const auto preset = zun::parsePreset(reply, address);
    if (preset.has_value() != fromAddress || (preset && preset->frequencyCode != reply.mid(3, 4)))
        __builtin_trap();

    // The text reads answer anything that is not empty.
    const auto textA = zun::parseTextA(reply);
    if (textA.has_value() == reply.isEmpty() || (textA && textA->text != reply.mid(3, 6)))
        __builtin_trap();
    const auto textB = zun::parseTextB(reply);
    if (textB.has_value() == reply.isEmpty() ||
        (textB && textB->text != reply.mid(3, 1) + QLatin1Char('.') + reply.mid(4, 2)))
        __builtin_trap();

    // The presence probe looks only at characters 2-3.
    const auto check = zun::parseAddressCheck(reply, address);
    const bool addressed = reply.mid(1, 2) == zun::formatHex(address, 2);
    if (check.has_value() != addressed || (check && check->address != address))
        __builtin_trap();
    return 0;
}
