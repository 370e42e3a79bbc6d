#include "mainscreen/polling.h"

#include "core/context.h"
#include "link/hex.h"

#include <QStringList>

namespace zun {

bool ReadAllAD(Context &ctx, PanelSink &panels)
{
    AppState &state = ctx.state;
    const int count = state.receiverCount();
    if (count == 0)
        return false;

    QStringList replies;
    replies.resize(count);
    bool asked = false;
    for (int i = 0; i < count && i < state.receiverCount(); ++i) {
        if (!state.receivers[i].online)
            continue;
        asked = true;
        QString reply;
        const QString command = frame(QLatin1Char('%'), state.receivers[i].address, QStringLiteral("N"));
        if (ctx.link.SendCommand(command, 12, reply, 250)) {
            replies[i] = reply;
        } else {
            state.receivers[i].online = false;
            panels.showOffline(i);
        }
        ctx.platform.desktop.processEvents();
    }

    // A handler run between two reads may have brought a record online (a
    // name click, a new detection); only what this pass read is shown.
    for (int i = 0; i < count && i < state.receiverCount(); ++i) {
        if (state.receivers[i].online && !replies[i].isEmpty())
            panels.UpdateRcvPanel(i, replies[i]);
    }
    return asked;
}

bool AddrCheck(Context &ctx, int address)
{
    QString reply;
    ctx.link.SendCommand(frame(QLatin1Char('%'), address, QStringLiteral("L")), 4, reply, 250);
    return reply.mid(1, 2) == NumToHex(address, 2);
}

void ReadRcvA(Context &ctx, int index)
{
    if (index < 0 || index >= ctx.state.receiverCount())
        return;
    ReceiverRecord &record = ctx.state.receivers[index];
    QString reply;
    ctx.link.SendCommand(frame(QLatin1Char('%'), record.address, QStringLiteral("A")), 14, reply, 250);
    record.textA = reply.isEmpty() ? QString() : reply.mid(3, 6);
}

void ReadRcvB(Context &ctx, int index)
{
    if (index < 0 || index >= ctx.state.receiverCount())
        return;
    ReceiverRecord &record = ctx.state.receivers[index];
    QString reply;
    ctx.link.SendCommand(frame(QLatin1Char('%'), record.address, QStringLiteral("B")), 7, reply, 250);
    record.textB =
        reply.isEmpty() ? QStringLiteral("    ") : reply.mid(3, 1) + QLatin1Char('.') + reply.mid(4, 2);
}

} // namespace zun
