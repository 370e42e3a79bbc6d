// Whatever a hand edit or a broken disk left in the settings store: the
// program starts on the defaults.
#include "core/options.h"
#include "core/startup.h"
#include "mainscreen/frmmain.h"
#include "support/testbed.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace zun;

class TestStoreGarbage : public QObject
{
    Q_OBJECT
private slots:
    void garbageInTheStoreGivesTheDefaults_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<bool>("wholeFile"); // the bytes are the whole file, not one value of every key
        const QList<std::pair<const char *, QByteArray>> values = {
            {"empty", ""},
            {"blanks", "   "},
            {"word", "COM3"},
            {"negative", "-1"},
            {"beyond every integer", "99999999999999999999999"},
            {"exponent overflow", "1e400"},
            {"nan", "nan"},
            {"hex", "0x10"},
            {"list", "1,2"},
            {"open quote", "\"3"},
            {"byte array", "@ByteArray(\\0\\xff)"},
            {"broken variant", "@Variant(\\0\\0\\0\\x7f\\0\\0\\0\\x12junk)"},
            {"control bytes", QByteArray("\x01\x02\xfe\xff\x00z", 6)},
            {"fullwidth digit", "\xef\xbc\x92"},
            {"very long", QByteArray(100000, '7')},
        };
        for (const auto &[name, value] : values)
            QTest::newRow(name) << value << false;
        QByteArray noise;
        for (int i = 0; i < 4096; ++i)
            noise += char((i * 7919 + 13) % 256);
        QTest::newRow("whole file random bytes") << noise << true;
        QTest::newRow("whole file without sections") << QByteArray("CommPort=3\nRetry\n=\n[\n]]]\n") << true;
    }
    void garbageInTheStoreGivesTheDefaults()
    {
        QFETCH(QByteArray, value);
        QFETCH(bool, wholeFile);
        // QSettings settles its folder once per process, so every row rewrites the same file.
        static QTemporaryDir config;
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
        QByteArray text = value;
        if (!wholeFile) {
            text = "[MSComm]\n";
            for (const char *key : {"CommPort", "Retry", "Baudrate"})
                text += key + ("=" + value) + "\n";
            text += "[Function]\n";
            for (const char *key : {"ChangeBaudrate", "MainKOB", "TVtype"})
                text += key + ("=" + value) + "\n";
        }
        const QString path = config.filePath("KESTA_ZUN/KESTA_ZUN.ini");
        QVERIFY(QDir().mkpath(config.filePath("KESTA_ZUN")));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size());
        // A distinct time stamp per row, so that QSettings' cache reads the file again.
        static qint64 stamp = 1'000'000'000'000;
        QVERIFY(file.setFileTime(QDateTime::fromMSecsSinceEpoch(stamp += 60'000),
                                 QFileDevice::FileModificationTime));
        file.close();

        FileSettingsStore store;
        TestBed bed;
        bed.attachReceivers(2, {3});
        Context ctx{Platform{bed.clock, bed.line, store, bed.dialogs, bed.desktop}};
        std::unique_ptr<FrmMain> main;
        StartupViews views{[] {},
                           [&] {
                               main = std::make_unique<FrmMain>(ctx);
                               main->load();
                           },
                           [] {}};
        QVERIFY(startProgram(ctx, views));
        QVERIFY(main && ctx.bus.foundCount() == 1 && ctx.bus.workMode() == WorkMode::Polling);
        const LineOptions &options = ctx.bus.options();
        QCOMPARE(QList<int>({options.CommPort, options.Retry, options.Baudrate}), QList<int>({2, 2, 115200}));
        QCOMPARE(readTvType(store), 4);
        QVERIFY(!readFunctionFlag(store, "ChangeBaudrate") && !readFunctionFlag(store, "MainKOB"));
        QCOMPARE(bed.dialogs.messages(), QStringList());
    }
};

QTEST_MAIN(TestStoreGarbage)
#include "tst_storegarbage.moc"
