#include "link/detection.h"

#include "core/context.h"
#include "core/options.h"
#include "link/hex.h"

namespace zun {

namespace {
constexpr int kHighestAddress = 64;

// 1-based position and length, as the frame layout is written. A field past
// the end of a short reply reads as empty text, which HexToNum takes as 0.
QStringView field(const QString &reply, int position, int length)
{
    return QStringView(reply).mid(position - 1, length);
}
} // namespace

std::optional<ReceiverRecord> parseIdentification(const QString &reply, int address)
{
    // Whatever follows "$" + address is the receiver's own report, odd bytes
    // and all; dropping it would leave a receiver that answered unpolled.
    if (!reply.startsWith(QLatin1Char('$') + NumToHex(address, 2)))
        return std::nullopt;

    ReceiverRecord r;
    r.address = address;
    r.name = field(reply, 4, 6).toString();
    r.group = HexToNum(field(reply, 10, 1));
    r.channel = HexToNum(field(reply, 11, 1));
    if (r.channel == 0)
        r.channel = 16;
    r.channelFreqCode = field(reply, 12, 4).toString();
    r.manualFreqCode = r.channelFreqCode;
    r.squelch = HexToNum(field(reply, 16, 2));
    r.secondLevel = HexToNum(field(reply, 18, 2));
    r.groupTable = field(reply, 20, 12).toString();
    r.bandStartCode = field(reply, 32, 4).toString();
    r.bandWidth = HexToNum(field(reply, 36, 4));
    const int flags = HexToNum(field(reply, 40, 1));
    r.mute = flags >= 2;
    r.manualFreq = (flags % 2) == 1;
    r.online = true;
    return r;
}

bool applyIdentification(ReceiverRecord &record, const QString &reply, int address)
{
    const auto parsed = parseIdentification(reply, address);
    if (!parsed)
        return false;
    // The text fields come from their own reads and survive a status read.
    const QString textA = record.textA;
    const QString textB = record.textB;
    record = *parsed;
    record.textA = textA;
    record.textB = textB;
    return true;
}

bool CheckReceivers(Context &ctx, DetectionProgress &progress)
{
    AppState &state = ctx.state;
    for (ReceiverRecord &record : state.receivers)
        record.online = false;

    progress.begin(QStringLiteral("Checking Connected Receivers --> COM") + QString::number(state.CommPort));
    state.foundCount = 0;

    QString reply;
    for (int i = 0; i < 3; ++i)
        ctx.link.SendCommand(QStringLiteral("#00A1\r"), 0, reply, 50);

    for (int address = 1; address <= kHighestAddress; ++address) {
        progress.setProgress(address);
        const bool answered =
            ctx.link.SendCommand(frame(QLatin1Char('%'), address, QStringLiteral("M")), 41, reply, 100);
        // More answers than panels would overflow the table: the extra ones are not kept.
        if (answered && state.foundCount < state.receiverCount()) {
            if (auto parsed = parseIdentification(reply, address)) {
                state.receivers[state.foundCount] = *parsed;
                ++state.foundCount;
            }
        }
        ctx.platform.desktop.processEvents();
        if (progress.skipRequested())
            break;
    }
    progress.end();

    if (state.foundCount > 0) {
        ctx.platform.settings.save(kAppName, QStringLiteral("MSComm"), QStringLiteral("CommPort"),
                                   QString::number(ctx.platform.line.portNumber()));
        state.WorkMode = 1;
        return true;
    }
    state.WorkMode = 0;
    return false;
}

} // namespace zun
