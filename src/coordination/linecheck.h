#pragma once

#include "coordination/conflicts.h"
#include "receivers/receiver.h"

#include <QList>
#include <QString>

#include <vector>

namespace zun {

// One receiver of the line as frequency planning sees it, all in kHz.
struct LineCarrier
{
    int index = -1; // in the receiver table
    int address = 0;
    QString name;
    int bandLowKHz = 0;
    int bandHighKHz = 0;
    int frequencyKHz = 0;
    bool online = false;
};

// The receivers found, in table order: the band from its start code and its
// width in 25 kHz steps, the frequency the receiver runs on (manual or preset).
[[nodiscard]] std::vector<LineCarrier> lineCarriers(const QList<Receiver> &found);

// MHz to the nearest kHz.
[[nodiscard]] int toKHz(double mhz);

// What each of the first lineCount carriers suffers under the conflicts
// found among all of them: "clean", or "conflict with" the others involved
// (a few named) and the first conflict in words. Carriers after lineCount
// (another user's frequencies) take part but get no state. labels name each
// carrier ("05", "470.125").
[[nodiscard]] QStringList carrierStates(const std::vector<Conflict> &conflicts,
                                        const std::vector<int> &carriersKHz, int lineCount,
                                        const QStringList &labels);

// Each carrier that suffers a conflict, for marking.
[[nodiscard]] std::vector<bool> conflictedCarriers(const std::vector<Conflict> &conflicts, int count);

} // namespace zun
