#include "receivers/detailsession.h"

#include "receivers/frames.h"
#include "receivers/frequency.h"
#include "receivers/receiverbus.h"

#include <algorithm>

namespace zun {

DetailSession::DetailSession(ReceiverBus &bus, QObject *parent) : QObject(parent), m_bus(bus) {}

void DetailSession::open(int index)
{
    m_index = index;
    m_battery = BatteryAverager{};
    m_drops = DropCounter{};
}

void DetailSession::close()
{
    m_bus.setWorkMode(WorkMode::Polling);
    // Sent after the window is gone, so a silent receiver goes unreported.
    if (m_bus.table().validIndex(m_index))
        m_bus.exchange(frames::detailClosed(receiver().address));
}

const Receiver &DetailSession::receiver() const
{
    return m_bus.table().at(m_index);
}

LevelReading DetailSession::reading(const LevelReply &raw)
{
    const LevelTable &table = m_bus.levelTable();
    LevelReading d;
    d.raw = raw;
    d.rfA = detailLevel(table, raw.rfA);
    d.rfB = detailLevel(table, raw.rfB);
    d.squelchLevel = squelchLevel(table, std::clamp(receiver().squelch, -100, 200));
    d.onAir = std::max(d.rfA, d.rfB) > d.squelchLevel;
    // Only a transmitter on the air reports its battery.
    if (d.onAir)
        d.batteryPercent = m_battery.add(raw.battery);
    d.audio = audioTaper(raw.audio);
    d.audioClip = d.audio > kAudioClipLevel;

    const QString dropsA = m_drops.textA();
    const QString dropsB = m_drops.textB();
    m_drops.count(d.rfA, d.rfB, d.squelchLevel);
    if (Receiver *r = m_bus.table().find(m_index)) {
        // The window's own battery mean stays its own: the panel and the
        // feeds keep the poll's.
        r->levels = d;
        const int address = r->address;
        emit m_bus.levelsRead(Receiver(*r));
        if (m_drops.textA() != dropsA)
            emit m_bus.signalDropped(address, QLatin1Char('A'), m_drops.textA().toInt());
        if (m_drops.textB() != dropsB)
            emit m_bus.signalDropped(address, QLatin1Char('B'), m_drops.textB().toInt());
    }
    return d;
}

std::optional<LevelReading> DetailSession::readLevels()
{
    if (!m_bus.table().validIndex(m_index))
        return std::nullopt;
    const int address = receiver().address;
    QString reply;
    if (m_bus.exchange(frames::levels(address), &reply)) {
        if (const auto raw = parseLevels(reply, address))
            return reading(*raw);
    }
    m_bus.setWorkMode(WorkMode::Polling);
    return std::nullopt;
}

void DetailSession::storePreset(int group, int channel)
{
    if (Receiver *r = m_bus.table().find(m_index)) {
        r->group = group;
        r->channel = channel;
    }
}

std::optional<QString> DetailSession::selectPreset(int group, int channel)
{
    return m_bus.selectPreset(m_index, group, channel);
}

bool DetailSession::tuneManual(const QString &code, int settleMillis)
{
    return m_bus.tuneManual(m_index, code, settleMillis);
}

void DetailSession::setCursorCode(const QString &code)
{
    if (Receiver *r = m_bus.table().find(m_index))
        r->manualFreqCode = code;
}

bool DetailSession::tuneCursor(int timeoutMillis)
{
    if (!m_bus.table().validIndex(m_index))
        return false;
    const Receiver &r = receiver();
    return m_bus.exchange(frames::cursorTune(r.address, r.manualFreqCode, timeoutMillis));
}

bool DetailSession::changeAddress(int newAddress)
{
    return m_bus.changeAddress(m_index, newAddress);
}

QString DetailSession::setName(const QString &text)
{
    return m_bus.setName(m_index, text);
}

bool DetailSession::stepSquelch(int direction)
{
    return m_bus.stepSquelch(m_index, direction);
}

void DetailSession::sendSquelch()
{
    m_bus.sendSquelch(m_index);
}

void DetailSession::runKob()
{
    if (!m_bus.table().validIndex(m_index) || m_kobActive)
        return;
    const int address = receiver().address;
    emit kobPhase(KobPhase::Started);
    m_bus.enterKobWait();
    m_kobActive = true;
    m_bus.exchange(frames::kobStart(address));

    KobPhase outcome = KobPhase::UserAborted;
    for (;;) {
        emit kobPhase(KobPhase::Performing);
        m_bus.link().delay(300);
        emit kobPhase(KobPhase::Waiting);
        m_bus.processEvents();
        if (!m_kobActive)
            break;
        if (m_bus.exchange(frames::backOnLine(address))) {
            if (m_kobActive)
                outcome = KobPhase::Complete;
            break;
        }
    }
    emit kobPhase(outcome);
    m_bus.link().delay(1500);
    emit kobPhase(KobPhase::Ended);
    m_kobActive = false;
    m_bus.leaveKobWait();
}

std::optional<ScanReading> DetailSession::scanStep(int pointIndex, double frequencyMHz)
{
    if (!m_bus.table().validIndex(m_index))
        return std::nullopt;
    const int address = receiver().address;
    const QString code = codeFromMhz(frequencyMHz);
    QString reply;
    const auto point = m_bus.exchange(frames::scanTune(address, code), &reply)
                           ? parseScanPoint(reply, address)
                           : std::nullopt;
    if (!point) {
        m_bus.setWorkMode(WorkMode::Polling);
        return std::nullopt;
    }
    // The receiver now sits on a frequency that is no preset.
    if (Receiver *r = m_bus.table().find(m_index)) {
        r->manualFreq = true;
        r->manualFreqCode = code;
    }
    ScanReading measured{reading(point->raw), code, frequencyMHz};
    emit m_bus.scanPointRead(address, pointIndex, frequencyMHz, measured.levels.rfA, measured.levels.rfB);
    return measured;
}

std::optional<LevelReading> DetailSession::recorderStep()
{
    const auto levels = readLevels();
    if (levels)
        emit m_bus.recorderSampled(receiver().address, levels->rfA, levels->rfB);
    return levels;
}

} // namespace zun
