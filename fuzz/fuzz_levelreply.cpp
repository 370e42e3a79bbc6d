// The level reply to "N" into panel values, with the squelch of the record.
#include "core/leveltable.h"
#include "mainscreen/panelreadout.h"

#include <QString>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const zun::LevelTable table = zun::buildLevelTable();
    if (size < 1)
        return 0;
    const int squelch = data[0] % 100;
    const QString reply =
        QString::fromLatin1(reinterpret_cast<const char *>(data + 1), static_cast<qsizetype>(size - 1));
    zun::BatteryAverage battery;
    // The average carries over from pass to pass, so feed the reply a few times.
    for (int pass = 0; pass < 3; ++pass)
        zun::readPanelReply(reply, squelch, table, battery);
    return 0;
}
