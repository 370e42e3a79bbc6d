#include "platform/mappedserialline.h"

#include "platform/portmap.h"

namespace zun {

MappedSerialLine::MappedSerialLine(const PortMap &ports)
    : m_ports(ports), m_device(ports), m_network(ports), m_active(&m_device)
{
}

SerialLine &MappedSerialLine::lineFor(int n)
{
    if (m_ports.networkAddress(n) || looksLikeNetAddress(m_ports.mapping(n)))
        return m_network;
    return m_device;
}

bool MappedSerialLine::portExists(int n)
{
    return lineFor(n).portExists(n);
}

void MappedSerialLine::selectPort(int n)
{
    // The open port keeps its number, whatever kind it is.
    if (m_active->isOpen())
        return;
    m_active = &lineFor(n);
    m_active->selectPort(n);
}

bool MappedSerialLine::open()
{
    // The mapping may have changed since the port was selected.
    if (!m_active->isOpen()) {
        const int n = m_active->portNumber();
        m_active = &lineFor(n);
        m_active->selectPort(n);
    }
    return m_active->open();
}

// Both keep the settings, so that whichever the next port needs has them.
bool MappedSerialLine::applySettings(const QString &settings)
{
    const bool device = m_device.applySettings(settings);
    const bool network = m_network.applySettings(settings);
    return m_active == &m_device ? device : network;
}

void MappedSerialLine::setRequestToSend(bool on)
{
    m_device.setRequestToSend(on);
    m_network.setRequestToSend(on);
}

} // namespace zun
