#include "link/ports.h"

#include "platform/dialogs.h"
#include "platform/serialline.h"

namespace zun {

bool findPorts(SerialLine &line, Dialogs &dialogs, std::array<bool, 9> &available, int &commPort)
{
    bool any = false;
    for (int n = 1; n <= 8; ++n) {
        available[std::size_t(n)] = line.portExists(n);
        any = any || available[std::size_t(n)];
    }
    if (!any) {
        dialogs.message(
            QStringLiteral("Cannot find any available serial port on this computer, program terminated! "));
        return false;
    }
    const bool current = commPort >= 1 && commPort <= 8 && available[std::size_t(commPort)];
    if (!current) {
        // Walks down on purpose so that the lowest available port wins.
        for (int n = 8; n >= 1; --n)
            if (available[std::size_t(n)])
                commPort = n;
    }
    return true;
}

QString lineSettings(int baudrate)
{
    return QString::number(baudrate) + QStringLiteral(",N,8,1");
}

} // namespace zun
