// zunoria-plan run as a user runs it: exit status, what lands on standard
// output and what on standard error.

#include "coordination/conflicts.h"
#include "coordination/planfiles.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace zun;

class TstPlanCli : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString write(const QString &name, const QByteArray &text)
    {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write(text);
        return file.fileName();
    }

private slots:
    void run_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("lines");       // frequencies on standard output; -1: at least one
        QTest::addColumn<QString>("message"); // part of the one line on standard error
        const QString garbage = write("garbage.csv", "470.000,-60\nnoise\n");
        const QString scan = write("scan.csv", "470.000,-90\n470.500,-50\n471.000,-90\n");
        const QString clash = write("clash.txt", "470.000\n470.500\n471.000\n");
        const QString clean = write("clean.txt", "frequency_mhz\n470.000\n470.400\n");

        QTest::newRow("reversed band")
            << QStringList{"--band", "506-470", "--count", "3"} << 1 << 0 << "reversed";
        QTest::newRow("empty band") << QStringList{"--band", "470-470", "--count", "3"} << 1 << 0 << "empty";
        QTest::newRow("no raster point")
            << QStringList{"--band", "470.001-470.020", "--count", "1"} << 1 << 0 << "empty";
        QTest::newRow("malformed band")
            << QStringList{"--band", "470-5x6", "--count", "3"} << 1 << 0 << "5x6";
        QTest::newRow("malformed count")
            << QStringList{"--band", "470-506", "--count", "three"} << 1 << 0 << "--count";
        QTest::newRow("off-raster fixed")
            << QStringList{"--band", "470-506", "--count", "2", "--fixed", "470.010"} << 1 << 0 << "raster";
        QTest::newRow("bad guards") << QStringList{"--band", "470-506", "--max", "--guards", "350,100"} << 1
                                    << 0 << "--guards";
        QTest::newRow("count and max")
            << QStringList{"--band", "470-506", "--max", "--count", "2"} << 1 << 0 << "either";
        QTest::newRow("unreadable scan")
            << QStringList{"--band",      "470-506", "--count", "2", "--scan", m_dir.filePath("none.csv"),
                           "--threshold", "-80"}
            << 1 << 0 << "cannot read";
        QTest::newRow("malformed scan")
            << QStringList{"--band", "470-506", "--count", "2", "--scan", garbage, "--threshold", "-80"} << 1
            << 0 << "Line 2";
        QTest::newRow("scan without threshold")
            << QStringList{"--band", "470-506", "--count", "2", "--scan", scan} << 1 << 0 << "--threshold";
        QTest::newRow("fixed ones clash")
            << QStringList{"--band", "470-506", "--count", "3", "--fixed", "470", "--fixed", "470.1"} << 1
            << 0 << "conflict";
        QTest::newRow("placed all") << QStringList{"--band", "470-474", "--count", "4", "--deadline", "0.2"}
                                    << 0 << 4 << "placed 4 of 4";
        QTest::newRow("fewer than asked")
            << QStringList{"--band", "470-471", "--count", "6", "--deadline", "0.2"} << 2 << -1 << "of 6";
        QTest::newRow("max") << QStringList{"--band", "470-476",    "--max", "--guards",
                                            "tight",  "--deadline", "0.2"}
                             << 0 << -1 << "placed";
        QTest::newRow("with fixed, scan, exclusion")
            << QStringList{"--band",      "470-476",   "--count",    "3",      "--fixed",
                           "475.5",       "--exclude", "472-474",    "--scan", scan,
                           "--threshold", "-70",       "--deadline", "0.2"}
            << 0 << 3 << "(1 fixed)";
        QTest::newRow("check finds conflicts") << QStringList{"--check", clash} << 2 << 2 << "2 conflicts";
        QTest::newRow("check clean") << QStringList{"--check", clean} << 0 << 0 << "0 conflicts";
    }
    void run()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(int, lines);
        QFETCH(QString, message);
        QProcess process;
        process.start(QCoreApplication::applicationDirPath() + "/../src/zunoria-plan", arguments);
        QVERIFY2(process.waitForFinished(30000), "zunoria-plan did not finish");
        const QString out = QString::fromUtf8(process.readAllStandardOutput());
        const QStringList err =
            QString::fromUtf8(process.readAllStandardError()).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), status);
        QCOMPARE(err.size(), 1);
        QVERIFY2(err[0].contains(message), qPrintable(err[0]));

        const QStringList outLines = out.split('\n', Qt::SkipEmptyParts);
        if (lines >= 0)
            QCOMPARE(outLines.size(), lines);
        else
            QVERIFY(!outLines.isEmpty());
        if (status == 1 || arguments.contains("--check"))
            return;
        // A plan: ascending MHz with three decimals, fixed ones and all, and no conflict.
        const FrequencyListResult plan = importFrequencyList(out);
        QVERIFY2(plan.ok(), qPrintable(plan.error));
        QCOMPARE(exportFrequencyList(plan.frequenciesKHz), out);
        QVERIFY(std::is_sorted(plan.frequenciesKHz.begin(), plan.frequenciesKHz.end()));
        const qsizetype fixed = arguments.indexOf("--fixed");
        if (fixed >= 0)
            QVERIFY(outLines.contains(QString::number(arguments[fixed + 1].toDouble(), 'f', 3)));
        const qsizetype guards = arguments.indexOf("--guards");
        QVERIFY(
            findConflicts(plan.frequenciesKHz, *parseGuards(guards >= 0 ? arguments[guards + 1] : "standard"))
                .empty());
        for (int f : plan.frequenciesKHz)
            QVERIFY2(f < 472000 || f > 474000 || !arguments.contains("--exclude"), qPrintable(mhzText(f)));
    }
};

QTEST_GUILESS_MAIN(TstPlanCli)
#include "tst_plancli.moc"
