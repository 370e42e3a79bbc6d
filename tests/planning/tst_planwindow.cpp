// The "Frequency Plan" window on the assembled program: the line checked as
// it runs, a plan computed, applied over the simulated line and taken back.
#include "coordination/guards.h"
#include "coordination/linecheck.h"
#include "coordination/planfiles.h"
#include "planning/planwindow.h"
#include "receivers/frequency.h"
#include "support/testbed.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableWidget>
#include <QTest>

using namespace zun;

namespace {

struct Line : TestBed
{
    Line(const std::vector<int> &addresses) : sim(attachReceivers(1, addresses))
    {
        main = loadMainScreen();
        main->action(QStringLiteral("mnuFreqPlan"))->trigger();
        window = main->planWindow();
        table = window->findChild<QTableWidget *>(QStringLiteral("tblPlan"));
    }
    void click(const char *name)
    {
        QTest::mouseClick(window->findChild<QPushButton *>(QString::fromLatin1(name)), Qt::LeftButton);
    }
    // The window computes in slices from the event loop.
    void settle()
    {
        while (window->computing() || session->deploy().busy()) {
            session->loop().runSteps();
            QCoreApplication::processEvents();
        }
        QCoreApplication::processEvents();
    }
    QString text(int row, int column) const { return table->item(row, column)->text(); }
    int frequencyKHz(int index) const { return toKHz(ctx.bus.table().at(index).frequencyMHz()); }

    SimBus &sim;
    MainWindow *main = nullptr;
    PlanWindow *window = nullptr;
    QTableWidget *table = nullptr;
};

} // namespace

class TestPlanWindow : public QObject
{
    Q_OBJECT
private slots:
    // The table follows the line: a receiver tuned onto another's frequency
    // turns both to conflict, and back to clean when it leaves.
    void checksTheLine_data()
    {
        QTest::addColumn<int>("offsetKHz"); // receiver 2 tuned this far from receiver 1
        QTest::addColumn<QString>("guards");
        QTest::addColumn<bool>("conflict");
        QTest::newRow("on top") << 0 << "standard" << true;
        QTest::newRow("inside the carrier guard") << 300 << "standard" << true;
        QTest::newRow("outside the tight guard") << 300 << "tight" << false;
        QTest::newRow("far apart") << 5000 << "robust" << false;
    }
    void checksTheLine()
    {
        QFETCH(int, offsetKHz);
        QFETCH(QString, guards);
        QFETCH(bool, conflict);
        Line line({1, 2});
        line.window->findChild<QComboBox *>(QStringLiteral("cboGuards"))->setCurrentText(guards);
        QCOMPARE(line.table->rowCount(), line.ctx.bus.table().foundCount());
        const int target = line.frequencyKHz(0) + offsetKHz;
        QVERIFY(line.ctx.bus.tuneManual(1, codeFromMhz(target / 1000.0)));
        line.settle();
        QCOMPARE(line.text(1, PlanWindow::ColFrequency), mhzText(target));
        for (int row = 0; row < 2; ++row) {
            const QString state = line.text(row, PlanWindow::ColState);
            QCOMPARE(
                state.startsWith(QStringLiteral("conflict with %1").arg(2 - row, 2, 10, QLatin1Char('0'))),
                conflict);
            QCOMPARE(state == QStringLiteral("clean"), !conflict);
        }
    }

    // Compute, Apply, Undo as the user clicks them; what the receivers run on
    // is read from the simulated receivers themselves.
    void computesAppliesAndUndoes_data()
    {
        QTest::addColumn<QString>("guards");
        QTest::addColumn<int>("lockedRow");  // -1: none
        QTest::addColumn<bool>("oneSilent"); // the first retuned one is switched off before Apply
        QTest::newRow("standard") << "standard" << -1 << false;
        QTest::newRow("robust, first locked") << "robust" << 0 << false;
        QTest::newRow("tight, one gone silent") << "tight" << -1 << true;
    }
    void computesAppliesAndUndoes()
    {
        QFETCH(QString, guards);
        QFETCH(int, lockedRow);
        QFETCH(bool, oneSilent);
        const std::vector<int> addresses{1, 2, 3, 4, 5, 6};
        Line line(addresses);
        line.window->findChild<QComboBox *>(QStringLiteral("cboGuards"))->setCurrentText(guards);
        if (lockedRow >= 0)
            line.table->item(lockedRow, PlanWindow::ColLock)->setCheckState(Qt::Checked);
        std::vector<int> before;
        for (int i = 0; i < line.ctx.bus.table().foundCount(); ++i)
            before.push_back(line.frequencyKHz(i));

        line.click("cmdCompute");
        line.settle();
        const std::vector<int> plan = line.window->proposed();
        QCOMPARE(plan.size(), addresses.size());
        QVERIFY(findConflicts(plan, *parseGuards(guards)).empty());
        std::vector<int> changed;
        for (std::size_t i = 0; i < plan.size(); ++i) {
            QVERIFY(plan[i] % kRasterKHz == 0);
            if (plan[i] != before[i])
                changed.push_back(static_cast<int>(i));
        }
        if (lockedRow >= 0)
            QCOMPARE(plan[static_cast<std::size_t>(lockedRow)], before[static_cast<std::size_t>(lockedRow)]);
        QVERIFY(!changed.empty());
        const int silentRow = oneSilent ? changed.front() : -1;

        if (silentRow >= 0)
            line.sim.receiver(addresses[static_cast<std::size_t>(silentRow)])->powered = false;
        line.line.clearWritten();
        line.click("cmdApply");
        line.settle();
        // One "K" per changed receiver (a silent one's repeats aside), each read back.
        QStringList tunes =
            line.framesSent(QStringLiteral("#")).filter(QRegularExpression(QStringLiteral("^#..K")));
        tunes.removeDuplicates();
        QCOMPARE(tunes.size(), static_cast<qsizetype>(changed.size()));
        QCOMPARE(
            line.framesSent(QStringLiteral("%")).filter(QRegularExpression(QStringLiteral("^%..M"))).size(),
            static_cast<qsizetype>(changed.size()) + (silentRow >= 0 ? 2 : 0));
        for (const int i : changed) {
            const bool silent = i == silentRow;
            const SimReceiver *r = line.sim.receiver(addresses[static_cast<std::size_t>(i)]);
            QCOMPARE(line.text(i, PlanWindow::ColDeploy), silent ? "no response" : "done");
            if (!silent)
                QCOMPARE(toKHz(mhzFromCode(QString::number(r->tunedCode(), 16))), plan[std::size_t(i)]);
        }
        // The line as it was is on disk before anything was sent.
        QFile backup(line.window->backupPath());
        QVERIFY(backup.fileName().startsWith(line.dataDir.path()));
        QVERIFY(backup.open(QIODevice::ReadOnly));
        const SettingsParse saved = parseSettings(backup.readAll());
        QCOMPARE(saved.lines.size(), static_cast<qsizetype>(addresses.size()));

        if (silentRow >= 0)
            line.sim.receiver(addresses[static_cast<std::size_t>(silentRow)])->powered = true;
        line.click("cmdUndo");
        line.settle();
        for (const int i : changed) {
            const SimReceiver *r = line.sim.receiver(addresses[static_cast<std::size_t>(i)]);
            QCOMPARE(toKHz(mhzFromCode(QString::number(r->tunedCode(), 16))), before[std::size_t(i)]);
            QCOMPARE(line.text(i, PlanWindow::ColDeploy), QStringLiteral("done"));
        }
    }

    // Each file as the user chooses it through the file dialog: the plan
    // written and read back, a list checked against the line, bad files refused.
    void files_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QByteArray>("content"); // written before an import; empty for an export
        QTest::addColumn<QString>("expected");   // in the status line, or the message shown
        QTest::newRow("plan as CSV") << "cmdExportCsv" << QByteArray() << "frequencies written";
        QTest::newRow("plain list") << "cmdExportList" << QByteArray() << "frequencies written";
        QTest::newRow("list on top of the line")
            << "cmdImportList" << QByteArray("LINE") << "0 of 2 receivers clean";
        QTest::newRow("list far from the line")
            << "cmdImportList" << QByteArray("650.000\n651.000\n") << "2 of 2 receivers clean";
        QTest::newRow("not a list") << "cmdImportList" << QByteArray("470.000\nhello\n") << "Line 2";
    }
    void files()
    {
        QFETCH(QString, button);
        QFETCH(QByteArray, content);
        QFETCH(QString, expected);
        Line line({1, 2});
        line.click("cmdCompute");
        line.settle();
        const QString path = line.dataDir.filePath(QStringLiteral("chosen.txt"));
        if (!content.isEmpty()) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            // "LINE": the receivers' own frequencies, each then on top of another carrier.
            if (content == "LINE")
                content = exportFrequencyList({line.frequencyKHz(0), line.frequencyKHz(1)}).toUtf8();
            file.write(content);
        }
        line.dialogs.queueFileName(path);
        line.click(qPrintable(button));
        const QString shown = line.window->findChild<QLabel *>(QStringLiteral("lblPlanStatus"))->text() +
                              line.dialogs.messages().join(QLatin1Char('\n'));
        QVERIFY2(shown.contains(expected), qPrintable(shown));
        if (button == QLatin1String("cmdImportList"))
            return;
        // What was written reads back as the proposed frequencies.
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const FrequencyListResult back = importFrequencyList(QString::fromUtf8(file.readAll()));
        QVERIFY(back.ok());
        std::vector<int> plan = line.window->proposed();
        std::vector<int> read = back.frequenciesKHz;
        std::sort(plan.begin(), plan.end());
        std::sort(read.begin(), read.end());
        QCOMPARE(read, plan);
    }

    // The last spectrum scan, run by the receiver layer as the detail window
    // runs it, keeps the plan off what it measured above the threshold.
    void keepsOffTheLastScan_data()
    {
        QTest::addColumn<double>("thresholdDbm");
        QTest::addColumn<bool>("keptOff");
        QTest::newRow("every point a signal") << -150.0 << true;
        QTest::newRow("no point above") << 30.0 << false;
    }
    void keepsOffTheLastScan()
    {
        QFETCH(double, thresholdDbm);
        Line line({1, 2});
        const int low = lineCarriers(line.ctx.bus.table().found()).front().bandLowKHz;
        constexpr int kPoints = 41; // the band's lowest MHz
        line.ctx.detail.open(0);
        for (int i = 0; i < kPoints; ++i)
            QVERIFY(line.ctx.detail.scanStep(i, (low + i * kRasterKHz) / 1000.0));
        QCOMPARE(line.session->lastScan().points().size(), std::size_t(kPoints));
        line.window->findChild<QCheckBox *>(QStringLiteral("chkScan"))->setChecked(true);
        line.window->findChild<QDoubleSpinBox *>(QStringLiteral("spnThreshold"))->setValue(thresholdDbm);
        line.click("cmdCompute");
        line.settle();
        const std::vector<int> plan = line.window->proposed();
        const int lowest = *std::min_element(plan.begin(), plan.end());
        QTEST(lowest >= low + (kPoints - 1) * kRasterKHz + Guards{}.carrier, "keptOff");
    }

    // A frequency the receiver refuses, and one it never hears.
    void deployOutcomes_data()
    {
        QTest::addColumn<int>("offsetSteps"); // from the band's start
        QTest::addColumn<bool>("powered");
        QTest::addColumn<int>("outcome");
        QTest::newRow("in band") << 40 << true << int(DeployOutcome::Done);
        QTest::newRow("below the band") << -40 << true << int(DeployOutcome::NotTaken);
        QTest::newRow("switched off") << 40 << false << int(DeployOutcome::NoResponse);
    }
    void deployOutcomes()
    {
        QFETCH(int, offsetSteps);
        QFETCH(bool, powered);
        QFETCH(int, outcome);
        TestBed bed;
        SimBus &sim = bed.attachReceivers(1, {3});
        QVERIFY(bed.startHeadless());
        sim.receiver(3)->powered = powered;
        const int code = sim.receiver(3)->bandStartCode + offsetSteps;
        QList<int> seen;
        QObject::connect(&bed.session->deploy(), &FrequencyDeploy::receiverDeployed, &bed.session->deploy(),
                         [&](int, DeployOutcome o) { seen << int(o); });
        QVERIFY(bed.session->deploy().start({{0, QString::number(code, 16).toUpper()}}));
        while (bed.session->deploy().busy())
            bed.session->loop().runSteps();
        QCOMPARE(seen, QList<int>{outcome});
        if (powered)
            QCOMPARE(sim.receiver(3)->tunedCode() == code, outcome == int(DeployOutcome::Done));
    }
};

QTEST_MAIN(TestPlanWindow)
#include "tst_planwindow.moc"
