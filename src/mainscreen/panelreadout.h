#pragma once

#include "core/leveltable.h"

#include <QString>
#include <QStringView>
#include <QtGlobal>

namespace zun {

// Running mean of one panel's battery readings. Only readings taken while a
// transmitter is on the air count.
struct BatteryAverage
{
    int count = 0;
    float average = 0.0f;
};

// Everything one level reply changes on a receiver panel. Colours are
// blue-green-red values; image names are resource names, empty for none.
struct PanelReadout
{
    // Raw bytes as read from the reply.
    int audioRaw = 0;
    int rfARaw = 0;
    int rfBRaw = 0;
    int batteryRaw = 0;

    // RF on the 0..99 display scale, and the squelch on the same scale.
    int rfA = 0;
    int rfB = 0;
    int squelchThreshold = 0;
    int strongest = 0;
    quint32 rfAColor = 0;
    quint32 rfBColor = 0;
    QString rfSignImage;

    // The battery caption and picture change only when this is set.
    bool batteryShown = false;
    QString batteryCaption;
    QString batteryImage;

    // Audio on the meter's 0..129 scale after the taper; clip lights the red
    // box on top of the bar.
    int audioX = 0;
    bool audioClip = false;
};

// Level reply: "$", two address characters, then four hex bytes (audio, RF A,
// RF B, battery); a trailing carriage return is ignored. Missing or foreign
// characters read as 0. battery is updated in place.
PanelReadout readPanelReply(QStringView reply, int squelch, const LevelTable &table, BatteryAverage &battery);

// Battery caption and picture for x = Int(average) + 1. A larger reading is a
// weaker battery.
struct BatteryState
{
    QString caption;
    QString image;
};
BatteryState batteryState(int x);

// Audio byte to the meter scale, taper included.
int audioMeterValue(int audioRaw);

// Meter geometry for a picture height H (pixels, top is 0).
int rfBarTop(int height, int level);
int audioBarTop(int height, int x);
// The red box spans from the clip mark up to (and past) the top of the scale.
int audioRedBoxNearEdge(int height);
int audioRedBoxFarEdge(int height);

inline constexpr int kAudioClipMark = 116;

} // namespace zun
