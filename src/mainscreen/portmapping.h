#pragma once

#include <QString>

namespace zun {

struct Context;
class PortMap;

// "Set port...": the user maps one of COM1..COM8 to a device or a serial
// server, as "COMn=TARGET" ("COMn=" alone removes the mapping). The answer is
// stored under "Ports"/"COMn", wins over the command line for this run, and
// the port is tested again; an open line on that port is closed so that the
// next detection or "Reconnect" uses the new target. Returns the port number,
// or 0 when the user cancelled or the answer was refused with a message.
[[nodiscard]] int setPortMapping(Context &ctx, PortMap &ports);

// The answer to setPortMapping's question, without asking.
[[nodiscard]] int applyPortMapping(Context &ctx, PortMap &ports, const QString &answer);

} // namespace zun
