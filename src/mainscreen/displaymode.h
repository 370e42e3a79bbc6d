#pragma once

#include <QString>

namespace zun {

struct Receiver;

// What every panel's name label shows; the receivers show the same.
enum DisplayMode {
    ModeGroupChannel = 0,
    ModeFrequency = 1,
    ModeSquelch = 2,
    ModeVolume = 3,
    ModeAddressName = 4,
    ModeAddress = 5,
};

// The name-label caption of a record in a mode; a null text for the volume
// mode, which changes nothing.
[[nodiscard]] QString nameCaption(const Receiver &record, int mode);

// Address "00" + blank + name: the caption after an address or name change.
[[nodiscard]] QString addressNameCaption(const Receiver &record);

} // namespace zun
