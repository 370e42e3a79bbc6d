#include "receivers/receiverbus.h"

#include "link/hex.h"
#include "link/ports.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/serialline.h"
#include "platform/settingsstore.h"
#include "receivers/frames.h"
#include "receivers/frequency.h"
#include "receivers/replies.h"

#include <algorithm>

namespace zun {

namespace {
constexpr int kHighestAddress = 64;
const QString kApp = QStringLiteral("KESTA_ZUN");

ExchangeRecord::Result resultOf(bool ok, bool broadcast, const QString &reply)
{
    if (broadcast)
        return ExchangeRecord::Result::Broadcast;
    if (ok)
        return ExchangeRecord::Result::Ok;
    return reply.isEmpty() ? ExchangeRecord::Result::NoReply : ExchangeRecord::Result::Garbled;
}
} // namespace

ReceiverBus::ReceiverBus(Clock &clock, SerialLine &line, SettingsStore &settings, Desktop &desktop,
                         QObject *parent)
    : QObject(parent), m_clock(clock), m_line(line), m_settings(settings), m_desktop(desktop),
      m_link(line, clock, m_options.retries, &m_options.baudRate), m_levelTable(buildLevelTable())
{
}

void ReceiverBus::setWorkMode(WorkMode mode)
{
    if (mode == m_workMode)
        return;
    m_workMode = mode;
    emit workModeChanged(mode);
}

void ReceiverBus::processEvents()
{
    m_desktop.processEvents();
}

bool ReceiverBus::send(const QString &frame, int replyLength, int timeoutMillis, QString &reply)
{
    const bool broadcast = frame.mid(1, 2) == QLatin1String("00");
    const std::uint64_t start = m_clock.nowMicros();
    const bool ok = m_link.sendCommand(frame, replyLength, reply, timeoutMillis);
    ExchangeRecord record;
    record.address = parseHex(QStringView(frame).mid(1, 2));
    record.command = frame.size() > 3 ? frame.at(3) : QChar();
    record.result = resultOf(ok, broadcast, reply);
    record.attempts = broadcast ? 1 : std::max(1, m_link.lastAttempts());
    record.startMicros = static_cast<qint64>(start);
    record.roundTripMicros = static_cast<qint64>(m_clock.nowMicros() - start);
    record.commandChars = static_cast<int>(frame.size());
    record.replyChars = static_cast<int>(reply.size());
    record.lineNoise = m_line.discardedInput();
    emit exchanged(record);
    return ok;
}

bool ReceiverBus::send(const QString &frame, int replyLength, int timeoutMillis)
{
    QString reply;
    return send(frame, replyLength, timeoutMillis, reply);
}

// --- the receiver table ----------------------------------------------------

void ReceiverBus::resizeTable(int count)
{
    m_table.assign(static_cast<std::size_t>(std::max(count, 0)), ReceiverRecord{});
    m_live.assign(m_table.size(), Live{});
    m_foundCount = 0;
}

const ReceiverRecord &ReceiverBus::record(int index) const
{
    return validIndex(index) ? m_table[static_cast<std::size_t>(index)] : m_none;
}

QList<ReceiverRecord> ReceiverBus::foundRecords() const
{
    const auto found = static_cast<std::ptrdiff_t>(std::min(m_foundCount, receiverCount()));
    return QList<ReceiverRecord>(m_table.begin(), m_table.begin() + found);
}

ReceiverRecord *ReceiverBus::selectedRecord()
{
    return validIndex(m_selected) ? &m_table[static_cast<std::size_t>(m_selected)] : nullptr;
}

ReceiverStatus ReceiverBus::status(int index) const
{
    ReceiverStatus s;
    if (!validIndex(index))
        return s;
    const ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    const Live &live = m_live[static_cast<std::size_t>(index)];
    s.address = r.address;
    QString name = r.name;
    while (name.endsWith(QLatin1Char(' ')))
        name.chop(1);
    s.name = name;
    s.frequencyMHz = mhzFromCode(r.manualFreq ? r.manualFreqCode : r.channelFreqCode);
    s.squelch = r.squelch;
    s.rfA = live.rfA;
    s.rfB = live.rfB;
    s.rfADbm = levelDbm(live.rfA);
    s.rfBDbm = levelDbm(live.rfB);
    s.audio = std::min(99, live.audio * 99 / kAudioClipLevel);
    s.audioClip = live.audioClip;
    s.batteryPercent = live.batteryPercent;
    s.mute = r.mute;
    s.online = r.online;
    return s;
}

void ReceiverBus::fill(int index, const Identification &id)
{
    ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    r.name = id.name;
    r.group = id.group;
    r.channel = id.channel;
    r.channelFreqCode = id.frequencyCode;
    r.manualFreqCode = id.frequencyCode;
    r.squelch = id.squelch;
    r.secondLevel = id.secondLevel;
    r.groupTable = id.groupTable;
    r.bandStartCode = id.bandStartCode;
    r.bandWidth = id.bandWidth;
    r.mute = id.mute;
    r.manualFreq = id.manualFreq;
    r.online = true;
}

// --- detection ---------------------------------------------------------------

bool ReceiverBus::openLine()
{
    m_line.setTextMode();
    m_line.setRequestToSend(true);
    // The speed text is our own; a port that refuses it keeps its old speed,
    // which may still be the receivers' one, so the search goes on there.
    const QString settings = lineSettings(m_options.baudRate);
    if (!m_line.applySettings(settings))
        emit lineProblem(
            QStringLiteral("COM%1 did not take the line settings %2").arg(m_line.portNumber()).arg(settings));
    if (m_line.isOpen()) {
        m_options.port = m_line.portNumber();
        return true;
    }
    m_line.selectPort(m_options.port);
    return openSelectedPort();
}

bool ReceiverBus::openSelectedPort()
{
    if (m_line.open())
        return true;
    emit lineProblem(
        QStringLiteral("COM%1 does not open: missing, in use by another program, or not permitted")
            .arg(m_line.portNumber()));
    return false;
}

void ReceiverBus::forgetReceivers()
{
    for (ReceiverRecord &r : m_table)
        r.online = false;
    m_foundCount = 0;
    setWorkMode(WorkMode::Idle);
}

bool ReceiverBus::searchCurrentPort()
{
    for (ReceiverRecord &r : m_table)
        r.online = false;
    emit detectionStarted(m_options.port);
    m_foundCount = 0;

    for (int i = 0; i < 3; ++i)
        send(frames::detectionStart(), 0, 50);

    for (int address = 1; address <= kHighestAddress; ++address) {
        emit detectionProgress(address);
        QString reply;
        send(frames::identify(address), 41, 100, reply);
        // More answers than panels would overflow the table: the extra ones are not kept.
        if (m_foundCount < receiverCount()) {
            if (const auto id = parseIdentification(reply, address)) {
                const int index = m_foundCount++;
                m_table[static_cast<std::size_t>(index)].address = address;
                fill(index, *id);
                emit receiverFound(status(index));
            }
        }
        processEvents();
        if (m_skip && m_skip())
            break;
    }
    emit detectionEnded(m_foundCount);

    if (m_foundCount > 0) {
        m_settings.save(kApp, QStringLiteral("MSComm"), QStringLiteral("CommPort"),
                        QString::number(m_line.portNumber()));
        setWorkMode(WorkMode::Polling);
        return true;
    }
    setWorkMode(WorkMode::Idle);
    return false;
}

bool ReceiverBus::detectReceivers()
{
    // Nothing can answer on a port that did not open: no search there, but the
    // table forgets the receivers as a silent search would.
    const bool opened = openLine();
    if (opened && searchCurrentPort())
        return true;
    if (!opened)
        forgetReceivers();
    m_line.close();
    const int failed = m_options.port;
    for (int n = 1; n <= 8; ++n) {
        if (!m_options.portAvailable[std::size_t(n)] || n == failed)
            continue;
        if (!(m_line.isOpen() && m_line.portNumber() == n)) {
            if (m_line.isOpen())
                m_line.close();
            m_line.selectPort(n);
            m_options.port = n;
            const bool portOpened = openSelectedPort();
            emit portChanged(QStringLiteral("COM%1").arg(n));
            if (!portOpened)
                continue;
        }
        if (searchCurrentPort())
            return true;
    }
    return false;
}

// --- polling -------------------------------------------------------------------

bool ReceiverBus::pollAllLevels()
{
    const int count = receiverCount();
    if (count == 0)
        return false;

    std::vector<std::optional<LevelReply>> replies(static_cast<std::size_t>(count));
    int asked = 0;
    for (int i = 0; i < count && i < receiverCount(); ++i) {
        ReceiverRecord &r = m_table[static_cast<std::size_t>(i)];
        if (!r.online)
            continue;
        ++asked;
        QString reply;
        if (send(frames::levels(r.address), 12, 250, reply)) {
            replies[static_cast<std::size_t>(i)] = parseLevels(reply, r.address);
        } else {
            r.online = false;
            // Something answered, so the receiver is there: a disturbed reply
            // is worth a second look. Silence through every retry means gone.
            if (reply.isEmpty() || !answersAgain(i)) {
                emit panelOffline(i);
                emit wentOffline(status(i));
            }
        }
        processEvents();
    }

    // A handler run between two reads may have brought a record online or
    // rebuilt the table; only what this pass read is reported.
    for (int i = 0; i < count && i < receiverCount(); ++i) {
        const auto &raw = replies[static_cast<std::size_t>(i)];
        const ReceiverRecord &r = m_table[static_cast<std::size_t>(i)];
        if (!r.online || !raw)
            continue;
        Live &live = m_live[static_cast<std::size_t>(i)];
        const LevelReading reading = readLevels(*raw, r.squelch, m_levelTable, live.battery);
        live.rfA = reading.rfA;
        live.rfB = reading.rfB;
        live.audio = reading.audioMeter;
        live.audioClip = reading.audioClip;
        if (reading.batteryPercent >= 0)
            live.batteryPercent = reading.batteryPercent;
        emit panelLevels(i, reading);
        emit levelsRead(status(i));
    }
    emit passEnded(asked);
    return asked > 0;
}

bool ReceiverBus::answersAgain(int index)
{
    ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    for (int i = 0; i < m_secondChances; ++i) {
        QString reply;
        send(frames::identify(r.address), 41, 100, reply);
        const auto id = parseIdentification(reply, r.address);
        if (!id)
            continue;
        ReceiverRecord before = r;
        before.online = true;
        fill(index, *id);
        // Somebody may have set the receiver by hand meanwhile.
        if (r != before)
            emit receiverChanged(status(index));
        return true;
    }
    return false;
}

bool ReceiverBus::addressAnswers(int address)
{
    QString reply;
    send(frames::presence(address), 4, 250, reply);
    return parseAddressCheck(reply, address).has_value();
}

void ReceiverBus::readTextA(int index)
{
    if (!validIndex(index))
        return;
    ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    QString reply;
    send(frames::textA(r.address), 14, 250, reply);
    const auto field = parseTextA(reply);
    r.textA = field ? field->text : QString();
}

void ReceiverBus::readTextB(int index)
{
    if (!validIndex(index))
        return;
    ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    QString reply;
    send(frames::textB(r.address), 7, 250, reply);
    const auto field = parseTextB(reply);
    r.textB = field ? field->text : QStringLiteral("    ");
}

void ReceiverBus::readTextFields()
{
    for (int i = 0; i < receiverCount(); ++i) {
        if (m_table[static_cast<std::size_t>(i)].online) {
            readTextA(i);
            readTextB(i);
        }
    }
}

// --- one receiver ---------------------------------------------------------------

bool ReceiverBus::toggleMute(int index)
{
    if (!validIndex(index))
        return false;
    ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    r.mute = !r.mute;
    emit receiverChanged(status(index));
    send(frames::mute(r.address, r.mute), 4, 250);
    return r.mute;
}

bool ReceiverBus::bringBack(int index)
{
    if (!validIndex(index))
        return false;
    ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    if (r.online)
        return false;
    send(frames::backOnLine(r.address), 0, 50);
    QString reply;
    send(frames::identify(r.address), 41, 100, reply);
    const auto id = parseIdentification(reply, r.address);
    if (!id)
        return false;
    fill(index, *id);
    emit cameBack(status(index));
    return true;
}

std::optional<Identification> ReceiverBus::readBack(int index)
{
    if (!validIndex(index))
        return std::nullopt;
    const int address = m_table[static_cast<std::size_t>(index)].address;
    QString reply;
    send(frames::identify(address), 41, 100, reply);
    const auto id = parseIdentification(reply, address);
    if (!id)
        return std::nullopt;
    fill(index, *id);
    emit receiverChanged(status(index));
    return id;
}

void ReceiverBus::pilotKob(int index)
{
    // KobActive belongs to the detail window's KOB alone: it locks that window,
    // which a KOB started from the main screen must leave usable. A pilot click
    // during this wait runs its own wait inside this one; this one then ends
    // after it, and each panel's sign turns green only when its wait is over.
    if (!validIndex(index))
        return;
    const int address = m_table[static_cast<std::size_t>(index)].address;
    enterKobWait();
    send(frames::kobStart(address), 0, 200);
    while (!send(frames::backOnLine(address), 4, 100)) {
        m_link.delay(500);
        processEvents();
    }
    leaveKobWait();
}

void ReceiverBus::enterKobWait()
{
    if (m_kobWaits++ == 0)
        emit kobWaitChanged(true);
}

void ReceiverBus::leaveKobWait()
{
    if (--m_kobWaits == 0)
        emit kobWaitChanged(false);
}

std::optional<int> ReceiverBus::programReceiver(const SettingsLine &fields)
{
    const int found = std::min(m_foundCount, receiverCount());
    for (int i = 0; i < found; ++i) {
        ReceiverRecord &r = m_table[static_cast<std::size_t>(i)];
        if (r.address != fields.address)
            continue;
        // The record takes the file's values even when the receiver does not answer.
        r.name = (fields.name + QString(6, QLatin1Char(' '))).left(6);
        r.group = fields.group;
        r.channel = fields.channel;
        r.channelFreqCode = (fields.channelFreqCode + QString(4, QLatin1Char(' '))).left(4);
        r.manualFreqCode = fields.manualFreqCode;
        r.squelch = fields.squelch;
        r.secondLevel = fields.secondLevel;
        r.manualFreq = fields.manualFreq;
        r.mute = fields.mute;
        send(frames::settingsWrite(r), 4, 250);
        emit receiverChanged(status(i));
        return i;
    }
    return std::nullopt;
}

// --- the detail window's receiver ---------------------------------------------------------

void ReceiverBus::openDetail(int index)
{
    m_selected = index;
    m_detailBattery = BatteryAverager{};
    m_drops = DropCounter{};
}

void ReceiverBus::closeDetail()
{
    setWorkMode(WorkMode::Polling);
    // Sent after the window is gone, so a silent receiver goes unreported.
    if (const ReceiverRecord *r = selectedRecord())
        send(frames::detailClosed(r->address), 4, 250);
}

std::optional<DetailReading> ReceiverBus::detailReading(const LevelReply &raw)
{
    DetailReading d;
    d.raw = raw;
    d.rfA = detailLevel(m_levelTable, raw.rfA);
    d.rfB = detailLevel(m_levelTable, raw.rfB);
    const ReceiverRecord *r = selectedRecord();
    d.squelchLevel = squelchLevel(m_levelTable, std::clamp(r ? r->squelch : 0, -100, 200));
    // Only a transmitter on the air reports its battery.
    if (std::max(d.rfA, d.rfB) > d.squelchLevel)
        d.batteryPercent = m_detailBattery.add(raw.battery);

    const QString dropsA = m_drops.textA();
    const QString dropsB = m_drops.textB();
    m_drops.count(d.rfA, d.rfB, d.squelchLevel);
    if (r && validIndex(m_selected)) {
        Live &live = m_live[static_cast<std::size_t>(m_selected)];
        live.rfA = d.rfA;
        live.rfB = d.rfB;
        live.audio = audioTaper(raw.audio);
        live.audioClip = live.audio > kAudioClipLevel;
        emit levelsRead(status(m_selected));
        if (m_drops.textA() != dropsA)
            emit signalDropped(r->address, QLatin1Char('A'), m_drops.textA().toInt());
        if (m_drops.textB() != dropsB)
            emit signalDropped(r->address, QLatin1Char('B'), m_drops.textB().toInt());
    }
    return d;
}

std::optional<DetailReading> ReceiverBus::readDetailLevels()
{
    const ReceiverRecord *r = selectedRecord();
    if (!r)
        return std::nullopt;
    QString reply;
    if (send(frames::levels(r->address), 12, 250, reply)) {
        if (const auto raw = parseLevels(reply, r->address))
            return detailReading(*raw);
    }
    setWorkMode(WorkMode::Polling);
    return std::nullopt;
}

void ReceiverBus::storePreset(int group, int channel)
{
    if (ReceiverRecord *r = selectedRecord()) {
        r->group = group;
        r->channel = channel;
    }
}

std::optional<QString> ReceiverBus::selectPreset(int group, int channel)
{
    ReceiverRecord *r = selectedRecord();
    if (!r)
        return std::nullopt;
    // Kept even when the receiver does not take it, deliberately without roll-back.
    r->group = group;
    r->channel = channel;
    QString reply;
    std::optional<QString> code;
    if (send(frames::preset(r->address, group, channel), 8, 250, reply)) {
        if (const auto preset = parsePreset(reply, r->address)) {
            r->manualFreq = false;
            r->channelFreqCode = preset->frequencyCode;
            code = preset->frequencyCode;
        }
    }
    emit receiverChanged(status(m_selected));
    m_link.delay(50);
    return code;
}

bool ReceiverBus::tuneManual(const QString &code, int settleMillis)
{
    ReceiverRecord *r = selectedRecord();
    if (!r)
        return false;
    r->manualFreq = true;
    r->manualFreqCode = code;
    emit receiverChanged(status(m_selected));
    const bool ok = send(frames::tune(r->address, code), 4, 250);
    if (settleMillis > 0)
        m_link.delay(settleMillis);
    return ok;
}

void ReceiverBus::setCursorCode(const QString &code)
{
    if (ReceiverRecord *r = selectedRecord())
        r->manualFreqCode = code;
}

bool ReceiverBus::tuneCursor(int timeoutMillis)
{
    const ReceiverRecord *r = selectedRecord();
    return r && send(frames::tune(r->address, r->manualFreqCode), 4, timeoutMillis);
}

bool ReceiverBus::changeAddress(int newAddress)
{
    ReceiverRecord *r = selectedRecord();
    if (!r)
        return false;
    send(frames::newAddress(r->address, newAddress), 4, 250);
    r->address = newAddress;
    emit receiverChanged(status(m_selected));
    return true;
}

QString ReceiverBus::setName(int index, const QString &text)
{
    const QString name = (text.toUpper() + QString(6, QLatin1Char(' '))).left(6);
    if (!validIndex(index))
        return name;
    ReceiverRecord &r = m_table[static_cast<std::size_t>(index)];
    r.name = name;
    send(frames::name(r.address, name), 4, 250);
    emit receiverChanged(status(index));
    return name;
}

void ReceiverBus::stepSquelch(int direction)
{
    ReceiverRecord *r = selectedRecord();
    if (!r)
        return;
    if (direction < 0 ? r->squelch > 1 : r->squelch < 99)
        r->squelch += direction;
    emit receiverChanged(status(m_selected));
}

void ReceiverBus::squelchPressed(int direction)
{
    // One gesture is one hold, however often the button reports a press.
    if (m_squelchHeld || !selectedRecord())
        return;
    const auto canStep = [this, direction] {
        const ReceiverRecord *r = selectedRecord();
        return r && (direction < 0 ? r->squelch > 1 : r->squelch < 99);
    };
    m_squelchHeld = true;
    stepSquelch(direction);
    processEvents();
    if (m_squelchHeld) {
        m_link.delay(400);
        processEvents();
    }
    while (m_squelchHeld && canStep()) {
        stepSquelch(direction);
        m_link.delay(20);
        processEvents();
    }
}

void ReceiverBus::squelchReleased()
{
    if (!m_squelchHeld)
        return;
    m_squelchHeld = false;
    if (const ReceiverRecord *r = selectedRecord())
        send(frames::squelch(r->address, r->squelch), 4, 250);
}

void ReceiverBus::runKob()
{
    const ReceiverRecord *r = selectedRecord();
    if (!r || m_kobActive)
        return;
    const int address = r->address;
    emit kobPhase(KobPhase::Started);
    enterKobWait();
    m_kobActive = true;
    send(frames::kobStart(address), 0, 100);

    KobPhase outcome = KobPhase::UserAborted;
    for (;;) {
        emit kobPhase(KobPhase::Performing);
        m_link.delay(300);
        emit kobPhase(KobPhase::Waiting);
        processEvents();
        if (!m_kobActive)
            break;
        if (send(frames::backOnLine(address), 4, 200)) {
            if (m_kobActive)
                outcome = KobPhase::Complete;
            break;
        }
    }
    emit kobPhase(outcome);
    m_link.delay(1500);
    emit kobPhase(KobPhase::Ended);
    m_kobActive = false;
    leaveKobWait();
}

// --- RF tools -------------------------------------------------------------

std::optional<ScanReading> ReceiverBus::scanStep(int pointIndex, double frequencyMHz)
{
    ReceiverRecord *r = selectedRecord();
    if (!r)
        return std::nullopt;
    const QString code = codeFromMhz(frequencyMHz);
    QString reply;
    const auto point = send(frames::scanTune(r->address, code), 12, 250, reply)
                           ? parseScanPoint(reply, r->address)
                           : std::nullopt;
    if (!point) {
        setWorkMode(WorkMode::Polling);
        return std::nullopt;
    }
    // The receiver now sits on a frequency that is no preset.
    r->manualFreq = true;
    r->manualFreqCode = code;
    const int address = r->address;
    ScanReading reading{*detailReading(point->raw), code, frequencyMHz};
    emit scanPointRead(address, pointIndex, frequencyMHz, reading.levels.rfA, reading.levels.rfB);
    return reading;
}

std::optional<DetailReading> ReceiverBus::recorderStep()
{
    const auto reading = readDetailLevels();
    if (reading)
        emit recorderSampled(record(m_selected).address, reading->rfA, reading->rfB);
    return reading;
}

// --- the whole line ---------------------------------------------------------------

void ReceiverBus::showDisplayMode(int mode)
{
    send(frames::displayMode(mode), 0, 250);
}

bool ReceiverBus::changeBaudRate(int baudrate)
{
    const auto frame = frames::baudRate(baudrate);
    if (!frame)
        return false;
    if (!send(*frame, 0, 50))
        return false;
    // A line that does not come back at the new speed ends the command here:
    // the stored speed must not claim a rate the line is not running at.
    m_line.close();
    if (!m_line.applySettings(lineSettings(baudrate)) || !m_line.open())
        return false;
    m_settings.save(kApp, QStringLiteral("MSComm"), QStringLiteral("Baudrate"), QString::number(baudrate));
    m_options.baudRate = baudrate;
    emit baudRateChanged(baudrate);
    return true;
}

void ReceiverBus::sayGoodbye()
{
    if (!m_line.isOpen())
        return;
    for (int i = 0; i < 3; ++i)
        send(frames::hostLeaving(), 0, 50);
}

} // namespace zun
