#include "platform/clock.h"
#include "platform/walltime.h"
#include "receivers/frequency.h"
#include "showlog/showlog.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace zun;

namespace {
// 20:15:00.000 at UTC+01:00, when the virtual clock reads 0.
QDateTime anchor()
{
    return QDateTime(QDate(2026, 11, 23), QTime(20, 15), QTimeZone(3600));
}

Receiver status()
{
    Receiver s;
    s.address = 7;
    s.name = QStringLiteral("VOX,1");
    s.manualFreq = true;
    s.manualFreqCode = codeFromMhz(823.125);
    s.squelch = 20;
    s.levels.rfA = 45; // -79.7 dBm
    s.levels.rfB = 12; // -99.7 dBm
    s.levels.audio = audioMeterFromPercent(64);
    s.batteryPercent = 80;
    s.mute = true;
    s.online = true;
    return s;
}

// A log on a virtual clock that reads 0 at the anchor.
struct Bench
{
    VirtualClock clock;
    WallTime wall{clock, anchor()};
    ShowLog log{wall};
};

QStringList linesOf(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}
} // namespace

class TstShowLog : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    // Every kind of line under a German locale: dots stay dots, the name is
    // quoted for its comma, the stamp carries milliseconds and the offset.
    void lines_data()
    {
        QTest::addColumn<QString>("event");
        QTest::addColumn<QString>("line");
        const QString t = QStringLiteral("2026-11-23T20:15:01.234+01:00");
        QTest::newRow("level") << "level" << t + ",level,7,\"VOX,1\",823.125,-79.7,-99.7,64,80,20,1,1,,";
        QTest::newRow("scan point") << "scan" << t + ",scan,7,\"VOX,1\",812.500,-107.0,-47.0,,,,,,,";
        QTest::newRow("recorder") << "recorder" << t + ",recorder,7,\"VOX,1\",,-77.9,-107.0,,,,,,,";
        QTest::newRow("drop") << "drop" << t + ",drop,7,\"VOX,1\",,,,,,,,,B,3";
    }
    void lines()
    {
        QFETCH(QString, event);
        QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
        QTemporaryDir dir;
        Bench b;
        const QString path = dir.filePath(QStringLiteral("show.csv"));
        QString error;
        QVERIFY2(b.log.start(path, &error), qPrintable(error));
        b.log.onReceiverFound(status());
        b.clock.advanceMillis(1234);
        if (event == QLatin1String("level"))
            b.log.onLevelsRead(status());
        else if (event == QLatin1String("scan"))
            b.log.onScanPointRead(7, 500, 812.5, 0, 99);
        else if (event == QLatin1String("recorder"))
            b.log.onRecorderSampled(7, 48, 0);
        else
            b.log.onSignalDropped(7, 'B', 3);
        b.log.stop();
        const QStringList lines = linesOf(path);
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith(QStringLiteral("time,event,address,name,")));
        QTEST(lines[1], "line");
    }

    // Written by the writer's own timer, not per reading; how soon depends on
    // the event loop, so the wait is only for it to happen.
    void flushedByTheTimer()
    {
        QTemporaryDir dir;
        Bench b;
        const QString path = dir.filePath(QStringLiteral("show.csv"));
        QVERIFY(b.log.start(path, nullptr));
        b.log.onLevelsRead(status());
        QCOMPARE(linesOf(path).size(), 0); // buffered, not written per reading
        QTRY_COMPARE_WITH_TIMEOUT(linesOf(path).size(), 2, 10000);
        // A second start appends below, without a second header.
        b.log.stop();
        QVERIFY(b.log.start(path, nullptr));
        b.log.onLevelsRead(status());
        b.log.stop();
        QCOMPARE(linesOf(path).size(), 3);
    }

    // A missing folder is refused at once; /dev/full takes the open and fails every write, as a full disk
    // does.
    void unwritableOrFullDisk()
    {
        Bench b;
        QSignalSpy failed(&b.log, &ShowLog::failed);
        QString error;
        QVERIFY(!b.log.start(QStringLiteral("/nonexistent-folder/show.csv"), &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(!b.log.isLogging());
        QVERIFY(b.log.start(QStringLiteral("/dev/full"), nullptr));
        b.log.onLevelsRead(status());
        QVERIFY(!b.log.writer().flush());
        QVERIFY(!b.log.isLogging());
        b.log.onLevelsRead(status());
        b.log.onSignalDropped(7, 'A', 1);
        b.log.writer().flush();
        b.log.stop();
        QCOMPARE(failed.size(), 1);
        const QString message = failed.at(0).at(0).toString();
        QVERIFY2(message.contains(QStringLiteral("/dev/full")), qPrintable(message));
        QVERIFY2(message.contains(QStringLiteral("stopped")), qPrintable(message));
    }
};

QTEST_GUILESS_MAIN(TstShowLog)
#include "tst_showlog.moc"
