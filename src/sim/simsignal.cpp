#include "sim/simsignal.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zun {

namespace {
std::uint64_t mix(std::uint64_t z)
{
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

double unit(std::uint64_t h)
{
    return static_cast<double>(h >> 11) * 0x1.0p-53;
}

// How far each 25 kHz step off a carrier lowers its reading.
constexpr int kStepLoss = 55;
constexpr int kReach = 3;
} // namespace

std::uint64_t SimRandom::next()
{
    m_state += 0x9E3779B97F4A7C15ull;
    return mix(m_state);
}

double SimRandom::uniform()
{
    return unit(next());
}

int SimRandom::below(int bound)
{
    return bound < 1 ? 0 : static_cast<int>(next() % static_cast<std::uint64_t>(bound));
}

std::uint64_t simHash(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t d)
{
    std::uint64_t h = mix(a + 0x9E3779B97F4A7C15ull);
    h = mix(h ^ (b + 0x632BE59BD9B4E019ull));
    h = mix(h ^ (c + 0x85EBCA77C2B2AE63ull));
    return mix(h ^ (d + 0xC2B2AE3D27D4EB4Full));
}

double smoothNoise(std::uint64_t seed, std::uint64_t key, double x)
{
    const double cell = std::floor(x);
    const auto i = static_cast<std::int64_t>(cell);
    const double a = unit(simHash(seed, key, static_cast<std::uint64_t>(i)));
    const double b = unit(simHash(seed, key, static_cast<std::uint64_t>(i + 1)));
    const double f = (1.0 - std::cos((x - cell) * std::numbers::pi)) / 2.0;
    return a + (b - a) * f;
}

bool transmitterOn(std::uint64_t seed, const SimEmitter &emitter, double seconds)
{
    const SimTransmitter &tx = emitter.tx;
    if (tx.dutyPercent >= 100)
        return true;
    if (tx.dutyPercent <= 0 || tx.segmentSeconds <= 0)
        return false;
    const auto slice = static_cast<std::uint64_t>(std::floor(seconds / tx.segmentSeconds));
    return static_cast<int>(simHash(seed, emitter.id, 0x5E6, slice) % 100) < tx.dutyPercent;
}

int rfReading(std::uint64_t seed, std::uint64_t listener, int antenna, int code, double seconds,
              std::span<const SimEmitter> emitters)
{
    const std::uint64_t who = listener * 2 + static_cast<std::uint64_t>(antenna);
    double best = 6 + 18 * smoothNoise(seed, simHash(who, 0xF1002), seconds / 0.8);
    for (const SimEmitter &e : emitters) {
        const int distance = std::abs(code - e.tx.code);
        if (distance > kReach || !transmitterOn(seed, e, seconds))
            continue;
        const std::uint64_t path = simHash(who, e.id, 0xFADE);
        double v = e.tx.strength - 30 * smoothNoise(seed, path, seconds / 1.5) + 15;
        // Multipath now and then wipes out one antenna for a moment; the
        // other one, at another place, usually keeps the signal.
        if (smoothNoise(seed, path + 1, seconds / 0.5) > 0.95)
            v -= 150;
        best = std::max(best, v - kStepLoss * distance);
    }
    return std::clamp(static_cast<int>(std::lround(best)), 0, 255);
}

int audioReading(std::uint64_t seed, std::uint64_t listener, bool heard, double seconds)
{
    const std::uint64_t key = simHash(listener, 0xA0D10);
    if (!heard)
        return static_cast<int>(10 + 30 * smoothNoise(seed, key, seconds / 0.3));
    double v = 90 + 110 * smoothNoise(seed, key, seconds / 0.15);
    if (smoothNoise(seed, key + 1, seconds / 2.0) > 0.85) // someone shouts into the microphone
        v += 60;
    return std::clamp(static_cast<int>(v), 0, 255);
}

int batteryReading(std::uint64_t seed, const SimEmitter &own, bool heard, double seconds)
{
    if (!heard)
        return 0;
    const SimTransmitter &tx = own.tx;
    double v = tx.batteryStart;
    if (tx.batteryDrainSeconds > 0)
        v += seconds / tx.batteryDrainSeconds;
    if (smoothNoise(seed, simHash(own.id, 0xBA77), seconds / 0.5) > 0.8)
        v += 1;
    return std::clamp(static_cast<int>(v), 0, 255);
}

} // namespace zun
