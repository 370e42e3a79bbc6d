#include "mainscreen/portmapping.h"

#include "core/context.h"
#include "core/options.h"
#include "platform/netaddress.h"
#include "platform/portmap.h"

#include <QDir>

namespace zun {

int setPortMapping(Context &ctx, PortMap &ports)
{
    const int current =
        ctx.bus.options().port >= 1 && ctx.bus.options().port <= 8 ? ctx.bus.options().port : 1;
    QString prompt = QStringLiteral("Map a serial port as COMn=DEVICE, where DEVICE is a device such as "
                                    "/dev/serial/by-id/..., or tcp://HOST:PORT, or rfc2217://HOST:PORT. "
                                    "COMn= alone removes the mapping.\n");
    for (int n = 1; n <= PortMap::kPortCount; ++n) {
        const QString target = ports.displayName(n);
        if (!target.isEmpty())
            prompt += QStringLiteral("\nCOM%1 = %2").arg(n).arg(target);
    }
    // The stable names of the adapters plugged in, to copy from.
    const QStringList adapters =
        QDir(QStringLiteral("/dev/serial/by-id")).entryList(QDir::System | QDir::Files);
    for (const QString &adapter : adapters)
        prompt += QStringLiteral("\nadapter: /dev/serial/by-id/") + adapter;
    const auto answer = ctx.platform.dialogs.inputBox(
        prompt, QStringLiteral("Set port"),
        QStringLiteral("COM%1=%2").arg(current).arg(ports.displayName(current)));
    if (!answer)
        return 0;
    return applyPortMapping(ctx, ports, *answer);
}

int applyPortMapping(Context &ctx, PortMap &ports, const QString &answer)
{
    const auto [n, target] = PortMap::parseMapping(answer);
    if (n == 0 || (looksLikeNetAddress(target) && !parseNetAddress(target))) {
        ctx.platform.dialogs.message(
            QStringLiteral("\"%1\" is not a port mapping. Write COMn=DEVICE with n from 1 to 8, where DEVICE "
                           "is a device such as /dev/ttyUSB0, or tcp://HOST:PORT, or rfc2217://HOST:PORT.")
                .arg(answer.trimmed()));
        return 0;
    }
    ctx.platform.settings.save(kAppName, QStringLiteral("Ports"), QStringLiteral("COM%1").arg(n), target);
    ports.setOverride(n, target);
    SerialLine &line = ctx.platform.line;
    if (line.isOpen() && line.portNumber() == n)
        line.close();
    ctx.bus.options().portAvailable[std::size_t(n)] = line.portExists(n);
    return n;
}

} // namespace zun
