#include "sim/demobus.h"

#include <array>

namespace zun {

namespace {
struct Sample
{
    const char *name;
    const char *groupTable;
    int group;
    int channel;
    int squelch;
    int strength;
    int duty;
    double segment;
    double battery;
};

constexpr std::array<Sample, 12> kSamples{{
    {"VOCAL1", "B00000000000", 1, 1, 20, 200, 100, 20, 18},
    {"VOCAL2", "B00000000000", 1, 5, 20, 185, 100, 20, 20},
    {"GUITAR", "8CCCCCCCC000", 2, 3, 25, 175, 70, 30, 23},
    {"BASS  ", "8CCCCCCCC000", 2, 9, 25, 190, 85, 25, 19},
    {"DRUMS ", "688888800000", 3, 2, 30, 210, 100, 20, 24},
    {"KEYS  ", "688888800000", 3, 7, 20, 170, 60, 40, 21},
    {"HOST  ", "B00000000000", 4, 16, 15, 195, 90, 35, 18},
    {"GUEST1", "B00000000000", 5, 4, 20, 160, 50, 45, 27},
    {"GUEST2", "B00000000000", 5, 11, 20, 95, 75, 30, 22},
    {"PODIUM", "4AAAA0000000", 4, 10, 35, 180, 100, 20, 31},
    {"CHOIR ", "B00000000000", 7, 8, 20, 150, 65, 50, 25},
    {"SPARE ", "B00000000000", 9, 1, 40, 140, 30, 60, 29},
}};
} // namespace

SimReceiver makeSampleReceiver(int address, int variant, int baud)
{
    const Sample &s = kSamples[static_cast<std::size_t>(variant) % kSamples.size()];
    SimReceiver r;
    r.address = address;
    r.name = s.name;
    r.groupTable = QByteArray(s.groupTable).left(12);
    r.group = s.group;
    // Past the first dozen, move along the group so transmitters stay apart.
    r.channel = (s.channel - 1 + variant / static_cast<int>(kSamples.size())) % r.channelCount(s.group) + 1;
    r.squelch = s.squelch;
    r.secondLevel = 0x20 + variant % 16;
    r.baud = baud;
    r.textA = "ZR" + QByteArray::number(8000 + variant % 10 * 100);
    r.textB = QByteArray::number(110 + variant % 5 * 5);
    r.transmitter.strength = s.strength;
    r.transmitter.dutyPercent = s.duty;
    r.transmitter.segmentSeconds = s.segment;
    r.transmitter.batteryStart = s.battery;
    return r;
}

std::unique_ptr<SimBus> makeSimBus(const std::vector<int> &addresses, std::uint64_t seed, int baud)
{
    auto bus = std::make_unique<SimBus>(seed);
    int variant = 0;
    for (int address : addresses)
        if (address >= 1 && address <= 64)
            bus->addReceiver(makeSampleReceiver(address, variant++, baud));
    // A TV transmitter and an intermittent foreign microphone in the band.
    SimTransmitter tv;
    tv.code = 0x72BA + 1500;
    tv.strength = 150;
    bus->addCarrier(tv);
    SimTransmitter stray;
    stray.code = 0x72BA + 2713;
    stray.strength = 120;
    stray.dutyPercent = 40;
    stray.segmentSeconds = 15;
    bus->addCarrier(stray);
    return bus;
}

std::unique_ptr<SimBus> makeDemoBus(std::uint64_t seed, int baud)
{
    // Every address answers: detection then takes well under a second instead
    // of waiting out the retries of silent addresses, and the screen is full.
    std::vector<int> addresses(64);
    for (int i = 0; i < 64; ++i)
        addresses[static_cast<std::size_t>(i)] = i + 1;
    auto bus = makeSimBus(addresses, seed, baud);
    // Variety the plain samples do not give: muted outputs and a receiver
    // tuned off its presets.
    bus->receiver(5)->muted = true;
    bus->receiver(52)->muted = true;
    SimReceiver *offPreset = bus->receiver(23);
    offPreset->manual = true;
    offPreset->manualCode = offPreset->transmitter.code + 3;
    offPreset->transmitter.code = offPreset->manualCode;
    bus->receiver(41)->transmitter.batteryDrainSeconds = 240; // weak and going
    return bus;
}

} // namespace zun
