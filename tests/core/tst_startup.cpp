#include "core/options.h"
#include "core/startup.h"
#include "link/ports.h"
#include "mainscreen/frmmain.h"
#include "support/testbed.h"

#include <QAction>
#include <QTest>

using namespace zun;

class TestStartup : public QObject
{
    Q_OBJECT
private slots:
    void withoutAnySerialPortTheProgramEndsWithItsMessage()
    {
        TestBed bed;
        bool mainShown = false;
        StartupViews views;
        views.showMainScreen = [&] { mainShown = true; };
        QVERIFY(!startProgram(bed.ctx, views));
        QCOMPARE(bed.dialogs.messages(),
                 QStringList{"Cannot find any available serial port on this computer, program terminated! "});
        QVERIFY(!mainShown);
    }

    void aMissingStoredPortFallsToTheLowestAvailable()
    {
        TestBed bed;
        bed.attachSilentPort(5);
        bed.attachSilentPort(3);
        bed.settings.save(kAppName, "MSComm", "CommPort", "6");
        int order = 0, splash = 0, shown = 0, closed = 0;
        StartupViews views{[&] { splash = ++order; }, [&] { shown = ++order; }, [&] { closed = ++order; }};
        QVERIFY(startProgram(bed.ctx, views));
        QCOMPARE(bed.ctx.bus.options().CommPort, 3);
        const auto &available = bed.ctx.bus.options().PortAvailable;
        QVERIFY(available[3] && available[5] && !available[6]);
        QCOMPARE(QList<int>({splash, shown, closed}), QList<int>({1, 2, 3}));
        QCOMPARE(bed.ctx.bus.workMode(), WorkMode::Idle);
    }

    void quittingAsksFirstAndSaysGoodbyeThreeTimes_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::addColumn<bool>("portOpen");
        QTest::addColumn<int>("goodbyes");
        QTest::newRow("no") << false << true << 0;
        QTest::newRow("yes") << true << true << 3;
        QTest::newRow("yes with the port closed") << true << false << 0;
    }
    void quittingAsksFirstAndSaysGoodbyeThreeTimes()
    {
        QFETCH(bool, yes);
        QFETCH(bool, portOpen);
        TestBed bed;
        bed.attachReceivers(1, {3});
        bed.ctx.bus.options().CommPort = 1;
        if (portOpen)
            bed.ctx.bus.openLine();
        bed.ctx.bus.setWorkMode(WorkMode::Polling);
        FrmMain main(bed.ctx);
        main.show();
        bed.dialogs.queueAnswer(yes ? MessageAnswer::Yes : MessageAnswer::No);
        main.close();

        QCOMPARE(bed.dialogs.shown().size(), 1);
        QVERIFY(bed.dialogs.shown().first().text == "Really want to QUIT ?" &&
                bed.dialogs.shown().first().buttons == MessageButtons::YesNo);
        QTEST(int(bed.framesSent("#00A0").size()), "goodbyes");
        QCOMPARE(bed.endProgramCalls, yes ? 1 : 0);
        QCOMPARE(main.isVisible(), !yes);
        QCOMPARE(bed.ctx.bus.workMode(), WorkMode::Polling); // "No" leaves polling as it was
    }

    void linkMenusShowTheRateAndThePortInUse()
    {
        TestBed bed;
        bed.attachSilentPort(2);
        bed.attachSilentPort(4);
        LineOptions &options = bed.ctx.bus.options();
        FindCommPorts(bed.line, bed.dialogs, options.PortAvailable, options.CommPort);
        options.CommPort = 4;
        options.Baudrate = 57600;
        FrmMain main(bed.ctx);
        main.UpdateLinkMenus();
        QCOMPARE(main.action("mnuBaud1")->text(), QString("57600"));
        const auto coms = main.findChildren<QAction *>("mnuCom");
        QCOMPARE(coms.size(), 8);
        for (QAction *com : coms) {
            const int n = com->property("index").toInt();
            QCOMPARE(com->isEnabled(), n == 2 || n == 4);
            QCOMPARE(com->isChecked(), n == 4);
        }
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
