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
    struct stat info{};
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_ino : 0;
}
} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void roundTrip_data();
    void roundTrip();
    void savedFileIsUnderXdgConfigHome();
    void saveReplacesFileWhole();
    void damagedFileReadsEmpty_data();
    void damagedFileReadsEmpty();

private:
    QString storeFile(const QString &app) const;
    // QSettings fixes the configuration folder at its first use, so it is set
    // once, before any store is touched.
    QTemporaryDir m_config;
};

void TestSettingsStore::initTestCase()
{
    QVERIFY(m_config.isValid());
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_config.path()));
}

QString TestSettingsStore::storeFile(const QString &app) const
{
    return m_config.filePath(app + QLatin1Char('/') + app + QStringLiteral(".ini"));
}

void TestSettingsStore::roundTrip_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");

    QTest::newRow("number") << "MSComm" << "Baudrate" << "115200";
    QTest::newRow("line settings") << "MSComm" << "Settings" << "115200,N,8,1";
    QTest::newRow("device path") << "Ports" << "COM3" << "/dev/serial/by-id/usb-FTDI_x-if00-port0";
    QTest::newRow("empty") << "Function" << "MainKOB" << "";
    QTest::newRow("blanks kept") << "Function" << "Name" << "  padded  ";
    QTest::newRow("at sign") << "Function" << "Odd" << "@Variant(junk)";
    QTest::newRow("quotes, semicolon") << "Function" << "Quote" << "a \"b\"; c = d";
    QTest::newRow("non-ascii") << "Function" << "Text" << QStringLiteral("Bühne 2 – ä");
}

void TestSettingsStore::roundTrip()
{
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, value);

    FileSettingsStore store;
    store.save(kApp, section, key, QStringLiteral("old"));
    store.save(kApp, section, key, value);
    QCOMPARE(FileSettingsStore().get(kApp, section, key), value);
    QCOMPARE(store.get(kApp, section, key + QStringLiteral("Missing")), QString());
}

void TestSettingsStore::savedFileIsUnderXdgConfigHome()
{
    FileSettingsStore store;
    store.save(kApp, QStringLiteral("MSComm"), QStringLiteral("Retry"), QStringLiteral("3"));
    // On disk already, without the store being destroyed or synced again.
    QFile f(storeFile(kApp));
    QVERIFY2(f.open(QIODevice::ReadOnly), qPrintable(f.fileName()));
    const QByteArray text = f.readAll();
    QVERIFY(text.contains("[MSComm]"));
    QVERIFY(text.contains("Retry=3"));
}

void TestSettingsStore::saveReplacesFileWhole()
{
    // A save writes a new file and renames it over the old one, so a crash
    // half-way leaves the old file intact: the inode changes every time and
    // no temporary files stay behind.
    const QString app = QStringLiteral("ZunAtomic");
    FileSettingsStore store;
    store.save(app, QStringLiteral("MSComm"), QStringLiteral("Retry"), QStringLiteral("1"));
    const ino_t first = inodeOf(storeFile(app));
    QVERIFY(first != 0);
    store.save(app, QStringLiteral("MSComm"), QStringLiteral("Retry"), QStringLiteral("2"));
    QVERIFY(inodeOf(storeFile(app)) != first);
    const QStringList left = QDir(m_config.filePath(app)).entryList(QDir::Files | QDir::Hidden);
    QCOMPARE(left, QStringList{app + QStringLiteral(".ini")});
}

void TestSettingsStore::damagedFileReadsEmpty_data()
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
    QTest::newRow("bad variant") << QByteArray("[MSComm]\nBaudrate=@Variant(\\0\\0\\0\\x7f\\xff)\n") << true;
    QTest::newRow("not a text") << QByteArray("[MSComm]\nBaudrate=@Rect(1 2 3 4)\n") << true;
    QTest::newRow("list") << QByteArray("[MSComm]\nBaudrate=115200, 9600\n") << true;
    QTest::newRow("keys only") << QByteArray("[MSComm]\nBaudrate\n=\n==\n[]\n") << true;
    QTest::newRow("cut section") << QByteArray("[MSComm\nBaudrate=115") << false;
    QTest::newRow("bad escapes") << QByteArray("[MSComm]\nBaudrate=\"\\x\\u12\n") << false;
}

void TestSettingsStore::damagedFileReadsEmpty()
{
    QFETCH(QByteArray, contents);
    QFETCH(bool, garbage);
    const QString app = QStringLiteral("ZunDamaged_") + QString::fromLatin1(QTest::currentDataTag()).remove(' ');
    QVERIFY(QDir().mkpath(m_config.filePath(app)));
    QFile f(storeFile(app));
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(contents);
    f.close();

    if (QByteArray(QTest::currentDataTag()) == "bad variant")
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("QVariant::load")));
    FileSettingsStore store;
    const QString value = store.get(app, QStringLiteral("MSComm"), QStringLiteral("Baudrate"));
    if (garbage)
        QCOMPARE(value, QString());
    QCOMPARE(store.get(app, QStringLiteral("Function"), QStringLiteral("TVtype")), QString());
    // A save over the damage still lands.
    store.save(app, QStringLiteral("Function"), QStringLiteral("TVtype"), QStringLiteral("2"));
    QCOMPARE(store.get(app, QStringLiteral("Function"), QStringLiteral("TVtype")), QStringLiteral("2"));
}

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
