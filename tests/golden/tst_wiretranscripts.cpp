// Golden wire transcripts: whole user sessions driven through the windows on
// the in-process line and the virtual clock. Every frame the program writes
// and every reply the receivers put on the line is logged with its time in
// microseconds and compared byte for byte with tests/golden/<run>.txt, so the
// inside can be rearranged without changing a byte or a time on the wire.
// ZUN_UPDATE_GOLDEN=1 rewrites the files instead of comparing.
#include "core/options.h"
#include "core/workloop.h"
#include "detail/detailwindow.h"
#include "mainscreen/clicklabel.h"
#include "mainscreen/imagesign.h"
#include "mainscreen/rcvpanel.h"
#include "mainscreen/startupwindows.h"
#include "planning/planwindow.h"
#include "support/testbed.h"

#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <map>

using namespace zun;

namespace {

QString visible(const QByteArray &bytes)
{
    QString out;
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '\r' || c == '\n' || c == '\\')
            out += QString::fromLatin1(c == '\r' ? "\\r" : c == '\n' ? "\\n" : "\\\\");
        else if (u < 0x20 || u > 0x7E)
            out += QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
        else
            out += QLatin1Char(c);
    }
    return out;
}

// A fixed set of receivers, no random faults: address 1 on its presets, 2
// muted, 5 with a narrow band so that a sweep stays short.
void populate(SimBus &bus)
{
    for (const auto &[address, name, table, group, channel, squelch, strength, muted, bandWidth] :
         {std::tuple{1, "VOCAL1", "B00000000000", 1, 1, 20, 200, false, 4000},
          {2, "GUITAR", "8CCCCCCCC000", 2, 3, 25, 175, true, 4000},
          {5, "DRUMS ", "688888800000", 3, 2, 30, 210, false, 40}}) {
        SimReceiver s;
        s.address = address;
        s.name = name;
        s.groupTable = table;
        s.group = group;
        s.channel = channel;
        s.squelch = squelch;
        s.muted = muted;
        s.bandWidth = bandWidth;
        s.transmitter.strength = strength;
        bus.addReceiver(s);
    }
}

// The program as main() assembles it, on doubles: start-up, main screen, work loop.
struct Program : TestBed
{
    // setup runs on the surroundings before the program starts.
    bool start(const std::function<void(Program &)> &setup)
    {
        populate(bus);
        line.attachBus(1, &bus);
        bus.setReplyObserver([this](std::uint64_t micros, const QByteArray &bytes, int) {
            replies.push_back({micros, bytes});
        });
        for (const auto &[section, key, value] : {std::tuple{"MSComm", "CommPort", "1"},
                                                  {"Function", "ChangeBaudrate", "1"},
                                                  {"Function", "MainKOB", "1"}})
            settings.save(kAppName, section, key, value);
        if (setup)
            setup(*this);
        windows = std::make_unique<StartupWindows>(*session);
        if (!session->start(windows->views()))
            return false;
        main = windows->mainWindow();
        return true;
    }

    // Steps separated by ";", each a verb and its words; see the verbs below.
    void play(const QString &steps)
    {
        DetailWindow *detail = nullptr;
        for (const QString &step : steps.split(QLatin1Char(';'))) {
            QStringList words = step.split(QLatin1Char(' '), Qt::SkipEmptyParts);
            const QString verb = words.takeFirst();
            const int n = words.value(0).toInt();
            if (verb == "passes") {
                passes(n);
            } else if (verb == "forget") { // what went over the line at start-up
                line.clearWritten();
                replies.clear();
                dialogs.clear();
            } else if (verb == "menu") { // each item, then a pass
                for (const QString &name : words) {
                    main->findChild<QAction *>(name)->trigger();
                    passes(1);
                }
            } else if (verb == "panel") {
                RcvPanel &p = *main->panel(n);
                QWidget *part = words[1] == "name"   ? static_cast<QWidget *>(p.nameLabel())
                                : words[1] == "mute" ? static_cast<QWidget *>(p.muteButton())
                                                     : static_cast<QWidget *>(p.pilotSign());
                QTest::mouseClick(part, Qt::LeftButton);
            } else if (verb == "detail") {
                QTest::mouseClick(main->panel(n)->moreButton(), Qt::LeftButton);
                detail = static_cast<DetailWindow *>(main->detailWindow());
            } else if (verb == "click") {
                for (const QString &name : words)
                    click(find<QWidget>(detail, name));
            } else if (verb == "enter") {
                auto *box = find<QLineEdit>(detail, words[0]);
                box->selectAll();
                QTest::keyClicks(box, words[1]);
                QTest::keyClick(box, Qt::Key_Return);
            } else if (verb == "plan") { // a button of the frequency plan window, then until it is through
                click(find<QWidget>(main->planWindow(), words[0]));
                while (main->planWindow()->computing() || session->deploy().busy())
                    passes(1);
            } else if (verb == "hold") {
                hold(find<QPushButton>(detail, words[0]), words[1].toInt());
            } else if (verb == "tab") {
                detail->tabs()->setCurrentIndex(n);
            } else if (verb == "yes") {
                dialogs.queueAnswer(MessageAnswer::Yes);
            } else if (verb == "type") {
                dialogs.queueInput(words[0]);
            } else if (verb == "power") {
                bus.receiver(n)->powered = words[1] == "on";
            } else if (verb == "fault") {
                bus.scriptFaults(n, words[1] == "late" ? SimFault::Late : SimFault::Garbled);
            } else if (verb == "choose") { // the file the next open dialog returns
                QFile file(m_dir.filePath(words[0]));
                if (!file.open(QIODevice::WriteOnly))
                    qFatal("cannot write %s", qPrintable(file.fileName()));
                file.write("1,\"LEAD\",3,4,\"7A12\",\"7B00\",25,48,0,-1\r\n"
                           "5,\"BASS\",1,2,\"72C4\",\"7300\",30,32,-1,0\r\n"
                           "9,\"NOBODY\",1,1,\"72BA\",\"72BA\",20,48,0,0\r\n");
                dialogs.queueFileName(file.fileName());
            } else {
                qFatal("unknown step %s", qPrintable(step));
            }
        }
    }
    void passes(int count)
    {
        for (int i = 0; i < count; ++i) {
            session->loop().runSteps();
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    template <typename W> static W *find(QWidget *parent, const QString &name)
    {
        if (W *w = parent ? parent->findChild<W *>(name) : nullptr)
            return w;
        qFatal("no widget %s", qPrintable(name));
    }
    // A radio button only takes clicks on its circle and caption, at its left.
    static void click(QWidget *w)
    {
        const QPoint at = qobject_cast<QRadioButton *>(w) ? QPoint(6, w->height() / 2) : w->rect().center();
        QTest::mouseClick(w, Qt::LeftButton, {}, at);
    }
    // Press and hold: the release comes with the first DoEvents the handler
    // runs once the button was held this long on the virtual clock.
    void hold(QPushButton *b, int heldMillis)
    {
        const std::uint64_t releaseAt = clock.nowMicros() + heldMillis * 1000ull;
        bool released = false;
        desktop.script = [&, b](int) {
            if (clock.nowMicros() >= releaseAt && !std::exchange(released, true))
                QTest::mouseRelease(b, Qt::LeftButton);
        };
        QTest::mousePress(b, Qt::LeftButton);
        desktop.script = nullptr;
    }

    QStringList transcript() const
    {
        std::vector<std::pair<std::uint64_t, QString>> events;
        QString lineSettings;
        for (const auto &w : line.written()) {
            const QString settingsNow = QStringLiteral("COM%1 %2").arg(w.port).arg(w.baud);
            if (settingsNow != lineSettings)
                events.emplace_back(w.micros, QStringLiteral("= ") + settingsNow);
            lineSettings = settingsNow;
            events.emplace_back(w.micros, QStringLiteral("> ") + visible(w.bytes));
        }
        for (const auto &[micros, bytes] : replies)
            events.emplace_back(micros, QStringLiteral("< ") + visible(bytes));
        std::stable_sort(events.begin(), events.end(),
                         [](const auto &a, const auto &b) { return a.first < b.first; });
        QStringList out;
        for (const auto &[micros, text] : events)
            out << QStringLiteral("%1 %2").arg(micros, 10).arg(text);
        for (const auto &shown : dialogs.shown())
            out << QStringLiteral("# %1: %2").arg(shown.kind, visible(shown.text.toUtf8()));
        return out;
    }

    std::vector<std::pair<std::uint64_t, QByteArray>> replies;
    SimBus bus{7};
    MainWindow *main = nullptr;

private:
    QTemporaryDir m_dir;
};

struct Run
{
    std::function<void(Program &)> setup; // before start-up
    const char *steps;                    // every run then exits, answering Yes
};

const std::map<QString, Run> &runs()
{
    static const std::map<QString, Run> table{
        // The first exit is answered No: nothing goes out.
        {"startup", {{}, "passes 2; menu mnuExit"}},
        {"polling",
         {{}, "forget; passes 2; power 2 off; passes 2; power 2 on; passes 1; panel 1 name; passes 2"}},
        {"detail-tuning",
         {{},
          "forget; detail 0; passes 2; click cmdChanUp cmdChanUp cmdChanDown cmdGroupUp cmdGroupDown; passes "
          "1;"
          "enter txtFreq 812.5; click cmdFreqUp Option2 cmdFreqUp cmdFreqDown; passes 1; click cmdExit; "
          "passes 1"}},
        // The squelch is held for 500 ms up, then clicked down.
        {"detail-controls",
         {{},
          "forget; detail 2; passes 1; yes; enter txtAddr 9; enter txtRName LEAD; passes 1; hold cmdSQinc "
          "500;"
          "hold cmdSQdec 0; click Mute Mute cmdKob; passes 1; click cmdExit; passes 1"}},
        // 11 points of the sweep, then the detail read again.
        {"scan-sweep",
         {{},
          "forget; detail 2; passes 1; tab 1; click optSingle Option3 SP_Run; passes 12;"
          "click SP_Peak SP_Peak_Next cmdNext cmdPrev; passes 1; click cmdExit; passes 1"}},
        {"recorder",
         {{},
          "forget; detail 0; tab 2; click OptHigh RF_Run; passes 6; click RF_Stop; passes 1; click cmdExit;"
          "passes 1"}},
        {"settings-load", {{}, "forget; choose stage.zun; menu mnuLoad"}},
        {"display-mode",
         {{}, "forget; menu mnu_PM_GCH mnu_PM_Frq mnu_PM_SQ mnu_PM_Rname mnu_PM_Addr mnu_PM_VOL"}},
        {"panel-clicks", {{}, "forget; panel 0 mute; passes 1; panel 0 mute; panel 1 pilot; passes 1"}},
        {"menus", {{}, "forget; menu mnuReconnect; type 38400; menu mnuBaud1 mnuAuto"}},
        {"plan-deploy",
         {{}, "forget; menu mnuFreqPlan; plan cmdCompute; plan cmdApply; passes 1; plan cmdUndo; passes 1"}},
        // The stored port is there but silent; the receivers sit on COM1.
        {"port-search",
         {[](Program &s) {
              s.settings.save(kAppName, QStringLiteral("MSComm"), QStringLiteral("CommPort"),
                              QStringLiteral("2"));
              s.line.attachBus(2, nullptr);
          },
          "passes 1"}},
        {"odd-replies",
         {[](Program &s) { s.bus.addReceiver(7).name = "M\xC4RZ  "; },
          "forget; passes 1; fault 1 garbled; fault 5 late; passes 2; panel 0 name; passes 1"}},
    };
    return table;
}

} // namespace

class TestWireTranscripts : public QObject
{
    Q_OBJECT
private slots:
    void transcript_data()
    {
        QTest::addColumn<QString>("run");
        for (const auto &[name, script] : runs())
            QTest::newRow(qPrintable(name)) << name;
    }
    void transcript()
    {
        QFETCH(QString, run);
        Program program;
        QVERIFY(program.start(runs().at(run).setup));
        program.play(runs().at(run).steps);
        program.dialogs.queueAnswer(MessageAnswer::Yes);
        program.main->findChild<QAction *>(QStringLiteral("mnuExit"))->trigger();
        QCOMPARE(program.endProgramCalls, 1);
        const QStringList actual = program.transcript();

        QFile file(QStringLiteral(ZUN_GOLDEN_DIR "/%1.txt").arg(run));
        if (qEnvironmentVariableIntValue("ZUN_UPDATE_GOLDEN") == 1) {
            QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(file.errorString()));
            file.write((actual.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
            return;
        }
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName() + " is missing"));
        QStringList expected = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        QCOMPARE(expected.takeLast(), QString()); // the file ends with a newline
        const auto at = std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end()).first -
                        actual.begin();
        QVERIFY2(actual == expected, qPrintable(QStringLiteral("line %1 recorded as\n  %2\nis now\n  %3")
                                                    .arg(at + 1)
                                                    .arg(expected.value(at), actual.value(at))));
    }
};

QTEST_MAIN(TestWireTranscripts)
#include "tst_wiretranscripts.moc"
