#include "platform/portmap.h"
#include "platform/settingsstore.h"

#include <QCommandLineParser>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace zun;

namespace {
PortMap::Enumerator fixed(const QStringList &devices)
{
    return [devices] { return devices; };
}
} // namespace

class TestPortMap : public QObject
{
    Q_OBJECT

private slots:
    void precedence_data();
    void precedence();
    void enumerationOrder_data();
    void enumerationOrder();
    void overrideText_data();
    void overrideText();
    void symlinkResolved();
    void commandLineOption();

private:
    QString writeConsoleFile(const QString &contents);
    QTemporaryDir m_dir;
};

QString TestPortMap::writeConsoleFile(const QString &contents)
{
    const QString path = m_dir.filePath(QStringLiteral("console-active"));
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return {};
    f.write(contents.toLocal8Bit());
    return path;
}

void TestPortMap::precedence_data()
{
    QTest::addColumn<QString>("override");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QStringList>("enumerated");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("source");

    const QStringList two{QStringLiteral("/dev/zunX1"), QStringLiteral("/dev/zunX2")};
    QTest::newRow("override wins") << "COM2=/dev/zunA" << "/dev/zunB" << two << "/dev/zunA"
                                   << int(PortMap::Source::Override);
    QTest::newRow("store next") << "" << "/dev/zunB" << two << "/dev/zunB" << int(PortMap::Source::Settings);
    QTest::newRow("bare name in store") << "" << "zunB" << two << "/dev/zunB" << int(PortMap::Source::Settings);
    QTest::newRow("blank store entry") << "" << "  " << two << "/dev/zunX2" << int(PortMap::Source::Enumerated);
    QTest::newRow("enumeration last") << "" << "" << two << "/dev/zunX2" << int(PortMap::Source::Enumerated);
    QTest::newRow("other port's override") << "COM1=/dev/zunA" << "" << two << "/dev/zunX2"
                                           << int(PortMap::Source::Enumerated);
    QTest::newRow("too few ports") << "" << "" << QStringList{QStringLiteral("/dev/zunX1")} << ""
                                   << int(PortMap::Source::None);
}

void TestPortMap::precedence()
{
    QFETCH(QString, override);
    QFETCH(QString, stored);
    QFETCH(QStringList, enumerated);

    MemorySettingsStore store;
    store.save(QStringLiteral("KESTA_ZUN"), QStringLiteral("Ports"), QStringLiteral("COM2"), stored);
    PortMap map(store, fixed(enumerated), QString());
    if (!override.isEmpty())
        QVERIFY(map.addOverride(override));
    QTEST(map.devicePath(2), "expected");
    QTEST(int(map.source(2)), "source");
    QCOMPARE(map.devicePath(0), QString());
    QCOMPARE(map.devicePath(9), QString());
}

void TestPortMap::enumerationOrder_data()
{
    QTest::addColumn<QStringList>("enumerated");
    QTest::addColumn<QString>("console");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("usb first, by number")
        << QStringList{"/dev/ttyS1", "/dev/ttyUSB10", "/dev/ttyACM0", "/dev/ttyUSB2", "/dev/ttyS0"} << ""
        << QStringList{"/dev/ttyUSB2", "/dev/ttyUSB10", "/dev/ttyACM0", "/dev/ttyS0", "/dev/ttyS1"};
    QTest::newRow("console left out")
        << QStringList{"/dev/ttyS0", "/dev/ttyS1", "/dev/ttyUSB0"} << "tty0 ttyS0\n"
        << QStringList{"/dev/ttyUSB0", "/dev/ttyS1"};
    QTest::newRow("usb console left out")
        << QStringList{"/dev/ttyUSB0", "/dev/ttyUSB1"} << "ttyUSB0"
        << QStringList{"/dev/ttyUSB1"};
    QTest::newRow("built-in by number not text")
        << QStringList{"/dev/ttyS10", "/dev/ttyS9", "/dev/ttyAMA0"} << "tty1"
        << QStringList{"/dev/ttyAMA0", "/dev/ttyS9", "/dev/ttyS10"};
    QTest::newRow("bare names and duplicates")
        << QStringList{"ttyS3", "/dev/ttyS3", "ttyUSB0"} << ""
        << QStringList{"/dev/ttyUSB0", "/dev/ttyS3"};
    QTest::newRow("nine ports, eight numbers")
        << QStringList{"/dev/ttyS0", "/dev/ttyS1", "/dev/ttyS2", "/dev/ttyS3", "/dev/ttyS4", "/dev/ttyS5",
                       "/dev/ttyS6", "/dev/ttyS7", "/dev/ttyS8"}
        << ""
        << QStringList{"/dev/ttyS0", "/dev/ttyS1", "/dev/ttyS2", "/dev/ttyS3", "/dev/ttyS4", "/dev/ttyS5",
                       "/dev/ttyS6", "/dev/ttyS7"};
}

void TestPortMap::enumerationOrder()
{
    QFETCH(QStringList, enumerated);
    QFETCH(QString, console);
    QFETCH(QStringList, expected);

    MemorySettingsStore store;
    const QString consoleFile = console.isEmpty() ? m_dir.filePath(QStringLiteral("absent")) : writeConsoleFile(console);
    int calls = 0;
    PortMap map(store, [&] { ++calls; return enumerated; }, consoleFile);
    QStringList mapped;
    for (int n = 1; n <= PortMap::kPortCount; ++n) {
        if (!map.devicePath(n).isEmpty())
            mapped.append(map.devicePath(n));
    }
    QCOMPARE(mapped, expected);
    QCOMPARE(calls, 1);  // numbers stay put for the whole run
}

void TestPortMap::overrideText_data()
{
    QTest::addColumn<QString>("mapping");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("device");

    QTest::newRow("plain") << "COM3=/dev/ttyUSB0" << 3 << "/dev/ttyUSB0";
    QTest::newRow("lower case") << "com8=/dev/ttyACM1" << 8 << "/dev/ttyACM1";
    QTest::newRow("blanks") << "  COM1 = /dev/zun 1 " << 1 << "/dev/zun 1";
    QTest::newRow("bare name") << "COM2=ttyS4" << 2 << "/dev/ttyS4";
    QTest::newRow("by-id path") << "COM4=/dev/serial/by-id/usb-X-if00" << 4 << "/dev/serial/by-id/usb-X-if00";
    for (const char *bad : {"", "COM3", "COM3=", "COM3=  ", "COM0=/dev/x", "COM9=/dev/x", "COM10=/dev/x",
                            "COM=/dev/x", "PORT3=/dev/x", "3=/dev/x", "/dev/ttyUSB0", "COM3:/dev/x", "xCOM3=/dev/x"})
        QTest::newRow(bad[0] ? bad : "empty") << QString::fromLatin1(bad) << 0 << "";
}

void TestPortMap::overrideText()
{
    QFETCH(QString, mapping);
    QFETCH(int, port);
    QFETCH(QString, device);

    MemorySettingsStore store;
    PortMap map(store, fixed({}), QString());
    QCOMPARE(map.addOverride(mapping), port != 0);
    for (int n = 1; n <= PortMap::kPortCount; ++n) {
        QCOMPARE(map.devicePath(n), n == port ? device : QString());
        QCOMPARE(map.source(n), n == port ? PortMap::Source::Override : PortMap::Source::None);
    }
    QVERIFY(map.addOverride(QStringLiteral("COM5=/dev/first")));
    QVERIFY(map.addOverride(QStringLiteral("COM5=/dev/second")));
    QCOMPARE(map.devicePath(5), QStringLiteral("/dev/second"));
}

void TestPortMap::symlinkResolved()
{
    const QString real = m_dir.filePath(QStringLiteral("ttyREAL0"));
    const QString link = m_dir.filePath(QStringLiteral("by-id-link"));
    const QString chain = m_dir.filePath(QStringLiteral("link-to-link"));
    QFile f(real);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.close();
    QVERIFY(QFile::link(real, link));
    QVERIFY(QFile::link(link, chain));

    MemorySettingsStore store;
    store.save(QStringLiteral("KESTA_ZUN"), QStringLiteral("Ports"), QStringLiteral("COM2"), link);
    PortMap map(store, fixed({QStringLiteral("/dev/aaa1"), QStringLiteral("/dev/aaa2"), chain}), QString());
    QVERIFY(map.addOverride(QStringLiteral("COM1=") + chain));
    const QString canonical = QFileInfo(real).canonicalFilePath();
    QCOMPARE(map.devicePath(1), canonical);
    QCOMPARE(map.devicePath(2), canonical);
    QCOMPARE(map.devicePath(3), canonical);
}

void TestPortMap::commandLineOption()
{
    QCommandLineParser parser;
    parser.addOption(PortMap::commandLineOption());
    QVERIFY(parser.parse({"zunoria", "--port", "COM1=/dev/zunA", "--port=com2=zunB"}));
    MemorySettingsStore store;
    PortMap map(store, fixed({}), QString());
    for (const QString &mapping : parser.values(QStringLiteral("port")))
        QVERIFY(map.addOverride(mapping));
    QCOMPARE(map.devicePath(1), QStringLiteral("/dev/zunA"));
    QCOMPARE(map.devicePath(2), QStringLiteral("/dev/zunB"));
}

QTEST_GUILESS_MAIN(TestPortMap)
#include "tst_portmap.moc"
