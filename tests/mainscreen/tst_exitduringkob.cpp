// A receiver that never comes back from its KOB function keeps the program in
// its wait for good; the user must still be able to leave at once.
#include "detail/detailrig.h"
#include "link/ports.h"
#include "mainscreen/frmmain.h"
#include "support/testbed.h"

#include <QAction>
#include <QPushButton>
#include <QTest>

#include <memory>

using namespace zun;

class TestExitDuringKob : public QObject
{
    Q_OBJECT
private slots:
    void exitEndsTheWaitAtOnce_data()
    {
        QTest::addColumn<bool>("inDetail");
        QTest::addColumn<bool>("byMenu");
        QTest::newRow("pilot sign, Exit") << false << true;
        QTest::newRow("pilot sign, close box") << false << false;
        QTest::newRow("detail KOB, Exit") << true << true;
        QTest::newRow("detail KOB, close box") << true << false;
    }
    void exitEndsTheWaitAtOnce()
    {
        QFETCH(bool, inDetail);
        QFETCH(bool, byMenu);
        VirtualClock clock;
        SimBus bus(5);
        SimSerialLine line(clock);
        line.attachBus(1, &bus);
        SimReceiver &receiver = bus.addReceiver(3);
        receiver.kobMicros = 1000ull * 1000 * 1000 * 3600; // an hour: as good as never
        MemorySettingsStore settings;
        settings.save("KESTA_ZUN", "Function", "MainKOB", "1");
        ScriptedDialogs dialogs;
        test::ScriptedDesktop desktop;
        Context ctx{Platform{clock, line, settings, dialogs, desktop}};
        wireWindows(ctx);
        ctx.bus.options().CommPort = 1;
        FindCommPorts(line, dialogs, ctx.bus.options().PortAvailable, ctx.bus.options().CommPort);
        FrmMain main(ctx);
        main.show();
        main.load();
        QCOMPARE(ctx.bus.foundCount(), 1);

        std::uint64_t askedAt = 0;
        std::uint64_t endedAt = 0;
        std::size_t framesBefore = 0;
        QStringList framesToEnd;
        ctx.endProgram = [&] {
            endedAt = clock.nowMicros();
            for (std::size_t i = framesBefore; i < line.written().size(); ++i)
                framesToEnd << QString::fromLatin1(line.written()[i].bytes);
            receiver.offlineUntilMicros = 0; // only so that the test's own call can return
        };
        // The user gives up after a minute of waiting.
        desktop.script = [&](int) {
            if (askedAt && clock.nowMicros() > askedAt + 10'000'000)
                receiver.offlineUntilMicros = 0; // the program did not end: stop waiting and fail
            if (askedAt || clock.nowMicros() < 60'000'000)
                return;
            askedAt = clock.nowMicros();
            framesBefore = line.written().size();
            dialogs.queueAnswer(MessageAnswer::Yes);
            if (byMenu)
                main.action("mnuExit")->trigger();
            else
                main.close();
        };

        if (inDetail) {
            main.moreClicked(0);
            QVERIFY(main.detailWindow());
            main.detailWindow()->findChild<QPushButton *>("cmdKob")->click();
        } else {
            main.pilotClicked(0);
        }
        QVERIFY2(askedAt > 0, "the wait ended by itself");
        QCOMPARE(dialogs.messages().last(), "Really want to QUIT ?");
        QCOMPARE(framesToEnd, QStringList({"#00A0\r", "#00A0\r", "#00A0\r"}));
        QVERIFY2(endedAt - askedAt <= 200'000, qPrintable(QString::number(endedAt - askedAt)));
    }
};

QTEST_MAIN(TestExitDuringKob)
#include "tst_exitduringkob.moc"
