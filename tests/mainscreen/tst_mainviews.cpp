// The main screen's menus, pages and alarms as the user sees them. The
// frames they send are pinned by the wire transcripts.
#include "mainscreen/alarmlistwindow.h"
#include "mainscreen/monitoring.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/rcvpanel.h"
#include "receivers/settingsfile.h"
#include "sim/demobus.h"
#include "support/testbed.h"

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <sys/stat.h>

using namespace zun;

namespace {

// The main screen loaded as at start-up, with receivers on COM1.
struct Rig : TestBed
{
    explicit Rig(const std::vector<int> &addresses, const std::function<void(SimBus &)> &setup = {})
    {
        bus = &attachReceivers(1, addresses);
        if (setup)
            setup(*bus);
        main = loadMainScreen();
    }

    void trigger(const QString &name)
    {
        QAction *action = main->popupMenu()->findChild<QAction *>(name);
        if (!action)
            action = main->action(name);
        QVERIFY2(action, qPrintable(name));
        action->trigger();
    }

    QStringList labels(int count) const
    {
        QStringList texts;
        for (int i = 0; i < count; ++i)
            texts << main->panel(i)->nameText();
        return texts;
    }

    // The records as a settings file holds them, and what the panels show of them.
    QString state() const
    {
        QList<Receiver> records;
        QStringList shown;
        for (int i = 0; i < ctx.bus.table().size(); ++i) {
            records << ctx.bus.table().at(i);
            shown << main->panel(i)->nameText()
                  << main->panel(i)->muteButton()->property("imageName").toString();
        }
        return QString::fromLatin1(formatSettings(records)) + shown.join('|');
    }

    bool shown(int panel) const { return main->panelGrid()->isPanelShown(panel); }

    SimBus *bus = nullptr;
    MainWindow *main = nullptr;
};

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

const QByteArray kGoodLine = "3,\"NEWNAM\",1,2,\"72F2\",\"72F2\",30,0,0,-1\r\n";

} // namespace

class TestMainViews : public QObject
{
    Q_OBJECT
private slots:
    void popupItemsRelabelThePanels_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("caption"); // as shown: an ampersand is no mnemonic
        QTest::addColumn<QStringList>("labels");
        // The fourth panel has no receiver: no mode may write to it.
        const auto row = [](const char *item, const char *caption, const QStringList &labels) {
            QTest::newRow(item) << QString(item) << QString(caption) << labels;
        };
        row("mnu_PM_GCH", "Show Group and Channel", {"GCH  1 - 1", "GCH  ****", "GCH  2 - 3", "-"});
        row("mnu_PM_Frq", "Show Frequency", {"801.000MHz", "066.150MHz", "809.800MHz", "-"});
        row("mnu_PM_SQ", "Show Squelch", {"SQ  20", "SQ  5", "SQ  25", "-"});
        row("mnu_PM_Rname", "Show Receiver's Address & Name", {"03 VOCAL1", "07 VOCAL2", "12 GUITAR", "-"});
        row("mnu_PM_Addr", "Show Receiver's Address", {"03", "07", "12", "-"});
        row("mnu_PM_VOL", "Show Volume", {"-", "-", "-", "-"});
    }
    void popupItemsRelabelThePanels()
    {
        QFETCH(QString, item);
        // 3: group 1 channel 1; 7: tuned far below the band, so the frequency
        // keeps its leading zero; 12: group 2 channel 3.
        Rig rig({3, 7, 12}, [](SimBus &bus) {
            SimReceiver *r = bus.receiver(7);
            r->manual = true;
            r->manualCode = 0x0010;
            r->squelch = 5;
        });
        for (int i = 0; i < 4; ++i)
            rig.main->panel(i)->setNameText("-");
        rig.trigger(item);
        QTEST(rig.main->popupMenu()->findChild<QAction *>(item)->iconText(), "caption");
        QTEST(rig.labels(4), "labels");
    }

    // Volume leaves the mode before it in force; the refresh repeats that mode
    // with the record as the detail window left it.
    void refreshRepeatsTheCurrentMode()
    {
        Rig rig({3, 7}, [](SimBus &bus) { bus.receiver(3)->squelch = 42; });
        rig.trigger("mnu_PM_SQ");
        rig.trigger("mnu_PM_VOL");
        rig.line.clearWritten();
        rig.main->refreshPanels();
        QCOMPARE(rig.framesSent(), QStringList{"#00O2\r"});
        QCOMPARE(rig.main->panel(0)->nameText(), "SQ  42");
    }

    void pagesShowTheirHalfWithABoldCaption()
    {
        Rig rig({3});
        auto *page1 = rig.main->findChild<QPushButton *>("cmdPage1");
        auto *page2 = rig.main->findChild<QPushButton *>("cmdPage2");
        QCOMPARE(page1->text() + '|' + page2->text(), "Screen 1|Screen 2");
        for (QPushButton *click : {page2, page1, page2}) {
            click->click();
            const bool second = click == page2;
            QVERIFY(page1->font().bold() != second);
            QCOMPARE(page2->font().bold(), second);
            for (int i = 0; i < PanelGrid::kPanelCount; ++i)
                QCOMPARE(rig.shown(i), (i >= 32) == second);
        }
    }

    // A new detection clears the check mark: a receiver found since must not
    // stay behind a hidden panel.
    void hidingUnusedPanelsEndsWithADetection()
    {
        Rig rig({3, 7, 12});
        rig.trigger("mnuHide");
        QVERIFY(rig.main->action("mnuHide")->isChecked());
        QVERIFY(rig.main->panel(3)->isHidden());
        QVERIFY(!rig.main->panel(2)->isHidden());
        rig.trigger("mnuHide");
        QVERIFY(!rig.main->action("mnuHide")->isChecked());
        QVERIFY(!rig.main->panel(5)->isHidden());
        rig.trigger("mnuHide");
        rig.bus->addReceiver(makeSampleReceiver(20, 4));
        rig.trigger("mnuAuto");
        QCOMPARE(rig.ctx.bus.table().foundCount(), 4);
        QVERIFY(!rig.main->action("mnuHide")->isChecked());
        QVERIFY(!rig.main->panel(3)->isHidden());
    }

    void fullViewNeedsAWideScreen()
    {
        Rig rig({3});
        QAction *full = rig.main->action("mnuFullView");
        rig.desktop.width = 1023;
        rig.trigger("mnuFullView");
        QCOMPARE(rig.dialogs.messages(),
                 QStringList{"Your VGA monitor need at least 1024 x 768 resolution with small fonts!"});
        QVERIFY(!full->isChecked());
        QVERIFY(!rig.shown(32));
        rig.desktop.width = 1024;
        rig.trigger("mnuFullView");
        // Which panels the full view places is tst_rcvpanel's gridPlacesThePanels.
        QVERIFY(full->isChecked());
        QCOMPARE(rig.dialogs.messages().size(), 1);
        QVERIFY(rig.shown(0));
        QVERIFY(rig.shown(32));
        rig.trigger("mnuFullView");
        QVERIFY(!full->isChecked());
        QVERIFY(!rig.shown(32));
    }

    void anEmptyTableSavesAnEmptyFile()
    {
        Rig rig(std::vector<int>{});
        QTemporaryDir dir;
        const QString path = dir.filePath("none.zun");
        QVERIFY(writeFile(path, kGoodLine));
        QFile file(path);
        rig.trigger("mnuSave"); // cancelled: the old file stays as it was
        QCOMPARE(file.size(), qint64(kGoodLine.size()));
        rig.dialogs.queueFileName(path);
        rig.trigger("mnuSave");
        QCOMPARE(rig.dialogs.shown().size(), 2); // two save dialogs, no message
        QCOMPARE(file.size(), qint64(0));
    }

    void malformedFilesChangeNothing_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("mentions");
        const auto second = [](const char *name, const QByteArray &line) {
            QTest::newRow(name) << kGoodLine + line << QString("Line 2");
        };
        second("too few fields", "7,\"X\",1,2\r\n");
        second("text for a number", "7,\"X\",one,2,\"72F2\",\"72F2\",30,0,0,0\r\n");
        second("squelch beyond a byte", "7,\"X\",1,2,\"72F2\",\"72F2\",256,0,0,0\r\n");
        second("flag neither 0 nor -1", "7,\"X\",1,2,\"72F2\",\"72F2\",30,0,2,0\r\n");
        // The format has no escape for a quote inside a string.
        second("quote inside a name", "9,\"A\"B\",2,3,\"72F2\",\"72F2\",20,32,0,0\r\n");
        second("frequency not in quotes", "7,\"X\",1,2,72F2,\"72F2\",30,0,0,0\r\n");
        second("binary garbage with zero bytes", QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16));
        // Nothing reaches the line that the detail window could not send.
        second("carriage return in a name", "3,\"x\r#02D\",7,9,\"72F2\",\"72F2\",30,0,0,0\r\n");
        second("zero byte in a name", QByteArray("7,\"A\0B\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n", 36));
        second("control character in a name", "7,\"A\x01\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n");
        second("escape in a name", "7,\"\x1B[2J\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n");
        second("tab beside a number", "7\t,\"X\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n");
        second("lower case in a name", "7,\"abc\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n");
        second("name character not typeable", "7,\"A;B\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n");
        second("frequency code not hex", "7,\"X\",1,2,\"ZZZZ\",\"72F2\",30,0,0,0\r\n");
        second("frequency code of blanks", "7,\"X\",1,2,\"    \",\"72F2\",30,0,0,-1\r\n");
        second("frequency code too short", "7,\"X\",1,2,\"72F\",\"72F2\",30,0,0,0\r\n");
        second("frequency code in lower case", "7,\"X\",1,2,\"72f2\",\"72F2\",30,0,0,0\r\n");
        second("manual code not hex", "7,\"X\",1,2,\"72F2\",\"7-F2\",30,0,-1,0\r\n");
        QTest::newRow("address out of range")
            << "65,\"X\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n" + kGoodLine << QString("Line 1");
        QTest::newRow("unterminated quote")
            << kGoodLine + kGoodLine + "7,\"X,1,2,\"72F2\",\"72F2\",30,0,0,0\r\n"
            << QString("Line 3");
        QTest::newRow("too many lines") << kGoodLine.repeated(2000) << QString("more lines");
        QTest::newRow("cancelled dialog") << QByteArray() << QString();
        // Not a file at all: the message names it.
        const QString notAFile = "The file %1 could not be opened: it is %2, not a file";
        QTest::newRow("pipe") << QByteArray("PIPE") << notAFile.arg("PATH", "a pipe");
        QTest::newRow("folder") << QByteArray("FOLDER") << notAFile.arg("PATH", "a folder");
        QTest::newRow("device") << QByteArray("/dev/zero") << notAFile.arg("/dev/zero", "a device");
    }
    void malformedFilesChangeNothing()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, mentions);
        Rig rig({3, 7});
        const QString before = rig.state();
        QTemporaryDir dir;
        const QString path = dir.filePath("bad.zun");
        if (text == "PIPE")
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (text == "FOLDER")
            QVERIFY(QDir().mkdir(path));
        else if (!text.isNull() && !text.startsWith("/dev/"))
            QVERIFY(writeFile(path, text));
        if (!text.isNull())
            rig.dialogs.queueFileName(text.startsWith("/dev/") ? QString(text) : path);
        rig.trigger("mnuLoad");
        QCOMPARE(rig.dialogs.shown().first().text, "Receiver Setting(*.zun)|*.zun");
        const QStringList messages = rig.dialogs.messages();
        QCOMPARE(messages.size(), mentions.isNull() ? 0 : 1);
        if (!mentions.isNull())
            QVERIFY2(messages.first().contains(mentions.replace("PATH", path)), qPrintable(messages.first()));
        QVERIFY(rig.line.written().empty());
        QCOMPARE(rig.state(), before);
    }

    // The program as assembled: a receiver off the line raises the alarm, its
    // name flashes until clicked, the list shows it, and the show log, named
    // for the line, records it going and coming back.
    void offlineReceiverFlashesUntilClicked()
    {
        Rig rig({4, 9});
        Monitoring &monitoring = *rig.main->monitoring();
        QTemporaryDir dir;
        rig.dialogs.queueFileName(dir.filePath("show.csv"));
        rig.trigger("mnuShowLog");
        QVERIFY(monitoring.showLog().isLogging());
        QVERIFY2(rig.dialogs.shown().last().text.contains(" show-COM1-"),
                 qPrintable(rig.dialogs.shown().last().text));
        QCOMPARE(monitoring.alarmList()->windowTitle(), "Alarms - COM1");

        rig.bus->receiver(9)->powered = false;
        rig.session->loop().runSteps();
        RcvPanel *panel = rig.main->panel(1);
        QTRY_VERIFY(panel->alarmLit());
        QTRY_VERIFY(!panel->alarmLit()); // it flashes, not just lights
        QVERIFY(!rig.main->panel(0)->alarmLit());
        QTableWidget *table = monitoring.alarmList()->table();
        QCOMPARE(table->rowCount(), 1);
        QCOMPARE(table->item(0, 2)->text(), "Offline");
        emit panel->nameClicked(1); // acknowledges, and brings nothing back while it is off
        QTest::qWait(900);
        QVERIFY(!panel->alarmLit());
        rig.bus->receiver(9)->powered = true;
        emit panel->nameClicked(1);
        QTRY_VERIFY(!table->item(0, 3)->text().isEmpty());

        rig.main->close();                // the exit path flushes the log
        QCOMPARE(rig.endProgramCalls, 0); // answered No
        rig.dialogs.queueAnswer(MessageAnswer::Yes);
        rig.main->close();
        QCOMPARE(rig.endProgramCalls, 1);
        QFile log(dir.filePath("show.csv"));
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray text = log.readAll();
        const qsizetype offline = text.indexOf(",offline,9,");
        QVERIFY2(offline > 0, text.constData());
        QVERIFY2(text.indexOf(",back,9,", offline) > offline, text.constData());
    }

    // A flaky line raises alarms all night long: the list keeps the newest.
    void theAlarmListKeepsTheNewest()
    {
        Rig rig({4});
        const QTableWidget *table = rig.main->monitoring()->alarmList()->table();
        const Receiver status = rig.ctx.bus.table().at(0);
        for (int i = 0; i < AlarmListWindow::kMaxRows + 5; ++i) {
            rig.session->alarms().onWentOffline(status);
            rig.session->alarms().onCameBack(status);
        }
        QCoreApplication::processEvents(); // the list follows on the event loop
        QCOMPARE(table->rowCount(), AlarmListWindow::kMaxRows);
        QVERIFY(!table->item(AlarmListWindow::kMaxRows - 1, 3)->text().isEmpty());
    }
};

QTEST_MAIN(TestMainViews)
#include "tst_mainviews.moc"
