#pragma once

#include "sim/simfaults.h"
#include "sim/simsignal.h"

#include <QByteArray>

#include <cstdint>

namespace zun {

// One receiver on the simulated line: its settings as it would report them,
// its line state, and the transmitter it listens to. Plain data; the bus
// runs the protocol.
struct SimReceiver
{
    int address = 1;            // 1..64
    QByteArray name = "RCV   "; // 6 characters
    int group = 1;
    int channel = 1;                        // 1..16
    QByteArray groupTable = "B00000000000"; // limit digit, then 11 counts (0 = 16)
    int bandStartCode = 0x72BA;             // 800.000 MHz
    int bandWidth = 4000;                   // 25 kHz steps: 100 MHz
    int squelch = 20;
    int secondLevel = 0x30;
    bool muted = false;
    bool manual = false; // tuned off the presets
    int manualCode = 0;
    QByteArray textA = "ZR8000";   // 6 characters
    QByteArray textATail = "V1.2"; // 4 more characters of the "A" reply
    QByteArray textB = "120";      // 3 digits, read as "1.20"

    // Line state.
    int baud = 115200;
    bool powered = true;
    std::uint64_t turnaroundMicros = 1500;
    std::uint64_t kobMicros = 3000000; // off the line after "O"
    std::uint64_t offlineUntilMicros = 0;
    int displayMode = 0;      // last "#00O" digit
    bool hostPresent = false; // "#00A1" sets, "#00A0" clears

    SimTransmitter transmitter; // code -1: placed on the receiver's frequency
    SimFaultRates faults;

    int groupLimit() const;
    int channelCount(int group) const;
    [[nodiscard]] bool validPreset(int group, int channel) const;
    int presetCode(int group, int channel) const;
    int tunedCode() const;
    [[nodiscard]] bool inBand(int code) const;
    // 0 neither, 1 manual frequency, 2 muted, 3 both.
    int modeDigit() const { return (muted ? 2 : 0) + (manual ? 1 : 0); }
    // Characters 4..40 of the identification reply.
    QByteArray statusText() const;
};

// value as exactly width upper-case hex digits, high digits dropped.
[[nodiscard]] QByteArray simHex(int value, int width);
// Strict hex parse: false for an empty text or any non-hex character.
[[nodiscard]] bool simParseHex(QByteArrayView text, int &value);

} // namespace zun
