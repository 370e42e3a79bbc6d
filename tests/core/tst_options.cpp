// What a hand edit or a broken disk left in the stored options is repaired
// silently on reading; and the meters' calibration table.
#include "core/options.h"
#include "platform/settingsstore.h"
#include "receivers/leveltable.h"
#include "receivers/receiverbus.h"

#include <QTest>

using namespace zun;

namespace {
const QStringList kKeys = {"MSComm/CommPort", "MSComm/Retry",     "MSComm/Baudrate",
                           "Function/TVtype", "Function/MainKOB", "Function/ChangeBaudrate"};

// Every option as the program reads it, in the order of kKeys; a flag reads 1 or 0.
QList<int> readOptions(const MemorySettingsStore &store)
{
    LineOptions options;
    options.port = options.retries = options.baudRate = -99;
    loadLinkOptions(store, options);
    return {options.port,
            options.retries,
            options.baudRate,
            readTvType(store),
            readFunctionFlag(store, "MainKOB"),
            readFunctionFlag(store, "ChangeBaudrate")};
}

void store(MemorySettingsStore &settings, const QString &key, const QString &value)
{
    settings.save(kAppName, key.section('/', 0, 0), key.section('/', 1), value);
}
} // namespace

class TestOptions : public QObject
{
    Q_OBJECT
private slots:
    void storedOptionsAreRepairedSilently_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("expected");
        const auto row = [](const char *key, const char *stored, int expected) {
            QTest::addRow("%s %s", key, stored ? stored : "missing")
                << QString(key) << QString(stored) << expected;
        };
        row("MSComm/CommPort", nullptr, 2);
        row("MSComm/CommPort", "1", 1);
        row("MSComm/CommPort", "6", 6);
        row("MSComm/CommPort", "7", 2); // beyond the stored range
        row("MSComm/CommPort", "0", 2);
        row("MSComm/Retry", "4", 4); // five attempts
        row("MSComm/Retry", "5", 2);
        row("MSComm/Retry", "0", 0);
        row("MSComm/Baudrate", "9600", 9600);
        row("MSComm/Baudrate", "38400", 38400);
        row("MSComm/Baudrate", "57600", 57600);
        row("MSComm/Baudrate", "19200", 115200); // numeric but unknown
        row("Function/ChangeBaudrate", "1", 1);
        row("Function/ChangeBaudrate", " 1", 0); // exactly "1" or off
        row("Function/ChangeBaudrate", nullptr, 0);
        row("Function/TVtype", "0", 0);
        row("Function/TVtype", "5", 5);
        row("Function/TVtype", "6", 4); // outside the range: Taiwan
    }
    void storedOptionsAreRepairedSilently()
    {
        QFETCH(QString, key);
        QFETCH(QString, stored);
        MemorySettingsStore settings;
        if (!stored.isNull())
            store(settings, key, stored);
        const int savesBefore = settings.saveCount();
        QTEST(readOptions(settings).at(kKeys.indexOf(key)), "expected");
        QCOMPARE(settings.saveCount(), savesBefore); // nothing is written back at start
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
        MemorySettingsStore settings;
        for (const QString &key : kKeys)
            store(settings, key, value);
        QCOMPARE(readOptions(settings), QList<int>({2, 2, 115200, 4, 0, 0}));
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
