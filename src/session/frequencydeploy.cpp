#include "session/frequencydeploy.h"

#include "receivers/receiverbus.h"

namespace zun {

FrequencyDeploy::FrequencyDeploy(ReceiverBus &bus, QObject *parent) : QObject(parent), m_bus(bus) {}

bool FrequencyDeploy::start(std::vector<DeployTarget> targets)
{
    if (busy())
        return false;
    m_targets = std::move(targets);
    m_next = 0;
    if (m_targets.empty())
        emit finished();
    return true;
}

bool FrequencyDeploy::step()
{
    if (!busy())
        return false;
    const DeployTarget target = m_targets[m_next++];
    m_bus.tuneManual(target.index, target.code);
    // The acknowledgement alone does not say the receiver runs on the new
    // frequency: a receiver may acknowledge and stay, or tune and not answer.
    DeployOutcome outcome = DeployOutcome::NoResponse;
    if (const auto id = m_bus.readBack(target.index))
        outcome = id->frequencyCode.compare(target.code, Qt::CaseInsensitive) == 0 ? DeployOutcome::Done
                                                                                   : DeployOutcome::NotTaken;
    emit receiverDeployed(target.index, outcome);
    if (!busy())
        emit finished();
    return true;
}

QString deployOutcomeText(DeployOutcome outcome)
{
    switch (outcome) {
    case DeployOutcome::Done:
        return QStringLiteral("done");
    case DeployOutcome::NoResponse:
        return QStringLiteral("no response");
    case DeployOutcome::NotTaken:
        break;
    }
    return QStringLiteral("not taken");
}

} // namespace zun
