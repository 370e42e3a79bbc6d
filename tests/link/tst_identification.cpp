#include "core/receiverrecord.h"
#include "link/detection.h"

#include <QTest>

using namespace zun;

namespace {
// "$" + address + name + group + channel + code + squelch + second level
// + group table + band start + band width + flags.
QString identification(QChar channel = '4', QChar flags = '0', const QString &name = "MIC 1 ")
{
    return "$05" + name + "3" + channel + "1234" + "1E" + "80" + "B88880000000" + "1000" + "0FA0" + flags +
           "\r";
}
} // namespace

class TestIdentification : public QObject
{
    Q_OBJECT
private slots:
    void fieldsAreTakenByPosition()
    {
        const auto r = parseIdentification(identification(), 5);
        QVERIFY(r && r->online);
        QCOMPARE(
            QStringList({r->name, r->channelFreqCode, r->manualFreqCode, r->groupTable, r->bandStartCode}),
            QStringList({"MIC 1 ", "1234", "1234", "B88880000000", "1000"}));
        // 0FA0: a 100 MHz band
        QCOMPARE((QList<int>{r->address, r->group, r->channel, r->squelch, r->secondLevel, r->bandWidth}),
                 (QList<int>{5, 3, 4, 30, 128, 4000}));
        QCOMPARE(parseIdentification(identification('0'), 5)->channel, 16);
    }

    void lastCharacterCarriesMuteAndManualFlags_data()
    {
        QTest::addColumn<QChar>("digit");
        QTest::addColumn<bool>("mute");
        QTest::addColumn<bool>("manual");
        QTest::newRow("0") << QChar('0') << false << false;
        QTest::newRow("1") << QChar('1') << false << true;
        QTest::newRow("2") << QChar('2') << true << false;
        QTest::newRow("3") << QChar('3') << true << true;
    }
    void lastCharacterCarriesMuteAndManualFlags()
    {
        QFETCH(QChar, digit);
        QFETCH(bool, mute);
        const auto r = parseIdentification(identification('4', digit), 5);
        QVERIFY(r);
        QCOMPARE(r->mute, mute);
        QTEST(r->manualFreq, "manual");
    }

    void garbledRepliesAreNoReceiver_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::newRow("empty") << QString();
        QTest::newRow("another address") << "$06" + identification().mid(3);
        QTest::newRow("no dollar") << "#05" + identification().mid(3);
    }
    void garbledRepliesAreNoReceiver()
    {
        QFETCH(QString, reply);
        QVERIFY(!parseIdentification(reply, 5));
        ReceiverRecord untouched;
        untouched.name = "KEEP  ";
        QVERIFY(!applyIdentification(untouched, reply, 5));
        QCOMPARE(untouched.name, QString("KEEP  "));
    }
};

QTEST_GUILESS_MAIN(TestIdentification)
#include "tst_identification.moc"
