#pragma once

#include "receivers/leveltable.h"
#include "receivers/replies.h"

#include <QString>

namespace zun {

// The receivers' level scale: 0..99 is -107..-47 dBm.
[[nodiscard]] double levelDbm(int level);

// An antenna byte as the detail window and the scan take it: raised by 5 and
// held at 255 before the table, which lines these readings up with the
// main screen's.
[[nodiscard]] int detailLevel(const LevelTable &table, int raw);

// Audio byte to the meter's 0..129 scale: nothing below 86, tapered so that
// quiet signals show and a clipping one fills the bar.
[[nodiscard]] int audioTaper(int audioRaw);
inline constexpr int kAudioClipLevel = 116;

// Battery percentage for x = Int(average) + 1: 100, 80, 40, 10, or 0 ("OFF").
// A larger reading is a weaker battery.
[[nodiscard]] int batteryPercentFor(int x);
// The battery read-out: "100%", "80%", "40%", "10%" or "OFF".
[[nodiscard]] QString batteryText(int percent);

// Running mean of one receiver's battery readings. A reading means something
// only while a transmitter is on the air, so the caller adds only those; the
// first 20 settle the mean and give nothing.
class BatteryAverager
{
public:
    // Takes one reading; the percentage once the mean has settled, else -1.
    int add(int reading);
    int samples() const { return m_count; }

private:
    int m_count = 0;
    float m_average = 0.0f;
};

// What one level reply means: the poll's for a panel, the detail window's
// and the RF tools' for their meters (there the antennas are raised by 5
// before the table, see detailLevel).
struct LevelReading
{
    LevelReply raw;
    int rfA = 0; // display levels 0..99
    int rfB = 0;
    int squelchLevel = 0;    // the squelch on the same scale
    bool onAir = false;      // the stronger antenna is above the squelch
    int batteryPercent = -1; // -1: not shown anew by this reading
    int audio = 0;           // 0..129 after the taper
    bool audioClip = false;

    bool operator==(const LevelReading &) const = default;
};

// Reads a poll reply for a receiver with this squelch setting; battery is the
// receiver's running mean, fed only while a transmitter is on the air.
[[nodiscard]] LevelReading readLevels(const LevelReply &raw, int squelch, const LevelTable &table,
                                      BatteryAverager &battery);

} // namespace zun
