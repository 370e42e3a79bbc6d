#include "platform/clock.h"

#include <QTime>

#include <chrono>
#include <cmath>
#include <thread>

namespace zun {

namespace {
std::int64_t steadyNanos()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
} // namespace

SystemClock::SystemClock() : m_originNanos(steadyNanos()) {}

std::uint64_t SystemClock::nowMicros() const
{
    return static_cast<std::uint64_t>((steadyNanos() - m_originNanos) / 1000);
}

std::uint32_t SystemClock::tickCount() const
{
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                        std::chrono::steady_clock::now().time_since_epoch())
                        .count();
    return static_cast<std::uint32_t>(ms);
}

double SystemClock::secondsSinceMidnight() const
{
    return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
}

void SystemClock::sleepMicros(std::uint64_t micros)
{
    std::this_thread::sleep_for(std::chrono::microseconds(micros));
}

VirtualClock::VirtualClock(std::uint32_t tickOrigin, double midnightOrigin)
    : m_tickOrigin(tickOrigin), m_midnightOrigin(midnightOrigin)
{
}

std::uint32_t VirtualClock::tickCount() const
{
    return static_cast<std::uint32_t>(m_tickOrigin + m_now / 1000);
}

double VirtualClock::secondsSinceMidnight() const
{
    return std::fmod(m_midnightOrigin + m_now / 1e6, 86400.0);
}

void VirtualClock::setSecondsSinceMidnight(double seconds)
{
    m_midnightOrigin = seconds - m_now / 1e6;
}

} // namespace zun
