#include "session/remotecontrol.h"

#include "feeds/controlrequest.h"
#include "feeds/statusjson.h"
#include "session/session.h"

#include <utility>

namespace zun {

RemoteControl::RemoteControl(Session &session, QObject *parent) : QObject(parent), m_session(session) {}

void RemoteControl::enqueue(const QString &addressLevel, const QByteArray &payload)
{
    if (m_waiting.size() >= kMaxWaiting) {
        emit resultReady(addressLevel, controlResultJson(QStringLiteral("too many requests waiting")));
        return;
    }
    m_waiting.append({addressLevel, payload});
}

bool RemoteControl::runWaiting()
{
    bool usedLine = false;
    // A request that lets the interface run (bring-back waits on the line)
    // may see new ones arrive; they wait for the next pass.
    const QList<QPair<QString, QByteArray>> batch = std::exchange(m_waiting, {});
    for (const auto &[level, payload] : batch) {
        const auto parsed = parseControlRequest(level, payload);
        const QString error = std::holds_alternative<QString>(parsed)
                                  ? std::get<QString>(parsed)
                                  : carryOut(std::get<ControlRequest>(parsed), &usedLine);
        emit resultReady(level, controlResultJson(error));
    }
    return usedLine;
}

QString RemoteControl::carryOut(const ControlRequest &request, bool *usedLine)
{
    ReceiverBus &bus = m_session.bus();
    int index = -1;
    for (int i = 0; i < bus.table().foundCount() && index < 0; ++i)
        if (bus.table().at(i).address == request.address)
            index = i;
    if (index < 0)
        return QStringLiteral("no receiver at address %1 on this line").arg(addressText(request.address));
    // The detail window's reads, scan, recorder and KOB own the line while they run.
    const WorkMode mode = bus.workMode();
    if ((mode != WorkMode::Idle && mode != WorkMode::Polling) || m_session.context().detail.kobActive())
        return QStringLiteral("the detail window has the line; try again when it is closed");
    const Receiver &record = bus.table().at(index);
    switch (request.kind) {
    case ControlRequest::Kind::BringBack:
        if (record.online)
            return {};
        *usedLine = true;
        if (!m_session.bringBack(index))
            return QStringLiteral("receiver %1 did not answer").arg(addressText(request.address));
        return {};
    case ControlRequest::Kind::Mute:
        // The panel's Mute button is off for an offline receiver.
        if (!record.online)
            return QStringLiteral("receiver %1 is offline").arg(addressText(request.address));
        // Already as asked: the window has no click that sends the same state again.
        if (record.mute != request.mute) {
            *usedLine = true;
            bus.toggleMute(index);
            emit receiverEdited(index);
        }
        return {};
    case ControlRequest::Kind::Name:
        if (!record.online)
            return QStringLiteral("receiver %1 is offline").arg(addressText(request.address));
        *usedLine = true;
        bus.setName(index, request.name);
        emit receiverEdited(index);
        return {};
    }
    return {};
}

} // namespace zun
