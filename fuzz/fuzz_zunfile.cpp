// A ".zun" settings file as the loader reads it. What it accepts must survive
// a save and a second load unchanged, and give a well-formed settings write.
#include "receivers/frames.h"
#include "receivers/receiver.h"
#include "receivers/settingsfile.h"

#include <QByteArray>
#include <QList>

#include <cstddef>
#include <cstdint>

namespace {
zun::Receiver recordOf(const zun::SettingsLine &line)
{
    zun::Receiver r;
    r.address = line.address;
    r.name = line.name;
    r.group = line.group;
    r.channel = line.channel;
    r.channelFreqCode = line.channelFreqCode;
    r.manualFreqCode = line.manualFreqCode;
    r.squelch = line.squelch;
    r.secondLevel = line.secondLevel;
    r.manualFreq = line.manualFreq;
    r.mute = line.mute;
    return r;
}

bool same(const zun::SettingsLine &a, const zun::SettingsLine &b)
{
    return a.address == b.address && a.name == b.name && a.group == b.group && a.channel == b.channel &&
           a.channelFreqCode == b.channelFreqCode && a.manualFreqCode == b.manualFreqCode &&
           a.squelch == b.squelch && a.secondLevel == b.secondLevel && a.manualFreq == b.manualFreq &&
           a.mute == b.mute;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const zun::SettingsParse parsed = zun::parseSettings(text);
    if (!parsed.error.isEmpty())
        return 0;
    QList<zun::Receiver> records;
    for (const zun::SettingsLine &line : parsed.lines) {
        records.append(recordOf(line));
        const QString frame = zun::frames::settingsWrite(records.last()).frame;
        // "#" + 2 + "M" + 6 + 1 + 1 + 4 + 2 + 2 + 1 + CR, whatever the name held.
        if (frame.size() != 22 || !frame.endsWith(QLatin1Char('\r')))
            __builtin_trap();
    }
    const zun::SettingsParse again = zun::parseSettings(zun::formatSettings(records));
    if (!again.error.isEmpty() || again.lines.size() != parsed.lines.size())
        __builtin_trap();
    for (qsizetype i = 0; i < again.lines.size(); ++i) {
        // A quote in a name is saved as an apostrophe; nothing else may change.
        zun::SettingsLine expected = parsed.lines[i];
        expected.name.replace(QLatin1Char('"'), QLatin1Char('\''));
        if (!same(again.lines[i], expected))
            __builtin_trap();
    }
    return 0;
}
