#include "receivers/presets.h"

#include "link/hex.h"

namespace zun {

int PresetTable::count(int group) const
{
    if (group < 1 || group >= static_cast<int>(channelCount.size()))
        return 16;
    return channelCount[group];
}

PresetTable parseGroupTable(QStringView table, QStringList &messages)
{
    PresetTable result;
    result.groupLimit = parseHex(table.mid(0, 1));
    if (result.groupLimit > 11 || result.groupLimit == 0) {
        messages << QStringLiteral("Wrong 'GROUP LIMIT' !");
        result.groupLimit = 11;
    }
    for (int g = 1; g <= result.groupLimit; ++g) {
        const int count = g < table.size() ? parseHex(table.mid(g, 1)) : 0;
        result.channelCount[g] = count == 0 ? 16 : count;
    }
    return result;
}

Preset repairPreset(const PresetTable &table, Preset preset, QStringList &messages)
{
    if (preset.group > table.groupLimit || preset.group <= 0) {
        messages << QStringLiteral("Wrong 'GROUP' !");
        preset.group = table.groupLimit;
    }
    if (preset.channel > table.count(preset.group)) {
        messages << QStringLiteral("Wrong 'CHANNEL' !");
        preset.channel = table.count(preset.group);
    }
    // A channel of 0 stands for the sixteenth, as a count digit of 0 does.
    if (preset.channel <= 0)
        preset.channel = 16;
    return preset;
}

Preset channelUp(const PresetTable &table, Preset preset)
{
    preset.channel = preset.channel < table.count(preset.group) ? preset.channel + 1 : 1;
    return preset;
}

Preset channelDown(const PresetTable &table, Preset preset)
{
    preset.channel = preset.channel < 2 ? table.count(preset.group) : preset.channel - 1;
    return preset;
}

namespace {
Preset clampChannel(const PresetTable &table, Preset preset)
{
    if (preset.channel > table.count(preset.group))
        preset.channel = table.count(preset.group);
    return preset;
}
} // namespace

Preset groupUp(const PresetTable &table, Preset preset)
{
    preset.group = preset.group >= table.groupLimit ? 1 : preset.group + 1;
    return clampChannel(table, preset);
}

Preset groupDown(const PresetTable &table, Preset preset)
{
    preset.group = preset.group < 2 ? table.groupLimit : preset.group - 1;
    return clampChannel(table, preset);
}

} // namespace zun
