// The identification reply to "M" as a value.
#include "receivers/replies.h"

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
    const auto id = zun::parseIdentification(reply, address);
    if (id.has_value() != zun::isReplyFrom(reply, address))
        __builtin_trap();
    if (!id)
        return 0;
    // Fields are cut by position, never padded or overrun, and the numbers
    // stay inside what their digits can hold.
    if (id->name.size() > 6 || id->frequencyCode.size() > 4 || id->groupTable.size() > 12 ||
        id->bandStartCode.size() > 4)
        __builtin_trap();
    if (id->group < 0 || id->group > 15 || id->channel < 1 || id->channel > 16 || id->squelch < 0 ||
        id->squelch > 255 || id->secondLevel < 0 || id->secondLevel > 255 || id->bandWidth < 0 ||
        id->bandWidth > 0xFFFF)
        __builtin_trap();
    if (reply.size() >= 9 && id->name != reply.mid(3, 6))
        __builtin_trap();
    return 0;
}
