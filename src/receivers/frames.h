#pragma once

#include <QString>

#include <optional>

namespace zun {

struct ReceiverRecord;

// Every command frame the program sends, carriage return included. The
// address is rendered as two upper-case hex digits; "00" reaches everybody.
namespace frames {

[[nodiscard]] QString identify(int address);                       // "%aaM": identification and full status
[[nodiscard]] QString levels(int address);                         // "%aaN": the four level bytes
[[nodiscard]] QString presence(int address);                       // "%aaL": address check
[[nodiscard]] QString textA(int address);                          // "%aaA"
[[nodiscard]] QString textB(int address);                          // "%aaB"
[[nodiscard]] QString kobStart(int address);                       // "%aaO": no reply
[[nodiscard]] QString backOnLine(int address);                     // "#aaA1"
[[nodiscard]] QString mute(int address, bool on);                  // "#aaB1" / "#aaB0"
[[nodiscard]] QString preset(int address, int group, int channel); // "#aaDgc", one hex digit each
[[nodiscard]] QString tune(int address, const QString &code);      // "#aaK" + frequency code
[[nodiscard]] QString scanTune(int address,
                               const QString &code);          // "#aaE" + frequency code: tune and read levels
[[nodiscard]] QString squelch(int address, int squelch);      // "#aaF" + two hex digits
[[nodiscard]] QString name(int address, const QString &name); // "#aaC" + the name as given
[[nodiscard]] QString newAddress(int address, int newAddress); // "#aaL" + two hex digits
[[nodiscard]] QString detailClosed(int address);               // "#aaNS"
// "#aaM" + name (6) + group + channel + frequency code + squelch + second
// level + mode digit: the fields of the identification reply, written back.
[[nodiscard]] QString settingsWrite(const ReceiverRecord &record);

[[nodiscard]] QString hostLeaving();         // "#00A0"
[[nodiscard]] QString detectionStart();      // "#00A1"
[[nodiscard]] QString displayMode(int mode); // "#00O" + mode digit
// "#00H" + the receivers' code for the speed; nothing for a speed they lack.
[[nodiscard]] std::optional<QString> baudRate(int baudrate);

} // namespace frames

} // namespace zun
