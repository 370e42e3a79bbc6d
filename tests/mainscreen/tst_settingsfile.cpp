#include "core/receiverrecord.h"
#include "mainscreen/settingsfile.h"

#include <QTemporaryDir>
#include <QTest>

using namespace zun;

class TestSettingsFile : public QObject
{
    Q_OBJECT
private slots:
    void settingsWriteSendsChannel16AsZero()
    {
        ReceiverRecord r;
        r.address = 5;
        r.name = "MIC 1 ";
        r.group = 3;
        r.channel = 16;
        r.channelFreqCode = "1234";
        r.manualFreqCode = "1A2B";
        r.squelch = 99;
        r.secondLevel = 0xC8;
        r.manualFreq = r.mute = true;
        QCOMPARE(settingsWriteFrame(r), "#05MMIC 1 301A2B63C83\r");
    }

    void savingReplacesTheFileWhole()
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
};

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
