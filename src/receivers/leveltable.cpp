#include "receivers/leveltable.h"

#include <algorithm>
#include <cmath>

namespace zun {

namespace {
struct Run
{
    int first;
    int last;
    int level;
};

// Ranges of raw readings and their display level. The jumps (65 -> 66 and
// 254 -> 255) are part of the calibration.
constexpr Run kRuns[] = {
    {0, 0, 0},      {1, 8, 1},      {9, 10, 2},     {11, 16, 3},    {17, 23, 4},    {24, 30, 5},
    {31, 31, 6},    {32, 39, 7},    {40, 42, 8},    {43, 43, 9},    {44, 47, 10},   {48, 49, 11},
    {50, 51, 12},   {52, 52, 13},   {53, 54, 14},   {55, 55, 15},   {56, 56, 16},   {57, 57, 17},
    {58, 58, 18},   {59, 59, 19},   {60, 60, 20},   {61, 61, 21},   {62, 62, 22},   {63, 63, 23},
    {64, 64, 24},   {65, 65, 25},   {66, 66, 27},   {67, 67, 28},   {68, 68, 29},   {69, 69, 30},
    {70, 70, 32},   {71, 71, 33},   {72, 79, 34},   {80, 87, 35},   {88, 95, 36},   {96, 103, 37},
    {104, 110, 38}, {111, 117, 39}, {118, 123, 40}, {124, 128, 41}, {129, 133, 42}, {134, 137, 43},
    {138, 142, 44}, {143, 145, 45}, {146, 148, 46}, {149, 149, 47}, {150, 153, 48}, {154, 155, 49},
    {156, 157, 50}, {158, 159, 51}, {160, 160, 52}, {161, 162, 53}, {163, 163, 54}, {164, 164, 55},
    {165, 165, 56}, {166, 166, 57}, {167, 167, 58}, {168, 168, 59}, {169, 169, 60}, {170, 170, 61},
    {171, 171, 63}, {172, 172, 64}, {173, 175, 66}, {176, 178, 67}, {179, 181, 68}, {182, 185, 69},
    {186, 188, 70}, {189, 192, 71}, {193, 196, 72}, {197, 199, 73}, {200, 203, 74}, {204, 207, 75},
    {208, 210, 76}, {211, 214, 77}, {215, 218, 78}, {219, 221, 79}, {222, 224, 80}, {225, 227, 81},
    {228, 230, 82}, {231, 233, 83}, {234, 235, 84}, {236, 238, 85}, {239, 239, 86}, {240, 241, 87},
    {242, 243, 88}, {244, 246, 89}, {247, 248, 90}, {249, 249, 91}, {250, 251, 92}, {252, 252, 93},
    {253, 254, 94}, {255, 255, 99},
};
} // namespace

LevelTable buildLevelTable()
{
    LevelTable table{};
    for (const Run &run : kRuns)
        for (int raw = run.first; raw <= run.last; ++raw)
            table[raw] = run.level;
    return table;
}

int squelchLevel(const LevelTable &table, int squelch)
{
    // nearbyint rounds halves to even under the default rounding mode.
    const double exact = squelch * 255.0 / 99.0 + 16.0;
    // Limited before the conversion, so a corrupt squelch cannot overflow it.
    const int index = static_cast<int>(std::nearbyint(std::clamp(exact, 0.0, 255.0)));
    return table[index];
}

} // namespace zun
