#include "core/receiverrecord.h"
#include "mainscreen/settingsfile.h"

#include <QTemporaryDir>
#include <QTest>

using namespace zun;

namespace {
ReceiverRecord record(int address, const QString &name, bool manual, bool mute)
{
    ReceiverRecord r;
    r.address = address;
    r.name = name;
    r.group = 3;
    r.channel = 16;
    r.channelFreqCode = QStringLiteral("1234");
    r.manualFreqCode = QStringLiteral("1A2B");
    r.squelch = 99;
    r.secondLevel = 200;
    r.manualFreq = manual;
    r.mute = mute;
    return r;
}
} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT
private slots:
    void linesAreWrittenInTheDelimitedFormat();
    void anEmptyTableSavesAnEmptyFile();
    void whatIsSavedReadsBackTheSame();
    void settingsWriteCarriesTheModeDigit_data();
    void settingsWriteCarriesTheModeDigit();
    void shortAndLongNamesAreSentSixWide();
    void malformedFilesAreRejectedNamingTheLine_data();
    void malformedFilesAreRejectedNamingTheLine();
    void savingReplacesTheFileWhole();
};

void TestSettingsFile::linesAreWrittenInTheDelimitedFormat()
{
    const QByteArray text = formatSettings({record(5, "MIC 1 ", false, true), record(64, "VOX   ", true, false)});
    QCOMPARE(text, QByteArray("5,\"MIC 1 \",3,16,\"1234\",\"1A2B\",99,200,0,-1\r\n"
                              "64,\"VOX   \",3,16,\"1234\",\"1A2B\",99,200,-1,0\r\n"));
}

void TestSettingsFile::anEmptyTableSavesAnEmptyFile()
{
    QVERIFY(formatSettings({}).isEmpty());
    const SettingsParse parsed = parseSettings(QByteArray());
    QVERIFY(parsed.error.isEmpty());
    QVERIFY(parsed.lines.isEmpty());
}

void TestSettingsFile::whatIsSavedReadsBackTheSame()
{
    const ReceiverRecord r = record(12, "AB+-*/", true, true);
    const SettingsParse parsed = parseSettings(formatSettings({r}));
    QVERIFY2(parsed.error.isEmpty(), qPrintable(parsed.error));
    QCOMPARE(parsed.lines.size(), 1);
    const SettingsLine &l = parsed.lines.first();
    QCOMPARE(l.address, 12);
    QCOMPARE(l.name, QString("AB+-*/"));
    QCOMPARE(l.group, 3);
    QCOMPARE(l.channel, 16);
    QCOMPARE(l.channelFreqCode, QString("1234"));
    QCOMPARE(l.manualFreqCode, QString("1A2B"));
    QCOMPARE(l.squelch, 99);
    QCOMPARE(l.secondLevel, 200);
    QVERIFY(l.manualFreq);
    QVERIFY(l.mute);
}

void TestSettingsFile::settingsWriteCarriesTheModeDigit_data()
{
    QTest::addColumn<bool>("manual");
    QTest::addColumn<bool>("mute");
    QTest::addColumn<QString>("frame");
    // Channel 16 travels as the digit 0; the frequency is the manual one only when in force.
    QTest::newRow("neither") << false << false << "#05MMIC 1 30123463C80\r";
    QTest::newRow("manual") << true << false << "#05MMIC 1 301A2B63C81\r";
    QTest::newRow("mute") << false << true << "#05MMIC 1 30123463C82\r";
    QTest::newRow("both") << true << true << "#05MMIC 1 301A2B63C83\r";
}

void TestSettingsFile::settingsWriteCarriesTheModeDigit()
{
    QFETCH(bool, manual);
    QFETCH(bool, mute);
    QFETCH(QString, frame);
    ReceiverRecord r = record(5, "MIC 1 ", manual, mute);
    r.secondLevel = 0xC8;
    QCOMPARE(settingsWriteFrame(r), frame);
}

void TestSettingsFile::shortAndLongNamesAreSentSixWide()
{
    ReceiverRecord r = record(1, "AB", false, false);
    QCOMPARE(settingsWriteFrame(r).mid(4, 6), QString("AB    "));
    r.name = "LONGNAME";
    QCOMPARE(settingsWriteFrame(r).mid(4, 6), QString("LONGNA"));
}

void TestSettingsFile::malformedFilesAreRejectedNamingTheLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("mentions");
    const QByteArray good = "5,\"MIC 1 \",3,4,\"1234\",\"1234\",10,0,0,-1\r\n";
    QTest::newRow("too few fields") << good + "6,\"X\",3,4\r\n" << "Line 2";
    QTest::newRow("text where a number belongs") << good + "6,\"X\",three,4,\"1234\",\"1234\",10,0,0,0\r\n"
                                                 << "Line 2";
    QTest::newRow("address out of range") << QByteArray("65,\"X\",3,4,\"1234\",\"1234\",10,0,0,0\r\n")
                                          << "Line 1";
    QTest::newRow("squelch out of range") << QByteArray("6,\"X\",3,4,\"1234\",\"1234\",100,0,0,0\r\n")
                                          << "Line 1";
    QTest::newRow("flag neither 0 nor -1") << QByteArray("6,\"X\",3,4,\"1234\",\"1234\",10,0,2,0\r\n")
                                           << "Line 1";
    QTest::newRow("frequency not hex") << QByteArray("6,\"X\",3,4,\"12G4\",\"1234\",10,0,0,0\r\n") << "Line 1";
    QTest::newRow("unterminated quote") << good + good + "7,\"X,3,4,\"1234\",\"1234\",10,0,0,0\r\n"
                                        << "Line 3";
    QTest::newRow("binary garbage") << QByteArray("\x7f\x45\x4c\x46\x02\x01\x01\x00\x00", 9) << "Line 1";
    QTest::newRow("huge file") << good.repeated(5000) << "more lines";
}

void TestSettingsFile::malformedFilesAreRejectedNamingTheLine()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, mentions);
    const SettingsParse parsed = parseSettings(text);
    QVERIFY2(parsed.error.contains(mentions), qPrintable(parsed.error));
}

void TestSettingsFile::savingReplacesTheFileWhole()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("rack.zun");
    QVERIFY(saveSettingsFile(path, "old\r\n").isEmpty());
    QVERIFY(saveSettingsFile(path, "new\r\n").isEmpty());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("new\r\n"));
    // A folder that does not exist cannot take the file; the error says why.
    QVERIFY(!saveSettingsFile(dir.filePath("missing/rack.zun"), "x").isEmpty());
}

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
