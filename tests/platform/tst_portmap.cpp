#include "mainscreen/portmapping.h"
#include "platform/portmap.h"
#include "platform/settingsstore.h"
#include "support/testbed.h"

#include <QCommandLineParser>
#include <QDir>
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
    void precedence_data()
    {
        QTest::addColumn<QString>("override");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QStringList>("enumerated");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("source");

        const QStringList two{QStringLiteral("/dev/zunX1"), QStringLiteral("/dev/zunX2")};
        const QString none;
        using S = PortMap::Source;
        QTest::newRow("override wins")
            << QString("COM2=/dev/zunA") << "/dev/zunB" << two << "/dev/zunA" << int(S::Override);
        QTest::newRow("store next") << none << "/dev/zunB" << two << "/dev/zunB" << int(S::Settings);
        QTest::newRow("bare name in store") << none << "zunB" << two << "/dev/zunB" << int(S::Settings);
        QTest::newRow("enumeration last") << none << none << two << "/dev/zunX2" << int(S::Enumerated);
        QTest::newRow("other port's override")
            << QString("COM1=/dev/zunA") << none << two << "/dev/zunX2" << int(S::Enumerated);
        QTest::newRow("too few ports") << none << none << two.mid(0, 1) << none << int(S::None);
    }
    void precedence()
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
        QVERIFY(map.devicePath(0).isEmpty());
        QVERIFY(map.devicePath(9).isEmpty());
    }

    void enumerationOrder_data()
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
        QTest::newRow("built-in by number not text")
            << QStringList{"/dev/ttyS10", "/dev/ttyS9", "/dev/ttyAMA0"} << "tty1"
            << QStringList{"/dev/ttyAMA0", "/dev/ttyS9", "/dev/ttyS10"};
        QTest::newRow("bare names and duplicates") << QStringList{"ttyS3", "/dev/ttyS3", "ttyUSB0"} << ""
                                                   << QStringList{"/dev/ttyUSB0", "/dev/ttyS3"};
        QStringList nine;
        for (int i = 0; i < 9; ++i)
            nine << QStringLiteral("/dev/ttyS%1").arg(i);
        QTest::newRow("nine ports, eight numbers") << nine << "" << nine.mid(0, 8);
    }
    void enumerationOrder()
    {
        QFETCH(QStringList, enumerated);
        QFETCH(QString, console);
        MemorySettingsStore store;
        QFile file(m_dir.filePath("console-active"));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(file.write(console.toLatin1()), console.size());
        file.close();
        if (console.isEmpty())
            QVERIFY(file.remove());
        int calls = 0;
        const PortMap::Enumerator counted = [&] {
            ++calls;
            return enumerated;
        };
        PortMap map(store, counted, file.fileName());
        QStringList mapped;
        for (int n = 1; n <= PortMap::kPortCount; ++n)
            if (!map.devicePath(n).isEmpty())
                mapped.append(map.devicePath(n));
        QTEST(mapped, "expected");
        QCOMPARE(calls, 1); // numbers stay put for the whole run
    }

    void overrideText_data()
    {
        QTest::addColumn<QString>("mapping");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("device");
        // Lower case, bare names and serial servers are dialogAnswers' rows: the same parser.
        QTest::newRow("plain") << "COM3=/dev/ttyUSB0" << 3 << "/dev/ttyUSB0";
        QTest::newRow("blanks") << "  COM1 = /dev/zun 1 " << 1 << "/dev/zun 1";
        for (const char *bad : {"", "COM3", "COM3=  ", "COM0=/dev/x", "COM9=/dev/x", "PORT3=/dev/x",
                                "COM3:/dev/x", "xCOM3=/dev/x"})
            QTest::newRow(bad[0] ? bad : "empty") << QString::fromLatin1(bad) << 0 << "";
    }
    void overrideText()
    {
        QFETCH(QString, mapping);
        QFETCH(int, port);
        QFETCH(QString, device);

        // Through the program's own option, as a user gives it.
        QCommandLineParser parser;
        parser.addOption(PortMap::commandLineOption());
        QVERIFY(parser.parse({"zunoria", "--port=" + mapping}));
        MemorySettingsStore store;
        PortMap map(store, fixed({}), QString());
        QCOMPARE(map.addOverride(parser.value(QStringLiteral("port"))), port != 0);
        for (int n = 1; n <= PortMap::kPortCount; ++n) {
            QCOMPARE(map.devicePath(n), n == port ? device : QString());
            QCOMPARE(map.source(n), n == port ? PortMap::Source::Override : PortMap::Source::None);
        }
        QVERIFY(map.addOverride("COM5=/dev/first"));
        QVERIFY(map.addOverride("COM5=/dev/second"));
        QCOMPARE(map.devicePath(5), "/dev/second");
    }

    void networkAddress_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("parsed"); // "raw" or "rfc2217", host and port; "none" if refused
        QTest::newRow("raw") << QString("tcp://127.0.0.1:4001") << "raw 127.0.0.1 4001";
        QTest::newRow("rfc2217, upper case")
            << QString(" RFC2217://rack-1.stage:2000 ") << "rfc2217 rack-1.stage 2000";
        QTest::newRow("IPv6") << QString("tcp://[::1]:65535") << "raw ::1 65535";
        for (const char *bad : {"tcp://rack", "tcp://rack:0", "tcp://rack:65536", "udp://rack:1",
                                "tcp://rack:1/x", "tcp://:1", "/dev/ttyUSB0"})
            QTest::newRow(bad) << QString(bad) << "none";
    }
    void networkAddress()
    {
        QFETCH(QString, text);
        const auto a = parseNetAddress(text);
        const QString kind = a && a->kind == NetAddress::Kind::Raw ? "raw" : "rfc2217";
        QTEST(a ? QStringLiteral("%1 %2 %3").arg(kind, a->host).arg(a->port) : "none", "parsed");
    }

    // Links are resolved whichever way the port was mapped; the port menu shows the adapter's by-id name.
    void linksAndStableName()
    {
        QDir().mkpath(m_dir.filePath("by-id"));
        QFile real(m_dir.filePath("ttyUSB7"));
        QVERIFY(real.open(QIODevice::WriteOnly));
        real.close();
        const QString link = m_dir.filePath("by-id/usb-FTDI_FT232R_A1B2-if00-port0"),
                      chain = m_dir.filePath("link-to-link");
        QVERIFY(QFile::link(real.fileName(), link));
        QVERIFY(QFile::link(link, chain));
        const QString canonical = QFileInfo(real).canonicalFilePath();
        QCOMPARE(PortMap::stableName(canonical, m_dir.filePath("by-id")), link);
        QCOMPARE(PortMap::stableName(m_dir.filePath("ttyUSB8"), m_dir.filePath("by-id")), QString());

        MemorySettingsStore store;
        store.save("KESTA_ZUN", "Ports", "COM2", link);
        PortMap map(store, fixed({"/dev/aaa1", "/dev/aaa2", chain}), QString());
        QVERIFY(map.addOverride("COM1=" + chain));
        for (int port : {1, 2, 3})
            QCOMPARE(map.devicePath(port), canonical);
    }

    // The answer to the port dialog: stored, the map updated, the open line left if its port moved.
    void dialogAnswers_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("stored");
        QTest::newRow("serial server") << "COM2=rfc2217://10.0.0.5:2217" << 2 << "rfc2217://10.0.0.5:2217";
        QTest::newRow("bare device") << "com3=ttyUSB1" << 3 << "/dev/ttyUSB1";
        QTest::newRow("removed") << "COM2=" << 2 << "";
        QTest::newRow("no port") << "tcp://10.0.0.5:4001" << 0 << "kept";
        QTest::newRow("port out of range") << "COM9=/dev/ttyUSB0" << 0 << "kept";
        QTest::newRow("address without port") << "COM2=tcp://10.0.0.5" << 0 << "kept";
    }
    void dialogAnswers()
    {
        QFETCH(QString, answer);
        QFETCH(int, port);
        TestBed bed;
        bed.attachReceivers(2, {1});
        bed.settings.save("KESTA_ZUN", "Ports", "COM2", "kept");
        PortMap ports(bed.settings, fixed({}), QString());
        bed.line.selectPort(2);
        bed.line.open();

        QCOMPARE(applyPortMapping(bed.ctx, ports, answer), port);
        QCOMPARE(bed.dialogs.messages().size(), port == 0 ? 1 : 0);
        const QString key = QStringLiteral("COM%1").arg(port == 0 ? 2 : port);
        QTEST(bed.settings.get("KESTA_ZUN", "Ports", key), "stored");
        QCOMPARE(bed.line.isOpen(), port != 2);
        if (port != 0)
            QCOMPARE(ports.mapping(port), bed.settings.get("KESTA_ZUN", "Ports", key));
    }

private:
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestPortMap)
#include "tst_portmap.moc"
