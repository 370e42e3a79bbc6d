// Address, name, squelch, mute and KOB controls, and the TV region menu.
#include "detail/detailrig.h"

#include "detail/detailmeters.h"
#include "detail/settingstab.h"
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
    void addressChange_data();
    void addressChange();
    void nameKeys_data();
    void nameKeys();
    void squelchHold_data();
    void squelchHold();
    void muteMirrorsPanel();
    void kob_data();
    void kob();
    void tvRegionMenu_data();
    void tvRegionMenu();
    void tvBoxFollowsRegion();
};

void TstDetailControls::addressChange_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("yes");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QStringList>("sent");
    QTest::addColumn<int>("address");
    const QStringList none;
    const QString range = QStringLiteral("Valid Address is 1 to 64");
    // Receivers at 5 (this one) and 7.
    QTest::newRow("0") << "0" << true << QStringList{range} << none << 5;
    QTest::newRow("65") << "65" << true << QStringList{range} << none << 5;
    QTest::newRow("100") << "100" << true << QStringList{range} << none << 5;
    QTest::newRow("not a number") << "x" << true << none << none << 5;
    QTest::newRow("same address") << "05" << true << none << none << 5;
    QTest::newRow("taken") << "7" << true << QStringList{"Address 7 is already used by another receiver !"}
                           << QStringList{"%07L"} << 5;
    const QStringList probe{"%09L", "%09L", "%09L"}; // nobody answers: every attempt
    QTest::newRow("user says no") << "9" << false << QStringList{"Change Address ?"} << probe << 5;
    QTest::newRow("changed") << "9" << true << QStringList{"Change Address ?"} << probe + QStringList{"#05L09"}
                             << 9;
}

void TstDetailControls::addressChange()
{
    QFETCH(QString, typed);
    QFETCH(bool, yes);
    QFETCH(QStringList, messages);
    QFETCH(QStringList, sent);
    QFETCH(int, address);

    DetailRig rig;
    rig.addReceiver(5, 0);
    rig.addReceiver(7, 1);
    FrmMore *f = rig.open(0);
    QLineEdit *box = f->settings().txtAddr;
    rig.dialogs.queueAnswer(yes ? MessageAnswer::Yes : MessageAnswer::No);
    box->setText(typed);
    QTest::keyClick(box, Qt::Key_Return);

    QCOMPARE(rig.dialogs.messages(), messages);
    QCOMPARE(rig.frames(), sent);
    QCOMPARE(rig.record().address, address);
    if (!yes)
        QCOMPARE(box->text(), QStringLiteral("5"));
    if (address == 9) {
        QCOMPARE(f->addressText(), QStringLiteral("09"));
        QCOMPARE(rig.bus.receiver(9)->name, QByteArray("RCV05 "));
        QCOMPARE(rig.host.captions.size(), size_t(1));
        QCOMPARE(rig.host.captions.front().second, QStringLiteral("09 RCV05 "));
        // Everything after goes to the new address, and the receiver hears it.
        rig.line.clearWritten();
        QTest::mouseClick(f->settings().Mute, Qt::LeftButton);
        QCOMPARE(rig.frames(), QStringList{QStringLiteral("#09B1")});
        QVERIFY(rig.bus.receiver(9)->muted);
    } else {
        QVERIFY(rig.host.captions.empty());
    }
}

void TstDetailControls::nameKeys_data()
{
    QTest::addColumn<QString>("keys"); // "\r" stands for Enter
    QTest::addColumn<int>("refusals");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QStringList>("sent");
    QTest::newRow("lower case cannot be typed") << "ab" << 2 << "" << QStringList{};
    QTest::newRow("AB padded to six") << "AB\r" << 0 << "AB    " << QStringList{"#05CAB    "};
    QTest::newRow("signs and digits") << "+-*/09\r" << 0 << "+-*/09" << QStringList{"#05C+-*/09"};
    QTest::newRow("blank and punctuation") << "A B.,\r" << 0 << "A B., " << QStringList{"#05CA B., "};
    QTest::newRow("refused among good ones") << "HI!?\r" << 2 << "HI    " << QStringList{"#05CHI    "};
    QTest::newRow("backspace edits") << "ABC\b\r" << 0 << "AB    " << QStringList{"#05CAB    "};
    QTest::newRow("no Enter, nothing sent") << "ABC" << 0 << "ABC" << QStringList{};
}

void TstDetailControls::nameKeys()
{
    QFETCH(QString, keys);
    QFETCH(int, refusals);
    QFETCH(QString, shown);
    QFETCH(QStringList, sent);

    DetailRig rig;
    rig.addReceiver(5, 0);
    FrmMore *f = rig.open(0);
    QLineEdit *box = f->settings().txtRName;
    box->clear();
    for (QChar c : keys) {
        if (c == QLatin1Char('\r'))
            QTest::keyClick(box, Qt::Key_Return);
        else if (c == QLatin1Char('\b'))
            QTest::keyClick(box, Qt::Key_Backspace);
        else
            QTest::keyClicks(box, QString(c));
    }
    QCOMPARE(rig.dialogs.messages(), QStringList(refusals, QStringLiteral("Please enter 0-9 or A-Z or +-*/")));
    QCOMPARE(box->text(), shown);
    QCOMPARE(rig.frames(), sent);
    if (!sent.isEmpty()) {
        QCOMPARE(rig.record().name, shown);
        QCOMPARE(rig.bus.receiver(5)->name, shown.toLatin1());
        QCOMPARE(rig.host.captions.back().second, QStringLiteral("05 ") + shown);
    }
}

void TstDetailControls::squelchHold_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("releaseAtCall"); // 0: after the press handler returned
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("heldMs");        // virtual time from press to release
    // The first step is at once; the repeat starts 400 ms later, then every 20 ms.
    QTest::newRow("hold up to the top") << "cmdSQinc" << 90 << 0 << 99 << 400 + 8 * 20;
    QTest::newRow("98 reaches 99 and stops") << "cmdSQinc" << 98 << 0 << 99 << 400;
    QTest::newRow("99 stays") << "cmdSQinc" << 99 << 0 << 99 << 400;
    QTest::newRow("quick click down") << "cmdSQdec" << 50 << 1 << 49 << 0;
    QTest::newRow("released in the repeat") << "cmdSQdec" << 50 << 4 << 47 << 400 + 2 * 20;
    QTest::newRow("hold down to the bottom") << "cmdSQdec" << 5 << 0 << 1 << 400 + 3 * 20;
    QTest::newRow("1 stays") << "cmdSQdec" << 1 << 0 << 1 << 400;
}

void TstDetailControls::squelchHold()
{
    QFETCH(QString, button);
    QFETCH(int, from);
    QFETCH(int, releaseAtCall);
    QFETCH(int, to);
    QFETCH(int, heldMs);

    DetailRig rig;
    rig.addReceiver(5, 0, [&](SimReceiver &r) { r.squelch = from; });
    FrmMore *f = rig.open(0);
    auto *b = f->findChild<QPushButton *>(button);
    std::uint64_t releasedAt = 0;
    const std::uint64_t pressedAt = rig.clock.nowMicros();
    rig.desktop.script = [&](int call) {
        if (call == releaseAtCall) {
            releasedAt = rig.clock.nowMicros();
            QTest::mouseRelease(b, Qt::LeftButton);
        }
    };
    QTest::mousePress(b, Qt::LeftButton);
    if (releaseAtCall == 0) {
        QVERIFY(rig.frames().isEmpty()); // nothing is sent while held
        releasedAt = rig.clock.nowMicros();
        QTest::mouseRelease(b, Qt::LeftButton);
    }

    QCOMPARE(rig.record().squelch, to);
    QCOMPARE((releasedAt - pressedAt) / 1000, std::uint64_t(heldMs));
    QCOMPARE(rig.frames(), QStringList{QStringLiteral("#05F%1").arg(to, 2, 16, QLatin1Char('0')).toUpper()});
    QCOMPARE(rig.bus.receiver(5)->squelch, to);
    QCOMPARE(f->squelchLevel(), squelchLevel(rig.ctx.state.levelTable, to));
    QCOMPARE(f->settings().PB_SQ->squelchLevel(), f->squelchLevel());
}

void TstDetailControls::muteMirrorsPanel()
{
    DetailRig rig;
    rig.addReceiver(5, 2);
    FrmMore *f = rig.open(2);
    QPushButton *mute = f->settings().Mute;
    QCOMPARE(mute->accessibleName(), QStringLiteral("Mute"));
    QCOMPARE(mute->property("image").toString(), QStringLiteral("SpeakerON"));
    QTest::mouseClick(mute, Qt::LeftButton);
    QVERIFY(rig.record(2).mute);
    QCOMPARE(mute->property("image").toString(), QStringLiteral("SpeakerOFF"));
    QVERIFY(rig.bus.receiver(5)->muted);
    QTest::mouseClick(mute, Qt::LeftButton);
    QVERIFY(!rig.record(2).mute);
    QVERIFY(!rig.bus.receiver(5)->muted);
    QCOMPARE(rig.frames(), (QStringList{"#05B1", "#05B0"}));
    QCOMPARE(rig.host.mutes, (std::vector<std::pair<int, bool>>{{2, true}, {2, false}}));
}

void TstDetailControls::kob_data()
{
    QTest::addColumn<int>("abortAtCall"); // 0: let it finish
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<QStringList>("messages");
    QTest::newRow("completes") << 0 << "Complete!" << QStringList{};
    QTest::newRow("user aborts") << 2 << "User Aborted!"
                                 << QStringList{
                                        "This receiver will stay offline until KOB function is manually terminated !"};
}

void TstDetailControls::kob()
{
    QFETCH(int, abortAtCall);
    QFETCH(QString, outcome);
    QFETCH(QStringList, messages);

    DetailRig rig;
    rig.addReceiver(5, 0);
    FrmMore *f = rig.open(0);
    auto *kob = f->findChild<QPushButton *>(QStringLiteral("cmdKob"));
    auto *exit = f->findChild<QPushButton *>(QStringLiteral("cmdExit"));
    QStringList titles;
    connect(f, &QWidget::windowTitleChanged, f, [&](const QString &t) { titles << t; });
    bool lockedWhileRunning = false;
    bool closeRefused = false;
    rig.desktop.script = [&](int call) {
        if (call == 1) {
            lockedWhileRunning = !f->tabs()->isEnabled() && !exit->isEnabled() && kob->isEnabled() &&
                                 !f->findChild<QGroupBox *>(QStringLiteral("FrameA"))->isEnabled() &&
                                 !f->findChild<QGroupBox *>(QStringLiteral("FrameB"))->isEnabled();
            closeRefused = !f->close() && f->isVisible();
        }
        if (call == abortAtCall)
            QTest::mouseClick(kob, Qt::LeftButton);
    };
    QTest::mouseClick(kob, Qt::LeftButton);

    QVERIFY(lockedWhileRunning);
    QVERIFY(closeRefused);
    QCOMPARE(rig.dialogs.messages(), messages);
    QCOMPARE(titles.first(), QStringLiteral("Performing KOB function now ..."));
    QCOMPARE(titles.at(1), QString());
    QCOMPARE(titles.at(titles.size() - 2), outcome);
    QCOMPARE(f->windowTitle(), QStringLiteral("Detail Functions"));
    QVERIFY(!rig.ctx.state.KobActive);
    QVERIFY(f->tabs()->isEnabled() && exit->isEnabled());
    // "O" awaits no reply, so the transaction spends all its attempts on it.
    const QStringList frames = rig.frames();
    QCOMPARE(frames.mid(0, 3), QStringList(3, QStringLiteral("%05O")));
    const QStringList polls = frames.mid(3);
    QCOMPARE(polls, QStringList(polls.size(), QStringLiteral("#05A1")));
    if (abortAtCall) {
        // One unanswered round of "A1" before the second press, none after.
        QCOMPARE(polls.size(), 3);
    } else {
        QVERIFY(polls.size() > 3);
        QVERIFY(rig.bus.receiver(5)->hostPresent);
    }
}

void TstDetailControls::tvRegionMenu_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("checked");
    QTest::addColumn<QString>("saved");
    QTest::newRow("Europe") << "2" << "mnuTV_Europe" << "2";
    QTest::newRow("Australia") << "0" << "mnuTV_Australia" << "0";
    QTest::newRow("USA") << "5" << "mnuTV_USA" << "5";
    QTest::newRow("7 repaired") << "7" << "mnuTV_Taiwan" << "4";
    QTest::newRow("-1 repaired") << "-1" << "mnuTV_Taiwan" << "4";
    QTest::newRow("text repaired") << "Japan" << "mnuTV_Taiwan" << "4";
    QTest::newRow("missing") << "" << "mnuTV_Taiwan" << "4";
}

void TstDetailControls::tvRegionMenu()
{
    QFETCH(QString, stored);
    QFETCH(QString, checked);
    QFETCH(QString, saved);

    DetailRig rig;
    const QString app = QStringLiteral("KESTA_ZUN"), section = QStringLiteral("Function"),
                  key = QStringLiteral("TVtype");
    rig.settings.save(app, section, key, stored);
    QMenu option;
    const TvRegionItems items = addTvRegionMenu(&option, rig.ctx);
    loadTvRegion(items, rig.ctx);
    QStringList checkedNow;
    for (QAction *a : items)
        if (a->isChecked())
            checkedNow << a->objectName();
    QCOMPARE(checkedNow, QStringList{checked});
    QCOMPARE(rig.settings.get(app, section, key), saved);

    // A choice from the menu moves the check mark and is saved at once.
    option.findChild<QAction *>(QStringLiteral("mnuTV_China"))->trigger();
    QCOMPARE(rig.ctx.state.TVtype, 1);
    QCOMPARE(rig.settings.get(app, section, key), QStringLiteral("1"));
    for (int region = 0; region < 6; ++region)
        QCOMPARE(items[region]->isChecked(), region == 1);
}

void TstDetailControls::tvBoxFollowsRegion()
{
    DetailRig rig;
    rig.addReceiver(5, 0, [](SimReceiver &r) {
        r.bandStartCode = 0x3C64; // 450.000
        r.bandWidth = 8000;
    });
    QMenu option;
    addTvRegionMenu(&option, rig.ctx);
    FrmMore *f = rig.open(0);
    SettingsTab &s = f->settings();
    const struct
    {
        const char *region;
        const char *typed;
        const char *channel;
    } steps[] = {
        {"mnuTV_Europe", "478", "22"}, {"mnuTV_Europe", "477.975", "21"}, {"mnuTV_China", "580", ""},
        {"mnuTV_China", "606", "25"},  {"mnuTV_USA", "476", "15"},       {"mnuTV_Australia", "500", ""},
    };
    for (const auto &step : steps) {
        option.findChild<QAction *>(QLatin1String(step.region))->trigger();
        s.txtFreq->setText(QLatin1String(step.typed));
        QTest::keyClick(s.txtFreq, Qt::Key_Return);
        QCOMPARE(s.TV->text(), QLatin1String(step.channel));
    }
    QVERIFY(rig.dialogs.messages().isEmpty());
}

QTEST_MAIN(TstDetailControls)
#include "tst_detailcontrols.moc"
