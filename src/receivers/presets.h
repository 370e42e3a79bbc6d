#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>

namespace zun {

// A receiver's group/channel plan from its 12-digit group table.
struct PresetTable
{
    int groupLimit = 11;                // 1..11
    std::array<int, 17> channelCount{}; // index = group; 0 unused

    // Channels of a group; groups outside the table count as full (16).
    int count(int group) const;
};

struct Preset
{
    int group = 1;
    int channel = 1;
    bool operator==(const Preset &) const = default;
};

// Reads the group table: a limit of 0 or above 11 becomes 11 with a message,
// a count digit of 0 means 16 channels. Missing digits read as 0.
[[nodiscard]] PresetTable parseGroupTable(QStringView table, QStringList &messages);

// Brings a record's group and channel inside the table, adding one message
// per repair: a group of 0 (or less) or above the limit becomes the limit;
// a channel above its group's count becomes that count; channel 0 (or less)
// silently becomes 16.
[[nodiscard]] Preset repairPreset(const PresetTable &table, Preset preset, QStringList &messages);

// The preset buttons' steps: channels wrap inside their group, groups wrap
// inside the limit and pull a too-high channel down to the new group's count.
[[nodiscard]] Preset channelUp(const PresetTable &table, Preset preset);
[[nodiscard]] Preset channelDown(const PresetTable &table, Preset preset);
[[nodiscard]] Preset groupUp(const PresetTable &table, Preset preset);
[[nodiscard]] Preset groupDown(const PresetTable &table, Preset preset);

} // namespace zun
