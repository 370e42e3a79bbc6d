#include "platform/terminationsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace zun {

namespace {
int g_pipe[2] = {-1, -1};

void onSignal(int number)
{
    const unsigned char byte = static_cast<unsigned char>(number);
    // Only async-signal-safe work here; a full pipe already holds a request.
    [[maybe_unused]] const auto written = ::write(g_pipe[1], &byte, 1);
}
} // namespace

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent)
{
    if (g_pipe[0] < 0 && ::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::readPipe);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGINT, SIG_DFL);
}

void TerminationSignals::readPipe()
{
    unsigned char byte = 0;
    while (::read(g_pipe[0], &byte, 1) == 1)
        emit requested(byte);
}

} // namespace zun
