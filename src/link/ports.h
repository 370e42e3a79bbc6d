#pragma once

#include <QString>

#include <optional>

namespace zun {

struct Context;

// Fills PortAvailable from the existence test of COM1..COM8 and moves
// CommPort to the lowest available port when its own is missing. When no port
// exists it shows the message and returns false: the program must end.
bool FindCommPorts(Context &ctx);

// The settings text for a line speed: "115200,N,8,1".
QString lineSettings(int baudrate);

// The broadcast frame (without carriage return) that switches every receiver
// to this speed, or nothing for a speed the receivers do not know.
std::optional<QString> baudrateFrame(int baudrate);

// Text mode, request-to-send, line settings; then either take the number of
// the port already open or open CommPort.
void openLine(Context &ctx);

// The "Enter new baudrate:" command after the user answered. Returns true
// when the speed was changed (every receiver told, port reopened, saved);
// false with nothing saved when the answer is unusable or the line fails.
bool changeBaudrate(Context &ctx, const QString &answer);

} // namespace zun
