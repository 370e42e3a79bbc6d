#pragma once

#include <array>

namespace zun {

// The receivers' calibration: an 8-bit reading to a display level 0..99.
using LevelTable = std::array<int, 256>;

[[nodiscard]] LevelTable buildLevelTable();

// A squelch setting 0..99 as a level comparable with LevelTable's output.
[[nodiscard]] int squelchLevel(const LevelTable &table, int squelch);

} // namespace zun
