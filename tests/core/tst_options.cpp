#include "core/options.h"
#include "platform/settingsstore.h"
#include "receivers/leveltable.h"
#include "receivers/receiverbus.h"

#include <QTest>

using namespace zun;

class TestOptions : public QObject
{
    Q_OBJECT
private slots:
    void storedLinkOptionsAreRepairedSilently_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected");

        QTest::newRow("missing port") << "CommPort" << QString() << 2;
        QTest::newRow("port 1") << "CommPort"
                                << "1" << 1;
        QTest::newRow("port 6") << "CommPort"
                                << "6" << 6;
        QTest::newRow("port 7 is beyond the stored range") << "CommPort"
                                                           << "7" << 2;
        QTest::newRow("port 0") << "CommPort"
                                << "0" << 2;
        QTest::newRow("port text") << "CommPort"
                                   << "COM3" << 2;
        QTest::newRow("retry 4 gives five attempts") << "Retry"
                                                     << "4" << 4;
        QTest::newRow("retry 5") << "Retry"
                                 << "5" << 2;
        QTest::newRow("retry -1") << "Retry"
                                  << "-1" << 2;
        QTest::newRow("retry 0") << "Retry"
                                 << "0" << 0;
        QTest::newRow("baud 9600") << "Baudrate"
                                   << "9600" << 9600;
        QTest::newRow("baud 38400") << "Baudrate"
                                    << "38400" << 38400;
        QTest::newRow("baud 57600") << "Baudrate"
                                    << "57600" << 57600;
        QTest::newRow("baud numeric but unknown") << "Baudrate"
                                                  << "19200" << 115200;
        QTest::newRow("baud text") << "Baudrate"
                                   << "fast" << 115200;
    }
    void storedLinkOptionsAreRepairedSilently()
    {
        QFETCH(QString, key);
        QFETCH(QString, stored);

        MemorySettingsStore store;
        if (!stored.isNull())
            store.save(kAppName, "MSComm", key, stored);
        const int savesBefore = store.saveCount();
        LineOptions state;
        state.CommPort = state.Retry = state.Baudrate = -99;
        loadLinkOptions(store, state);

        const int actual = key == "CommPort" ? state.CommPort : key == "Retry" ? state.Retry : state.Baudrate;
        QTEST(actual, "expected");
        QCOMPARE(store.saveCount(), savesBefore); // nothing is written back at start
    }

    void functionFlagsNeedExactlyOne_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<bool>("on");
        QTest::newRow("1") << "1" << true;
        QTest::newRow("blank 1") << " 1" << false;
        QTest::newRow("missing") << QString() << false;
    }
    void functionFlagsNeedExactlyOne()
    {
        QFETCH(QString, stored);
        MemorySettingsStore store;
        if (!stored.isNull())
            store.save(kAppName, "Function", "ChangeBaudrate", stored);
        QTEST(readFunctionFlag(store, "ChangeBaudrate"), "on");
    }

    void tvTypeOutsideItsRangeBecomesTaiwan_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected");
        QTest::newRow("0") << "0" << 0;
        QTest::newRow("5") << "5" << 5;
        QTest::newRow("6") << "6" << 4;
        QTest::newRow("-1") << "-1" << 4;
        QTest::newRow("text") << "USA" << 4;
    }
    void tvTypeOutsideItsRangeBecomesTaiwan()
    {
        QFETCH(QString, stored);
        MemorySettingsStore store;
        store.save(kAppName, "Function", "TVtype", stored);
        QTEST(readTvType(store), "expected");
    }

    void levelTableHoldsTheCalibration_data()
    {
        QTest::addColumn<int>("raw");
        QTest::addColumn<int>("level");
        const int pairs[][2] = {{0, 0},    {1, 1},    {8, 1},    {9, 2},    {31, 6},   {43, 9},   {65, 25},
                                {66, 27},  {70, 32},  {71, 33},  {72, 34},  {128, 41}, {149, 47}, {170, 61},
                                {171, 63}, {172, 64}, {173, 66}, {239, 86}, {253, 94}, {254, 94}, {255, 99}};
        for (const auto &p : pairs)
            QTest::addRow("%d", p[0]) << p[0] << p[1];
    }
    void levelTableHoldsTheCalibration()
    {
        QFETCH(int, raw);
        QTEST(buildLevelTable()[raw], "level");
    }

    void levelTableNeverFalls()
    {
        const LevelTable table = buildLevelTable();
        for (int i = 1; i < 256; ++i)
            QVERIFY2(table[i] >= table[i - 1], qPrintable(QString::number(i)));
    }
};

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_options.moc"
