#include "receivers/frames.h"
#include "receivers/receiverrecord.h"
#include "receivers/replies.h"

#include <QTest>

using namespace zun;

namespace {
// A full identification reply of receiver 05: name "VOX 1 ", group 3,
// channel 0 (16), code 1234, squelch 0x14, second level 0x30, a group table,
// band start 72BA, width 0FA0, flags digit.
QString identification(const QString &flags = QStringLiteral("3"))
{
    return QStringLiteral("$05VOX 1 30123414306BCDEF12345672BA0FA0") + flags + QLatin1Char('\r');
}
} // namespace

class TestReplies : public QObject
{
    Q_OBJECT
private slots:
    void identificationReadsEveryReplyFromTheAddress_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<bool>("isReply");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("channel");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("groupTable");
        QTest::addColumn<int>("bandWidth");
        QTest::addColumn<int>("flags"); // mute * 2 + manual

        const QString full = identification();
        QTest::newRow("full") << full << true << "VOX 1 " << 16 << "1234"
                              << "6BCDEF123456" << 4000 << 3;
        QTest::newRow("flags 2 mutes only") << identification("2") << true << "VOX 1 " << 16 << "1234"
                                            << "6BCDEF123456" << 4000 << 2;
        QTest::newRow("flags 1 is manual only") << identification("1") << true << "VOX 1 " << 16 << "1234"
                                                << "6BCDEF123456" << 4000 << 1;
        QTest::newRow("cut after the band width") << full.left(39) << true << "VOX 1 " << 16 << "1234"
                                                  << "6BCDEF123456" << 4000 << 0;
        QTest::newRow("cut inside the name") << full.left(6) << true << "VOX" << 16 << ""
                                             << "" << 0 << 0;
        QTest::newRow("only the head") << full.left(3) << true << "" << 16 << ""
                                       << "" << 0 << 0;
        QTest::newRow("accented and control bytes in the name")
            << QStringLiteral("$05\u00C9\u0001AB  ") + full.mid(9) << true
            << QStringLiteral("\u00C9\u0001AB  ") << 16 << "1234"
            << "6BCDEF123456" << 4000 << 3;
        QTest::newRow("blanks in the group table")
            << full.left(19) + QStringLiteral("6B  EF 23456") + full.mid(31) << true << "VOX 1 " << 16
            << "1234"
            << "6B  EF 23456" << 4000 << 3;
        QTest::newRow("junk where hex belongs reads as 0")
            << full.left(35) + QStringLiteral("0FZ0") + full.mid(39) << true << "VOX 1 " << 16 << "1234"
            << "6BCDEF123456" << 0xF00 << 3;
        QTest::newRow("another address") << QStringLiteral("$06") + full.mid(3) << false << "" << 0 << ""
                                         << "" << 0 << 0;
        QTest::newRow("no dollar") << QStringLiteral("#05") + full.mid(3) << false << "" << 0 << ""
                                   << "" << 0 << 0;
        QTest::newRow("a single address digit") << QStringLiteral("$5") << false << "" << 0 << ""
                                                << "" << 0 << 0;
        QTest::newRow("empty") << QString() << false << "" << 0 << ""
                               << "" << 0 << 0;
    }
    void identificationReadsEveryReplyFromTheAddress()
    {
        QFETCH(QString, reply);
        QFETCH(bool, isReply);
        const auto id = parseIdentification(reply, 5);
        QCOMPARE(id.has_value(), isReply);
        if (!id)
            return;
        QFETCH(QString, name);
        QFETCH(int, channel);
        QFETCH(QString, code);
        QFETCH(QString, groupTable);
        QFETCH(int, bandWidth);
        QFETCH(int, flags);
        QCOMPARE(id->name, name);
        QCOMPARE(id->channel, channel);
        QCOMPARE(id->frequencyCode, code);
        QCOMPARE(id->groupTable, groupTable);
        QCOMPARE(id->bandWidth, bandWidth);
        QCOMPARE(int(id->mute) * 2 + int(id->manualFreq), flags);
        if (reply.size() >= 40)
            QVERIFY(id->group == 3 && id->squelch == 0x14 && id->secondLevel == 0x30 &&
                    id->bandStartCode == "72BA");
    }

    void shortRepliesGiveTheirFieldsOrNothing_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("reply");
        QTest::addColumn<bool>("isReply");
        QTest::addColumn<QString>("value");
        QTest::newRow("levels") << "N"
                                << "$05A01E80C1\r" << true << "160 30 128 193";
        QTest::newRow("levels, lower case") << "N"
                                            << "$05a01e80c1" << true << "160 30 128 193";
        QTest::newRow("levels cut after RF A") << "N"
                                               << "$05A01E" << true << "160 30 0 0";
        QTest::newRow("levels, half a byte") << "N"
                                             << "$05A01" << true << "160 1 0 0";
        QTest::newRow("levels from another") << "N"
                                             << "$06A01E80C1" << false << "";
        QTest::newRow("levels, noise first") << "N"
                                             << "x$05A01E80C1" << false << "";
        QTest::newRow("scan point") << "E"
                                    << "$05000102FF\r" << true << "0 1 2 255";
        QTest::newRow("scan point garbled") << "E"
                                            << "$0?000102FF" << false << "";
        QTest::newRow("preset") << "D"
                                << "$05129A\r" << true << "129A";
        QTest::newRow("preset cut") << "D"
                                    << "$0512" << true << "12";
        QTest::newRow("preset from another") << "D"
                                             << "$15129A\r" << false << "";
        QTest::newRow("text A") << "A"
                                << "$05ZR8000V1.2\r" << true << "ZR8000";
        QTest::newRow("text A garbled is still read") << "A"
                                                      << "#15ZR" << true << "ZR";
        QTest::newRow("text A empty") << "A"
                                      << "" << false << "";
        QTest::newRow("text B") << "B"
                                << "$05120\r" << true << "1.20";
        QTest::newRow("text B cut") << "B"
                                    << "$051" << true << "1.";
        QTest::newRow("text B empty") << "B"
                                      << "" << false << "";
        QTest::newRow("presence") << "L"
                                  << "$05\r" << true << "5";
        QTest::newRow("presence, any first character") << "L"
                                                       << "#05" << true << "5";
        QTest::newRow("presence of another") << "L"
                                             << "$06\r" << false << "";
        QTest::newRow("presence, nothing") << "L"
                                           << "" << false << "";
    }
    void shortRepliesGiveTheirFieldsOrNothing()
    {
        QFETCH(QString, kind);
        QFETCH(QString, reply);
        QFETCH(bool, isReply);
        QFETCH(QString, value);
        std::optional<QString> got;
        const auto bytes = [](const LevelReply &l) {
            return QStringLiteral("%1 %2 %3 %4").arg(l.audio).arg(l.rfA).arg(l.rfB).arg(l.battery);
        };
        if (kind == "N") {
            if (const auto v = parseLevels(reply, 5))
                got = bytes(*v);
        } else if (kind == "E") {
            if (const auto v = parseScanPoint(reply, 5))
                got = bytes(v->raw);
        } else if (kind == "D") {
            if (const auto v = parsePreset(reply, 5))
                got = v->frequencyCode;
        } else if (kind == "A") {
            if (const auto v = parseTextA(reply))
                got = v->text;
        } else if (kind == "B") {
            if (const auto v = parseTextB(reply))
                got = v->text;
        } else if (const auto v = parseAddressCheck(reply, 5)) {
            got = QString::number(v->address);
        }
        QCOMPARE(got.has_value(), isReply);
        if (got)
            QCOMPARE(*got, value);
    }

    void framesCarryAddressCommandAndArguments_data()
    {
        QTest::addColumn<QString>("frame");
        QTest::addColumn<QString>("expected");
        QTest::newRow("identify") << frames::identify(10) << "%0AM\r";
        QTest::newRow("levels") << frames::levels(64) << "%40N\r";
        QTest::newRow("presence") << frames::presence(1) << "%01L\r";
        QTest::newRow("text A") << frames::textA(3) << "%03A\r";
        QTest::newRow("text B") << frames::textB(3) << "%03B\r";
        QTest::newRow("KOB") << frames::kobStart(3) << "%03O\r";
        QTest::newRow("back on line") << frames::backOnLine(3) << "#03A1\r";
        QTest::newRow("mute on") << frames::mute(3, true) << "#03B1\r";
        QTest::newRow("mute off") << frames::mute(3, false) << "#03B0\r";
        QTest::newRow("preset") << frames::preset(3, 11, 16) << "#03DB0\r";
        QTest::newRow("tune") << frames::tune(3, "72BA") << "#03K72BA\r";
        QTest::newRow("scan tune") << frames::scanTune(3, "72BB") << "#03E72BB\r";
        QTest::newRow("squelch 99") << frames::squelch(3, 99) << "#03F63\r";
        QTest::newRow("name") << frames::name(3, "AB    ") << "#03CAB    \r";
        QTest::newRow("new address") << frames::newAddress(3, 40) << "#03L28\r";
        QTest::newRow("detail closed") << frames::detailClosed(3) << "#03NS\r";
        QTest::newRow("leaving") << frames::hostLeaving() << "#00A0\r";
        QTest::newRow("detection") << frames::detectionStart() << "#00A1\r";
        QTest::newRow("display mode") << frames::displayMode(4) << "#00O4\r";
        QTest::newRow("9600 baud") << frames::baudRate(9600).value_or("none") << "#00H17\r";
        QTest::newRow("115200 baud") << frames::baudRate(115200).value_or("none") << "#00H01\r";
        QTest::newRow("19200 baud") << frames::baudRate(19200).value_or("none") << "none";

        ReceiverRecord r;
        r.address = 12;
        r.name = "AB";
        r.group = 2;
        r.channel = 16;
        r.channelFreqCode = "1234";
        r.manualFreqCode = "5678";
        r.squelch = 20;
        r.secondLevel = 300;
        r.mute = true;
        QTest::newRow("settings, preset, muted") << frames::settingsWrite(r) << "#0CMAB    201234142C2\r";
        r.manualFreq = true;
        r.mute = false;
        r.name = "TOOLONGNAME";
        QTest::newRow("settings, manual") << frames::settingsWrite(r) << "#0CMTOOLON205678142C1\r";
    }
    void framesCarryAddressCommandAndArguments()
    {
        QFETCH(QString, frame);
        QFETCH(QString, expected);
        QCOMPARE(frame, expected);
    }
};

QTEST_GUILESS_MAIN(TestReplies)
#include "tst_replies.moc"
