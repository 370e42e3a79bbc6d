#include "windowing/qtdesktop.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QTextBrowser>
#include <QUrl>

namespace zun {

void QtDesktop::processEvents()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void QtDesktop::openDocument(const QString &path)
{
    // The help file is HTML under an old name that no desktop maps to a
    // browser, so HTML content is shown in a viewer of our own.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return; // a missing file is not reported
    const QByteArray head = file.peek(512).trimmed().toLower();
    if (!head.startsWith("<!doctype html") && !head.startsWith("<html")) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
        return;
    }
    auto *viewer = new QTextBrowser;
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    viewer->setObjectName(QStringLiteral("helpViewer"));
    viewer->setWindowTitle(QStringLiteral("Zunoria Help"));
    viewer->setOpenExternalLinks(true);
    viewer->setSource(QUrl::fromLocalFile(path), QTextDocument::HtmlResource);
    viewer->resize(760, 640);
    viewer->show();
}

int QtDesktop::screenWidth() const
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().width() : 0;
}

} // namespace zun
