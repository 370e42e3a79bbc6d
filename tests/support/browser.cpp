#include "support/browser.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <csignal>

#include <unistd.h>

namespace zun {

namespace {
// A process of the group that has not died yet; zombies write nothing.
bool groupAlive(pid_t group)
{
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(entry));
        if (entry.toInt() <= 0 || !stat.open(QIODevice::ReadOnly))
            continue;
        const QByteArray text = stat.readAll();
        // "pid (name) state ppid pgrp ...": the name may hold spaces.
        const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 2 && fields[2].toInt() == group && fields[0] != "Z")
            return true;
    }
    return false;
}
} // namespace

Browser::~Browser()
{
    const qint64 pid = m_chromium.process.processId();
    if (pid > 0) {
        ::kill(-static_cast<pid_t>(pid), SIGKILL);
        m_chromium.stop();
        for (int i = 0; i < 200 && groupAlive(static_cast<pid_t>(pid)); ++i)
            QTest::qSleep(10);
    }
    m_profile.remove();
}

bool Browser::open(const QString &url)
{
    const quint16 devtools = freeLoopbackPort();
    // Its own process group, which the destructor kills as a whole.
    m_chromium.process.setChildProcessModifier([] { ::setpgid(0, 0); });
    m_chromium.process.start(
        "/usr/bin/chromium",
        {"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--user-data-dir=" + m_profile.path(), "--remote-debugging-port=" + QString::number(devtools), url});
    // The page's own DevTools socket, once Chromium lists it.
    QString target;
    for (QDeadlineTimer deadline(20000); target.isEmpty() && !deadline.hasExpired(); QTest::qWait(200)) {
        const QByteArray list = exchange(devtools, get("/json/list"));
        for (const QJsonValue &v : QJsonDocument::fromJson(list.mid(list.indexOf("\r\n\r\n") + 4)).array())
            if (v["type"] == QStringLiteral("page"))
                target = QStringLiteral("ws://127.0.0.1:%1/devtools/page/%2")
                             .arg(devtools)
                             .arg(v["id"].toString());
    }
    QObject::connect(&m_devtools, &QWebSocket::textMessageReceived, [this](const QString &text) {
        const QJsonObject reply = QJsonDocument::fromJson(text.toUtf8()).object();
        if (reply["id"].toInt() == m_id)
            m_result = reply["result"]["result"]["value"].toString();
    });
    m_devtools.open(QUrl(target));
    return QTest::qWaitFor([this] { return m_devtools.state() == QAbstractSocket::ConnectedState; }, 5000);
}

QString Browser::evaluate(const QString &expression)
{
    m_result.reset();
    const QJsonObject call{{"id", ++m_id},
                           {"method", "Runtime.evaluate"},
                           {"params", QJsonObject{{"expression", expression}, {"returnByValue", true}}}};
    m_devtools.sendTextMessage(QString::fromUtf8(QJsonDocument(call).toJson(QJsonDocument::Compact)));
    return QTest::qWaitFor([this] { return m_result.has_value(); }, 5000) ? *m_result : QString();
}

} // namespace zun
