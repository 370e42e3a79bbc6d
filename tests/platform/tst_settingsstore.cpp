#include "platform/settingsstore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace zun;

namespace {
const QString kApp = QStringLiteral("KESTA_ZUN");

ino_t inodeOf(const QString &path)
{
    struct stat info
    {
    };
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
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::newRow("line settings") << "MSComm"
                                       << "Settings"
                                       << "115200,N,8,1";
        QTest::newRow("empty") << "Function"
                               << "MainKOB"
                               << "";
        QTest::newRow("blanks kept") << "Function"
                                     << "Name"
                                     << "  padded  ";
        QTest::newRow("at sign") << "Function"
                                 << "Odd"
                                 << "@Variant(junk)";
        QTest::newRow("quotes, semicolon") << "Function"
                                           << "Quote"
                                           << "a \"b\"; c = d";
        QTest::newRow("non-ascii") << "Function"
                                   << "Text" << QStringLiteral("Bühne 2 – ä");
    }
    void roundTrip()
    {
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, value);

        FileSettingsStore store;
        store.save(kApp, section, key, "old");
        store.save(kApp, section, key, value);
        QCOMPARE(FileSettingsStore().get(kApp, section, key), value);
        QCOMPARE(store.get(kApp, section, key + "Missing"), QString());
    }

    // A save lands on disk at once, as a new file renamed over the old one: a crash
    // half-way leaves the old file whole, and no temporary file stays behind.
    void saveReplacesFileWhole()
    {
        const QString app = "ZunAtomic";
        FileSettingsStore store;
        store.save(app, "MSComm", "Retry", "1");
        const ino_t first = inodeOf(storeFile(app));
        store.save(app, "MSComm", "Retry", "3");
        QVERIFY(first != 0 && inodeOf(storeFile(app)) != first);
        QFile f(storeFile(app));
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray text = f.readAll();
        QVERIFY(text.contains("[MSComm]") && text.contains("Retry=3"));
        QCOMPARE(QDir(m_config.filePath(app)).entryList(QDir::Files | QDir::Hidden),
                 QStringList{app + ".ini"});
    }

    void damagedFileReadsEmpty_data()
    {
        QTest::addColumn<QByteArray>("contents");
        // Garbage must read as empty; a file damaged only in part may yield
        // whatever text survives, as long as reading and saving still work.
        QTest::addColumn<bool>("garbage");

        QByteArray binary(4096, '\0');
        for (int i = 0; i < binary.size(); ++i)
            binary[i] = char((i * 131 + 7) & 0xff);
        QTest::newRow("binary") << binary << true;
        QTest::newRow("no section") << QByteArray("Baudrate=115200\n") << true;
        QTest::newRow("bad variant") << QByteArray("[MSComm]\nBaudrate=@Variant(\\0\\0\\0\\x7f\\xff)\n")
                                     << true;
        QTest::newRow("list") << QByteArray("[MSComm]\nBaudrate=115200, 9600\n") << true;
        QTest::newRow("cut section") << QByteArray("[MSComm\nBaudrate=115") << false;
    }
    void damagedFileReadsEmpty()
    {
        QFETCH(QByteArray, contents);
        QFETCH(bool, garbage);
        const QString app =
            QStringLiteral("ZunDamaged_") + QString::fromLatin1(QTest::currentDataTag()).remove(' ');
        QVERIFY(QDir().mkpath(m_config.filePath(app)));
        QFile f(storeFile(app));
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(contents);
        f.close();

        if (QByteArray(QTest::currentDataTag()) == "bad variant")
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("QVariant::load")));
        FileSettingsStore store;
        if (garbage)
            QCOMPARE(store.get(app, "MSComm", "Baudrate"), QString());
        QCOMPARE(store.get(app, "Function", "TVtype"), QString());
        store.save(app, "Function", "TVtype", "2"); // a save over the damage still lands
        QCOMPARE(store.get(app, "Function", "TVtype"), "2");
    }

private:
    QString storeFile(const QString &app) const { return m_config.filePath(app + '/' + app + ".ini"); }
    // QSettings fixes the configuration folder at its first use: set once, before any store is touched.
    QTemporaryDir m_config;
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
