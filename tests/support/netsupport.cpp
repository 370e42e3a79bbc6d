#include "support/netsupport.h"

#include <QTcpServer>

namespace zun {

quint16 freeLoopbackPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

} // namespace zun
