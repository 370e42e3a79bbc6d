#include "platform/rfc2217session.h"

#include <QtTest>

using namespace zun;

namespace {
QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

// Every split of the stream into single bytes, so that no state may rely on
// a whole command arriving in one read.
Rfc2217Session::Result feedBytewise(Rfc2217Session &session, const QByteArray &stream)
{
    Rfc2217Session::Result all;
    for (const char c : stream) {
        const auto r = session.receive(QByteArray(1, c));
        all.data += r.data;
        all.reply += r.reply;
    }
    return all;
}

const LineSettings k9600{9600, QSerialPort::NoParity, QSerialPort::Data8, QSerialPort::OneStop};
// Set speed 9600, 8 data bits, no parity, one stop bit, RTS on.
const char kSettings9600[] =
    "fffa2c0100002580fff0 fffa2c0208fff0 fffa2c0301fff0 fffa2c0401fff0 fffa2c050bfff0";
} // namespace

class TestRfc2217Session : public QObject
{
    Q_OBJECT

private slots:
    // Byte streams as ser2net 4 and other servers send them.
    void serverStreams_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("comPort");
        QTest::addColumn<int>("baud");

        const int accepted = int(Rfc2217Session::ComPort::Accepted);
        // ser2net's opening: WILL SGA, DO SGA, WILL ECHO, DONT ECHO, DO BINARY, WILL BINARY, DO COM-PORT.
        QTest::newRow("ser2net opening")
            << hex("fffb03 fffd03 fffb01 fffe01 fffd00 fffb00 fffd2c") << QByteArray()
            << hex("fffe01") + hex(kSettings9600) << accepted << 0;
        QTest::newRow("speed report and modem state")
            << hex("fffd2c fffa2c6b00fff0 fffa2c6500002580fff0 fffa2c6608fff0") << QByteArray()
            << hex(kSettings9600) << accepted << 9600;
        QTest::newRow("0xFF in the data")
            << hex("fffd2c 4142ffff430d") << hex("4142ff430d") << hex(kSettings9600) << accepted << 0;
        // 115200 has no 0xFF; 0x0001FFFF does, escaped inside the report.
        QTest::newRow("escaped report") << hex("fffd2c fffa2c650001ffffffff fff0") << QByteArray()
                                        << hex(kSettings9600) << accepted << 0x1FFFF;
        QTest::newRow("refused") << hex("fffe2c 410d") << hex("410d") << QByteArray()
                                 << int(Rfc2217Session::ComPort::Refused) << 0;
        QTest::newRow("unknown options refused, go-ahead skipped")
            << hex("fffd18 fffb1f fff9 41") << hex("41") << hex("fffc18 fffe1f")
            << int(Rfc2217Session::ComPort::Pending) << 0;
        QTest::newRow("no second answer to a repeated DO")
            << hex("fffd2c fffd2c fffd00") << QByteArray() << hex(kSettings9600) << accepted << 0;
    }
    void serverStreams()
    {
        QFETCH(QByteArray, stream);
        for (const bool bytewise : {false, true}) {
            Rfc2217Session session;
            QCOMPARE(session.start(k9600, true), hex("fffb00 fffb03 fffb2c fffd00 fffd03"));
            // Nothing reaches the port before the server takes the option.
            QCOMPARE(session.configure(k9600, true), QByteArray());
            const auto result = bytewise ? feedBytewise(session, stream) : session.receive(stream);
            QTEST(result.data, "data");
            QTEST(result.reply, "reply");
            QTEST(int(session.comPort()), "comPort");
            QTEST(int(session.confirmedBaudRate().value_or(0)), "baud");
        }
    }

    void outgoing_data()
    {
        QTest::addColumn<LineSettings>("settings");
        QTest::addColumn<QByteArray>("commands");
        QTest::newRow("38400 even 2")
            << LineSettings{38400, QSerialPort::EvenParity, QSerialPort::Data7, QSerialPort::TwoStop}
            << hex("fffa2c0100009600fff0 fffa2c0207fff0 fffa2c0303fff0 fffa2c0402fff0");
        QTest::newRow("0xFF in the speed")
            << LineSettings{0x1FFFF, QSerialPort::MarkParity, QSerialPort::Data7, QSerialPort::OneAndHalfStop}
            << hex("fffa2c010001fffffffffff0 fffa2c0207fff0 fffa2c0304fff0 fffa2c0403fff0");
    }
    void outgoing()
    {
        QFETCH(LineSettings, settings);
        Rfc2217Session session;
        session.start(k9600, false);
        session.receive(hex("fffd2c"));
        QTEST(session.configure(settings, false), "commands");
        QCOMPARE(Rfc2217Session::escape(hex("41ff42ff")), hex("41ffff42ffff"));
    }
};

QTEST_GUILESS_MAIN(TestRfc2217Session)
#include "tst_rfc2217session.moc"
