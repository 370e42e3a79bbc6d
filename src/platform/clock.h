#pragma once

#include <cstdint>

namespace zun {

// All time the program reads or waits for goes through here, so that tests can
// run time-outs and retries on a virtual clock in microseconds.
class Clock
{
public:
    virtual ~Clock() = default;

    // Monotonic time in microseconds since an arbitrary origin.
    virtual std::uint64_t nowMicros() const = 0;

    // GetTickCount: milliseconds as an unsigned 32-bit counter that wraps.
    virtual std::uint32_t tickCount() const = 0;

    // Seconds since local midnight, with fractions.
    virtual double secondsSinceMidnight() const = 0;

    // Blocks the calling thread without processing UI events and without
    // spinning; on a virtual clock it simply advances time.
    virtual void sleepMicros(std::uint64_t micros) = 0;
};

// The wall clock of the machine.
class SystemClock final : public Clock
{
public:
    SystemClock();
    std::uint64_t nowMicros() const override;
    std::uint32_t tickCount() const override;
    double secondsSinceMidnight() const override;
    void sleepMicros(std::uint64_t micros) override;

private:
    std::int64_t m_originNanos;
};

// A clock that moves only when somebody sleeps on it or advances it.
class VirtualClock final : public Clock
{
public:
    // tickOrigin lets tests start the 32-bit tick counter just before its wrap.
    explicit VirtualClock(std::uint32_t tickOrigin = 0, double midnightOrigin = 12 * 3600.0);

    std::uint64_t nowMicros() const override { return m_now; }
    std::uint32_t tickCount() const override;
    double secondsSinceMidnight() const override;
    void sleepMicros(std::uint64_t micros) override { m_now += micros; }

    void advanceMicros(std::uint64_t micros) { m_now += micros; }
    void advanceMillis(std::uint64_t millis) { m_now += millis * 1000; }
    void setSecondsSinceMidnight(double seconds);

private:
    std::uint64_t m_now = 0;
    std::uint32_t m_tickOrigin;
    double m_midnightOrigin;
};

} // namespace zun
