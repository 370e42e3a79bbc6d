#pragma once

#include <QString>
#include <QStringView>

#include <optional>

namespace zun {

// The receivers' replies as values. A reply is "$", the two address
// characters of the command, then data from position 4 (positions counted
// from 1). These parsers are the only code that knows where a field sits;
// each takes any text and gives a value or nothing ("not a reply").

// Identification and full status, the reply to "M". Every reply that starts
// with "$" and the address is a receiver: fields cut short or missing read as
// empty text or 0, a name keeps whatever bytes it holds, a group table keeps
// its blanks.
struct Identification
{
    QString name;            // positions 4-9
    int group = 0;           // 10
    int channel = 16;        // 11; 0 means 16
    QString frequencyCode;   // 12-15, the current preset's and the manual code alike
    int squelch = 0;         // 16-17
    int secondLevel = 0;     // 18-19
    QString groupTable;      // 20-31
    QString bandStartCode;   // 32-35
    int bandWidth = 0;       // 36-39, in 25 kHz steps
    bool mute = false;       // 40: hex digit >= 2
    bool manualFreq = false; // 40: odd hex digit
};
[[nodiscard]] std::optional<Identification> parseIdentification(QStringView reply, int address);

// The four bytes of a level reply to "N" (and of the scan's "E"), raw 0..255.
// Characters missing at the end read as 0.
struct LevelReply
{
    int audio = 0;   // 4-5
    int rfA = 0;     // 6-7
    int rfB = 0;     // 8-9
    int battery = 0; // 10-11

    bool operator==(const LevelReply &) const = default;
};
[[nodiscard]] std::optional<LevelReply> parseLevels(QStringView reply, int address);

// One spectrum point, the reply to "E": the level bytes, the antennas as the
// scan takes them.
struct ScanPointReply
{
    LevelReply raw;
};
[[nodiscard]] std::optional<ScanPointReply> parseScanPoint(QStringView reply, int address);

// The preset a receiver tuned to after "D": its frequency code.
struct PresetReply
{
    QString frequencyCode; // 4-7
};
[[nodiscard]] std::optional<PresetReply> parsePreset(QStringView reply, int address);

// Text fields. Only an empty read counts as no reply; whatever came is read
// by position, as the receivers' own tools do.
struct TextFieldA
{
    QString text; // 4-9
};
[[nodiscard]] std::optional<TextFieldA> parseTextA(QStringView reply);

struct TextFieldB
{
    QString text; // digit 4, ".", digits 5-6
};
[[nodiscard]] std::optional<TextFieldB> parseTextB(QStringView reply);

// The presence probe "L": someone answers on this address when characters
// 2-3 of the reply are the address, whatever the first character is.
struct AddressCheck
{
    int address = 0;
};
[[nodiscard]] std::optional<AddressCheck> parseAddressCheck(QStringView reply, int address);

// True when the reply starts with "$" and the address as two hex digits.
[[nodiscard]] bool isReplyFrom(QStringView reply, int address);

} // namespace zun
