#include "mainscreen/portmapping.h"
#include "platform/portmap.h"
#include "support/testbed.h"

#include <QtTest>

using namespace zun;

class TestPortMapping : public QObject
{
    Q_OBJECT

private slots:
    void answers_data()
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
    void answers()
    {
        QFETCH(QString, answer);
        QFETCH(int, port);
        TestBed bed;
        bed.attachReceivers(2, {1});
        bed.settings.save("KESTA_ZUN", "Ports", "COM2", "kept");
        PortMap ports(
            bed.settings, [] { return QStringList(); }, QString());
        bed.line.selectPort(2);
        bed.line.open();

        QCOMPARE(applyPortMapping(bed.ctx, ports, answer), port);
        QCOMPARE(bed.dialogs.messages().size(), port == 0 ? 1 : 0);
        const int n = port == 0 ? 2 : port;
        QTEST(bed.settings.get("KESTA_ZUN", "Ports", QStringLiteral("COM%1").arg(n)), "stored");
        // The open line leaves the port it was remapped from, and only that one.
        QCOMPARE(bed.line.isOpen(), port != 2);
        if (port != 0)
            QCOMPARE(ports.mapping(port),
                     bed.settings.get("KESTA_ZUN", "Ports", QStringLiteral("COM%1").arg(port)));
    }
};

QTEST_GUILESS_MAIN(TestPortMapping)
#include "tst_portmapping.moc"
