#include "windowing/framepacer.h"

#include <QElapsedTimer>
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
    // must not be painted more often than the screen shows, yet the last
    // value must reach the screen within a frame.
    void paintsAtMostOncePerFrameAndNeverDropsTheLast()
    {
        QWidget window;
        auto *meter = new CountingWidget;
        meter->setParent(&window);
        meter->resize(20, 100);
        auto *pacer = new FramePacer(&window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCoreApplication::processEvents();

        const int before = meter->paints;
        QElapsedTimer wall;
        wall.start();
        while (wall.elapsed() < 300) {
            ++meter->value;
            meter->update();
            QCoreApplication::processEvents();
            QTest::qSleep(1);
        }
        const int frames = 300 / 16;
        QVERIFY2(meter->paints - before <= frames + 2, qPrintable(QString::number(meter->paints - before)));
        QVERIFY2(meter->paints - before >= 2, qPrintable(QString::number(meter->paints - before)));
        QTRY_COMPARE_WITH_TIMEOUT(meter->shownValue, meter->value, 1000);
        QVERIFY(pacer->framesPainted() > 0);
    }
};

QTEST_MAIN(TestFramePacer)
#include "tst_framepacer.moc"
