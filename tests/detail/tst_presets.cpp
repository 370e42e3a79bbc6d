#include "detail/battery.h"
#include "detail/presets.h"

#include <QTest>

using namespace zun;

Q_DECLARE_METATYPE(zun::Preset)

class TstPresets : public QObject
{
    Q_OBJECT
private slots:
    void groupTable_data();
    void groupTable();
    void repair_data();
    void repair();
    void stepping_data();
    void stepping();
    void battery_data();
    void battery();
};

void TstPresets::groupTable_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<int>("limit");
    QTest::addColumn<QList<int>>("counts"); // groups 1..limit
    QTest::addColumn<QStringList>("messages");
    const QStringList none;
    const QStringList wrong{QStringLiteral("Wrong 'GROUP LIMIT' !")};
    QTest::newRow("three groups") << "38C4FFFFFFFF" << 3 << QList<int>{8, 12, 4} << none;
    QTest::newRow("count 0 is 16") << "20A000000000" << 2 << QList<int>{16, 10} << none;
    QTest::newRow("limit 0") << "088888888888" << 11 << QList<int>(11, 8) << wrong;
    QTest::newRow("limit C") << "C88888888888" << 11 << QList<int>(11, 8) << wrong;
    QTest::newRow("limit B is fine") << "B12345678912" << 11 << QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2} << none;
    QTest::newRow("cut short") << "4A" << 4 << QList<int>{10, 16, 16, 16} << none;
    QTest::newRow("empty") << "" << 11 << QList<int>(11, 16) << wrong;
    QTest::newRow("junk digits") << "3?x5" << 3 << QList<int>{16, 16, 5} << none;
}

void TstPresets::groupTable()
{
    QFETCH(QString, table);
    QFETCH(int, limit);
    QFETCH(QList<int>, counts);
    QFETCH(QStringList, messages);
    QStringList shown;
    const PresetTable parsed = parseGroupTable(table, shown);
    QCOMPARE(parsed.groupLimit, limit);
    for (int g = 1; g <= limit; ++g)
        QCOMPARE(parsed.count(g), counts.at(g - 1));
    QCOMPARE(shown, messages);
}

void TstPresets::repair_data()
{
    QTest::addColumn<Preset>("stored");
    QTest::addColumn<Preset>("repaired");
    QTest::addColumn<QStringList>("messages");
    const QString group = QStringLiteral("Wrong 'GROUP' !");
    const QString channel = QStringLiteral("Wrong 'CHANNEL' !");
    // Table "48C4F...": 4 groups of 8, 12, 4 and 15 channels.
    QTest::newRow("valid") << Preset{2, 12} << Preset{2, 12} << QStringList{};
    QTest::newRow("group 0 becomes the limit") << Preset{0, 3} << Preset{4, 3} << QStringList{group};
    QTest::newRow("group above the limit") << Preset{9, 3} << Preset{4, 3} << QStringList{group};
    QTest::newRow("negative group") << Preset{-2, 3} << Preset{4, 3} << QStringList{group};
    QTest::newRow("channel above its count") << Preset{3, 9} << Preset{3, 4} << QStringList{channel};
    QTest::newRow("channel 0 silently 16") << Preset{1, 0} << Preset{1, 16} << QStringList{};
    QTest::newRow("group then channel") << Preset{0, 16} << Preset{4, 15} << QStringList{group, channel};
}

void TstPresets::repair()
{
    QFETCH(Preset, stored);
    QFETCH(Preset, repaired);
    QFETCH(QStringList, messages);
    QStringList shown;
    const PresetTable table = parseGroupTable(QStringLiteral("48C4F0000000"), shown);
    QVERIFY(shown.isEmpty());
    const Preset result = repairPreset(table, stored, shown);
    QCOMPARE(result.group, repaired.group);
    QCOMPARE(result.channel, repaired.channel);
    QCOMPARE(shown, messages);
}

void TstPresets::stepping_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<Preset>("from");
    QTest::addColumn<Preset>("to");
    // 3 groups of 8, 12 and 4 channels.
    QTest::newRow("channel up") << "chanUp" << Preset{1, 3} << Preset{1, 4};
    QTest::newRow("channel up wraps") << "chanUp" << Preset{1, 8} << Preset{1, 1};
    QTest::newRow("channel down wraps") << "chanDown" << Preset{2, 1} << Preset{2, 12};
    QTest::newRow("channel down") << "chanDown" << Preset{2, 5} << Preset{2, 4};
    QTest::newRow("group up wraps from the limit") << "groupUp" << Preset{3, 4} << Preset{1, 4};
    QTest::newRow("group up into a smaller group") << "groupUp" << Preset{2, 12} << Preset{3, 4};
    QTest::newRow("group down wraps to the limit and clamps") << "groupDown" << Preset{1, 8} << Preset{3, 4};
    QTest::newRow("group down keeps a fitting channel") << "groupDown" << Preset{3, 2} << Preset{2, 2};
}

void TstPresets::stepping()
{
    QFETCH(QString, button);
    QFETCH(Preset, from);
    QFETCH(Preset, to);
    QStringList shown;
    const PresetTable table = parseGroupTable(QStringLiteral("38C400000000"), shown);
    Preset result;
    if (button == QLatin1String("chanUp"))
        result = channelUp(table, from);
    else if (button == QLatin1String("chanDown"))
        result = channelDown(table, from);
    else if (button == QLatin1String("groupUp"))
        result = groupUp(table, from);
    else
        result = groupDown(table, from);
    QCOMPARE(result.group, to.group);
    QCOMPARE(result.channel, to.channel);
}

void TstPresets::battery_data()
{
    QTest::addColumn<int>("reading");
    QTest::addColumn<QString>("text");
    QTest::newRow("strong") << 16 << "100%"; // x = 17
    QTest::newRow("top of 100%") << 20 << "100%";
    QTest::newRow("80%") << 21 << "80%";
    QTest::newRow("40%") << 30 << "40%";
    QTest::newRow("10%") << 34 << "10%";
    QTest::newRow("flat") << 35 << "OFF";
    QTest::newRow("no reading") << 0 << "OFF";
}

void TstPresets::battery()
{
    QFETCH(int, reading);
    QFETCH(QString, text);
    BatteryMean average;
    for (int i = 0; i < 20; ++i)
        QVERIFY(!average.add(reading).has_value());
    QCOMPARE(average.add(reading).value_or(QString()), text);
}

QTEST_GUILESS_MAIN(TstPresets)
#include "tst_presets.moc"
