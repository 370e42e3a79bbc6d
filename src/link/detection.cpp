#include "link/detection.h"

#include "core/context.h"
#include "core/options.h"
#include "link/hex.h"

namespace zun {

namespace {
constexpr int kHighestAddress = 64;

bool allHex(QStringView text)
{
    for (QChar c : text) {
        const char ch = c.toLatin1();
        const bool hex = (ch >= '0' && ch <= '9') || (ch >= 'A' && ch <= 'F') || (ch >= 'a' && ch <= 'f');
        if (!hex)
            return false;
    }
    return true;
}

bool printable(QStringView text)
{
    for (QChar c : text)
        if (c.unicode() < 0x20 || c.unicode() > 0x7E)
            return false;
    return true;
}

// 1-based position and length, as the frame layout is written.
QStringView field(const QString &reply, int position, int length)
{
    return QStringView(reply).mid(position - 1, length);
}
} // namespace

std::optional<ReceiverRecord> parseIdentification(const QString &reply, int address)
{
    if (reply.size() < 40 || !printable(field(reply, 4, 6)) || !allHex(field(reply, 10, 31)))
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
