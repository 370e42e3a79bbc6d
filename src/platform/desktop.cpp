#include "platform/desktop.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>

namespace zun {

void QtDesktop::processEvents()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void QtDesktop::openDocument(const QString &path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

int QtDesktop::screenWidth() const
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().width() : 0;
}

void FakeDesktop::processEvents()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

} // namespace zun
