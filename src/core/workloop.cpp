#include "core/workloop.h"

#include "core/appstate.h"

#include <QCoreApplication>
#include <QEvent>

namespace zun {

WorkLoop::WorkLoop(AppState &state) : m_state(state) {}

void WorkLoop::setStep(int mode, Step step)
{
    if (mode >= 1 && mode <= 4)
        m_steps[mode] = std::move(step);
}

bool WorkLoop::runSteps()
{
    bool worked = false;
    for (int mode = 1; mode <= 4 && !m_stopped; ++mode) {
        if (m_state.WorkMode == mode && m_steps[mode])
            worked = m_steps[mode]() || worked;
    }
    return worked;
}

void WorkLoop::run()
{
    while (!m_stopped) {
        const bool worked = runSteps();
        if (m_stopped)
            break;
        // With work on the line, only run what is waiting; with none, sleep in
        // the event loop until the user or a timer gives us something.
        QCoreApplication::processEvents(worked ? QEventLoop::AllEvents : QEventLoop::WaitForMoreEvents);
        // A hand-made loop never returns to exec(), so deleteLater() would wait for ever.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace zun
