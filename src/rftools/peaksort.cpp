#include "rftools/peaksort.h"

#include <utility>

namespace zun {

void swapIndex(IndexArray &a, int i, int j)
{
    std::swap(a[i], a[j]);
}

void sortByLevel(IndexArray &a, int lo, int hi, const LevelArray &levels)
{
    const int size = static_cast<int>(a.size());
    if (lo < 0 || hi >= size)
        return;
    // A point number outside the level array counts as never measured.
    auto levelAt = [&](int k) -> std::int16_t {
        const int point = a[k];
        return point >= 0 && point < static_cast<int>(levels.size()) ? levels[point] : 0;
    };

    // Ranges still to sort; the top of the stack is sorted next, exactly where
    // a recursive call would go.
    std::vector<std::pair<int, int>> pending{{lo, hi}};
    while (!pending.empty()) {
        const auto [low, high] = pending.back();
        pending.pop_back();
        if (low >= high)
            continue;
        const int mid = (low + high) / 2;
        const std::int16_t pivot = levelAt(mid);
        int i = low;
        int j = high;
        // The pivot's own slot, and after each swap the swapped values, stop
        // both scans inside [low, high].
        while (i < j) {
            while (levelAt(i) < pivot)
                ++i;
            while (levelAt(j) > pivot)
                --j;
            if (i > j)
                break;
            swapIndex(a, i, j);
            ++i;
            --j;
        }
        if (j >= mid) {
            pending.emplace_back(low, j);  // second
            pending.emplace_back(i, high); // first
        } else {
            pending.emplace_back(i, high);
            pending.emplace_back(low, j);
        }
    }
}

} // namespace zun
