#include "alarms/alarmlistwindow.h"
#include "alarms/receiverlisteners.h"
#include "link/ports.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/monitoring.h"
#include "mainscreen/rcvpanel.h"
#include "support/fakereceiverbus.h"
#include "support/testbed.h"

#include <QAction>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

using namespace zun;

class TstMonitoring : public QObject
{
    Q_OBJECT
private slots:
    // The main screen as a user meets an alarm: the name flashes, the list
    // shows it, a click on the name stops the flash; the log was written.
    void offlineReceiverFlashesUntilClicked()
    {
        TestBed bed;
        bed.attachReceivers(1, {4, 9});
        LineOptions &options = bed.ctx.bus.options();
        options.CommPort = 1;
        FindCommPorts(bed.line, bed.dialogs, options.PortAvailable, options.CommPort);
        FrmMain main(bed.ctx);
        main.load();
        Monitoring &monitoring = *main.monitoring();
        FakeReceiverBus source;
        connectMonitoring(&source, monitoring);

        QTemporaryDir dir;
        const QString logPath = dir.filePath(QStringLiteral("show.csv"));
        bed.dialogs.queueFileName(logPath);
        main.findChild<QAction *>(QStringLiteral("mnuShowLog"))->trigger();
        QVERIFY(monitoring.showLog().isLogging());

        ReceiverStatus status;
        status.address = bed.ctx.bus.record(1).address;
        status.name = QStringLiteral("B-MIC");
        emit source.wentOffline(status);
        RcvPanel *panel = main.panel(1);
        QTRY_VERIFY(panel->alarmLit());
        QTRY_VERIFY(!panel->alarmLit()); // it flashes, not just lights
        QVERIFY(!main.panel(0)->alarmLit());
        QCOMPARE(monitoring.alarmList()->table()->rowCount(), 1);
        QCOMPARE(monitoring.alarmList()->table()->item(0, 2)->text(), QStringLiteral("Offline"));

        emit panel->nameClicked(1);
        QTest::qWait(900);
        QVERIFY(!panel->alarmLit());

        emit source.cameBack(status);
        QTRY_VERIFY(!monitoring.alarmList()->table()->item(0, 3)->text().isEmpty());

        bed.ctx.endProgram(); // the exit path flushes the log
        QFile log(logPath);
        QVERIFY(log.open(QIODevice::ReadOnly));
        QCOMPARE(log.readAll().count('\n'), 3); // header, offline, back
    }
};

QTEST_MAIN(TstMonitoring)
#include "tst_monitoring.moc"
