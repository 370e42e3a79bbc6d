#include "support/netsupport.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace zun {

quint16 freeLoopbackPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    return server.serverPort();
}

bool acceptsConnections(quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    return socket.waitForConnected(200);
}

} // namespace zun
