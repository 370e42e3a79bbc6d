#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QString>

namespace zun {

class Session;
struct ControlRequest;

// Requests from the broker to mute, rename or bring back a receiver. They
// arrive whenever the broker sends them and wait here; the work loop carries
// them out between its steps through the receiver layer's own operations, so
// the line hears exactly what a click in the window makes it hear.
class RemoteControl : public QObject
{
    Q_OBJECT
public:
    // A flood from a misbehaving client must not grow without end.
    static constexpr int kMaxWaiting = 256;

    explicit RemoteControl(Session &session, QObject *parent = nullptr);

    void enqueue(const QString &addressLevel, const QByteArray &payload);
    int waiting() const { return static_cast<int>(m_waiting.size()); }
    // Carries out what waits; true when the line was used.
    [[nodiscard]] bool runWaiting();

signals:
    void resultReady(const QString &addressLevel, const QByteArray &json);
    // The record of this table index changed (mute, name): the windows redraw it.
    void receiverEdited(int index);

private:
    // The error text, empty when done.
    QString carryOut(const ControlRequest &request, bool *usedLine);

    Session &m_session;
    QList<QPair<QString, QByteArray>> m_waiting;
};

} // namespace zun
