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
    : ReceiverEvents(parent), m_clock(clock), m_line(line), m_settings(settings), m_desktop(desktop),
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

bool ReceiverBus::exchange(const Exchange &exchange, QString *replyOut)
{
    const QString &frame = exchange.frame;
    QString reply;
    const bool broadcast = frame.mid(1, 2) == QLatin1String("00");
    const std::uint64_t start = m_clock.nowMicros();
    const bool ok = m_link.sendCommand(frame, exchange.replyLength, reply, exchange.timeoutMillis);
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
    if (replyOut)
        *replyOut = reply;
    return ok;
}

void ReceiverBus::announceChange(int index)
{
    if (m_table.validIndex(index))
        emit receiverChanged(Receiver(m_table.at(index)));
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
    m_table.forgetAll();
    setWorkMode(WorkMode::Idle);
}

bool ReceiverBus::searchCurrentPort()
{
    m_table.forgetAll();
    emit detectionStarted(m_options.port);

    for (int i = 0; i < 3; ++i)
        exchange(frames::detectionStart());

    for (int address = 1; address <= kHighestAddress; ++address) {
        emit detectionProgress(address);
        QString reply;
        exchange(frames::identify(address), &reply);
        if (const auto id = parseIdentification(reply, address)) {
            const int index = m_table.addFound(address, *id);
            if (index >= 0)
                emit receiverFound(Receiver(m_table.at(index)));
        }
        processEvents();
        if (m_skip && m_skip())
            break;
    }
    emit detectionEnded(m_table.foundCount());

    if (m_table.foundCount() > 0) {
        m_settings.save(kApp, QStringLiteral("MSComm"), QStringLiteral("CommPort"),
                        QString::number(m_line.portNumber()));
        setWorkMode(WorkMode::Polling);
        return true;
    }
    setWorkMode(WorkMode::Idle);
    return false;
}

bool ReceiverBus::detectReceivers(PortSearch where)
{
    if (where == PortSearch::CurrentPort)
        return searchCurrentPort();
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
    const int count = m_table.size();
    if (count == 0)
        return false;

    std::vector<std::optional<LevelReply>> replies(static_cast<std::size_t>(count));
    int asked = 0;
    for (int i = 0; i < count; ++i) {
        Receiver *r = m_table.find(i);
        if (!r || !r->online)
            continue;
        ++asked;
        const int address = r->address;
        QString reply;
        if (exchange(frames::levels(address), &reply)) {
            replies[static_cast<std::size_t>(i)] = parseLevels(reply, address);
            processEvents();
            continue;
        }
        // A listener of the exchange may have rebuilt the table meanwhile.
        if (Receiver *now = m_table.find(i))
            now->online = false;
        // Something answered, so the receiver is there: a disturbed reply
        // is worth a second look. Silence through every retry means gone.
        if (reply.isEmpty() || !answersAgain(i)) {
            emit panelOffline(i);
            emit wentOffline(Receiver(m_table.at(i)));
        }
        processEvents();
    }

    // A handler run between two reads may have brought a record online or
    // rebuilt the table; only what this pass read is reported.
    for (int i = 0; i < count && i < m_table.size(); ++i) {
        const auto &raw = replies[static_cast<std::size_t>(i)];
        const Receiver &r = m_table.at(i);
        if (!r.online || !raw)
            continue;
        const LevelReading reading = readLevels(*raw, r.squelch, m_levelTable, m_table.battery(i));
        m_table.takeLevels(i, reading);
        emit panelLevels(i, reading);
        emit levelsRead(Receiver(m_table.at(i)));
    }
    emit passEnded(asked);
    return asked > 0;
}

bool ReceiverBus::answersAgain(int index)
{
    const int address = m_table.at(index).address;
    for (int i = 0; i < m_secondChances; ++i) {
        QString reply;
        exchange(frames::identify(address), &reply);
        const auto id = parseIdentification(reply, address);
        if (!id)
            continue;
        Receiver before = m_table.at(index);
        before.online = true;
        m_table.fill(index, *id);
        // Somebody may have set the receiver by hand meanwhile.
        if (m_table.at(index) != before)
            emit receiverChanged(Receiver(m_table.at(index)));
        return true;
    }
    return false;
}

bool ReceiverBus::addressAnswers(int address)
{
    QString reply;
    exchange(frames::presence(address), &reply);
    return parseAddressCheck(reply, address).has_value();
}

void ReceiverBus::readTextA(int index)
{
    Receiver *r = m_table.find(index);
    if (!r)
        return;
    QString reply;
    exchange(frames::textA(r->address), &reply);
    const auto field = parseTextA(reply);
    if (Receiver *now = m_table.find(index))
        now->textA = field ? field->text : QString();
}

void ReceiverBus::readTextB(int index)
{
    Receiver *r = m_table.find(index);
    if (!r)
        return;
    QString reply;
    exchange(frames::textB(r->address), &reply);
    const auto field = parseTextB(reply);
    if (Receiver *now = m_table.find(index))
        now->textB = field ? field->text : QStringLiteral("    ");
}

void ReceiverBus::readTextFields()
{
    for (int i = 0; i < m_table.size(); ++i) {
        if (m_table.at(i).online) {
            readTextA(i);
            readTextB(i);
        }
    }
}

// --- one receiver ---------------------------------------------------------------

bool ReceiverBus::toggleMute(int index)
{
    Receiver *r = m_table.find(index);
    if (!r)
        return false;
    r->mute = !r->mute;
    const Receiver now = *r;
    emit receiverChanged(now);
    exchange(frames::mute(now.address, now.mute));
    return now.mute;
}

bool ReceiverBus::bringBack(int index)
{
    const Receiver &r = m_table.at(index);
    if (!m_table.validIndex(index) || r.online)
        return false;
    const int address = r.address;
    exchange(frames::wake(address));
    QString reply;
    exchange(frames::identify(address), &reply);
    const auto id = parseIdentification(reply, address);
    if (!id)
        return false;
    m_table.fill(index, *id);
    emit cameBack(Receiver(m_table.at(index)));
    return true;
}

std::optional<Identification> ReceiverBus::readBack(int index)
{
    if (!m_table.validIndex(index))
        return std::nullopt;
    const int address = m_table.at(index).address;
    QString reply;
    exchange(frames::identify(address), &reply);
    const auto id = parseIdentification(reply, address);
    if (!id)
        return std::nullopt;
    m_table.fill(index, *id);
    emit receiverChanged(Receiver(m_table.at(index)));
    return id;
}

void ReceiverBus::pilotKob(int index)
{
    // The detail window's KOB flag locks that window, which a KOB started
    // from the main screen must leave usable. A pilot click during this wait
    // runs its own wait inside this one; this one then ends after it, and each
    // panel's sign turns green only when its wait is over.
    if (!m_table.validIndex(index))
        return;
    const int address = m_table.at(index).address;
    enterKobWait();
    exchange(frames::pilotKobStart(address));
    while (!exchange(frames::pilotBackOnLine(address))) {
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
    const int found = std::min(m_table.foundCount(), m_table.size());
    for (int i = 0; i < found; ++i) {
        Receiver &r = *m_table.find(i);
        if (r.address != fields.address)
            continue;
        // The table takes the file's values even when the receiver does not answer.
        r.name = (fields.name + QString(6, QLatin1Char(' '))).left(6);
        r.group = fields.group;
        r.channel = fields.channel;
        r.channelFreqCode = (fields.channelFreqCode + QString(4, QLatin1Char(' '))).left(4);
        r.manualFreqCode = fields.manualFreqCode;
        r.squelch = fields.squelch;
        r.secondLevel = fields.secondLevel;
        r.manualFreq = fields.manualFreq;
        r.mute = fields.mute;
        exchange(frames::settingsWrite(r));
        emit receiverChanged(Receiver(m_table.at(i)));
        return i;
    }
    return std::nullopt;
}

bool ReceiverBus::tuneManual(int index, const QString &code, int settleMillis)
{
    Receiver *r = m_table.find(index);
    if (!r)
        return false;
    r->manualFreq = true;
    r->manualFreqCode = code;
    const int address = r->address;
    emit receiverChanged(Receiver(m_table.at(index)));
    const bool ok = exchange(frames::tune(address, code));
    if (settleMillis > 0)
        m_link.delay(settleMillis);
    return ok;
}

std::optional<QString> ReceiverBus::selectPreset(int index, int group, int channel)
{
    Receiver *r = m_table.find(index);
    if (!r)
        return std::nullopt;
    // Kept even when the receiver does not take it, deliberately without roll-back.
    r->group = group;
    r->channel = channel;
    const int address = r->address;
    QString reply;
    std::optional<QString> code;
    if (exchange(frames::preset(address, group, channel), &reply)) {
        if (const auto preset = parsePreset(reply, address)) {
            if (Receiver *now = m_table.find(index)) {
                now->manualFreq = false;
                now->channelFreqCode = preset->frequencyCode;
            }
            code = preset->frequencyCode;
        }
    }
    announceChange(index);
    m_link.delay(50);
    return code;
}

bool ReceiverBus::changeAddress(int index, int newAddress)
{
    Receiver *r = m_table.find(index);
    if (!r)
        return false;
    exchange(frames::newAddress(r->address, newAddress));
    if (Receiver *now = m_table.find(index))
        now->address = newAddress;
    announceChange(index);
    return true;
}

QString ReceiverBus::setName(int index, const QString &text)
{
    const QString name = (text.toUpper() + QString(6, QLatin1Char(' '))).left(6);
    Receiver *r = m_table.find(index);
    if (!r)
        return name;
    r->name = name;
    exchange(frames::name(r->address, name));
    announceChange(index);
    return name;
}

bool ReceiverBus::stepSquelch(int index, int direction)
{
    Receiver *r = m_table.find(index);
    if (!r)
        return false;
    const bool stepped = direction < 0 ? r->squelch > 1 : r->squelch < 99;
    if (stepped)
        r->squelch += direction;
    announceChange(index);
    return stepped;
}

void ReceiverBus::sendSquelch(int index)
{
    if (const Receiver *r = m_table.find(index))
        exchange(frames::squelch(r->address, r->squelch));
}

// --- the whole line ---------------------------------------------------------------

void ReceiverBus::showDisplayMode(int mode)
{
    exchange(frames::displayMode(mode));
}

bool ReceiverBus::changeBaudRate(int baudrate)
{
    const auto frame = frames::baudRate(baudrate);
    if (!frame)
        return false;
    if (!exchange(*frame))
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
        exchange(frames::hostLeaving());
}

} // namespace zun
