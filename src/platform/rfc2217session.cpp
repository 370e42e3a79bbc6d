#include "platform/rfc2217session.h"

#include <initializer_list>

namespace zun {

namespace {
constexpr unsigned char kIac = 255, kDont = 254, kDo = 253, kWont = 252, kWill = 251, kSb = 250, kSe = 240;
constexpr unsigned char kBinary = 0, kSuppressGoAhead = 3, kComPort = 44;
// Client commands of the option; the server answers each with the code + 100.
constexpr unsigned char kSetBaudRate = 1, kSetDataSize = 2, kSetParity = 3, kSetStopSize = 4, kSetControl = 5;
constexpr unsigned char kServerOffset = 100;
constexpr unsigned char kControlRtsOn = 11;

QByteArray bytes(std::initializer_list<unsigned char> list)
{
    QByteArray out;
    for (const unsigned char b : list)
        out.append(static_cast<char>(b));
    return out;
}

bool weSupport(unsigned char opt)
{
    return opt == kBinary || opt == kSuppressGoAhead || opt == kComPort;
}

bool theySupport(unsigned char opt)
{
    return opt == kBinary || opt == kSuppressGoAhead;
}

QByteArray command(unsigned char verb, unsigned char opt)
{
    return bytes({kIac, verb, opt});
}

QByteArray comPortCommand(unsigned char code, const QByteArray &value)
{
    QByteArray out = bytes({kIac, kSb, kComPort, code});
    out += Rfc2217Session::escape(value);
    out += bytes({kIac, kSe});
    return out;
}

unsigned char parityCode(QSerialPort::Parity parity)
{
    switch (parity) {
    case QSerialPort::OddParity:
        return 2;
    case QSerialPort::EvenParity:
        return 3;
    case QSerialPort::MarkParity:
        return 4;
    case QSerialPort::SpaceParity:
        return 5;
    default:
        return 1;
    }
}

unsigned char stopCode(QSerialPort::StopBits stop)
{
    switch (stop) {
    case QSerialPort::TwoStop:
        return 2;
    case QSerialPort::OneAndHalfStop:
        return 3;
    default:
        return 1;
    }
}
} // namespace

QByteArray Rfc2217Session::escape(const QByteArray &data)
{
    if (!data.contains(char(kIac)))
        return data;
    QByteArray out;
    out.reserve(data.size() + 8);
    for (const char c : data) {
        out.append(c);
        if (static_cast<unsigned char>(c) == kIac)
            out.append(c);
    }
    return out;
}

QByteArray Rfc2217Session::start(const LineSettings &settings, bool requestToSend)
{
    m_settings = settings;
    m_requestToSend = requestToSend;
    QByteArray out;
    for (const unsigned char opt : {kBinary, kSuppressGoAhead, kComPort}) {
        m_us[opt] = Want::WantYes;
        out += command(kWill, opt);
    }
    for (const unsigned char opt : {kBinary, kSuppressGoAhead}) {
        m_him[opt] = Want::WantYes;
        out += command(kDo, opt);
    }
    return out;
}

QByteArray Rfc2217Session::configure(const LineSettings &settings, bool requestToSend)
{
    m_settings = settings;
    m_requestToSend = requestToSend;
    return m_comPort == ComPort::Accepted ? settingsCommands() : QByteArray();
}

QByteArray Rfc2217Session::settingsCommands() const
{
    const auto baud = static_cast<quint32>(m_settings.baudRate);
    QByteArray out = comPortCommand(
        kSetBaudRate, bytes({static_cast<unsigned char>(baud >> 24), static_cast<unsigned char>(baud >> 16),
                             static_cast<unsigned char>(baud >> 8), static_cast<unsigned char>(baud)}));
    out += comPortCommand(kSetDataSize, QByteArray(1, char(m_settings.dataBits)));
    out += comPortCommand(kSetParity, QByteArray(1, char(parityCode(m_settings.parity))));
    out += comPortCommand(kSetStopSize, QByteArray(1, char(stopCode(m_settings.stopBits))));
    if (m_requestToSend)
        out += comPortCommand(kSetControl, QByteArray(1, char(kControlRtsOn)));
    return out;
}

void Rfc2217Session::giveUp()
{
    if (m_comPort == ComPort::Pending)
        m_comPort = ComPort::Refused;
}

void Rfc2217Session::accept(QByteArray &reply)
{
    if (m_comPort == ComPort::Accepted)
        return;
    m_comPort = ComPort::Accepted;
    reply += settingsCommands();
}

Rfc2217Session::Result Rfc2217Session::receive(const QByteArray &bytes)
{
    Result result;
    for (const char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        switch (m_state) {
        case State::Data:
            if (b == kIac)
                m_state = State::Iac;
            else
                result.data.append(c);
            break;
        case State::Iac:
            if (b == kIac) {
                result.data.append(c);
                m_state = State::Data;
            } else if (b == kSb) {
                m_sub.clear();
                m_state = State::Sub;
            } else if (b >= kWill) {
                m_command = b;
                m_state = State::Option;
            } else {
                m_state = State::Data; // NOP, go-ahead and the like carry nothing for us
            }
            break;
        case State::Option:
            m_heardTelnet = true;
            option(m_command, b, result.reply);
            m_state = State::Data;
            break;
        case State::Sub:
            if (b == kIac)
                m_state = State::SubIac;
            else
                m_sub.append(c);
            break;
        case State::SubIac:
            if (b == kIac) {
                m_sub.append(c);
                m_state = State::Sub;
            } else {
                // IAC SE ends it; anything else is a broken frame, which ends it too.
                m_heardTelnet = true;
                subnegotiation(result.reply);
                m_state = State::Data;
            }
            break;
        }
    }
    return result;
}

// The option negotiation of RFC 1143, reduced to the options we take part in:
// answer only a change of state, so that neither side can start a loop.
void Rfc2217Session::option(unsigned char verb, unsigned char opt, QByteArray &reply)
{
    switch (verb) {
    case kDo:
        if (!weSupport(opt)) {
            reply += command(kWont, opt);
        } else if (m_us[opt] != Want::Yes) {
            if (m_us[opt] == Want::No)
                reply += command(kWill, opt);
            m_us[opt] = Want::Yes;
            if (opt == kComPort)
                accept(reply);
        }
        break;
    case kDont:
        if (m_us[opt] == Want::Yes)
            reply += command(kWont, opt);
        if (opt == kComPort && m_us[opt] != Want::No)
            m_comPort = ComPort::Refused;
        m_us[opt] = Want::No;
        break;
    case kWill:
        if (!theySupport(opt)) {
            reply += command(kDont, opt);
        } else if (m_him[opt] != Want::Yes) {
            if (m_him[opt] == Want::No)
                reply += command(kDo, opt);
            m_him[opt] = Want::Yes;
        }
        break;
    case kWont:
        if (m_him[opt] == Want::Yes)
            reply += command(kDont, opt);
        m_him[opt] = Want::No;
        break;
    default:
        break;
    }
}

void Rfc2217Session::subnegotiation(QByteArray &reply)
{
    if (m_sub.size() < 2 || static_cast<unsigned char>(m_sub.at(0)) != kComPort)
        return;
    // A server that talks the option has accepted it, whatever its DO said.
    if (m_comPort == ComPort::Pending)
        accept(reply);
    const auto code = static_cast<unsigned char>(m_sub.at(1));
    if (code == kSetBaudRate + kServerOffset && m_sub.size() >= 6) {
        const auto *v = reinterpret_cast<const unsigned char *>(m_sub.constData() + 2);
        m_confirmedBaud = static_cast<qint32>((quint32(v[0]) << 24) | (quint32(v[1]) << 16) |
                                              (quint32(v[2]) << 8) | quint32(v[3]));
        ++m_baudReports;
    }
}

} // namespace zun
