#pragma once

#include "receivers/levelreading.h"

#include <QMetaType>
#include <QString>

namespace zun {

// One receiver as the program knows it: who it is, what it is tuned to, what
// it read last and whether it answers. The receiver table holds these; every
// listener (windows, feeds, alarms, the show log, bus health) gets a copy.
// Flags are plain bools here; the settings file writes them as 0 / -1.
struct Receiver
{
    // --- who it is
    int address = 0; // bus address 1..64
    QString name;    // 6 characters, upper case, blank padded, as the receiver holds it

    // --- what it is tuned to
    int group = 0;           // 1..group limit
    int channel = 0;         // 1..16
    QString channelFreqCode; // 4 hex digits of the current preset
    QString manualFreqCode;  // 4 hex digits last set by direct tuning
    int squelch = 0;         // 0..99
    int secondLevel = 0;     // kept and written back, never shown
    QString groupTable;      // limit digit + 11 channel-count digits
    QString bandStartCode;   // 4 hex digits
    int bandWidth = 0;       // in 25 kHz steps
    bool mute = false;
    bool online = false;     // the only marker of a live record
    bool manualFreq = false; // tuned off the presets
    QString textA;           // 6 characters from the "A" read
    QString textB;           // "d.dd" from the "B" read

    // --- what it read last
    LevelReading levels;
    int batteryPercent = -1; // 100, 80, 40, 10, 0 ("OFF"); -1 while not yet known

    // The name without its padding.
    [[nodiscard]] QString shownName() const;
    // The frequency it is tuned to: the manual code off the presets, else the preset's.
    [[nodiscard]] double frequencyMHz() const;
    [[nodiscard]] double rfADbm() const { return levelDbm(levels.rfA); }
    [[nodiscard]] double rfBDbm() const { return levelDbm(levels.rfB); }
    // The audio meter on 0..99, 99 being the clip mark and above.
    [[nodiscard]] int audioPercent() const;

    bool operator==(const Receiver &) const = default;
};

// The audio meter reading whose audioPercent() is this (0..99).
[[nodiscard]] int audioMeterFromPercent(int percent);

} // namespace zun

Q_DECLARE_METATYPE(zun::Receiver)
