#include "rftestbed.h"

#include "rftools/holdtraces.h"
#include "rftools/scancsv.h"
#include "rftools/scanfiles.h"
#include "rftools/scanplot.h"
#include "rftools/scantab.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace zun;
using namespace zun::test;

namespace {
const std::vector<ScanPoint> kPoints = {{800.0, -107.0}, {812.525, -63.4}, {900.0, -47.0}};

QString readText(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

void writeText(const QString &path, const QString &text)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(text.toUtf8());
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

class TstScanFiles : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void csvRoundTrip_data()
    {
        QTest::addColumn<int>("variant");
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("secondLine");
        QTest::newRow("plain, German locale keeps dots") << 0 << QString("de_DE") << "812.525,-63.4";
        QTest::newRow("plain, C locale") << 0 << QString("C") << "812.525,-63.4";
        QTest::newRow("spreadsheet, German decimal comma") << 1 << QString("de_DE") << "800,000;-107,0";
        QTest::newRow("spreadsheet, English decimal dot") << 1 << QString("en_US") << "800.000;-107.0";
    }
    void csvRoundTrip()
    {
        QFETCH(int, variant);
        QFETCH(QString, locale);
        QLocale::setDefault(QLocale(locale));
        const QString text = formatScanCsv(kPoints, static_cast<CsvVariant>(variant));
        QTEST(text.split(QLatin1Char('\n')).value(1), "secondLine");

        const ScanCsvResult back = parseScanCsv(text, 800.0, 900.0);
        QVERIFY2(back.ok(), qPrintable(back.error));
        QCOMPARE(back.points.size(), kPoints.size());
        for (std::size_t i = 0; i < kPoints.size(); ++i) {
            QCOMPARE(back.points[i].frequencyMHz, kPoints[i].frequencyMHz);
            QCOMPARE(back.points[i].levelDbm, kPoints[i].levelDbm);
        }
    }

    void csvBadInput_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("says");
        QTest::newRow("three columns") << "800.000,-90.0\n800.025,-91.0,3\n" << 2 << "found 3";
        QTest::newRow("letters") << "\n800.000,-90.0\n800.0x5,-91.0\n" << 3 << "not a frequency";
        QTest::newRow("above the band") << "899.975,-90\n900.025,-90\n" << 2 << "900.025 MHz is outside";
        QTest::newRow("below the band") << "799.000,-90\n" << 1 << "outside the band 800.000 - 900.000";
        QTest::newRow("header not first") << "800,000;-90,0\nFrequency (MHz);Level (dBm)\n" << 2 << "not a";
        QTest::newRow("nothing in it") << "\n\n" << 0 << "no scan points";
    }
    void csvBadInput()
    {
        QFETCH(QString, text);
        QFETCH(int, line);
        QFETCH(QString, says);
        const ScanCsvResult result = parseScanCsv(text, 800.0, 900.0);
        QCOMPARE(result.errorLine, line);
        QVERIFY2(result.error.contains(says), qPrintable(result.error));
        if (line > 0)
            QVERIFY(result.error.startsWith(QStringLiteral("Line %1:").arg(line)));
        QVERIFY(result.points.empty());
    }

    // Sweeps as the scan stores them (index, level); -1 in expected is "none held".
    void holdTraces_data()
    {
        QTest::addColumn<QList<QList<int>>>("sweeps");
        QTest::addColumn<QList<int>>("maxHeld");
        QTest::addColumn<QList<int>>("minHeld");
        QTest::newRow("three sweeps") << QList<QList<int>>{{10, 50, 3}, {30, 20, 3}, {20, 40, 1}}
                                      << QList<int>{30, 50, 3} << QList<int>{10, 20, 1};
        QTest::newRow("a point never measured")
            << QList<QList<int>>{{5, -1, 7}, {6, -1, 2}} << QList<int>{6, -1, 7} << QList<int>{5, -1, 2};
    }
    void holdTraces()
    {
        QFETCH(QList<QList<int>>, sweeps);
        HoldTraces h;
        h.resize(2);
        h.setEnabled(HoldTraces::Max, true);
        h.setEnabled(HoldTraces::Min, true);
        for (const QList<int> &sweep : sweeps)
            for (int i = 0; i < sweep.size(); ++i)
                if (sweep[i] >= 0)
                    h.record(i, sweep[i]);
        auto asList = [](const std::vector<std::int16_t> &v) { return QList<int>(v.begin(), v.end()); };
        QTEST(asList(h.trace(HoldTraces::Max)), "maxHeld");
        QTEST(asList(h.trace(HoldTraces::Min)), "minHeld");
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
        RfBench b;
        b.line.bandWidth = 4;
        b.open();
        SpectrumTab *tab = b.tools.spectrumTab();
        tab->maxHoldBox()->setChecked(true);
        tab->stepOption(2)->click();
        b.ctx.bus.setWorkMode(WorkMode::Scan);
        for (int sweep = 0; sweep < 2; ++sweep) {
            b.line.rawByCode[b.codeOfPoint(2)] = sweep == 0 ? std::pair{0xC0, 0x10} : std::pair{0x20, 0x10};
            for (int i = 0; i < 3; ++i)
                b.tools.ScanFreq();
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

        const QString bad = dir.filePath(QStringLiteral("bad.csv"));
        writeText(bad, QStringLiteral("800.000,-90.0\n950.000,-80.0\n"));
        b.dialogs.queueFileName(bad);
        tab->importButton()->click();
        QVERIFY(b.dialogs.messages().last().contains(QStringLiteral("Line 2:")));
        QVERIFY(s.reference.empty());

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
    }

    void pngAtThePixelRatio()
    {
        QTemporaryDir dir;
        RfBench b;
        b.open();
        SpectrumPlot *plot = b.tools.spectrumTab()->plot();
        b.dialogs.queueFileName(dir.filePath(QStringLiteral("scan")));
        b.tools.spectrumTab()->pngButton()->click();
        const QImage png(dir.filePath(QStringLiteral("scan.png")));
        QCOMPARE(png.size(), plot->size() * plot->devicePixelRatioF());
    }
};

QTEST_MAIN(TstScanFiles)
#include "tst_scanfiles.moc"
