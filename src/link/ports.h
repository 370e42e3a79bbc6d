#pragma once

#include <QString>

#include <array>

namespace zun {

class Dialogs;
class SerialLine;

// Fills available (index 1..8) from the existence test of COM1..COM8 and
// moves commPort to the lowest available port when its own is missing. When
// no port exists it shows the message and returns false: the program must end.
[[nodiscard]] bool findPorts(SerialLine &line, Dialogs &dialogs, std::array<bool, 9> &available,
                             int &commPort);

// The settings text for a line speed: "115200,N,8,1".
[[nodiscard]] QString lineSettings(int baudrate);

} // namespace zun
