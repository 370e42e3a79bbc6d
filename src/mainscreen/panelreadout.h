#pragma once

#include "receivers/levelreading.h"

#include <QString>
#include <QtGlobal>

namespace zun {

// What one level reading changes on a receiver panel. Colours are
// blue-green-red values; image names are resource names, empty for none.
struct PanelReadout
{
    int rfA = 0; // 0..99
    int rfB = 0;
    quint32 rfAColor = 0;
    quint32 rfBColor = 0;
    QString rfSignImage;

    // The battery caption and picture change only when this is set.
    bool batteryShown = false;
    QString batteryCaption;
    QString batteryImage;

    // Audio on the meter's 0..129 scale; clip lights the red box on top of the bar.
    int audioX = 0;
    bool audioClip = false;
};

[[nodiscard]] PanelReadout panelReadout(const LevelReading &reading);

// Battery caption and picture for a percentage (0 is "OFF").
struct BatteryState
{
    QString caption;
    QString image;
};
[[nodiscard]] BatteryState batteryState(int percent);

// Meter geometry for a picture height H (pixels, top is 0).
[[nodiscard]] int rfBarTop(int height, int level);
[[nodiscard]] int audioBarTop(int height, int x);
// The red box spans from the clip mark up to (and past) the top of the scale.
[[nodiscard]] int audioRedBoxNearEdge(int height);
[[nodiscard]] int audioRedBoxFarEdge(int height);

} // namespace zun
