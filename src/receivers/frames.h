#pragma once

#include <QString>

#include <optional>

namespace zun {

struct Receiver;

// One command as it goes on the line: the frame, carriage return included,
// how many characters its reply has (0: nobody answers) and how long the
// program waits for them. The wait belongs to the command, not to the caller.
struct Exchange
{
    QString frame;
    int replyLength = 0;
    int timeoutMillis = 0;
};

// Every exchange the program makes. The address is rendered as two upper-case
// hex digits; "00" reaches everybody.
namespace frames {

[[nodiscard]] Exchange identify(int address);   // "%aaM": identification and full status
[[nodiscard]] Exchange levels(int address);     // "%aaN": the four level bytes
[[nodiscard]] Exchange presence(int address);   // "%aaL": address check
[[nodiscard]] Exchange textA(int address);      // "%aaA"
[[nodiscard]] Exchange textB(int address);      // "%aaB"
[[nodiscard]] Exchange kobStart(int address);   // "%aaO" from the detail window
[[nodiscard]] Exchange backOnLine(int address); // "#aaA1": is the receiver back after KOB?
[[nodiscard]] Exchange wake(int address);       // "#aaA1" to an offline receiver, no reply awaited
// The main screen's pilot KOB waits longer for the start and less for each
// "back on line" question, which it repeats every half second.
[[nodiscard]] Exchange pilotKobStart(int address);                  // "%aaO"
[[nodiscard]] Exchange pilotBackOnLine(int address);                // "#aaA1"
[[nodiscard]] Exchange mute(int address, bool on);                  // "#aaB1" / "#aaB0"
[[nodiscard]] Exchange preset(int address, int group, int channel); // "#aaDgc", one hex digit each
[[nodiscard]] Exchange tune(int address, const QString &code);      // "#aaK" + frequency code
// The same tune from the scan cursor, which waits as long as the tools ask.
[[nodiscard]] Exchange cursorTune(int address, const QString &code, int timeoutMillis);
[[nodiscard]] Exchange scanTune(int address,
                                const QString &code);     // "#aaE" + frequency code: tune and read levels
[[nodiscard]] Exchange squelch(int address, int squelch); // "#aaF" + two hex digits
[[nodiscard]] Exchange name(int address, const QString &name);  // "#aaC" + the name as given
[[nodiscard]] Exchange newAddress(int address, int newAddress); // "#aaL" + two hex digits
[[nodiscard]] Exchange detailClosed(int address);               // "#aaNS"
// "#aaM" + name (6) + group + channel + frequency code + squelch + second
// level + mode digit: the fields of the identification reply, written back.
[[nodiscard]] Exchange settingsWrite(const Receiver &receiver);

[[nodiscard]] Exchange hostLeaving();         // "#00A0"
[[nodiscard]] Exchange detectionStart();      // "#00A1"
[[nodiscard]] Exchange displayMode(int mode); // "#00O" + mode digit
// "#00H" + the receivers' code for the speed; nothing for a speed they lack.
[[nodiscard]] std::optional<Exchange> baudRate(int baudrate);

} // namespace frames

} // namespace zun
