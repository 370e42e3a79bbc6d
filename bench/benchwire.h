#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace zunbench {

// One line of the simulator's frame log: a frame the host sent (time = its
// last character through the wire) or a reply (time = its first character
// put on the wire).
struct WireEvent
{
    double micros = 0;
    bool reply = false;
    QByteArray text; // without the carriage return
    int chars = 0;   // on the wire, carriage return included
};
using WireLog = std::vector<WireEvent>;

WireLog parseWireLog(const QByteArray &text);

// Wire time of n characters: 10 bits each.
double wireMicros(int chars, int baud);

struct PassFigures
{
    std::vector<double> passMicros;  // one per complete polling pass
    std::vector<double> limitMicros; // the same pass's bytes on the wire plus one turnaround per reply
};
// Passes are cut at each level read of the lowest polled address.
PassFigures pollPasses(const WireLog &log, int baud, double turnaroundMicros);

struct DetectionFigures
{
    double measuredMicros = 0;
    double limitMicros = 0;
};
// From the first "#00A1" leaving the host to the end of the last identification reply.
std::optional<DetectionFigures> detectionFigures(const WireLog &log, int baud, double turnaroundMicros);

struct Stats
{
    double min = 0, median = 0, max = 0;
};
Stats stats(std::vector<double> values);

} // namespace zunbench
