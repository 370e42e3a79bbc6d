#include "rftestbed.h"

#include "rftools/dropcounterpanel.h"
#include "rftools/plotparts.h"
#include "rftools/recorderplot.h"
#include "rftools/recordertab.h"
#include "rftools/scanplot.h"
#include "rftools/scansweep.h"
#include "rftools/scantab.h"

#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

using namespace zun;
using namespace zun::test;

namespace {
QString eCommand(int code)
{
    return QStringLiteral("#05E") + NumToHex(code, 4) + QLatin1Char('\r');
}
QString kCommand(int code)
{
    return QStringLiteral("#05K") + NumToHex(code, 4) + QLatin1Char('\r');
}
} // namespace

class TstRfTools : public QObject
{
    Q_OBJECT
private slots:

    void scanStepReading_data()
    {
        QTest::addColumn<int>("rawA");
        QTest::addColumn<int>("rawB");
        QTest::addColumn<QList<int>>("levels"); // A, B, stored
        // Raw readings are raised by 5 and held at 255 before the table.
        QTest::newRow("A near the top saturates") << 0xFA << 0x10 << QList<int>{99, 4, 99};
        QTest::newRow("B larger") << 0x2B << 0x3B << QList<int>{11, 24, 24};
        QTest::newRow("just under the clamp") << 0xF9 << 0x00 << QList<int>{94, 1, 94};
    }
    void scanStepReading()
    {
        QFETCH(int, rawA);
        QFETCH(int, rawB);
        RfBench b;
        b.open();
        b.line.rawByCode[b.codeOfPoint(0)] = {rawA, rawB};
        b.ctx.bus.setWorkMode(WorkMode(3));
        QVERIFY(b.tools.ScanFreq());

        QCOMPARE(b.line.written, QStringList{eCommand(b.codeOfPoint(0))});
        const ScanState &s = b.tools.scanState();
        QTEST((QList<int>{s.rfA, s.rfB, s.levels[0]}), "levels");
        QCOMPARE(s.statusByte * 256 + s.audioByte, 0x4122);
        QCOMPARE(s.scanIndex, 1);
        QCOMPARE(b.host.meterCalls, 1);
        QCOMPARE(b.host.txtFreq, "800.000");
        QCOMPARE(b.host.txtGroup + b.host.txtChannel, "****");
        QVERIFY(b.ctx.bus.record(0).manualFreq);
        QCOMPARE(b.ctx.bus.record(0).manualFreqCode, NumToHex(b.codeOfPoint(0), 4));
        QCOMPARE(b.host.tvFrequency, 800.0);
        QCOMPARE(b.tools.spectrumTab()->frequencyReadout()->text(), QStringLiteral("800.000MHz"));
        QCOMPARE(b.tools.spectrumTab()->runButton()->text(), QStringLiteral("Stop"));
    }

    void scanStepWithoutReply()
    {
        RfBench b;
        b.open();
        b.line.silent = true;
        b.ctx.bus.setWorkMode(WorkMode(3));
        b.tools.ScanFreq();
        QCOMPARE(b.dialogs.messages(), QStringList{QStringLiteral("RCV01  no response!, address= 5\r\n")});
        QVERIFY(b.ctx.bus.workMode() == WorkMode(1) && b.host.unloads == 1);
        QVERIFY(b.host.meterCalls == 0 && b.tools.scanState().scanIndex == 0);
    }

    void sweepStops_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<int>("bandWidth");
        QTest::addColumn<int>("stepOption");
        QTest::addColumn<int>("squelch");
        QTest::addColumn<int>(
            "stepsTaken"); // steps until the scan stopped itself, -1: still running after 40
        QTest::addColumn<int>("nextIndex");
        QTest::newRow("single, step 50 kHz, even N") << "optSingle" << 8 << 2 << 20 << 5 << 0;
        QTest::newRow("single, step 50 kHz, odd N runs on") << "optSingle" << 7 << 2 << 20 << -1 << -1;
        QTest::newRow("halt on the transmitter at point 6") << "optHalt" << 12 << 1 << 20 << 7 << 7;
        QTest::newRow("halt, squelch above the transmitter") << "optHalt" << 12 << 1 << 99 << -1 << -1;
    }
    void sweepStops()
    {
        QFETCH(QString, option);
        QFETCH(int, bandWidth);
        QFETCH(int, stepOption);
        QFETCH(int, squelch);
        QFETCH(int, stepsTaken);
        QFETCH(int, nextIndex);
        RfBench b;
        b.line.bandWidth = bandWidth;
        b.line.squelch = squelch;
        b.open();
        b.line.rawByCode[b.codeOfPoint(6)] = {0xC0, 0x20};
        b.window.findChild<QRadioButton *>(option)->click();
        b.tools.spectrumTab()->stepOption(stepOption)->click();
        b.tools.spectrumTab()->runButton()->click();
        QCOMPARE(int(b.ctx.bus.workMode()), 3);
        int steps = 0;
        while (b.ctx.bus.workMode() == WorkMode(3) && steps < 40) {
            b.tools.ScanFreq();
            ++steps;
        }
        QCOMPARE(int(b.ctx.bus.workMode()), stepsTaken < 0 ? 3 : 2);
        if (stepsTaken < 0)
            return;
        QCOMPARE(steps, stepsTaken);
        QCOMPARE(b.tools.spectrumTab()->runButton()->text(), QStringLiteral("Run"));
        QCOMPARE(b.tools.scanState().scanIndex, nextIndex); // the advance runs after a stop too
    }

    void elapsedAcrossMidnight()
    {
        RfBench b;
        b.open();
        b.clock.setSecondsSinceMidnight(86399.5);
        SpectrumTab *tab = b.tools.spectrumTab();
        tab->runButton()->click();
        b.clock.advanceMillis(1000);
        b.tools.ScanFreq(); // 2 ms on the line: 0.502 after midnight
        QCOMPARE(tab->elapsedLabel()->text(), QStringLiteral(" 00:00:01:0"));
        tab->runButton()->click(); // stop keeps what was shown
        b.clock.advanceMillis(60000);
        tab->runButton()->click();
        b.clock.advanceMillis(2300);
        b.tools.ScanFreq();
        QCOMPARE(tab->elapsedLabel()->text(), QStringLiteral(" 00:00:03:3"));
        tab->clearButton()->click();
        QCOMPARE(tab->elapsedLabel()->text(), QStringLiteral(" 00:00:00:0"));
    }

    void dragReadsClickTunes()
    {
        RfBench b;
        b.line.bandWidth = 100; // 6 pixels per point on the 600-pixel picture
        b.open();
        b.tools.spectrum().pointerMoved(63.4, Qt::LeftButton);
        QCOMPARE(b.tools.scanState().scanIndex, 10);
        QVERIFY(b.line.written.isEmpty());
        QCOMPARE(b.tools.spectrumTab()->frequencyReadout()->text(), QStringLiteral("800.250MHz"));
        b.tools.spectrum().pointerMoved(900, Qt::NoButton); // remembered, clamped to the width
        QCOMPARE(b.tools.scanState().scanIndex, 10);
        b.ctx.bus.setWorkMode(WorkMode(3));
        b.tools.spectrum().pictureClicked();
        QCOMPARE(b.line.written, QStringList{kCommand(b.codeOfPoint(100))});
        // A running scan carries on from there.
        QVERIFY(b.tools.scanState().scanIndex == 100 && b.ctx.bus.workMode() == WorkMode(3));
        QCOMPARE(b.tools.spectrumTab()->plot()->diamond()->pos(), QPoint(600 - 3, 240 - 7));
    }

    void traceIsDrawn()
    {
        RfBench b;
        b.line.bandWidth = 100;
        b.open();
        b.line.rawByCode[b.codeOfPoint(40)] = {0xFF, 0xFF};
        b.ctx.bus.setWorkMode(WorkMode(3));
        for (int k = 0; k <= 40; ++k)
            b.tools.ScanFreq();
        const QImage picture = b.tools.spectrumTab()->plot()->pictureImage();
        const ScanState &s = b.tools.scanState();
        QCOMPARE(picture.pixelColor(s.xOf(40), s.yOf(99)), plotColors::kTrace);
        QCOMPARE(picture.pixelColor(s.xOf(20), s.yOf(s.levels[20])), plotColors::kTrace);
        QVERIFY(picture.pixelColor(s.xOf(70), s.yOf(50)) != plotColors::kTrace);
        b.tools.spectrumTab()->clearButton()->click();
        QVERIFY(b.tools.spectrumTab()->plot()->pictureImage().pixelColor(s.xOf(40), 6) != plotColors::kTrace);
    }

    void traceInterleaves()
    {
        // Five points 150 pixels apart: the even points join 0-2-4 along level 50,
        // the odd ones hang from the origin and join 1-3 along level 99.
        SpectrumPlot plot;
        const PlotGeometry g = plot.plotGeometry();
        plot.drawTrace(LevelArray{50, 99, 50, 99, 50}, 4, 150.0);
        const QImage picture = plot.pictureImage();
        const QColor green = plotColors::kTrace;
        for (QPoint p : {QPoint(225, g.levelY(50)), QPoint(525, g.levelY(50)), QPoint(300, g.levelY(99)),
                         QPoint(0, g.baseLine), QPoint(75, (g.baseLine + g.levelY(99)) / 2)})
            QVERIFY2(picture.pixelColor(p) == green, qPrintable(QString::number(p.x())));
        // Nothing joins neighbouring points directly.
        QVERIFY(picture.pixelColor(75, (g.levelY(50) + g.levelY(99)) / 2) != green);
        QVERIFY(picture.pixelColor(500, g.levelY(99)) != green);
    }

    void recorderReadsAndScrolls()
    {
        RfBench b;
        b.open();
        b.line.rawN = {0xFF, 0x00};
        RecorderTab *tab = b.tools.recorderTab();
        QPushButton *scanRun = b.tools.spectrumTab()->runButton();
        const QImage blank = tab->plot()->pictureImage();
        scanRun->click();
        QCOMPARE(scanRun->text(), "Stop");
        tab->fastOption()->click();
        tab->runButton()->click();
        QCOMPARE(int(b.ctx.bus.workMode()), 4);
        QCOMPARE(scanRun->text(), "Run"); // the recorder took over the line
        for (int k = 0; k < 400; ++k)
            b.tools.RFRecorder();
        QCOMPARE(b.line.written.filter("%05N").size(), 400);
        QCOMPARE(tab->dbmReadoutA()->text() + ' ' + tab->microvoltReadoutA()->text() + ' ' +
                     tab->microvoltReadoutB()->text(),
                 "-47.0dBm 1000uV 1uV");
        QCOMPARE(b.tools.recorderState().previousX, 599);
        const QImage picture = tab->plot()->pictureImage();
        const PlotGeometry g = b.tools.scanState().geometry;
        // The newest segment runs from column 597 up to (not including) 599.
        for (int x : {597, 598}) {
            QCOMPARE(picture.pixelColor(x, g.levelY(99)), tab->legendA()->borderColor());
            QCOMPARE(picture.pixelColor(x, g.levelY(1)), tab->legendB()->borderColor());
        }
        // The traces stay clear of the dotted rows, which are whole to the right
        // edge however far the chart scrolled.
        for (int level : {16, 49, 82})
            for (int x = 0; x < picture.width(); ++x)
                QCOMPARE(picture.pixel(x, g.levelY(level)), blank.pixel(x, g.levelY(level)));
        scanRun->click();
        tab->stopButton()->click();
        QCOMPARE(int(b.ctx.bus.workMode()), 2);
        QCOMPARE(scanRun->text(), "Run");
        tab->clearButton()->click();
        QCOMPARE(b.tools.recorderState().x, 0);
        QVERIFY(tab->plot()->pictureImage().pixelColor(598, g.levelY(99)) != tab->legendA()->borderColor());
    }

    void dropsCountedThroughMeters()
    {
        RfBench b;
        b.open(); // squelch 20
        const int sq = b.tools.scanState().squelchLevel;
        QCOMPARE(sq, b.ctx.bus.levelTable()[static_cast<int>(std::nearbyint(20 * 255.0 / 99 + 16))]);
        QCOMPARE(b.tools.spectrumTab()->plot()->squelchLine()->row(), b.tools.scanState().yOf(sq));
        DropCounterPanel *panel = b.tools.dropCounterPanel();
        panel->runButton()->click();
        b.line.rawN = {0x00, 0xFF};
        b.host.recorderRead();
        b.line.rawByCode[b.codeOfPoint(0)] = {0xFF, 0x00};
        b.tools.ScanFreq(); // the scan's readings are counted as well
        QCOMPARE(panel->countA()->text(), QStringLiteral("1"));
        QCOMPARE(panel->countB()->text(), QStringLiteral("1"));
        panel->clearButton()->click();
        QCOMPARE(panel->countA()->text(), QStringLiteral("0"));
        QVERIFY(!panel->runButton()->isChecked());
    }
};

QTEST_MAIN(TstRfTools)
#include "tst_rftools.moc"
