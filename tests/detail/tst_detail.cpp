// The detail window's controls as the user meets them, and the frequency and TV channel rules it shows.
#include "detail/detailwindow.h"
#include "detail/settingstab.h"
#include "mainscreen/imagesign.h"
#include "mainscreen/rcvpanel.h"
#include "mainscreen/tvregion.h"
#include "receivers/frequency.h"
#include "support/testbed.h"

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

#include <limits>

using namespace zun;

namespace {

// The program's main screen on the simulated line with the first receiver's
// detail window open, as the user opens it; the line log starts empty there.
struct DetailRig : TestBed
{
    void open()
    {
        main = loadMainScreen();
        main->show();
        main->moreClicked(0);
        form = qobject_cast<DetailWindow *>(main->detailWindow());
        if (!form)
            qFatal("the detail window did not open");
        line.clearWritten();
    }

    SettingsTab &tab() { return form->settings(); }
    template <typename W = QWidget> W *widget(const char *name) { return form->findChild<W *>(name); }
    // Frames written since the window opened, carriage returns dropped.
    QString frames() const { return framesSent().join(QString()).remove(QLatin1Char('\r')); }
    // Widgets of these that do not take input now.
    QStringList disabled(const QStringList &names)
    {
        QStringList off;
        for (const QString &name : names)
            if (!form->findChild<QWidget *>(name)->isEnabled())
                off << name;
        return off;
    }

    SimBus &bus = attachReceivers(1, {});
    SimReceiver &receiver = bus.addReceiver(5);
    MainWindow *main = nullptr;
    QPointer<DetailWindow> form;
};

// What the window's KOB locks, by its own name or through a frame holding it.
const QStringList kLockable{"SSTab1",   "Frame1", "Option3", "FrameA",
                            "cmdWrite", "FrameB", "cmdNext", "cmdExit"};

} // namespace

class TstDetail : public QObject
{
    Q_OBJECT
private slots:
    void nameEntry_data()
    {
        QTest::addColumn<QString>("way");
        // keys: "\r" Enter, "\b" Backspace, "\x1b" Esc, "^" and "@" Control and Alt with the next;
        // the other ways bring the text whole, then Enter
        QTest::addColumn<QString>("input");
        QTest::addColumn<int>("refusals");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("sent");
        const auto row = [](const char *name, const char *way, const char *input, int refusals,
                            const char *shown, const char *sent) {
            QTest::newRow(name) << QString(way) << QString(input) << refusals << QString(shown)
                                << QString(sent);
        };
        row("lower case cannot be typed", "keys", "ab", 2, "", "");
        row("AB padded to six", "keys", "AB\r", 0, "AB    ", "#05CAB    ");
        row("signs, digits, blank", "keys", "+-*/ 9\r", 0, "+-*/ 9", "#05C+-*/ 9");
        row("refused among good ones", "keys", "HI!?\b\r", 2, "H     ", "#05CH     ");
        row("no Enter, nothing sent", "keys", "ABC", 0, "ABC", "");
        row("longer than six until Enter", "keys", "ABCDEFGH", 0, "ABCDEFGH", "");
        row("Enter keeps six", "keys", "ABCDEFGH\r", 0, "ABCDEF", "#05CABCDEF");
        row("Esc refused", "keys", "AB\x1b\r", 1, "AB    ", "#05CAB    ");
        row("Control and Alt keys refused", "keys", "AB^A^Z@X@1C", 4, "ABC", "");
        row("dropped whole, then filtered", "drop", "Screen 1", 1, "S 1   ", "#05CS 1   ");
        // Text that arrives whole passes the same filter, refused once.
        for (const char *way : {"paste", "drop", "input method"})
            row(way, way, "ab!Q9é", 1, "Q9    ", "#05CQ9    ");
    }
    void nameEntry()
    {
        QFETCH(QString, way);
        QFETCH(QString, input);
        QFETCH(int, refusals);
        QFETCH(QString, shown);
        QFETCH(QString, sent);
        DetailRig rig;
        rig.open();
        QLineEdit *box = rig.tab().nameEdit;
        box->clear();
        QMimeData mime;
        mime.setText(input);
        if (way == "keys") {
            Qt::KeyboardModifiers held;
            for (QChar c : input) {
                if (c == '^' || c == '@') {
                    held = c == '^' ? Qt::ControlModifier : Qt::AltModifier;
                    continue;
                }
                if (c == '\r' || c == '\b' || c == '\x1b')
                    QTest::keyClick(box, c == '\r'   ? Qt::Key_Return
                                         : c == '\b' ? Qt::Key_Backspace
                                                     : Qt::Key_Escape);
                else if (held)
                    QTest::keyClick(box, Qt::Key(c.unicode()), held);
                else
                    QTest::keyClicks(box, QString(c));
                held = {};
            }
        } else {
            if (way == "paste") {
                QGuiApplication::clipboard()->setText(input);
                QTest::keySequence(box, QKeySequence::Paste);
            } else if (way == "drop") {
                QDragEnterEvent enter(QPoint(2, 2), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
                QCoreApplication::sendEvent(box, &enter);
                QDropEvent drop(QPointF(2, 2), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
                QCoreApplication::sendEvent(box, &drop);
            } else {
                QInputMethodEvent compose;
                compose.setCommitString(input);
                QCoreApplication::sendEvent(box, &compose);
            }
            QTest::keyClick(box, Qt::Key_Return);
        }
        QCOMPARE(rig.dialogs.messages(), QStringList(refusals, "Please enter 0-9 or A-Z or +-*/"));
        QCOMPARE(box->text(), shown);
        QCOMPARE(rig.frames(), sent);
        if (!sent.isEmpty()) {
            QCOMPARE(rig.ctx.bus.table().at(0).name, shown);
            QCOMPARE(rig.main->panel(0)->nameText(), "05 " + shown);
        }
    }

    // "P" a press, "D" a press Qt reports as a double-click, each released before the hold's first
    // wait is over: every press is one step and every release one "F", however fast they come.
    // "H" is held to the end of its range: one step, 400 ms, then one every 20 ms, and the release,
    // given twice, sends the value once. A release part-way is pinned by the detail transcript.
    void squelchButtons_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("squelch");
        QTest::addColumn<QString>("presses");
        QTest::addColumn<int>("after");
        QTest::addColumn<QString>("sent");
        QTest::addColumn<double>("heldSeconds");
        QTest::newRow("one click") << "cmdSQdec" << 85 << "P" << 84 << "#05F54" << 0.0;
        QTest::newRow("two quick clicks") << "cmdSQdec" << 85 << "PD" << 83 << "#05F54#05F53" << 0.0;
        QTest::newRow("three quick clicks") << "cmdSQdec" << 85 << "PDP" << 82 << "#05F54#05F53#05F52" << 0.0;
        QTest::newRow("up, quick") << "cmdSQinc" << 20 << "PDPD" << 24 << "#05F15#05F16#05F17#05F18" << 0.0;
        QTest::newRow("at the top") << "cmdSQinc" << 99 << "PD" << 99 << "#05F63#05F63" << 0.0;
        QTest::newRow("held up from 98 stops at 99") << "cmdSQinc" << 98 << "H" << 99 << "#05F63" << 0.40;
        QTest::newRow("held at 99 nothing moves") << "cmdSQinc" << 99 << "H" << 99 << "#05F63" << 0.40;
        QTest::newRow("held down to 1 repeats every 20 ms")
            << "cmdSQdec" << 11 << "H" << 1 << "#05F01" << 0.40 + 9 * 0.020;
    }
    void squelchButtons()
    {
        QFETCH(QString, button);
        QFETCH(QString, presses);
        QFETCH(double, heldSeconds);
        DetailRig rig;
        QFETCH(int, squelch);
        rig.receiver.squelch = squelch;
        rig.open();
        auto *b = rig.widget<QPushButton>(qPrintable(button));
        const QPointF at = b->rect().center();
        const auto mouse = [&](QEvent::Type type, Qt::MouseButtons buttons, bool post = false) {
            auto *e = new QMouseEvent(type, at, b->mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
            if (post)
                return QCoreApplication::postEvent(b, e);
            QCoreApplication::sendEvent(b, e);
            delete e;
        };
        const double before = rig.virtualSeconds();
        for (QChar p : presses) {
            if (p != 'H') // the release waits in the queue the hold's first wait runs
                mouse(QEvent::MouseButtonRelease, Qt::NoButton, true);
            mouse(p == 'D' ? QEvent::MouseButtonDblClick : QEvent::MouseButtonPress, Qt::LeftButton);
        }
        // Held, nobody lets go: the hold runs to the end of the range before the press returns.
        const double held = rig.virtualSeconds() - before;
        for (int twice = 0; twice < 2 && presses == "H"; ++twice)
            mouse(QEvent::MouseButtonRelease, Qt::NoButton);
        QTEST(rig.ctx.bus.table().at(0).squelch, "after");
        QTEST(rig.frames(), "sent");
        if (presses == "H") {
            QVERIFY2(held > heldSeconds - 1e-6, qPrintable(QString::number(held)));
            QVERIFY2(held < heldSeconds + 0.02, qPrintable(QString::number(held)));
        }
    }

    // Only the window's own KOB locks it: the tab control (and with it the
    // step options of the Spectrum tab), FrameA, FrameB and Exit, not KOB.
    // A KOB from the main screen's pilot sign leaves the window as it was.
    void kobLock_data()
    {
        QTest::addColumn<bool>("fromPilot");
        QTest::addColumn<QString>("meanwhile"); // "close" the window, press "KOB", click a "pilot" sign
        QTest::addColumn<QStringList>("locked");
        QTest::addColumn<QString>("sent");
        QTest::newRow("window's KOB, close refused") << false << "close" << kLockable << "%05O%05O%05O";
        QTest::newRow("pilot KOB, window closes")
            << true << "close" << QStringList() << "%06O%06O%06O#05NS#00O4";
        QTest::newRow("pilot KOB, window's KOB runs")
            << true << "KOB" << QStringList() << "%06O%06O%06O%05O%05O%05O";
        QTest::newRow("pilot KOB, another pilot KOB")
            << true << "pilot" << QStringList() << "%06O%06O%06O%05O%05O%05O";
    }
    void kobLock()
    {
        QFETCH(bool, fromPilot);
        QFETCH(QString, meanwhile);
        DetailRig rig;
        rig.settings.save("KESTA_ZUN", "Function", "MainKOB", "1");
        rig.bus.addReceiver(6);
        rig.open();
        QWidget *frame1 = rig.widget("Frame1");
        QVERIFY(rig.form->spectrumTab()->isAncestorOf(frame1));
        QCOMPARE(qobject_cast<QGroupBox *>(frame1)->title(), "Step (KHz)");
        const QStringList names = kLockable + QStringList{"cmdKob"};
        QStringList locked;
        rig.desktop.script = [&](int call) {
            if (call != 1)
                return;
            locked = rig.disabled(names);
            if (meanwhile == "close")
                rig.form->close();
            else if (meanwhile == "pilot")
                QTest::mouseClick(rig.main->panel(0)->pilotSign(), Qt::LeftButton);
            else
                rig.widget<QPushButton>("cmdKob")->click();
        };
        if (fromPilot)
            QTest::mouseClick(rig.main->panel(1)->pilotSign(), Qt::LeftButton);
        else
            rig.widget<QPushButton>("cmdKob")->click();
        rig.desktop.script = nullptr;
        QTEST(locked, "locked");
        const QString sent = rig.frames().remove("#05A1").remove("#06A1");
        QTEST(sent, "sent");
        QCOMPARE(rig.dialogs.messages(), QStringList());
        if (rig.form)
            QCOMPARE(rig.disabled(names), QStringList());
    }

    // SP_Run's caption changes only when the scan's buttons or steps or the
    // tab control say so, not with every change of the work mode.
    void runCaption_data()
    {
        QTest::addColumn<QStringList>("steps"); // a widget clicked, "tab n", or "silent step"
        QTest::addColumn<QStringList>("captions");
        QTest::newRow("recorder takes over") << QStringList{"SP_Run", "tab 2", "RF_Run", "tab 1", "tab 0"}
                                             << QStringList{"Stop", "Stop", "Stop", "Stop", "Run"};
        QTest::newRow("no response") << QStringList{"SP_Run", "silent step"} << QStringList{"Stop", "Stop"};
    }
    void runCaption()
    {
        QFETCH(QStringList, steps);
        DetailRig rig;
        rig.open();
        rig.form->tabs()->setCurrentIndex(1);
        QPointer<QPushButton> run = rig.widget<QPushButton>("SP_Run");
        QStringList captions;
        for (const QString &step : steps) {
            if (step.startsWith("tab ")) {
                rig.form->tabs()->setCurrentIndex(step.back().digitValue());
            } else if (step == "silent step") {
                rig.bus.receiver(5)->powered = false;
                QVERIFY(rig.form->scanStep());
            } else {
                rig.widget<QPushButton>(qPrintable(step))->click();
            }
            captions << run->text();
        }
        QTEST(captions, "captions");
    }

    // Whether the receiver sits off its presets, and the frequency a step
    // starts from, follow what was done, not what a box was last given.
    // The default receiver: band 800..900 MHz, preset 1/1 at 801.000.
    void tuning_data()
    {
        QTest::addColumn<bool>("offAtOpen"); // the receiver reports 847.000, no preset
        // "click name", "type text" (no Enter), "set text" as a screen reader
        // sets it, "enter", "scan" one point
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("boxes"); // group, channel, frequency
        QTest::addColumn<QString>("sent");
        QTest::addColumn<QStringList>("messages");
        const auto row = [](const char *name, bool offAtOpen, const QStringList &steps, const char *boxes,
                            const char *sent, const QStringList &messages = {}) {
            QTest::newRow(name) << offAtOpen << steps << QString(boxes) << QString(sent) << messages;
        };
        row("a scan point leaves the presets", false,
            {"click SP_Run", "scan", "click cmdChanUp", "click cmdGroupDown"}, "** ** 800.000", "#05E72BA");
        row("a cursor tune keeps them", false, {"click PB_Spec", "click cmdChanUp"}, "1 2 801.400",
            "#05K72BA#05D12");
        row("off the presets at opening", true, {"click cmdGroupUp", "click cmdFreqUp", "click cmdChanDown"},
            "** ** 847.025", "#05K7A13");
        row("a step starts from typed text", false, {"type 850.01", "click cmdFreqUp"}, "** ** 850.025",
            "#05K7A8B");
        // Compared as text, "98.975" sorts above "900.000".
        row("two digits step down to the band start", false, {"type 99", "click cmdFreqDown"},
            "** ** 800.000", "#05K72BA");
        row("refused entry, then a step from what is shown", false,
            {"type 12abc", "enter", "click cmdFreqUp"}, "** ** 801.025", "#05K72E3",
            {"Please input numeric data!"});
        row("text a screen reader set", false, {"set 850.01", "enter"}, "** ** 850.000", "#05K7A8A");
        row("beyond the band stop", false, {"type 900.02", "enter", "click cmdChanUp"}, "1 2 801.400",
            "#05D12", {"Frequency out of range!"});
    }
    void tuning()
    {
        QFETCH(bool, offAtOpen);
        QFETCH(QStringList, steps);
        DetailRig rig;
        rig.receiver.manual = offAtOpen;
        rig.receiver.manualCode = 0x7A12;
        rig.open();
        QLineEdit *frequency = rig.tab().frequencyEdit;
        for (const QString &step : steps) {
            const QString arg = step.section(' ', 1);
            if (step == "click PB_Spec") {
                QTest::mouseClick(rig.widget("PB_Spec"), Qt::LeftButton, {}, QPoint(0, 10));
            } else if (step.startsWith("click ")) {
                rig.widget<QAbstractButton>(qPrintable(arg))->click();
            } else if (step.startsWith("type ")) {
                frequency->selectAll();
                QTest::keyClicks(frequency, arg);
            } else if (step.startsWith("set ")) {
                frequency->setText(arg);
            } else if (step == "enter") {
                QTest::keyClick(frequency, Qt::Key_Return);
            } else {
                QVERIFY(rig.form->scanStep());
            }
        }
        const SettingsTab &tab = rig.tab();
        QTEST(QStringList({tab.groupEdit->text(), tab.channelEdit->text(), frequency->text()}).join(' '),
              "boxes");
        QTEST(rig.frames(), "sent");
        QTEST(rig.dialogs.messages(), "messages");
    }

    void tvRegion_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("checked");
        QTest::newRow("Europe") << "2" << 2;
        QTest::newRow("7 repaired") << "7" << 4;
        QTest::newRow("text repaired") << "Japan" << 4;
    }
    void tvRegion()
    {
        QFETCH(QString, stored);
        QFETCH(int, checked);
        DetailRig rig;
        const auto saved = [&] { return rig.settings.get("KESTA_ZUN", "Function", "TVtype"); };
        rig.settings.save("KESTA_ZUN", "Function", "TVtype", stored);
        QMenu option;
        const TvRegionItems items = addTvRegionMenu(&option, rig.ctx);
        loadTvRegion(items, rig.ctx);
        for (int region = 0; region < 6; ++region)
            QCOMPARE(items[region]->isChecked(), region == checked);
        QCOMPARE(saved(), QString::number(checked));

        // A choice from the menu is saved at once and followed by the TV box.
        rig.receiver.bandStartCode = 0x3C0A; // 450..650 MHz
        rig.receiver.bandWidth = 8000;
        rig.open();
        option.findChild<QAction *>("mnuTV_China")->trigger();
        QCOMPARE(saved(), "1");
        for (int region = 0; region < 6; ++region)
            QCOMPARE(items[region]->isChecked(), region == 1);
        for (const auto &[typed, channel] : {std::pair{"580", ""}, std::pair{"606", "25"}}) {
            rig.tab().frequencyEdit->selectAll();
            QTest::keyClicks(rig.tab().frequencyEdit, typed);
            QTest::keyClick(rig.tab().frequencyEdit, Qt::Key_Return);
            QCOMPARE(rig.tab().tvChannelEdit->text(), channel);
        }
    }

    void conversions_data()
    {
        // Either direction: code -> MHz (and its "000.000" text) or MHz -> code.
        QTest::addColumn<QString>("code");
        QTest::addColumn<double>("mhz");
        QTest::addColumn<QString>("shown"); // empty: MHz -> code
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("worked example") << "1234" << 182.25 << "182.250";
        QTest::newRow("leading zeros kept") << "0000" << 65.75 << "065.750";
        QTest::newRow("empty code") << "" << 0.0 << "000.000";
        QTest::newRow("32-bit overflow") << "7FFFFFFF" << 0.0 << "000.000";
        QTest::newRow("half step to even, down") << "1234" << 182.2625 << ""; // 4660.5
        QTest::newRow("half step to even, up") << "1236" << 182.2875 << "";   // 4661.5
        QTest::newRow("over half") << "1235" << 182.263 << "";
        QTest::newRow("below the raster origin") << "FFFF" << 65.725 << "";
        QTest::newRow("not a number") << "0000" << nan << "";
        QTest::newRow("beyond any code") << "0000" << 1e12 << "";
    }
    void conversions()
    {
        QFETCH(QString, code);
        QFETCH(double, mhz);
        QFETCH(QString, shown);
        if (shown.isEmpty()) {
            QCOMPARE(codeFromMhz(mhz), code);
        } else {
            QCOMPARE(mhzFromCode(code), mhz);
            QCOMPARE(formatFreq(mhzFromCode(code)), shown);
        }
    }

    void roundTripOverTheBand()
    {
        for (int code = 0x3FBC; code <= 0x5A00; ++code) {
            const QString text = QString::number(code, 16).toUpper();
            if (codeFromMhz(mhzFromCode(text)) != text)
                QFAIL(qPrintable(text));
        }
        // The form rounds what it shows half away from zero, as a user reads it.
        QCOMPARE(formatFreq(182.2755), "182.276");
        QCOMPARE(formatFreq(double(565.975f)), "565.975");
    }

    void tvChannel_data()
    {
        QTest::addColumn<int>("region");
        QTest::addColumn<double>("mhz");
        QTest::addColumn<QString>("channel");
        QTest::newRow("Europe low edge") << 2 << 470.000 << "21";
        QTest::newRow("Europe just under the next") << 2 << 477.999 << "21";
        QTest::newRow("Europe next channel") << 2 << 478.000 << "22";
        QTest::newRow("Europe top is outside") << 2 << 862.000 << "";
        QTest::newRow("China lower band top") << 1 << 565.9 << "24";
        QTest::newRow("Australia below its band") << 0 << 525.9 << "";
        QTest::newRow("Australia 7 MHz channels") << 0 << 533.0 << "29";
        QTest::newRow("Japan") << 3 << 769.9 << "62";
        QTest::newRow("USA") << 5 << 476.0 << "15";
        QTest::newRow("unknown region uses Taiwan") << 9 << 889.99 << "83";
        QTest::newRow("no frequency") << 4 << 0.0 << "";
    }
    void tvChannel()
    {
        QFETCH(int, region);
        QFETCH(double, mhz);
        QTEST(tvChannelName(region, mhz), "channel");
    }
};

QTEST_MAIN(TstDetail)
#include "tst_detail.moc"
