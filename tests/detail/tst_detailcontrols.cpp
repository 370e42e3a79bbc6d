// Address, name, squelch, mute and KOB controls, and the TV region menu.
#include "detail/detailrig.h"

#include "detail/detailmeters.h"
#include "detail/tvregion.h"

#include <QAction>
#include <QClipboard>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

#include <memory>

using namespace zun;
using namespace zun::test;

class TstDetailControls : public QObject
{
    Q_OBJECT
private slots:
    void addressChange_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<QStringList>("sent");
        using L = QStringList;
        const L range{"Valid Address is 1 to 64"}, probe(3, "%09L"); // nobody at 9: every attempt
        // Receivers at 5 (this one) and 7.
        QTest::newRow("0") << "0" << true << range << L{};
        QTest::newRow("65") << "65" << true << range << L{};
        QTest::newRow("same address") << "05" << true << L{} << L{};
        const L taken{"Address 7 is already used by another receiver !"};
        QTest::newRow("taken") << "7" << true << taken << L{"%07L"};
        QTest::newRow("user says no") << "9" << false << L{"Change Address ?"} << probe;
        QTest::newRow("changed") << "9" << true << L{"Change Address ?"} << probe + L{"#05L09"};
    }
    void addressChange()
    {
        QFETCH(QString, typed);
        QFETCH(bool, yes);
        QFETCH(QStringList, sent);
        DetailRig rig;
        rig.addReceiver(5);
        rig.addReceiver(7);
        rig.open(0);
        rig.dialogs.queueAnswer(yes ? MessageAnswer::Yes : MessageAnswer::No);
        rig.tab().txtAddr->setText(typed);
        QTest::keyClick(rig.tab().txtAddr, Qt::Key_Return);

        QTEST(rig.dialogs.messages(), "messages");
        QCOMPARE(rig.frames(), sent);
        const bool changed = sent.endsWith(QStringLiteral("#05L09"));
        QCOMPARE(rig.record().address, changed ? 9 : 5);
        QCOMPARE(rig.host.captions, changed ? QStringList{"09 RCV05 "} : QStringList{});
        if (!yes)
            QCOMPARE(rig.tab().txtAddr->text(), QStringLiteral("5"));
        if (changed) {
            // Everything after goes to the new address; mute also reaches the panel.
            rig.line.clearWritten();
            QTest::mouseClick(rig.tab().Mute, Qt::LeftButton);
            QTest::mouseClick(rig.tab().Mute, Qt::LeftButton);
            QCOMPARE(rig.frames(), (QStringList{"#09B1", "#09B0"}));
            QCOMPARE(rig.host.mutes, (std::vector<std::pair<int, bool>>{{0, true}, {0, false}}));
            QVERIFY(!rig.record().mute && !rig.bus.receiver(9)->muted);
            QCOMPARE(rig.tab().Mute->property("image").toString(), QStringLiteral("SpeakerON"));
        }
    }

    void nameEntry_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<QString>("input"); // keys: "\r" Enter, "\b" Backspace; other ways then Enter
        QTest::addColumn<int>("refusals");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("sent");
        QTest::newRow("lower case cannot be typed") << "keys"
                                                    << "ab" << 2 << ""
                                                    << "";
        QTest::newRow("AB padded to six") << "keys"
                                          << "AB\r" << 0 << "AB    "
                                          << "#05CAB    ";
        QTest::newRow("signs, digits, blank") << "keys"
                                              << "+-*/ 9\r" << 0 << "+-*/ 9"
                                              << "#05C+-*/ 9";
        QTest::newRow("refused among good ones") << "keys"
                                                 << "HI!?\b\r" << 2 << "H     "
                                                 << "#05CH     ";
        QTest::newRow("no Enter, nothing sent") << "keys"
                                                << "ABC" << 0 << "ABC"
                                                << "";
        // Text that arrives whole passes the same filter, refused once.
        for (const char *way : {"paste", "drop", "input method"})
            QTest::newRow(way) << way << "ab!Q9é" << 1 << "Q9    "
                               << "#05CQ9    ";
    }
    void nameEntry()
    {
        QFETCH(QString, way);
        QFETCH(QString, input);
        QFETCH(int, refusals);
        QFETCH(QString, shown);
        QFETCH(QString, sent);

        DetailRig rig;
        rig.addReceiver(5);
        rig.open(0);
        QLineEdit *box = rig.tab().txtRName;
        box->clear();
        auto mime = std::make_unique<QMimeData>();
        mime->setText(input);
        if (way == "keys") {
            for (QChar c : input) {
                if (c == QLatin1Char('\r') || c == QLatin1Char('\b'))
                    QTest::keyClick(box, c == QLatin1Char('\r') ? Qt::Key_Return : Qt::Key_Backspace);
                else
                    QTest::keyClicks(box, QString(c));
            }
        } else {
            if (way == "paste") {
                QGuiApplication::clipboard()->setText(input);
                QTest::keySequence(box, QKeySequence::Paste);
            } else if (way == "drop") {
                QDragEnterEvent enter(QPoint(2, 2), Qt::CopyAction, mime.get(), Qt::LeftButton,
                                      Qt::NoModifier);
                QCoreApplication::sendEvent(box, &enter);
                QDropEvent drop(QPointF(2, 2), Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
                QCoreApplication::sendEvent(box, &drop);
            } else {
                QInputMethodEvent compose;
                compose.setCommitString(input);
                QCoreApplication::sendEvent(box, &compose);
            }
            QTest::keyClick(box, Qt::Key_Return);
        }
        QCOMPARE(rig.dialogs.messages(),
                 QStringList(refusals, QStringLiteral("Please enter 0-9 or A-Z or +-*/")));
        QCOMPARE(box->text(), shown);
        QCOMPARE(rig.frames().join(QString()), sent);
        if (!sent.isEmpty()) {
            QCOMPARE(rig.record().name, shown);
            QCOMPARE(rig.bus.receiver(5)->name, shown.toLatin1());
            QCOMPARE(rig.host.captions, QStringList{QStringLiteral("05 ") + shown});
        }
    }

    void squelchHold_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("releaseAtCall"); // 0: after the press handler returned
        QTest::addColumn<int>("offAtCall");     // the pointer leaves the button (0: never)
        QTest::addColumn<int>("backAtCall");    // and comes back (0: never)
        QTest::addColumn<int>("to");
        QTest::addColumn<int>("heldMs");
        // The first step is at once; the repeat starts 400 ms later, then every 20 ms.
        QTest::newRow("98 reaches 99 and stops") << "cmdSQinc" << 98 << 0 << 0 << 0 << 99 << 400;
        QTest::newRow("quick click") << "cmdSQdec" << 50 << 1 << 0 << 0 << 49 << 0;
        QTest::newRow("released in the repeat") << "cmdSQdec" << 50 << 4 << 0 << 0 << 47 << 400 + 2 * 20;
        QTest::newRow("hold down to 1") << "cmdSQdec" << 5 << 0 << 0 << 0 << 1 << 400 + 3 * 20;
        // One gesture is one hold, whatever the pointer does meanwhile.
        QTest::newRow("off and back in the wait") << "cmdSQinc" << 50 << 5 << 1 << 2 << 54 << 400 + 3 * 20;
        QTest::newRow("released off the button") << "cmdSQinc" << 50 << 4 << 3 << 0 << 53 << 400 + 2 * 20;
    }
    void squelchHold()
    {
        QFETCH(QString, button);
        QFETCH(int, from);
        QFETCH(int, releaseAtCall);
        QFETCH(int, offAtCall);
        QFETCH(int, backAtCall);
        QFETCH(int, to);

        DetailRig rig;
        rig.addReceiver(5, [&](SimReceiver &r) { r.squelch = from; });
        rig.open(0);
        auto *b = rig.form->findChild<QPushButton *>(button);
        const QPoint on = b->rect().center();
        const QPoint off = on + QPoint(0, 3 * b->height());
        QPoint pointer = on;
        std::uint64_t releasedAt = 0;
        const std::uint64_t pressedAt = rig.clock.nowMicros();
        auto release = [&] {
            QVERIFY(rig.frames().isEmpty()); // nothing goes out while held
            releasedAt = rig.clock.nowMicros();
            QTest::mouseRelease(b, Qt::LeftButton, {}, pointer);
        };
        rig.desktop.script = [&](int call) {
            if (call == offAtCall || call == backAtCall) {
                pointer = call == offAtCall ? off : on;
                QTest::mouseMove(b, pointer);
            }
            if (call == releaseAtCall)
                release();
        };
        QTest::mousePress(b, Qt::LeftButton, {}, on);
        if (releaseAtCall == 0)
            release();

        QCOMPARE(rig.record().squelch, to);
        QTEST(int((releasedAt - pressedAt) / 1000), "heldMs");
        QCOMPARE(rig.frames(),
                 QStringList{QStringLiteral("#05F%1").arg(to, 2, 16, QLatin1Char('0')).toUpper()});
        QCOMPARE(rig.bus.receiver(5)->squelch, to);
        QCOMPARE(rig.tab().PB_SQ->squelchLevel(), squelchLevel(rig.ctx.bus.levelTable(), to));
    }

    void kob_data()
    {
        QTest::addColumn<int>("abortAtCall"); // 0: let it finish
        QTest::addColumn<QString>("outcome");
        QTest::newRow("completes") << 0 << "Complete!";
        QTest::newRow("user aborts") << 2 << "User Aborted!";
    }
    void kob()
    {
        QFETCH(int, abortAtCall);
        QFETCH(QString, outcome);

        DetailRig rig;
        rig.addReceiver(5);
        FrmMore *f = rig.open(0);
        auto *kob = f->findChild<QPushButton *>(QStringLiteral("cmdKob"));
        auto *exit = f->findChild<QPushButton *>(QStringLiteral("cmdExit"));
        QStringList titles;
        connect(f, &QWidget::windowTitleChanged, f, [&](const QString &t) { titles << t; });
        bool lockedAndOpen = false;
        rig.desktop.script = [&](int call) {
            if (call == 1)
                lockedAndOpen = !f->tabs()->isEnabled() && !exit->isEnabled() && kob->isEnabled() &&
                                !f->findChild<QWidget *>(QStringLiteral("FrameA"))->isEnabled() &&
                                !f->findChild<QGroupBox *>(QStringLiteral("FrameB"))->isEnabled() &&
                                !f->close() && f->isVisible();
            if (call == abortAtCall)
                QTest::mouseClick(kob, Qt::LeftButton);
        };
        QTest::mouseClick(kob, Qt::LeftButton);

        QVERIFY(lockedAndOpen);
        const QString offline = "This receiver will stay offline until KOB function is manually terminated !";
        QCOMPARE(rig.dialogs.messages(), abortAtCall ? QStringList{offline} : QStringList());
        // The blink's other half must look empty: an empty title would show the
        // application's name instead.
        QCOMPARE(titles.value(0), "Performing KOB function now ...");
        QVERIFY(!titles.value(1).isEmpty() && titles.value(1).trimmed().isEmpty());
        QCOMPARE(titles.mid(titles.size() - 2), (QStringList{outcome, "Detail Functions"}));
        QVERIFY(!rig.ctx.bus.kobActive() && f->tabs()->isEnabled() && exit->isEnabled());
        // "O" awaits no reply, so the transaction spends all its attempts on it.
        const QStringList frames = rig.frames();
        QCOMPARE(frames.mid(0, 3), QStringList(3, QStringLiteral("%05O")));
        const QStringList polls = frames.mid(3);
        QCOMPARE(polls, QStringList(polls.size(), QStringLiteral("#05A1")));
        // Aborted: one unanswered round before the second press, none after.
        QVERIFY(abortAtCall ? polls.size() == 3 : polls.size() > 3 && rig.bus.receiver(5)->hostPresent);
    }

    void tvRegion_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("checked");
        QTest::addColumn<QString>("saved");
        QTest::newRow("Europe") << "2" << 2 << "2";
        QTest::newRow("7 repaired") << "7" << 4 << "4";
        QTest::newRow("text repaired") << "Japan" << 4 << "4";
    }
    void tvRegion()
    {
        QFETCH(QString, stored);
        QFETCH(int, checked);
        QFETCH(QString, saved);

        DetailRig rig;
        const QString app = "KESTA_ZUN", section = "Function", key = "TVtype";
        rig.settings.save(app, section, key, stored);
        QMenu option;
        const TvRegionItems items = addTvRegionMenu(&option, rig.ctx);
        loadTvRegion(items, rig.ctx);
        for (int region = 0; region < 6; ++region)
            QCOMPARE(items[region]->isChecked(), region == checked);
        QCOMPARE(rig.settings.get(app, section, key), saved);

        // A choice from the menu is saved at once and followed by the TV box.
        rig.addReceiver(5, [](SimReceiver &r) {
            r.bandStartCode = 0x3C0A; // 450..650 MHz
            r.bandWidth = 8000;
        });
        rig.open(0);
        option.findChild<QAction *>(QStringLiteral("mnuTV_China"))->trigger();
        QCOMPARE(rig.settings.get(app, section, key), QStringLiteral("1"));
        for (int region = 0; region < 6; ++region)
            QCOMPARE(items[region]->isChecked(), region == 1);
        for (const auto &[typed, channel] : {std::pair{"580", ""}, std::pair{"606", "25"}}) {
            rig.tab().txtFreq->setText(QLatin1String(typed));
            QTest::keyClick(rig.tab().txtFreq, Qt::Key_Return);
            QCOMPARE(rig.tab().TV->text(), QLatin1String(channel));
        }
    }
};

QTEST_MAIN(TstDetailControls)
#include "tst_detailcontrols.moc"
