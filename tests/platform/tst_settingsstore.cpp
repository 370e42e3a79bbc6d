#include "feeds/feedoptions.h"
#include "platform/settingsstore.h"
#include "receivers/settingsfile.h"
#include "support/testbed.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <numeric>

#include <sys/stat.h>

using namespace zun;

namespace {
const QString kApp = QStringLiteral("KESTA_ZUN");

ino_t inodeOf(const QString &path)
{
    struct stat info = {};
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_ino : 0;
}
} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_config.isValid());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_config.path()));
    }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("line settings, commas") << "115200,N,8,1";
        QTest::newRow("empty") << "";
        QTest::newRow("at sign") << "@Variant(junk)";
        QTest::newRow("blanks, quotes, non-ascii") << QStringLiteral("  a \"b\"; c = d Bühne – ä  ");
    }
    // A save lands on disk at once, as a new file renamed over the old one: a crash half-way leaves the
    // old file whole, and no temporary file stays behind.
    void roundTrip()
    {
        QFETCH(QString, value);
        FileSettingsStore store;
        store.save(kApp, "MSComm", "Settings", "old");
        const ino_t old = inodeOf(storeFile(kApp));
        store.save(kApp, "MSComm", "Settings", value);
        QVERIFY(old != 0);
        QVERIFY(inodeOf(storeFile(kApp)) != old);
        QCOMPARE(QDir(m_config.filePath(kApp)).entryList(QDir::Files | QDir::Hidden),
                 QStringList{kApp + ".ini"});
        QCOMPARE(FileSettingsStore().get(kApp, "MSComm", "Settings"), value);
        QCOMPARE(store.get(kApp, "MSComm", "Missing"), QString());
    }

    // Garbage reads as empty (values of every kind are covered at start-up), and a save over it lands;
    // a save into a missing folder says why.
    void damagedFileOrFolder()
    {
        QVERIFY(!saveSettingsFile(m_config.filePath("missing/rack.zun"), "x").isEmpty());
        QVERIFY(QDir().mkpath(m_config.filePath("ZunDamaged")));
        QFile f(storeFile("ZunDamaged"));
        QVERIFY(f.open(QIODevice::WriteOnly));
        for (int i = 0; i < 4096; ++i)
            f.putChar(char((i * 131 + 7) & 0xff));
        f.close();
        FileSettingsStore store;
        QCOMPARE(store.get("ZunDamaged", "MSComm", "Baudrate"), QString());
        store.save("ZunDamaged", "Function", "TVtype", "2");
        QCOMPARE(FileSettingsStore().get("ZunDamaged", "Function", "TVtype"), "2");
    }

    // Feed settings typed into the file as the README shows them are read
    // as one text each, and a save of another setting leaves them as typed.
    void feedSettingsReadAsWritten()
    {
        const QByteArray feeds = "[Feeds]\nOscTargets=desk.local:9000,10.0.0.5:8000\nMqttHost=broker:1884\n"
                                 "MqttPassword=pa,ss\nMqttUser=stage, left\n";
        QVERIFY(QDir().mkpath(m_config.filePath(kApp)));
        QFile file(storeFile(kApp));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(feeds), feeds.size());
        file.close();
        const FeedOptions options = loadFeedOptions(FileSettingsStore(), kApp);
        QCOMPARE(options.oscTargets.size(), 2);
        QCOMPARE(options.oscTargets[1].host + ':' + QString::number(options.oscTargets[1].port),
                 "10.0.0.5:8000");
        QCOMPARE(options.mqttHost + ':' + QString::number(options.mqttPort), "broker:1884");
        QCOMPARE(options.mqttPassword, "pa,ss");
        QCOMPARE(options.mqttUser, "stage, left");
        FileSettingsStore().save(kApp, "MSComm", "Baudrate", "9600");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray after = file.readAll();
        QVERIFY2(after.contains(feeds.mid(8)), after.constData());
    }

    void everySavedRecordLoadsBackAsItsSettingsWrite()
    {
        // What a hand-edited file may hold: any character a name may have,
        // a name short or too long, any code, group 0..15, channel 1..16,
        // squelch and the second level 0..255, both flags.
        QRandomGenerator random(9);
        const auto text = [&](int longest, const QString &from) {
            QString t(random.bounded(longest + 1), QChar());
            for (QChar &c : t)
                c = from.at(random.bounded(from.size()));
            return t;
        };
        const QString nameCharacters = " *+,-./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
        const QString hexDigits = "0123456789ABCDEF";
        const auto hex = [](int value, int width) {
            return QString::number(value, 16).toUpper().rightJustified(width, '0');
        };
        const auto carried = [](const QString &t, int width) { return t.leftJustified(width, ' ', true); };
        for (int round = 0; round < 20; ++round) {
            TestBed bed;
            std::vector<int> all(64);
            std::iota(all.begin(), all.end(), 1);
            bed.attachReceivers(1, all);
            QVERIFY(bed.startHeadless());
            bed.ctx.bus.options().retries = 0; // a receiver may refuse odd bytes; one frame each
            bed.line.clearWritten();
            QList<Receiver> records;
            QStringList writes;
            for (int address = 1; address <= 64; ++address) {
                Receiver r;
                r.address = address;
                r.name = text(8, nameCharacters);
                r.group = int(random.bounded(16));
                r.channel = 1 + int(random.bounded(16));
                r.channelFreqCode = text(4, hexDigits).rightJustified(4, '0');
                r.manualFreqCode = text(4, hexDigits).rightJustified(4, '0');
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

private:
    QString storeFile(const QString &app) const { return m_config.filePath(app + '/' + app + ".ini"); }
    // QSettings fixes the configuration folder at its first use: set once, before any store is touched.
    QTemporaryDir m_config;
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
