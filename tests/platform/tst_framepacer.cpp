#include "platform/clock.h"
#include "windowing/framepacer.h"

#include <QTest>
#include <QWidget>

using namespace zun;

namespace {
class CountingWidget : public QWidget
{
public:
    int paints = 0;
    int shownValue = -1;
    int value = 0;

protected:
    void paintEvent(QPaintEvent *) override
    {
        ++paints;
        shownValue = value;
    }
};
} // namespace

class TestFramePacer : public QObject
{
    Q_OBJECT

private slots:
    // The work loop turns the event loop after every exchange; the window
    // must not be painted more often than the screen shows (the offscreen
    // screen says 60 Hz: a frame is 17 ms), yet the last value must reach
    // the screen, and all that were held back reach it in one picture. The
    // changes come on a virtual clock, so a busy machine cannot change the
    // count; only the held picture waits for its timer.
    void paintsAtMostOncePerFrameAndNeverDropsTheLast_data()
    {
        QTest::addColumn<int>("stepMillis");
        QTest::addColumn<int>("changes");
        QTest::addColumn<int>("paintsAtOnce");
        QTest::addColumn<bool>("lastHeld");
        QTest::newRow("every millisecond of a frame") << 1 << 16 << 1 << true;
        QTest::newRow("every 5 ms of a frame") << 5 << 3 << 1 << true;
        QTest::newRow("a frame apart") << 17 << 10 << 10 << false;
        QTest::newRow("slower than the screen") << 20 << 15 << 15 << false;
    }
    void paintsAtMostOncePerFrameAndNeverDropsTheLast()
    {
        QFETCH(int, stepMillis);
        QFETCH(int, changes);
        QFETCH(int, paintsAtOnce);
        QFETCH(bool, lastHeld);
        VirtualClock clock;
        QWidget window;
        auto *meter = new CountingWidget;
        meter->setParent(&window);
        meter->resize(20, 100);
        auto *pacer = new FramePacer(&window, &clock);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCoreApplication::processEvents();
        clock.advanceMillis(1000);

        const int before = meter->paints;
        const int framesBefore = pacer->framesPainted();
        for (int k = 0; k < changes; ++k) {
            clock.advanceMillis(static_cast<std::uint64_t>(stepMillis));
            ++meter->value;
            meter->update();
            // The update request, without the timers: only the clock decides.
            QCoreApplication::sendPostedEvents();
        }
        QCOMPARE(meter->paints - before, paintsAtOnce);
        QCOMPARE(meter->shownValue == meter->value, !lastHeld);
        QTRY_COMPARE(meter->shownValue, meter->value);
        QCOMPARE(meter->paints - before, paintsAtOnce + (lastHeld ? 1 : 0));
        QCOMPARE(pacer->framesPainted() - framesBefore, meter->paints - before);
    }
};

QTEST_MAIN(TestFramePacer)
#include "tst_framepacer.moc"
