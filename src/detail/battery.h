#pragma once

#include <QColor>
#include <QString>

#include <optional>

namespace zun {

// The battery read-out of the detail window. A reading only means something
// while the transmitter is on the air, and single readings jump, so the
// label follows a running mean and changes only after the first 20 samples.
class BatteryMean
{
public:
    // Takes one reading; returns the label text once enough samples were seen.
    std::optional<QString> add(int reading);
    void reset() { m_count = 0, m_average = 0; }

private:
    int m_count = 0;
    float m_average = 0;
};

// "100%", "80%", "40%", "10%" or "OFF" for an averaged reading (a larger
// reading is a weaker battery).
QString batteryText(float average);

// The label's background for a battery text; nothing for the plain button face.
std::optional<QColor> batteryColour(const QString &text);

// Audio level byte to the deviation meter's 0..129 scale: nothing below 86,
// tapered so that speech fills the lower part and clipping the top.
int deviationLevel(int audio);

} // namespace zun
