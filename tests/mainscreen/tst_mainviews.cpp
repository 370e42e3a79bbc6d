#include "link/ports.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/rcvpanel.h"
#include "sim/demobus.h"
#include "support/testbed.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <functional>
#include <memory>

using namespace zun;

namespace {

// The main screen loaded as at start-up, with receivers on COM1.
struct Rig
{
    explicit Rig(const std::vector<int> &addresses, const std::function<void(SimBus &)> &setup = {})
    {
        bus = &bed.attachReceivers(1, addresses);
        if (setup)
            setup(*bus);
        LineOptions &options = bed.ctx.bus.options();
        options.CommPort = 1;
        FindCommPorts(bed.line, bed.dialogs, options.PortAvailable, options.CommPort);
        main = std::make_unique<FrmMain>(bed.ctx);
        main->load();
        bed.line.clearWritten();
        bed.dialogs.clear();
    }

    void trigger(const QString &name)
    {
        QAction *action = nullptr;
        for (QAction *a : main->popupMenu()->actions())
            if (a->objectName() == name)
                action = a;
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

    QStringList records() const
    {
        QStringList out;
        const auto n = [](int v) { return QString::number(v); };
        for (int i = 0; i < bed.ctx.bus.receiverCount(); ++i)
            if (const ReceiverRecord &r = bed.ctx.bus.record(i); true)
                out << QStringList{r.name,          r.channelFreqCode, r.manualFreqCode, n(r.address),
                                   n(r.group),      n(r.channel),      n(r.squelch),     n(r.secondLevel),
                                   n(r.manualFreq), n(r.mute)}
                           .join('|');
        return out;
    }

    QStringList mutePictures(int count) const
    {
        QStringList names;
        for (int i = 0; i < count; ++i)
            names << main->panel(i)->muteButton()->property("imageName").toString();
        return names;
    }

    TestBed bed;
    SimBus *bus = nullptr;
    std::unique_ptr<FrmMain> main;
};

void tune(SimReceiver *r, int code, bool muted)
{
    r->manual = true;
    r->manualCode = code;
    r->muted = muted;
}

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
    void popupItemsBroadcastAndRelabel_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("caption"); // as shown: an ampersand is no mnemonic
        QTest::addColumn<QString>("frame");
        QTest::addColumn<QStringList>("labels");
        // The fourth panel has no receiver: no mode may write to it.
        using L = QStringList;
        QTest::newRow("GCH") << "mnu_PM_GCH"
                             << "Show Group and Channel"
                             << "#00O0\r" << L{"GCH  1 - 1", "GCH  ****", "GCH  2 - 3", "-"};
        QTest::newRow("Frq") << "mnu_PM_Frq"
                             << "Show Frequency"
                             << "#00O1\r" << L{"801.000MHz", "066.150MHz", "809.800MHz", "-"};
        QTest::newRow("squelch") << "mnu_PM_SQ"
                                 << "Show Squelch"
                                 << "#00O2\r" << L{"SQ  20", "SQ  5", "SQ  25", "-"};
        QTest::newRow("name") << "mnu_PM_Rname"
                              << "Show Receiver's Address & Name"
                              << "#00O4\r" << L{"03 VOCAL1", "07 VOCAL2", "12 GUITAR", "-"};
        QTest::newRow("address") << "mnu_PM_Addr"
                                 << "Show Receiver's Address"
                                 << "#00O5\r" << L{"03", "07", "12", "-"};
        QTest::newRow("volume") << "mnu_PM_VOL"
                                << "Show Volume"
                                << "" << L{"-", "-", "-", "-"};
    }

    void popupItemsBroadcastAndRelabel()
    {
        QFETCH(QString, item);
        QFETCH(QString, frame);
        QFETCH(QStringList, labels);
        // 3: group 1 channel 1; 7: tuned far below the band, so the frequency
        // keeps its leading zero; 12: group 2 channel 3.
        Rig rig({3, 7, 12}, [](SimBus &bus) {
            tune(bus.receiver(7), 0x0010, false);
            bus.receiver(7)->squelch = 5;
        });
        const int modeBefore = rig.main->displayMode();
        for (int i = 0; i < 4; ++i)
            rig.main->panel(i)->setNameText("-");

        rig.trigger(item);
        QTEST(rig.main->popupMenu()->findChild<QAction *>(item)->iconText(), "caption");
        QCOMPARE(rig.bed.framesSent(), frame.isEmpty() ? QStringList() : QStringList{frame});
        QCOMPARE(rig.labels(4), labels);
        if (frame.isEmpty()) {
            QCOMPARE(rig.main->displayMode(), modeBefore);
        } else {
            for (int address : {3, 7, 12})
                QCOMPARE(rig.bus->receiver(address)->displayMode, frame.mid(4, 1).toInt());
        }
    }

    // Volume leaves the mode before it in force; the refresh repeats that mode
    // with the record as the detail window left it.
    void refreshRepeatsTheCurrentMode()
    {
        Rig rig({3, 7}, [](SimBus &bus) { bus.receiver(3)->squelch = 42; });
        rig.trigger("mnu_PM_SQ");
        rig.trigger("mnu_PM_VOL");
        rig.bed.line.clearWritten();
        rig.main->mnu_PM_Refresh();
        QCOMPARE(rig.bed.framesSent(), QStringList{"#00O2\r"});
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
            QVERIFY(page1->font().bold() != second && page2->font().bold() == second);
            for (int i = 0; i < PanelGrid::kPanelCount; ++i)
                QCOMPARE(rig.main->panelGrid()->isPanelShown(i), (i >= 32) == second);
        }
    }

    void hidingUnusedPanelsAndShowingThemAgain()
    {
        Rig rig({3, 7, 12});
        rig.trigger("mnuHide");
        QVERIFY(rig.main->action("mnuHide")->isChecked());
        for (int i = 0; i < 32; ++i)
            QCOMPARE(rig.main->panel(i)->isHidden(), i >= 3);

        rig.trigger("mnuHide");
        QVERIFY(!rig.main->action("mnuHide")->isChecked());
        for (int i = 0; i < 32; ++i)
            QVERIFY(!rig.main->panel(i)->isHidden());

        // A new detection clears the check mark; a receiver found since must not
        // stay behind a hidden panel.
        rig.trigger("mnuHide");
        rig.bus->addReceiver(makeSampleReceiver(20, 4));
        rig.trigger("mnuAuto");
        QCOMPARE(rig.bed.ctx.bus.foundCount(), 4);
        QVERIFY(!rig.main->action("mnuHide")->isChecked());
        QVERIFY(!rig.main->panel(3)->isHidden());
    }

    void fullViewNeedsAWideScreen_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("1023") << 1023 << false;
        QTest::newRow("1024") << 1024 << true;
    }

    void fullViewNeedsAWideScreen()
    {
        QFETCH(int, width);
        QFETCH(bool, accepted);
        Rig rig({3});
        rig.bed.desktop.setScreenWidth(width);
        QAction *full = rig.main->action("mnuFullView");
        rig.trigger("mnuFullView");
        const QString refusal = "Your VGA monitor need at least 1024 x 768 resolution with small fonts!";
        QCOMPARE(rig.bed.dialogs.messages(), accepted ? QStringList() : QStringList{refusal});
        QCOMPARE(full->isChecked(), accepted);
        for (int i = 0; i < PanelGrid::kPanelCount; ++i)
            QCOMPARE(rig.main->panelGrid()->isPanelShown(i), accepted || i < 32);
        if (!accepted)
            return;
        rig.trigger("mnuFullView");
        QVERIFY(!full->isChecked());
        for (int i = 0; i < PanelGrid::kPanelCount; ++i)
            QCOMPARE(rig.main->panelGrid()->isPanelShown(i), i < 32);
    }

    void anEmptyTableSavesAnEmptyFile()
    {
        Rig rig(std::vector<int>{});
        QCOMPARE(rig.bed.ctx.bus.foundCount(), 0);
        QTemporaryDir dir;
        const QString path = dir.filePath("none.zun");
        QVERIFY(writeFile(path, kGoodLine));
        QFile file(path);
        rig.trigger("mnuSave"); // cancelled: the old file stays as it was
        QCOMPARE(file.size(), qint64(kGoodLine.size()));
        rig.bed.dialogs.queueFileName(path);
        rig.trigger("mnuSave");
        QCOMPARE(rig.bed.dialogs.shown().size(), 2); // two save dialogs, no message
        QCOMPARE(file.size(), qint64(0));
    }

    void malformedFilesChangeNothing_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("mentions");
        QTest::newRow("too few fields") << kGoodLine + "7,\"X\",1,2\r\n"
                                        << "Line 2";
        QTest::newRow("text for a number") << kGoodLine + "7,\"X\",one,2,\"72F2\",\"72F2\",30,0,0,0\r\n"
                                           << "Line 2";
        QTest::newRow("address out of range")
            << "65,\"X\",1,2,\"72F2\",\"72F2\",30,0,0,0\r\n" + kGoodLine << "Line 1";
        QTest::newRow("squelch beyond a byte") << kGoodLine + "7,\"X\",1,2,\"72F2\",\"72F2\",256,0,0,0\r\n"
                                               << "Line 2";
        QTest::newRow("flag neither 0 nor -1") << kGoodLine + "7,\"X\",1,2,\"72F2\",\"72F2\",30,0,2,0\r\n"
                                               << "Line 2";
        QTest::newRow("frequency not in quotes") << kGoodLine + "7,\"X\",1,2,72F2,\"72F2\",30,0,0,0\r\n"
                                                 << "Line 2";
        QTest::newRow("unterminated quote")
            << kGoodLine + kGoodLine + "7,\"X,1,2,\"72F2\",\"72F2\",30,0,0,0\r\n"
            << "Line 3";
        QTest::newRow("binary garbage with zero bytes")
            << kGoodLine + QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16) << "Line 2";
        QTest::newRow("too many lines") << kGoodLine.repeated(2000) << "more lines";
        QTest::newRow("huge file") << kGoodLine.repeated(8000) << "too large";
        QTest::newRow("cancelled dialog") << QByteArray() << QString();
    }

    void malformedFilesChangeNothing()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, mentions);
        Rig rig({3, 7});
        const QStringList before = rig.records();
        const QStringList labels = rig.labels(2);
        const QStringList pictures = rig.mutePictures(2);
        QTemporaryDir dir;
        const QString path = dir.filePath("bad.zun");
        if (!text.isNull()) {
            QVERIFY(writeFile(path, text));
            rig.bed.dialogs.queueFileName(path);
        }
        rig.trigger("mnuLoad");
        QCOMPARE(rig.bed.dialogs.shown().first().text, QString("Receiver Setting(*.zun)|*.zun"));
        const QStringList messages = rig.bed.dialogs.messages();
        QCOMPARE(messages.size(), mentions.isNull() ? 0 : 1);
        if (!mentions.isNull())
            QVERIFY2(messages.first().contains(mentions), qPrintable(messages.first()));
        QVERIFY(rig.bed.line.written().empty());
        QCOMPARE(rig.records(), before);
        QCOMPARE(rig.labels(2), labels);
        QCOMPARE(rig.mutePictures(2), pictures);
    }
};

QTEST_MAIN(TestMainViews)
#include "tst_mainviews.moc"
