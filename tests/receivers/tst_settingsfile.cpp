#include "receivers/settingsfile.h"

#include <QTemporaryDir>
#include <QTest>

using namespace zun;

class TestSettingsFile : public QObject
{
    Q_OBJECT
private slots:
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
