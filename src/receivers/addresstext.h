#pragma once

#include <QString>

namespace zun {

// "03": the address as the topics, OSC paths and the bus health table spell it.
[[nodiscard]] QString addressText(int address);

} // namespace zun
