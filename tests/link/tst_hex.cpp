#include "link/hex.h"

#include <QtTest>

using namespace zun;

class TstHex : public QObject
{
    Q_OBJECT

private slots:
    void hexToNum_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint32>("value");
        QTest::newRow("empty") << "" << 0;
        QTest::newRow("upper") << "1F" << 31;
        QTest::newRow("lower") << "1f" << 31;
        QTest::newRow("foreign digit counts as 0") << "G5" << 5;
        QTest::newRow("zero digit") << "A0" << 160;
        QTest::newRow("level byte") << "FF" << 255;
        QTest::newRow("frequency code") << "72BA" << 0x72BA;
        QTest::newRow("blanks count as 0") << " 1" << 1;
        QTest::newRow("all 32 bits") << "FFFFFFFF" << -1;
        QTest::newRow("ninth digit drops the top one") << "123456789" << 0x23456789;
    }
    void hexToNum()
    {
        QFETCH(QString, text);
        QTEST(HexToNum(text), "value");
    }

    void numToHex_data()
    {
        QTest::addColumn<qint32>("value");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("widthAfter");
        QTest::newRow("zero padded") << 5 << 2 << "05" << 2;
        QTest::newRow("address 64") << 64 << 2 << "40" << 2;
        QTest::newRow("high digits dropped") << 300 << 2 << "2C" << 2;
        QTest::newRow("width 0 corrected") << 7 << 0 << "7" << 1;
        QTest::newRow("negative width corrected") << 10 << -3 << "A" << 1;
        QTest::newRow("channel 16 in one digit") << 16 << 1 << "0" << 1;
        QTest::newRow("code") << 0x1234 << 4 << "1234" << 4;
        QTest::newRow("negative as two's complement") << -1 << 4 << "FFFF" << 4;
    }
    void numToHex()
    {
        QFETCH(qint32, value);
        QFETCH(int, width);
        QTEST(NumToHex(value, width), "text");
        QTEST(width, "widthAfter");
    }
};

QTEST_GUILESS_MAIN(TstHex)
#include "tst_hex.moc"
