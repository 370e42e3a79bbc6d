// The level reply to "N" into panel values, with the squelch of the record.
#include "receivers/levelreading.h"
#include "receivers/leveltable.h"
#include "receivers/replies.h"

#include <QString>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const zun::LevelTable table = zun::buildLevelTable();
    // A clipping signal reads past the meter's 129 on purpose, so the bar fills.
    static const int kFullClip = zun::audioTaper(255);
    if (size < 2)
        return 0;
    const int squelch = data[0] % 100;
    const int address = data[1] % 66;
    const QString reply =
        QString::fromLatin1(reinterpret_cast<const char *>(data + 2), static_cast<qsizetype>(size - 2));
    const auto raw = zun::parseLevels(reply, address);
    if (raw.has_value() != zun::isReplyFrom(reply, address))
        __builtin_trap();
    if (!raw)
        return 0;
    for (int byte : {raw->audio, raw->rfA, raw->rfB, raw->battery})
        if (byte < 0 || byte > 255)
            __builtin_trap();
    zun::BatteryAverager battery;
    // The mean carries over from reading to reading and settles after 20.
    for (int pass = 0; pass < 22; ++pass) {
        const zun::LevelReading r = zun::readLevels(*raw, squelch, table, battery);
        if (r.rfA < 0 || r.rfA > 99 || r.rfB < 0 || r.rfB > 99 || r.audio < 0 || r.audio > kFullClip ||
            r.audioClip != (r.audio > zun::kAudioClipLevel))
            __builtin_trap();
        if (r.batteryPercent != -1 && r.batteryPercent != 0 && r.batteryPercent != 10 &&
            r.batteryPercent != 40 && r.batteryPercent != 80 && r.batteryPercent != 100)
            __builtin_trap();
    }
    return 0;
}
