#pragma once

#include <QtGlobal>

namespace zun {

// A loopback TCP port nobody listened on a moment ago.
quint16 freeLoopbackPort();

} // namespace zun
