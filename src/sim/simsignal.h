#pragma once

#include <cstdint>
#include <span>

namespace zun {

// A small seeded generator (splitmix64): the same seed gives the same run on
// every platform, unlike the distributions of the standard library.
class SimRandom
{
public:
    explicit SimRandom(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t next();
    double uniform();     // [0, 1)
    int below(int bound); // [0, bound), 0 when bound < 1

private:
    std::uint64_t m_state;
};

// Stateless hash of a few numbers, for values that must depend only on
// (seed, who, what, when) and not on the order of questions.
[[nodiscard]] std::uint64_t simHash(std::uint64_t a, std::uint64_t b, std::uint64_t c = 0,
                                    std::uint64_t d = 0);

// Smooth value noise in [0, 1): a fresh random value at every whole x,
// eased in between, so levels drift instead of jumping.
[[nodiscard]] double smoothNoise(std::uint64_t seed, std::uint64_t key, double x);

// A transmitter on the air somewhere in the band.
struct SimTransmitter
{
    int code = -1;         // frequency code; -1 until the bus places it
    int strength = 190;    // mean raw reading at the receivers while on the air
    int dutyPercent = 100; // share of time slices in which it is on the air
    double segmentSeconds = 20;
    double batteryStart = 18;         // battery reading at time 0
    double batteryDrainSeconds = 900; // seconds per step of the reading; 0 = none
};

// One transmitter as the physics sees it; id keeps its fading independent.
struct SimEmitter
{
    std::uint64_t id = 0;
    SimTransmitter tx;
};

[[nodiscard]] bool transmitterOn(std::uint64_t seed, const SimEmitter &emitter, double seconds);

// Raw 0..255 RF reading of one antenna (0 = A, 1 = B) of the listening
// receiver tuned to code, at the given time. A noise floor, plus every
// transmitter on the air near that code, each fading independently per
// antenna with occasional deep drops, so the two antennas differ.
[[nodiscard]] int rfReading(std::uint64_t seed, std::uint64_t listener, int antenna, int code, double seconds,
                            std::span<const SimEmitter> emitters);

// Audio and battery readings of a receiver whose own transmitter is heard
// (or not) at this moment.
[[nodiscard]] int audioReading(std::uint64_t seed, std::uint64_t listener, bool heard, double seconds);
[[nodiscard]] int batteryReading(std::uint64_t seed, const SimEmitter &own, bool heard, double seconds);

} // namespace zun
