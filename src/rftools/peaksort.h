#pragma once

#include <cstdint>
#include <vector>

namespace zun {

using LevelArray = std::vector<std::int16_t>; // level of each scan point
using IndexArray = std::vector<std::int16_t>; // scan point numbers

void swapIndex(IndexArray &a, int i, int j);

// Sorts a[lo..hi] (point numbers) by ascending level. The partitioning is the
// one the "Peak"/"Next P" walk was designed around: among equal levels the
// visiting order is whatever this exact procedure leaves, so it must not be
// replaced by another sort. Runs with its own stack, not by recursion, so a
// long band cannot exhaust the call stack; the order of the work is unchanged.
void sortByLevel(IndexArray &a, int lo, int hi, const LevelArray &levels);

} // namespace zun
