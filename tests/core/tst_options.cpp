// What a hand edit or a broken disk left in the stored options is repaired
// silently on reading; and the meters' calibration table.
#include "core/options.h"
#include "platform/settingsstore.h"
#include "receivers/leveltable.h"
#include "receivers/receiverbus.h"

#include <QTest>

using namespace zun;

namespace {
LineOptions linkOptions(const MemorySettingsStore &store)
{
    LineOptions options;
    options.CommPort = options.Retry = options.Baudrate = -99;
    loadLinkOptions(store, options);
    return options;
}
} // namespace

class TestOptions : public QObject
{
    Q_OBJECT
private slots:
    void storedLinkOptionsAreRepairedSilently_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected");
        const auto row = [](const char *key, const char *stored, int expected) {
            QTest::addRow("%s %s", key, stored) << QString(key) << QString(stored) << expected;
        };
        QTest::newRow("missing port") << "CommPort" << QString() << 2;
        row("CommPort", "1", 1);
        row("CommPort", "6", 6);
        row("CommPort", "7", 2); // beyond the stored range
        row("CommPort", "0", 2);
        row("CommPort", "COM3", 2);
        row("Retry", "4", 4); // five attempts
        row("Retry", "5", 2);
        row("Retry", "-1", 2);
        row("Retry", "0", 0);
        row("Baudrate", "9600", 9600);
        row("Baudrate", "38400", 38400);
        row("Baudrate", "57600", 57600);
        row("Baudrate", "19200", 115200); // numeric but unknown
        row("Baudrate", "fast", 115200);
    }
    void storedLinkOptionsAreRepairedSilently()
    {
        QFETCH(QString, key);
        QFETCH(QString, stored);
        MemorySettingsStore store;
        if (!stored.isNull())
            store.save(kAppName, "MSComm", key, stored);
        const int savesBefore = store.saveCount();
        const LineOptions options = linkOptions(store);
        QTEST(key == "CommPort" ? options.CommPort
              : key == "Retry"  ? options.Retry
                                : options.Baudrate,
              "expected");
        QCOMPARE(store.saveCount(), savesBefore); // nothing is written back at start
    }

    void garbageGivesTheDefaults_data()
    {
        QTest::addColumn<QString>("value");
        int row = 0;
        for (const char *value : {"", "   ", "COM3", "-1", "99999999999999999999999", "1e400", "nan", "0x10",
                                  "1,2", "\"3", "\x01\x02\xfe\xff", "\xef\xbc\x92" /* fullwidth 2 */})
            QTest::addRow("%d", ++row) << QString::fromUtf8(value);
        QTest::newRow("very long") << QString(100000, '7');
    }
    void garbageGivesTheDefaults()
    {
        QFETCH(QString, value);
        MemorySettingsStore store;
        for (const char *key : {"CommPort", "Retry", "Baudrate"})
            store.save(kAppName, "MSComm", key, value);
        for (const char *key : {"ChangeBaudrate", "MainKOB", "TVtype"})
            store.save(kAppName, "Function", key, value);
        const LineOptions options = linkOptions(store);
        QCOMPARE(QList<int>({options.CommPort, options.Retry, options.Baudrate}), QList<int>({2, 2, 115200}));
        QCOMPARE(readTvType(store), 4);
        QVERIFY(!readFunctionFlag(store, "ChangeBaudrate") && !readFunctionFlag(store, "MainKOB"));
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
        for (const auto &[stored, expected] : {std::pair{"0", 0}, {"5", 5}, {"6", 4}, {"-1", 4}, {"USA", 4}})
            QTest::newRow(stored) << QString(stored) << expected;
    }
    void tvTypeOutsideItsRangeBecomesTaiwan()
    {
        QFETCH(QString, stored);
        MemorySettingsStore store;
        store.save(kAppName, "Function", "TVtype", stored);
        QTEST(readTvType(store), "expected");
    }

    void levelTableHoldsTheCalibration()
    {
        const LevelTable table = buildLevelTable();
        const int pairs[][2] = {{0, 0},    {1, 1},    {8, 1},    {9, 2},    {31, 6},   {43, 9},   {65, 25},
                                {66, 27},  {70, 32},  {71, 33},  {72, 34},  {128, 41}, {149, 47}, {170, 61},
                                {171, 63}, {172, 64}, {173, 66}, {239, 86}, {253, 94}, {254, 94}, {255, 99}};
        for (const auto &p : pairs)
            QVERIFY2(table[p[0]] == p[1], qPrintable(QString::number(p[0])));
        for (int i = 1; i < 256; ++i)
            QVERIFY2(table[i] >= table[i - 1], qPrintable(QString::number(i)));
    }
};

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_options.moc"
