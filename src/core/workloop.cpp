#include "core/workloop.h"

#include "receivers/receiverbus.h"

#include <QCoreApplication>
#include <QEvent>

namespace zun {

WorkLoop::WorkLoop(const ReceiverBus &bus) : m_bus(bus) {}

void WorkLoop::setStep(WorkMode mode, Step step)
{
    if (mode != WorkMode::Idle)
        m_steps[static_cast<std::size_t>(mode)] = std::move(step);
}

bool WorkLoop::runSteps()
{
    bool worked = m_housekeeping && !m_stopped && m_housekeeping();
    for (const WorkMode mode :
         {WorkMode::Polling, WorkMode::DetailRead, WorkMode::Scan, WorkMode::Recorder}) {
        const Step &step = m_steps[static_cast<std::size_t>(mode)];
        if (!m_stopped && m_bus.workMode() == mode && step)
            worked = step() || worked;
    }
    return worked;
}

void WorkLoop::run()
{
    m_stopped = false;
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
