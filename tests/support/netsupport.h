#pragma once

#include <QtGlobal>

namespace zun {

// A loopback TCP port nobody listened on a moment ago.
quint16 freeLoopbackPort();

// Whether a server listens on this loopback port now.
bool acceptsConnections(quint16 port);

} // namespace zun
