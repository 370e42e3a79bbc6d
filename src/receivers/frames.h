#pragma once

#include <QString>

#include <optional>

namespace zun {

struct ReceiverRecord;

// Every command frame the program sends, carriage return included. The
// address is rendered as two upper-case hex digits; "00" reaches everybody.
namespace frames {

QString identify(int address);                       // "%aaM": identification and full status
QString levels(int address);                         // "%aaN": the four level bytes
QString presence(int address);                       // "%aaL": address check
QString textA(int address);                          // "%aaA"
QString textB(int address);                          // "%aaB"
QString kobStart(int address);                       // "%aaO": no reply
QString backOnLine(int address);                     // "#aaA1"
QString mute(int address, bool on);                  // "#aaB1" / "#aaB0"
QString preset(int address, int group, int channel); // "#aaDgc", one hex digit each
QString tune(int address, const QString &code);      // "#aaK" + frequency code
QString scanTune(int address, const QString &code);  // "#aaE" + frequency code: tune and read levels
QString squelch(int address, int squelch);           // "#aaF" + two hex digits
QString name(int address, const QString &name);      // "#aaC" + the name as given
QString newAddress(int address, int newAddress);     // "#aaL" + two hex digits
QString detailClosed(int address);                   // "#aaNS"
// "#aaM" + name (6) + group + channel + frequency code + squelch + second
// level + mode digit: the fields of the identification reply, written back.
QString settingsWrite(const ReceiverRecord &record);

QString hostLeaving();         // "#00A0"
QString detectionStart();      // "#00A1"
QString displayMode(int mode); // "#00O" + mode digit
// "#00H" + the receivers' code for the speed; nothing for a speed they lack.
std::optional<QString> baudRate(int baudrate);

} // namespace frames

} // namespace zun
