// What a settings file can do to the program: a save cut short, a file far
// too large to be one.
#include "receivers/settingsfile.h"
#include "support/testbed.h"

#include <QAction>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace zun;

namespace {
long peakKilobytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
} // namespace

class TestSettingsFileSafety : public QObject
{
    Q_OBJECT
private slots:
    // The disk fills up half-way through the save (a file size limit stands in
    // for it, since root ignores read-only folders), or the process is killed there.
    void anInterruptedSaveLeavesTheOldFile_data()
    {
        QTest::addColumn<bool>("killed");
        QTest::newRow("disk full") << false;
        QTest::newRow("process killed") << true;
    }
    void anInterruptedSaveLeavesTheOldFile()
    {
        QFETCH(bool, killed);
        QTemporaryDir dir;
        const QString path = dir.filePath("rack.zun");
        const QByteArray old = "3,\"VOCAL1\",1,1,\"72E2\",\"72E2\",20,32,0,0\r\n";
        QVERIFY(saveSettingsFile(path, old).isEmpty());
        const QByteArray bigger = old.repeated(2000);

        const pid_t child = ::fork();
        if (child == 0) {
            const rlimit limit{16384, 16384};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            std::signal(SIGXFSZ, killed ? SIG_DFL : SIG_IGN);
            ::_exit(saveSettingsFile(path, bigger).isEmpty() ? 0 : 3);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        if (killed) {
            QVERIFY(WIFSIGNALED(status));
            QCOMPARE(WTERMSIG(status), SIGXFSZ);
        } else {
            QVERIFY(WIFEXITED(status));
            QCOMPARE(WEXITSTATUS(status), 3); // the failure was reported
        }
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), old);
        if (!killed) // a reported failure cleans up after itself
            QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{"rack.zun"});
    }

    // 100 MB: refused by its size, with one message, and never read into memory.
    void anEnormousFileIsRefusedUnread()
    {
        TestBed bed;
        bed.attachReceivers(1, {3});
        const auto main = bed.loadMainScreen();
        const QString nameBefore = bed.ctx.bus.table().at(0).name;

        QTemporaryDir dir;
        const QString path = dir.filePath("huge.zun");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QByteArray block =
            QByteArray("3,\"HUGE  \",1,2,\"72F2\",\"72F2\",30,0,0,-1\r\n").repeated(25000);
        while (file.size() < 100 * 1024 * 1024)
            QVERIFY(file.write(block) == block.size());
        file.close();

        const long peakBefore = peakKilobytes();
        bed.dialogs.queueFileName(path);
        main->action("mnuLoad")->trigger();
        QCOMPARE(bed.dialogs.messages().size(), 1);
        QVERIFY2(bed.dialogs.messages().first().contains("too large"),
                 qPrintable(bed.dialogs.messages().first()));
        QVERIFY(bed.line.written().empty());
        QCOMPARE(bed.ctx.bus.table().at(0).name, nameBefore);
        QVERIFY2(peakKilobytes() - peakBefore < 50 * 1024, "the file was read");
    }
};

QTEST_MAIN(TestSettingsFileSafety)
#include "tst_settingsfilesafety.moc"
