#pragma once

#include <QString>

namespace zun {

// What the program knows of one receiver on the line. Flags are plain bools
// here; the settings file writes them as 0 / -1.
struct ReceiverRecord
{
    int address = 0;         // bus address 1..64
    QString name;            // 6 characters, upper case, blank padded
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

    bool operator==(const ReceiverRecord &) const = default;
};

} // namespace zun
