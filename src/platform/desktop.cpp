#include "platform/desktop.h"

#include <QCoreApplication>

namespace zun {

void FakeDesktop::processEvents()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

} // namespace zun
