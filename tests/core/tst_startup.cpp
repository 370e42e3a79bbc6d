#include "core/options.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/rcvpanel.h"
#include "mainscreen/splashwindow.h"
#include "mainscreen/startupwindows.h"
#include "sim/demobus.h"
#include "support/testbed.h"

#include <QAction>
#include <QSet>
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
        views.loadMainScreen = [&] { mainShown = true; };
        QVERIFY(!bed.session->start(views));
        QCOMPARE(bed.dialogs.messages(),
                 QStringList{"Cannot find any available serial port on this computer, program terminated! "});
        QVERIFY(!mainShown);
    }

    void aMissingStoredPortFallsToTheLowestAvailableAndTheMenusShowThePorts()
    {
        TestBed bed;
        bed.attachSilentPort(5);
        bed.attachSilentPort(3);
        bed.settings.save(kAppName, "MSComm", "CommPort", "6");
        bed.settings.save(kAppName, "MSComm", "Baudrate", "57600");
        int order = 0, splash = 0, loaded = 0, shown = 0, closed = 0;
        QList<int> searched;
        QObject::connect(&bed.ctx.bus, &ReceiverBus::detectionStarted, [&](int port) {
            searched << port;
            QCOMPARE(order, 2); // after the load, before the main screen shows
        });
        StartupViews views{[&] { splash = ++order; }, [&] { loaded = ++order; }, [&] { shown = ++order; },
                           [&] { closed = ++order; }};
        QVERIFY(bed.session->start(views));
        QCOMPARE(searched, QList<int>({3, 5}));
        const auto &available = bed.ctx.bus.options().portAvailable;
        QVERIFY(available[3]);
        QVERIFY(available[5]);
        QVERIFY(!available[6]);
        QCOMPARE(QList<int>({splash, loaded, shown, closed}), QList<int>({1, 2, 3, 4}));

        bed.ctx.bus.options().port = 5; // the port in use, not merely the first one there
        MainWindow main(*bed.session);
        main.updateLinkMenus();
        QCOMPARE(main.action("mnuBaud1")->text(), QString("57600"));
        QCOMPARE(main.findChildren<QAction *>("mnuCom").size(), 8);
        for (QAction *com : main.findChildren<QAction *>("mnuCom")) {
            const int n = com->property("index").toInt();
            QVERIFY2(com->isEnabled() == (n == 3 || n == 5), qPrintable(com->text()));
            QVERIFY2(com->isChecked() == (n == 5), qPrintable(com->text()));
        }
    }

    void onlySplashAndSearchShowUntilTheScreenIsLoaded_data()
    {
        QTest::addColumn<bool>("demo");
        QTest::addColumn<int>("found");
        QTest::addColumn<double>("seconds"); // from start to the main screen with its receivers live
        QTest::newRow("two receivers") << false << 2 << 25.0;
        QTest::newRow("demo") << true << 64 << 2.0;
    }
    void onlySplashAndSearchShowUntilTheScreenIsLoaded()
    {
        QFETCH(bool, demo);
        TestBed bed;
        const std::unique_ptr<SimBus> demoBus = makeDemoBus();
        SimBus *bus = demo ? demoBus.get() : &bed.attachReceivers(1, {3, 40});
        bed.line.attachBus(1, bus);
        StartupWindows windows(*bed.session);
        QSet<QString> onScreen; // whenever a receiver is asked who it is
        bus->setFrameObserver([&](std::uint64_t, const QByteArray &frame, int) {
            if (!frame.startsWith('%') || !frame.endsWith("M\r"))
                return;
            MainWindow *main = windows.mainWindow();
            onScreen << QStringList{windows.splash() && windows.splash()->isVisible() ? "splash" : "",
                                    main->findChild<QWidget *>("frmCheckNet")->isVisible() ? "search" : "",
                                    main->isVisible() ? "main" : ""}
                            .join(' ');
        });
        QVERIFY(bed.session->start(windows.views()));
        QCOMPARE(onScreen, QSet<QString>{"splash search "});
        QVERIFY(windows.mainWindow()->isVisible());
        QVERIFY(!windows.splash());
        QTEST(bed.ctx.bus.table().foundCount(), "found");
        QVERIFY(bed.ctx.bus.table().at(0).online);
        QVERIFY(windows.mainWindow()->panel(0)->isEnabled());
        QFETCH(double, seconds);
        QVERIFY2(bed.virtualSeconds() <= seconds, qPrintable(QString::number(bed.virtualSeconds())));
    }

    void changingTheLineSpeedTellsEveryReceiverFirst_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("unplugged"); // the adapter goes as the broadcast leaves
        QTest::newRow("the rate in use") << "38400" << false;
        QTest::newRow("unknown rate") << "19200" << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("reopen fails") << "9600" << true;
    }
    void changingTheLineSpeedTellsEveryReceiverFirst()
    {
        QFETCH(QString, answer);
        QFETCH(bool, unplugged);
        const int baud = 38400; // where every row leaves the line
        TestBed bed;
        SimBus &bus = bed.attachReceivers(1, {3}, baud);
        if (unplugged)
            bus.setFrameObserver([&](std::uint64_t, const QByteArray &, int) { bed.line.removePort(1); });
        bed.ctx.bus.options().baudRate = baud;
        bed.ctx.bus.options().port = 1;
        QVERIFY(bed.ctx.bus.openLine());
        MainWindow main(*bed.session);
        main.updateLinkMenus();
        QAction *item = main.action("mnuBaud1");
        item->setEnabled(true);
        bed.dialogs.queueInput(answer);
        item->trigger();

        const bool sent = answer == "9600" || answer == "38400";
        const bool changed = sent && !unplugged;
        const QString frame = answer == "9600" ? "#00H17\r" : "#00H05\r";
        QCOMPARE(bed.framesSent("#00H"), sent ? QStringList{frame} : QStringList());
        QCOMPARE(bed.ctx.bus.options().baudRate, baud);
        QCOMPARE(item->text(), QString::number(baud));
        QCOMPARE(bed.settings.get(kAppName, "MSComm", "Baudrate"), changed ? answer : QString());
        QCOMPARE(bed.line.isOpen(), !unplugged);
        if (changed) {
            // The receiver followed the broadcast, so it still answers at the new speed.
            QCOMPARE(bed.line.baudRate(), baud);
            QVERIFY(bed.ctx.bus.addressAnswers(3));
        }
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
