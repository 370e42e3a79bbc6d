#pragma once

#include "receivers/workmode.h"

#include <array>
#include <functional>

namespace zun {

class ReceiverBus;

// The program's one cooperative loop: each pass runs the step that the work
// mode selects (polling, detail read, scan, recorder, tested in that order so
// a step that changes the mode lets a later one run in the same pass), then
// lets the UI run its waiting events.
class WorkLoop
{
public:
    // A step returns false when it found nothing to do on the line; a pass in
    // which no step worked waits for the next UI event instead of spinning.
    using Step = std::function<bool()>;

    explicit WorkLoop(const ReceiverBus &bus);

    void setStep(WorkMode mode, Step step);
    // Runs first in every pass whatever the mode: recovery that must go on
    // while nobody is polled.
    void setHousekeeping(Step step) { m_housekeeping = std::move(step); }

    // One pass without the event processing; true when some step worked.
    bool runSteps();

    // Runs passes until stop(); a stopped loop runs again when asked to.
    void run();
    void stop() { m_stopped = true; }
    [[nodiscard]] bool stopped() const { return m_stopped; }

private:
    const ReceiverBus &m_bus;
    std::array<Step, 5> m_steps;
    Step m_housekeeping;
    bool m_stopped = false;
};

} // namespace zun
