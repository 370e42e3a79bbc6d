#include "sim/simbus.h"

#include <algorithm>
#include <cmath>

namespace zun {

namespace {
int speedOfCode(QByteArrayView code)
{
    if (code == "01")
        return 115200;
    if (code == "03")
        return 57600;
    if (code == "05")
        return 38400;
    if (code == "17")
        return 9600;
    return 0;
}

// A frame that never ends is line junk; do not let it grow without bound.
constexpr int kMaxFrame = 256;
} // namespace

std::uint64_t simWireMicros(int bytes, int baud)
{
    if (baud <= 0 || bytes <= 0)
        return 0;
    return static_cast<std::uint64_t>(bytes) * 10u * 1000000u / static_cast<std::uint64_t>(baud);
}

SimBus::SimBus(std::uint64_t seed) : m_seed(seed), m_faults(seed) {}

SimReceiver &SimBus::addReceiver(const SimReceiver &receiver)
{
    auto r = std::make_unique<SimReceiver>(receiver);
    if (r->transmitter.code < 0)
        r->transmitter.code = r->tunedCode();
    // Its signal belongs to the address it joined with, whatever else is on
    // the line; a second receiver at the same address gets its own.
    const auto sameAddress = std::count_if(m_entries.begin(), m_entries.end(),
                                           [&](const Entry &e) { return e.joinAddress == r->address; });
    const std::uint64_t id =
        static_cast<std::uint64_t>(r->address) * 1000u + static_cast<std::uint64_t>(sameAddress);
    m_entries.push_back({id, r->address, std::move(r)});
    return *m_entries.back().receiver;
}

SimReceiver &SimBus::addReceiver(int address)
{
    SimReceiver r;
    r.address = address;
    r.name = "RCV" + QByteArray::number(address).rightJustified(2, '0') + ' ';
    return addReceiver(r);
}

void SimBus::removeReceiver(int address)
{
    const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                 [address](const Entry &e) { return e.receiver->address == address; });
    if (it != m_entries.end())
        m_entries.erase(it);
}

SimReceiver *SimBus::receiver(int address)
{
    for (Entry &e : m_entries)
        if (e.receiver->address == address)
            return e.receiver.get();
    return nullptr;
}

std::vector<SimReceiver *> SimBus::receivers()
{
    std::vector<SimReceiver *> list;
    for (Entry &e : m_entries)
        list.push_back(e.receiver.get());
    return list;
}

void SimBus::addCarrier(const SimTransmitter &carrier)
{
    m_carriers.push_back({0x100000 + m_carriers.size(), carrier});
}

std::vector<SimEmitter> SimBus::emitters() const
{
    std::vector<SimEmitter> list = m_carriers;
    for (const Entry &e : m_entries)
        list.push_back({e.id, e.receiver->transmitter});
    return list;
}

const SimBus::Entry *SimBus::entryOf(const SimReceiver &r) const
{
    for (const Entry &e : m_entries)
        if (e.receiver.get() == &r)
            return &e;
    return nullptr;
}

SimBus::Levels SimBus::levels(const SimReceiver &receiver, int code, std::uint64_t micros) const
{
    if (m_levelPin) {
        if (const std::optional<Levels> pinned = m_levelPin(receiver, code))
            return *pinned;
    }
    const Entry *e = entryOf(receiver);
    const std::uint64_t id = e ? e->id : 0;
    const double t = micros / 1e6;
    const std::vector<SimEmitter> all = emitters();
    const SimEmitter own{id, receiver.transmitter};
    const bool heard = std::abs(code - own.tx.code) <= 1 && transmitterOn(m_seed, own, t);
    return {audioReading(m_seed, id, heard, t), rfReading(m_seed, id, 0, code, t, all),
            rfReading(m_seed, id, 1, code, t, all), batteryReading(m_seed, own, heard, t)};
}

QByteArray SimBus::levelText(const Entry &e, int code, std::uint64_t micros) const
{
    const Levels l = levels(*e.receiver, code, micros);
    return simHex(l.audio, 2) + simHex(l.rfA, 2) + simHex(l.rfB, 2) + simHex(l.battery, 2);
}

std::vector<SimTimedByte> SimBus::hostTransmit(const QByteArray &bytes, std::uint64_t startMicros, int baud)
{
    std::vector<SimTimedByte> out;
    if (baud != m_rxBaud) {
        m_rx.clear();
        m_rxBaud = baud;
    }
    for (int i = 0; i < bytes.size(); ++i) {
        m_rx.append(bytes[i]);
        if (bytes[i] == '\r') {
            const QByteArray frame = m_rx;
            m_rx.clear();
            handleFrame(frame, startMicros + simWireMicros(i + 1, baud), baud, out);
        } else if (m_rx.size() > kMaxFrame) {
            m_rx.clear();
        }
    }
    std::stable_sort(out.begin(), out.end(),
                     [](const SimTimedByte &a, const SimTimedByte &b) { return a.micros < b.micros; });
    return out;
}

void SimBus::handleFrame(const QByteArray &frame, std::uint64_t micros, int baud,
                         std::vector<SimTimedByte> &out)
{
    if (m_frameObserver)
        m_frameObserver(micros, frame, baud);
    const QByteArrayView text = QByteArrayView(frame).chopped(1);
    int address = -1;
    if (text.size() < 4 || (text[0] != '%' && text[0] != '#') || !simParseHex(text.sliced(1, 2), address))
        return;
    const char prefix = text[0];
    const QByteArrayView body = text.sliced(3);

    for (Entry &e : m_entries) {
        SimReceiver &r = *e.receiver;
        // A receiver at another speed hears only junk; a dead or KOB-busy
        // one hears nothing at all.
        if (!r.powered || r.baud != baud || micros < r.offlineUntilMicros)
            continue;
        if (address == 0) {
            if (prefix == '#')
                broadcast(r, body);
            continue;
        }
        if (r.address != address)
            continue;
        const std::optional<QByteArray> data = respond(e, prefix, body, micros);
        if (!data)
            continue;
        const QByteArray reply = '$' + simHex(address, 2) + *data + '\r';
        const SimReplyPlan plan = m_faults.apply(address, r.faults, reply);
        if (plan.bytes.isEmpty())
            continue;
        const std::uint64_t start = micros + r.turnaroundMicros + plan.delayMicros;
        for (int i = 0; i < plan.bytes.size(); ++i)
            out.push_back({start + simWireMicros(i + 1, baud), plan.bytes[i]});
        if (m_replyObserver)
            m_replyObserver(start, plan.bytes, baud);
    }
}

void SimBus::broadcast(SimReceiver &r, QByteArrayView body) const
{
    if (body == "A0" || body == "A1") {
        r.hostPresent = body == "A1";
    } else if (body.size() == 3 && body[0] == 'H') {
        if (const int speed = speedOfCode(body.sliced(1)))
            r.baud = speed;
    } else if (body.size() == 2 && body[0] == 'O' && body[1] >= '0' && body[1] <= '9') {
        r.displayMode = body[1] - '0';
    }
}

std::optional<QByteArray> SimBus::respond(const Entry &e, char prefix, QByteArrayView body,
                                          std::uint64_t micros)
{
    SimReceiver &r = *e.receiver;
    const QByteArray ack;
    if (prefix == '%') {
        if (body == "M")
            return r.statusText();
        if (body == "N")
            return levelText(e, r.tunedCode(), micros);
        if (body == "L")
            return ack;
        if (body == "A")
            return r.textA.left(6).leftJustified(6, ' ') + r.textATail.left(4).leftJustified(4, ' ');
        if (body == "B")
            return r.textB.left(3).rightJustified(3, '0');
        if (body == "O")
            r.offlineUntilMicros = micros + r.kobMicros;
        return std::nullopt;
    }

    const char command = body.isEmpty() ? '\0' : body[0];
    const QByteArrayView arg = body.isEmpty() ? body : body.sliced(1);
    int value = 0;
    switch (command) {
    case 'A':
        if (arg != "0" && arg != "1")
            return std::nullopt;
        r.hostPresent = arg == "1";
        return ack;
    case 'B':
        if (arg != "0" && arg != "1")
            return std::nullopt;
        r.muted = arg == "1";
        return ack;
    case 'N':
        return arg == "S" ? std::optional<QByteArray>(ack) : std::nullopt;
    case 'C':
        if (arg.isEmpty() || arg.size() > 6)
            return std::nullopt;
        r.name = arg.toByteArray().leftJustified(6, ' ');
        return ack;
    case 'F':
        if (arg.size() != 2 || !simParseHex(arg, value))
            return std::nullopt;
        r.squelch = value;
        return ack;
    case 'L':
        if (arg.size() != 2 || !simParseHex(arg, value) || value < 1 || value > 64)
            return std::nullopt;
        r.address = value; // the acknowledgement still carries the old address
        return ack;
    case 'K':
    case 'E':
        if (arg.size() != 4 || !simParseHex(arg, value) || !r.inBand(value))
            return std::nullopt;
        r.manual = true;
        r.manualCode = value;
        return command == 'K' ? ack : levelText(e, value, micros);
    case 'D': {
        int g = 0;
        int c = 0;
        if (arg.size() != 2 || !simParseHex(arg.sliced(0, 1), g) || !simParseHex(arg.sliced(1, 1), c))
            return std::nullopt;
        if (c == 0)
            c = 16;
        if (!r.validPreset(g, c))
            return std::nullopt;
        r.group = g;
        r.channel = c;
        r.manual = false;
        return simHex(r.presetCode(g, c), 4);
    }
    case 'M': {
        // name 6, group 1, channel 1, code 4, squelch 2, second level 2, mode 1
        int g = 0, c = 0, code = 0, sq = 0, second = 0, mode = 0;
        if (arg.size() != 17 || !simParseHex(arg.sliced(6, 1), g) || !simParseHex(arg.sliced(7, 1), c) ||
            !simParseHex(arg.sliced(8, 4), code) || !simParseHex(arg.sliced(12, 2), sq) ||
            !simParseHex(arg.sliced(14, 2), second) || !simParseHex(arg.sliced(16, 1), mode) || mode > 3)
            return std::nullopt;
        if (c == 0)
            c = 16;
        const bool manual = mode & 1;
        if (!r.validPreset(g, c) || (manual && !r.inBand(code)))
            return std::nullopt;
        r.name = arg.sliced(0, 6).toByteArray();
        r.group = g;
        r.channel = c;
        r.manual = manual;
        if (manual)
            r.manualCode = code;
        r.squelch = sq;
        r.secondLevel = second;
        r.muted = mode >= 2;
        return ack;
    }
    default:
        return std::nullopt;
    }
}

} // namespace zun
