// The RF tools in their tabs on the simulated line; receiver 5's drifting RF readings are pinned.
#include "coordination/scancsv.h"
#include "core/context.h"
#include "core/rftoolspanel.h"
#include "link/hex.h"
#include "receivers/frequency.h"
#include "rftools/dropcounterpanel.h"
#include "rftools/holdtraces.h"
#include "rftools/plotparts.h"
#include "rftools/recorderplot.h"
#include "rftools/recordertab.h"
#include "rftools/rftools.h"
#include "rftools/scanplot.h"
#include "rftools/scansweep.h"
#include "rftools/scantab.h"
#include "sim/simbus.h"
#include "sim/simserialline.h"

#include <QBuffer>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QtTest>

#include <map>

using namespace zun;

namespace {
class FakeHost final : public RfToolsHost
{
public:
    explicit FakeHost(Context &ctx) : m_ctx(ctx) {}

    RfTools *tools = nullptr;
    QStringList tunings; // "off presets 800.000", "cursor 800.025"
    int meterCalls = 0, unloads = 0;

    const Receiver &record() const override { return m_ctx.bus.table().at(0); }
    double bandStart() const override { return mhzFromCode(record().bandStartCode); }
    QString codeFromMhz(double mhz) const override { return zun::codeFromMhz(mhz); }
    void rfTuned(const RfTuning &t) override
    {
        tunings << (t.kind == RfTuning::Kind::OffPresets ? "off presets " : "cursor ") + formatFreq(t.mhz);
    }
    void showMeters(const LevelReading &reading) override
    {
        ++meterCalls;
        tools->meterReading(reading);
    }
    void recorderRead() override
    {
        if (const auto reading = m_ctx.detail.recorderStep())
            showMeters(*reading);
    }
    void unloadForm() override { ++unloads; }

private:
    Context &m_ctx;
};

// Everything wired and the receiver's tools open, its band this many 25 kHz steps wide.
struct RfBench
{
    VirtualClock clock{0, 12 * 3600.0};
    SimSerialLine line{clock};
    SimBus sim;
    SimReceiver &receiver;
    std::map<int, std::pair<int, int>> rawByCode; // code -> raw A, raw B
    std::pair<int, int> rawElsewhere{0x10, 0x0C};
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    FakeDesktop desktop;
    Context ctx{Platform{clock, line, settings, dialogs, desktop}};
    QWidget window;
    FakeHost host{ctx};
    RfTools tools{ctx, host, &window};

    // The clock keeps its time of day through the detection.
    explicit RfBench(int bandWidth = 12, int squelch = 20) : receiver(sim.addReceiver(5))
    {
        receiver.name = "RCV01 ";
        receiver.bandWidth = bandWidth;
        receiver.squelch = squelch;
        sim.pinLevels([this](const SimReceiver &, int code) {
            const auto it = rawByCode.find(code);
            const auto [a, b] = it == rawByCode.end() ? rawElsewhere : it->second;
            return std::optional<SimBus::Levels>({0x41, a, b, 0x22});
        });
        line.attachBus(1, &sim);
        line.selectPort(1);
        line.applySettings(QStringLiteral("115200,N,8,1"));
        line.open();
        host.tools = &tools;
        const double timeOfDay = clock.secondsSinceMidnight();
        ctx.bus.table().resize(1);
        ctx.bus.detectReceivers(PortSearch::CurrentPort);
        clock.setSecondsSinceMidnight(timeOfDay);
        ctx.detail.open(0);
        ctx.bus.setWorkMode(WorkMode::DetailRead);
        line.clearWritten();
        tools.load();
    }
    int codeOfPoint(int i) const { return parseHex(host.record().bandStartCode) + i; }
    QStringList written() const
    {
        QStringList frames;
        for (const auto &w : line.written())
            frames << QString::fromLatin1(w.bytes);
        return frames;
    }
};

QString readText(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

int pixelsOf(const QImage &image, const QColor &color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == color.rgb();
    return count;
}
} // namespace

class TstRfTools : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void scanStep_data()
    {
        QTest::addColumn<int>("rawA"); // -1: the receiver does not answer
        QTest::addColumn<int>("rawB");
        QTest::addColumn<QList<int>>("levels"); // A, B, stored
        // Raw readings are raised by 5 and held at 255 before the table.
        QTest::newRow("A near the top saturates") << 0xFA << 0x10 << QList<int>{99, 4, 99};
        QTest::newRow("B larger") << 0x2B << 0x3B << QList<int>{11, 24, 24};
        QTest::newRow("just under the clamp") << 0xF9 << 0x00 << QList<int>{94, 1, 94};
        QTest::newRow("no reply") << -1 << 0 << QList<int>{};
    }
    void scanStep()
    {
        QFETCH(int, rawA);
        QFETCH(int, rawB);
        const bool answers = rawA >= 0;
        RfBench b;
        b.rawByCode[b.codeOfPoint(0)] = {rawA, rawB};
        b.receiver.powered = answers;
        b.ctx.bus.setWorkMode(WorkMode(3));
        QVERIFY(b.tools.scanStep());

        const ScanState &s = b.tools.scanState();
        QCOMPARE(s.scanIndex, answers ? 1 : 0);
        QCOMPARE(b.host.meterCalls, answers ? 1 : 0);
        QCOMPARE(b.host.unloads, answers ? 0 : 1);
        QCOMPARE(b.ctx.bus.workMode(), WorkMode(answers ? 3 : 1));
        QCOMPARE(b.dialogs.messages(),
                 answers ? QStringList()
                         : QStringList{QStringLiteral("RCV01  no response!, address= 5\r\n")});
        if (!answers)
            return;
        QTEST((QList<int>{s.rfA, s.rfB, s.levels[0]}), "levels");
        QCOMPARE(b.host.tunings, QStringList{"off presets 800.000"});
        QCOMPARE(b.tools.spectrumTab()->frequencyReadout()->text(), QStringLiteral("800.000MHz"));
        QCOMPARE(b.tools.spectrumTab()->runButton()->text(), QStringLiteral("Stop"));
    }

    // Which levels halt is tst_rfstate's stopReached; this is the tab's part.
    void haltStopsOnTheTransmitter()
    {
        RfBench b;
        b.rawByCode[b.codeOfPoint(6)] = {0xC0, 0x20};
        b.window.findChild<QRadioButton *>("optHalt")->click();
        b.tools.spectrumTab()->runButton()->click();
        int steps = 0;
        while (b.ctx.bus.workMode() == WorkMode(3) && steps < 40) {
            QVERIFY(b.tools.scanStep());
            ++steps;
        }
        QCOMPARE(steps, 7);
        QCOMPARE(int(b.ctx.bus.workMode()), 2);
        QCOMPARE(b.tools.spectrumTab()->runButton()->text(), QStringLiteral("Run"));
        QCOMPARE(b.tools.scanState().scanIndex, 7); // the advance runs after a stop too
    }

    void elapsedAcrossMidnight()
    {
        RfBench b;
        b.clock.setSecondsSinceMidnight(86399.5);
        SpectrumTab *tab = b.tools.spectrumTab();
        tab->runButton()->click();
        b.clock.advanceMillis(1000);
        QVERIFY(b.tools.scanStep()); // a few ms on the line: just past 0.5 s after midnight
        QCOMPARE(tab->elapsedLabel()->text(), QStringLiteral(" 00:00:01:0"));
        tab->runButton()->click(); // stop keeps what was shown
        b.clock.advanceMillis(60000);
        tab->runButton()->click();
        b.clock.advanceMillis(2300);
        QVERIFY(b.tools.scanStep());
        QCOMPARE(tab->elapsedLabel()->text(), QStringLiteral(" 00:00:03:3"));
        tab->clearButton()->click();
        QCOMPARE(tab->elapsedLabel()->text(), QStringLiteral(" 00:00:00:0"));
    }

    void dragReadsClickTunes()
    {
        RfBench b(100); // 6 pixels per point on the 600-pixel picture
        b.tools.spectrum().pointerMoved(63.4, Qt::LeftButton);
        QCOMPARE(b.tools.scanState().scanIndex, 10);
        QVERIFY(b.written().isEmpty());
        QVERIFY(b.host.tunings.isEmpty());
        QCOMPARE(b.tools.spectrumTab()->frequencyReadout()->text(), QStringLiteral("800.250MHz"));
        b.tools.spectrum().pointerMoved(900, Qt::NoButton); // remembered, clamped to the width
        QCOMPARE(b.tools.scanState().scanIndex, 10);
        b.ctx.bus.setWorkMode(WorkMode(3));
        b.tools.spectrum().pictureClicked();
        QCOMPARE(b.written(), QStringList{"#05K" + formatHex(b.codeOfPoint(100), 4) + "\r"});
        QCOMPARE(b.host.tunings, QStringList{"cursor 802.500"});
        // A running scan carries on from there.
        QCOMPARE(b.tools.scanState().scanIndex, 100);
        QCOMPARE(b.ctx.bus.workMode(), WorkMode(3));
        QCOMPARE(b.tools.spectrumTab()->plot()->diamond()->pos(), QPoint(600 - 3, 240 - 7));
    }

    // Five points 150 pixels apart, the odd ones at 99: the even points join
    // 0-2-4 along their level, the odd ones hang from the origin and join 1-3.
    void traceInterleaves()
    {
        RfBench b(4);
        b.rawElsewhere = {0x80, 0x40};
        for (int odd : {1, 3})
            b.rawByCode[b.codeOfPoint(odd)] = {0xFF, 0xFF};
        b.ctx.bus.setWorkMode(WorkMode::Scan);
        for (int k = 0; k < 5; ++k)
            QVERIFY(b.tools.scanStep());
        const ScanState &s = b.tools.scanState();
        const PlotGeometry &g = s.geometry;
        const int even = g.levelY(s.levels[0]);
        const QImage picture = b.tools.spectrumTab()->plot()->pictureImage();
        const QColor green = plotColors::kTrace;
        for (QPoint p : {QPoint(225, even), QPoint(525, even), QPoint(300, g.levelY(99)),
                         QPoint(0, g.baseLine), QPoint(75, (g.baseLine + g.levelY(99)) / 2)})
            QVERIFY2(picture.pixelColor(p) == green, qPrintable(QString::number(p.x())));
        // Nothing joins neighbouring points directly.
        QVERIFY(picture.pixelColor(75, (even + g.levelY(99)) / 2) != green);
        QVERIFY(picture.pixelColor(500, g.levelY(99)) != green);
        b.tools.spectrumTab()->clearButton()->click();
        QVERIFY(b.tools.spectrumTab()->plot()->pictureImage().pixelColor(300, g.levelY(99)) != green);
    }

    void recorderReadsAndScrolls()
    {
        RfBench b;
        b.rawElsewhere = {0xFF, 0x00};
        RecorderTab *tab = b.tools.recorderTab();
        QPushButton *scanRun = b.tools.spectrumTab()->runButton();
        const QImage blank = tab->plot()->pictureImage();
        scanRun->click();
        tab->fastOption()->click();
        tab->runButton()->click();
        QCOMPARE(int(b.ctx.bus.workMode()), 4); // the recorder took over the line
        for (int k = 0; k < 400; ++k)
            QVERIFY(b.tools.recorderStep());
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
        tab->clearButton()->click();
        QCOMPARE(b.tools.recorderState().x, 0);
        QVERIFY(tab->plot()->pictureImage().pixelColor(598, g.levelY(99)) != tab->legendA()->borderColor());
    }

    void dropsCountedThroughMeters()
    {
        RfBench b;
        QCOMPARE(b.tools.spectrumTab()->plot()->squelchLine()->row(),
                 b.tools.scanState().yOf(b.tools.scanState().squelchLevel));
        DropCounterPanel *panel = b.tools.dropCounterPanel();
        panel->runButton()->click();
        b.rawElsewhere = {0x00, 0xFF};
        b.host.recorderRead();
        b.rawByCode[b.codeOfPoint(0)] = {0xFF, 0x00};
        QVERIFY(b.tools.scanStep()); // the scan's readings are counted as well
        QCOMPARE(panel->countA()->text(), QStringLiteral("1"));
        QCOMPARE(panel->countB()->text(), QStringLiteral("1"));
        panel->clearButton()->click();
        QCOMPARE(panel->countA()->text(), QStringLiteral("0"));
        QVERIFY(!panel->runButton()->isChecked());
    }
    void csvBadInput_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("says");
        QTest::newRow("three columns") << "800.000,-90.0\n800.025,-91.0,3\n" << 2 << "found 3";
        QTest::newRow("letters") << "\n800.000,-90.0\n800.0x5,-91.0\n" << 3 << "not a frequency";
        QTest::newRow("below the band") << "799.000,-90\n" << 1 << "outside the band 800.000 - 900.000";
        QTest::newRow("header not first") << "800,000;-90,0\nFrequency (MHz);Level (dBm)\n" << 2 << "not a";
        QTest::newRow("nothing in it") << "\n\n" << 0 << "no scan points";
        // A file of one endless line is refused on its first kilobyte.
        QTest::newRow("a line without end") << "800.000," + QString(1 << 20, QLatin1Char('7')) << 1
                                            << "too long for a scan point: \"800.000,777";
        QTest::newRow("an endless second line")
            << "800.000,-90.0\n" + QString(1 << 20, QLatin1Char('x')) + "\n800.025,-91.0\n"
            << 2 << "too long for a scan point: \"xxx";
    }
    // The text as given and the file read line by line come to the same.
    void csvBadInput()
    {
        QFETCH(QString, text);
        QFETCH(int, line);
        QFETCH(QString, says);
        QByteArray bytes = text.toUtf8();
        QBuffer file(&bytes);
        QVERIFY(file.open(QIODevice::ReadOnly));
        for (const ScanCsvResult &result :
             {parseScanCsv(text, 800.0, 900.0), readScanCsv(file, 800.0, 900.0, 16 << 20)}) {
            QCOMPARE(result.errorLine, line);
            QVERIFY2(result.error.contains(says), qPrintable(result.error));
            if (line > 0)
                QVERIFY(result.error.startsWith(QStringLiteral("Line %1:").arg(line)));
            QVERIFY(result.error.size() < 200);
            QVERIFY(result.points.empty());
        }
        if (bytes.size() > 4096) // nothing after the refused line, nor all of it
            QVERIFY(file.pos() < 1024);
    }

    // Three sweeps; point 1 was never measured.
    void holdTraces()
    {
        HoldTraces h;
        h.resize(2);
        for (auto kind : {HoldTraces::Max, HoldTraces::Min})
            h.setEnabled(kind, true);
        for (const QList<int> &sweep : {QList<int>{10, -1, 3}, {30, -1, 3}, {20, -1, 1}})
            for (int i = 0; i < sweep.size(); ++i)
                if (sweep[i] >= 0)
                    h.record(i, sweep[i]);
        const auto trace = [&h](HoldTraces::Kind k) {
            return QList<int>(h.trace(k).begin(), h.trace(k).end());
        };
        QCOMPARE(trace(HoldTraces::Max), (QList<int>{30, -1, 3}));
        QCOMPARE(trace(HoldTraces::Min), (QList<int>{10, -1, 1}));
        h.setEnabled(HoldTraces::Min, false);
        h.record(0, 99);
        QVERIFY(!h.holdsAny(HoldTraces::Min));
        h.clear();
        QVERIFY(!h.holdsAny(HoldTraces::Max));
    }

    // Two sweeps at a 50 kHz step through the scan, max-hold on, exported in
    // both variants (only measured points, not the floor the step fills in)
    // and imported back as the reference, drawn in its own colour.
    void exportAndImportThroughTheTab()
    {
        QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
        QTemporaryDir dir;
        RfBench b(4);
        SpectrumTab *tab = b.tools.spectrumTab();
        tab->maxHoldBox()->setChecked(true);
        tab->stepOption(2)->click();
        b.ctx.bus.setWorkMode(WorkMode::Scan);
        for (int sweep = 0; sweep < 2; ++sweep) {
            b.rawByCode[b.codeOfPoint(2)] = sweep == 0 ? std::pair{0xC0, 0x10} : std::pair{0x20, 0x10};
            for (int i = 0; i < 3; ++i)
                QVERIFY(b.tools.scanStep());
        }
        const ScanState &s = b.tools.scanState();
        QVERIFY(s.holds.trace(HoldTraces::Max)[2] > s.levels[2]);

        const QString plain = dir.filePath(QStringLiteral("max"));
        b.dialogs.queueChoices(QList<int>{1, 0});
        b.dialogs.queueFileName(plain);
        tab->exportButton()->click();
        const QStringList lines = readText(plain + QStringLiteral(".csv")).split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines[1],
                 QStringLiteral("800.050,%1").arg(levelDbm(s.holds.trace(HoldTraces::Max)[2]), 0, 'f', 1));

        const QString sheet = dir.filePath(QStringLiteral("sheet.csv"));
        b.dialogs.queueChoices(QList<int>{0, 1});
        b.dialogs.queueFileName(sheet);
        tab->exportButton()->click();
        QVERIFY(readText(sheet).startsWith(QStringLiteral("Frequency (MHz);Level (dBm)\n800,000;")));
        QCOMPARE(readText(sheet).count(QLatin1Char('\n')), 4);

        b.dialogs.queueFileName(sheet);
        tab->importButton()->click();
        QCOMPARE(s.reference.size(), std::size_t(3));
        QVERIFY(pixelsOf(tab->plot()->pictureImage(), traceColors::kReference) > 0);
        QVERIFY(pixelsOf(tab->plot()->pictureImage(), traceColors::kMaxHold) > 0);

        // Clear empties the holds but keeps the reference on the picture.
        tab->clearButton()->click();
        QVERIFY(!s.holds.holdsAny(HoldTraces::Max));
        QVERIFY(pixelsOf(tab->plot()->pictureImage(), traceColors::kReference) > 0);

        // Nothing held any more: one message, no file.
        b.dialogs.queueChoices(QList<int>{1, 0});
        tab->exportButton()->click();
        QVERIFY(b.dialogs.messages().last().contains(QStringLiteral("no points")));

        b.dialogs.queueFileName(dir.filePath(QStringLiteral("scan")));
        tab->pngButton()->click();
        QCOMPARE(QImage(dir.filePath(QStringLiteral("scan.png"))).size(), tab->plot()->size());
        // The spreadsheet form follows the locale's decimal point, English too.
        QLocale::setDefault(QLocale(QStringLiteral("en_US")));
        QVERIFY(formatScanCsv({{812.525, -63.4}}, CsvVariant::Spreadsheet).contains("812.525;-63.4"));
    }
};

QTEST_MAIN(TstRfTools)
#include "tst_rftools.moc"
