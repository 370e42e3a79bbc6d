#include "receivers/settingsfile.h"
#include "support/testbed.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <numeric>

using namespace zun;

class TestSettingsFile : public QObject
{
    Q_OBJECT
private slots:
    void everySavedRecordLoadsBackAsItsSettingsWrite()
    {
        // What detection or a hand-edited file can store: any Latin-1 byte in
        // the texts, texts cut short or a name too long, group 0..15, channel
        // 1..16, squelch and the second level 0..255, both flags.
        QRandomGenerator random(9);
        const auto text = [&](int longest) {
            QString t(random.bounded(longest + 1), QChar());
            for (QChar &c : t)
                c = QChar(random.bounded(256));
            return t;
        };
        const auto hex = [](int value, int width) {
            return QString::number(value, 16).toUpper().rightJustified(width, '0');
        };
        // The format has no way to carry these two inside a quoted string.
        const auto carried = [](QString t, int width) {
            return t.replace('"', '\'').replace('\n', ' ').leftJustified(width, ' ', true);
        };
        for (int round = 0; round < 20; ++round) {
            TestBed bed;
            std::vector<int> all(64);
            std::iota(all.begin(), all.end(), 1);
            bed.attachReceivers(1, all);
            bed.ctx.bus.options().CommPort = 1;
            bed.ctx.bus.openLine();
            bed.ctx.bus.resizeTable(64);
            bed.ctx.bus.CheckReceivers();
            bed.ctx.bus.options().Retry = 0; // a receiver may refuse odd bytes; one frame each
            bed.line.clearWritten();
            QList<ReceiverRecord> records;
            QStringList writes;
            for (int address = 1; address <= 64; ++address) {
                ReceiverRecord r;
                r.address = address;
                r.name = text(8);
                r.group = int(random.bounded(16));
                r.channel = 1 + int(random.bounded(16));
                r.channelFreqCode = text(4);
                r.manualFreqCode = text(4);
                r.squelch = int(random.bounded(256));
                r.secondLevel = int(random.bounded(256));
                r.manualFreq = random.bounded(2);
                r.mute = random.bounded(2);
                records << r;
                writes << "#" + hex(address, 2) + "M" + carried(r.name, 6) + hex(r.group, 1) +
                              hex(r.channel % 16, 1) +
                              carried(r.manualFreq ? r.manualFreqCode : r.channelFreqCode, 4) +
                              hex(r.squelch, 2) + hex(r.secondLevel, 2) +
                              QString::number(r.manualFreq + 2 * r.mute) + "\r";
            }
            const SettingsParse loaded = parseSettings(formatSettings(records));
            QCOMPARE(loaded.error, QString());
            for (const SettingsLine &line : loaded.lines)
                QVERIFY(bed.ctx.bus.programReceiver(line));
            QCOMPARE(bed.framesSent(), writes);
        }
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
