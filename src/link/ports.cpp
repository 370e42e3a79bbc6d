#include "link/ports.h"

#include "core/context.h"
#include "core/options.h"

namespace zun {

bool FindCommPorts(Context &ctx)
{
    AppState &state = ctx.state;
    bool any = false;
    for (int n = 1; n <= 8; ++n) {
        state.PortAvailable[n] = ctx.platform.line.portExists(n);
        any = any || state.PortAvailable[n];
    }
    if (!any) {
        ctx.platform.dialogs.message(
            QStringLiteral("Cannot find any available serial port on this computer, program terminated! "));
        return false;
    }
    const bool current = state.CommPort >= 1 && state.CommPort <= 8 && state.PortAvailable[state.CommPort];
    if (!current) {
        // Walks down on purpose so that the lowest available port wins.
        for (int n = 8; n >= 1; --n)
            if (state.PortAvailable[n])
                state.CommPort = n;
    }
    return true;
}

QString lineSettings(int baudrate)
{
    return QString::number(baudrate) + QStringLiteral(",N,8,1");
}

std::optional<QString> baudrateFrame(int baudrate)
{
    switch (baudrate) {
    case 115200:
        return QStringLiteral("#00H01");
    case 57600:
        return QStringLiteral("#00H03");
    case 38400:
        return QStringLiteral("#00H05");
    case 9600:
        return QStringLiteral("#00H17");
    default:
        return std::nullopt;
    }
}

void openLine(Context &ctx)
{
    SerialLine &line = ctx.platform.line;
    line.setTextMode();
    line.setRequestToSend(true);
    line.applySettings(lineSettings(ctx.state.Baudrate));
    if (line.isOpen()) {
        ctx.state.CommPort = line.portNumber();
    } else {
        line.selectPort(ctx.state.CommPort);
        line.open();
    }
}

bool changeBaudrate(Context &ctx, const QString &answer)
{
    double value = 0;
    if (!isNumericText(answer, &value))
        return false;
    int baudrate = 0;
    for (int candidate : {115200, 57600, 38400, 9600})
        if (value == candidate)
            baudrate = candidate;
    const auto code = baudrateFrame(baudrate);
    if (!code)
        return false;

    QString reply;
    if (!ctx.link.SendCommand(*code + QLatin1Char('\r'), 0, reply, 50))
        return false;

    // A line that does not come back at the new speed ends the command here:
    // the stored speed must not claim a rate the line is not running at.
    SerialLine &line = ctx.platform.line;
    line.close();
    if (!line.applySettings(lineSettings(baudrate)) || !line.open())
        return false;

    ctx.platform.settings.save(kAppName, QStringLiteral("MSComm"), QStringLiteral("Baudrate"),
                               QString::number(baudrate));
    ctx.state.Baudrate = baudrate;
    return true;
}

} // namespace zun
