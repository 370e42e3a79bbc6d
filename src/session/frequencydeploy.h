#pragma once

#include <QObject>
#include <QString>

#include <cstddef>
#include <vector>

namespace zun {

class ReceiverBus;

// One receiver to retune: its table index and the frequency code it should run on.
struct DeployTarget
{
    int index = -1;
    QString code;
};

enum class DeployOutcome {
    Done,       // the receiver reads back the new frequency
    NoResponse, // it did not answer the read-back
    NotTaken,   // it answered, on another frequency
};

// Retunes receivers one at a time, each as the detail window's direct entry
// tunes ("K"), then reads it back ("M"). The work loop runs one receiver per
// pass in place of the poll, so the line carries one transaction at a time
// and polling resumes by itself once the list is through.
class FrequencyDeploy : public QObject
{
    Q_OBJECT
public:
    explicit FrequencyDeploy(ReceiverBus &bus, QObject *parent = nullptr);

    // False while an earlier list is still running.
    bool start(std::vector<DeployTarget> targets);
    [[nodiscard]] bool busy() const { return m_next < m_targets.size(); }
    // One receiver; false when there was nothing to do.
    [[nodiscard]] bool step();

signals:
    void receiverDeployed(int index, zun::DeployOutcome outcome);
    void finished();

private:
    ReceiverBus &m_bus;
    std::vector<DeployTarget> m_targets;
    std::size_t m_next = 0;
};

// "done", "no response", "not taken".
[[nodiscard]] QString deployOutcomeText(DeployOutcome outcome);

} // namespace zun
