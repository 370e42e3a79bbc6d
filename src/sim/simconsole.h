#pragma once

#include "sim/simbus.h"

#include <QByteArray>

namespace zun {

// One line typed at the simulator's console:
//   stop N | start N            take receiver N off the line / put it back
//   fault N KIND [COUNT]        the next COUNT replies of N get fault KIND
//   list                        one line per receiver
//   quit
// Returns the text to show; quit is set by "quit".
[[nodiscard]] QByteArray simConsoleCommand(SimBus &bus, const QByteArray &line, bool &quit);

// A frame for a log line: printable characters as they are, the rest as \xHH,
// the closing carriage return left out.
[[nodiscard]] QByteArray simPrintable(const QByteArray &frame);

} // namespace zun
