#include "core/receiverrecord.h"
#include "link/detection.h"

#include <QTest>

using namespace zun;

namespace {
// "$" + address + name + group + channel + code + squelch + second level
// + group table + band start + band width + flags.
QString identification(QChar channel = '4', QChar flags = '0', const QString &name = "MIC 1 ")
{
    return "$05" + name + "3" + channel + "1234" + "1E" + "80" + "B88880000000" + "1000" + "0FA0" + flags + "\r";
}
} // namespace

class TestIdentification : public QObject
{
    Q_OBJECT
private slots:
    void fieldsAreTakenByPosition();
    void lastCharacterCarriesMuteAndManualFlags_data();
    void lastCharacterCarriesMuteAndManualFlags();
    void garbledRepliesAreNoReceiver_data();
    void garbledRepliesAreNoReceiver();
};

void TestIdentification::fieldsAreTakenByPosition()
{
    const auto r = parseIdentification(identification(), 5);
    QVERIFY(r);
    QCOMPARE(r->address, 5);
    QCOMPARE(r->name, QString("MIC 1 "));
    QCOMPARE(r->group, 3);
    QCOMPARE(r->channel, 4);
    QCOMPARE(r->channelFreqCode, QString("1234"));
    QCOMPARE(r->manualFreqCode, QString("1234"));
    QCOMPARE(r->squelch, 30);
    QCOMPARE(r->secondLevel, 128);
    QCOMPARE(r->groupTable, QString("B88880000000"));
    QCOMPARE(r->bandStartCode, QString("1000"));
    QCOMPARE(r->bandWidth, 4000); // 0FA0: a 100 MHz band
    QVERIFY(r->online);

    QCOMPARE(parseIdentification(identification('0'), 5)->channel, 16);
}

void TestIdentification::lastCharacterCarriesMuteAndManualFlags_data()
{
    QTest::addColumn<QChar>("digit");
    QTest::addColumn<bool>("mute");
    QTest::addColumn<bool>("manual");
    QTest::newRow("0") << QChar('0') << false << false;
    QTest::newRow("1") << QChar('1') << false << true;
    QTest::newRow("2") << QChar('2') << true << false;
    QTest::newRow("3") << QChar('3') << true << true;
}

void TestIdentification::lastCharacterCarriesMuteAndManualFlags()
{
    QFETCH(QChar, digit);
    QFETCH(bool, mute);
    QFETCH(bool, manual);
    const auto r = parseIdentification(identification('4', digit), 5);
    QVERIFY(r);
    QCOMPARE(r->mute, mute);
    QCOMPARE(r->manualFreq, manual);
}

void TestIdentification::garbledRepliesAreNoReceiver_data()
{
    QTest::addColumn<QString>("reply");
    QTest::newRow("cut short") << identification().left(30);
    QTest::newRow("empty") << QString();
    QTest::newRow("control character in the name") << identification('4', '0', "MI\x01" "C  ");
    QTest::newRow("noise in a hex field") << identification('?');
    QTest::newRow("noise in the flags") << identification('4', 'Z');
}

void TestIdentification::garbledRepliesAreNoReceiver()
{
    QFETCH(QString, reply);
    QVERIFY(!parseIdentification(reply, 5));
    ReceiverRecord untouched;
    untouched.name = "KEEP  ";
    QVERIFY(!applyIdentification(untouched, reply, 5));
    QCOMPARE(untouched.name, QString("KEEP  "));
}

QTEST_GUILESS_MAIN(TestIdentification)
#include "tst_identification.moc"
