// A receiver that never comes back from its KOB function keeps the program in
// its wait for good; the user must still be able to leave at once.
#include "support/testbed.h"

#include <QAction>
#include <QPushButton>
#include <QTest>

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
        TestBed bed;
        SimReceiver &receiver = *bed.attachReceivers(1, {3}).receiver(3);
        receiver.kobMicros = 1000ull * 1000 * 1000 * 3600; // an hour: as good as never
        bed.settings.save("KESTA_ZUN", "Function", "MainKOB", "1");
        const auto main = bed.loadMainScreen();
        main->show();
        QCOMPARE(bed.ctx.bus.table().foundCount(), 1);
        VirtualClock &clock = bed.clock;
        const auto &written = bed.line.written();

        std::uint64_t askedAt = 0, endedAt = 0;
        std::size_t framesBefore = 0;
        QStringList framesToEnd;
        bed.ctx.endProgram = [&] {
            endedAt = clock.nowMicros();
            for (std::size_t i = framesBefore; i < written.size(); ++i)
                framesToEnd << QString::fromLatin1(written[i].bytes);
            receiver.offlineUntilMicros = 0; // only so that the test's own call can return
        };
        // The user gives up after a minute of waiting.
        bed.desktop.script = [&](int) {
            if (askedAt && clock.nowMicros() > askedAt + 10'000'000)
                receiver.offlineUntilMicros = 0; // the program did not end: stop waiting and fail
            if (askedAt || clock.nowMicros() < 60'000'000)
                return;
            askedAt = clock.nowMicros();
            framesBefore = written.size();
            bed.dialogs.queueAnswer(MessageAnswer::Yes);
            if (byMenu)
                main->action("mnuExit")->trigger();
            else
                main->close();
        };

        if (inDetail) {
            main->moreClicked(0);
            QVERIFY(main->detailWindow());
            main->detailWindow()->findChild<QPushButton *>("cmdKob")->click();
        } else {
            main->pilotClicked(0);
        }
        QVERIFY2(askedAt > 0, "the wait ended by itself");
        QCOMPARE(bed.dialogs.messages().last(), "Really want to QUIT ?");
        QCOMPARE(framesToEnd, QStringList({"#00A0\r", "#00A0\r", "#00A0\r"}));
        QVERIFY2(endedAt - askedAt <= 200'000, qPrintable(QString::number(endedAt - askedAt)));
    }
};

QTEST_MAIN(TestExitDuringKob)
#include "tst_exitduringkob.moc"
