// Address, name, squelch, mute and KOB controls, and the TV region menu.
#include "detail/detailrig.h"

#include "detail/detailmeters.h"
#include "detail/tvregion.h"

#include <QAction>
#include <QGroupBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

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

    void nameKeys_data()
    {
        QTest::addColumn<QString>("keys"); // "\r" Enter, "\b" Backspace
        QTest::addColumn<int>("refusals");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("sent");
        QTest::newRow("lower case cannot be typed") << "ab" << 2 << ""
                                                    << "";
        QTest::newRow("AB padded to six") << "AB\r" << 0 << "AB    "
                                          << "#05CAB    ";
        QTest::newRow("signs, digits, blank") << "+-*/ 9\r" << 0 << "+-*/ 9"
                                              << "#05C+-*/ 9";
        QTest::newRow("refused among good ones") << "HI!?\b\r" << 2 << "H     "
                                                 << "#05CH     ";
        QTest::newRow("no Enter, nothing sent") << "ABC" << 0 << "ABC"
                                                << "";
    }
    void nameKeys()
    {
        QFETCH(QString, keys);
        QFETCH(int, refusals);
        QFETCH(QString, shown);
        QFETCH(QString, sent);

        DetailRig rig;
        rig.addReceiver(5);
        rig.open(0);
        QLineEdit *box = rig.tab().txtRName;
        box->clear();
        for (QChar c : keys) {
            if (c == QLatin1Char('\r') || c == QLatin1Char('\b'))
                QTest::keyClick(box, c == QLatin1Char('\r') ? Qt::Key_Return : Qt::Key_Backspace);
            else
                QTest::keyClicks(box, QString(c));
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
        QTest::addColumn<int>("to");
        QTest::addColumn<int>("heldMs");
        // The first step is at once; the repeat starts 400 ms later, then every 20 ms.
        QTest::newRow("hold up to the top") << "cmdSQinc" << 90 << 0 << 99 << 400 + 8 * 20;
        QTest::newRow("98 reaches 99 and stops") << "cmdSQinc" << 98 << 0 << 99 << 400;
        QTest::newRow("quick click") << "cmdSQdec" << 50 << 1 << 49 << 0;
        QTest::newRow("released in the repeat") << "cmdSQdec" << 50 << 4 << 47 << 400 + 2 * 20;
        QTest::newRow("hold down to 1") << "cmdSQdec" << 5 << 0 << 1 << 400 + 3 * 20;
    }
    void squelchHold()
    {
        QFETCH(QString, button);
        QFETCH(int, from);
        QFETCH(int, releaseAtCall);
        QFETCH(int, to);

        DetailRig rig;
        rig.addReceiver(5, [&](SimReceiver &r) { r.squelch = from; });
        rig.open(0);
        auto *b = rig.form->findChild<QPushButton *>(button);
        std::uint64_t releasedAt = 0;
        const std::uint64_t pressedAt = rig.clock.nowMicros();
        auto release = [&] {
            QVERIFY(rig.frames().isEmpty()); // nothing goes out while held
            releasedAt = rig.clock.nowMicros();
            QTest::mouseRelease(b, Qt::LeftButton);
        };
        rig.desktop.script = [&](int call) {
            if (call == releaseAtCall)
                release();
        };
        QTest::mousePress(b, Qt::LeftButton);
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
        QCOMPARE(titles.mid(0, 2), (QStringList{"Performing KOB function now ...", ""}));
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
