// The identification reply to "M" into a receiver record.
#include "core/receiverrecord.h"
#include "link/detection.h"

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
    zun::ReceiverRecord record;
    record.textA = QStringLiteral("kept");
    const bool applied = zun::applyIdentification(record, reply, address);
    if (applied != zun::parseIdentification(reply, address).has_value())
        __builtin_trap();
    if (applied && (record.textA != QLatin1String("kept") || record.name.size() != 6 || record.channel < 1 ||
                    record.channel > 16 || record.channelFreqCode.size() != 4))
        __builtin_trap();
    return 0;
}
