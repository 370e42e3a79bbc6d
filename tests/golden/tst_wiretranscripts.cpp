// Golden wire transcripts: whole user sessions driven through the windows on
// the in-process line and the virtual clock. Every frame the program writes
// and every reply the receivers put on the line is logged with its time in
// microseconds and compared byte for byte with tests/golden/<run>.txt, so the
// inside can be rearranged without changing a byte or a time on the wire.
// ZUN_UPDATE_GOLDEN=1 rewrites the files instead of comparing.
#include "core/context.h"
#include "core/options.h"
#include "core/startup.h"
#include "core/workloop.h"
#include "detail/detailrig.h"
#include "detail/frmmore.h"
#include "detail/settingstab.h"
#include "mainscreen/clicklabel.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/imagesign.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/rcvpanel.h"
#include "mainscreen/startupwindows.h"
#include "rftools/recordertab.h"
#include "rftools/scantab.h"

#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>

using namespace zun;

namespace {

QString visible(const QByteArray &bytes)
{
    QString out;
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (c == '\r')
            out += QStringLiteral("\\r");
        else if (c == '\n')
            out += QStringLiteral("\\n");
        else if (c == '\\')
            out += QStringLiteral("\\\\");
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
    const struct
    {
        int address;
        const char *name;
        const char *table;
        int group, channel, squelch, strength;
        bool muted;
        int bandWidth;
    } receivers[] = {
        {1, "VOCAL1", "B00000000000", 1, 1, 20, 200, false, 4000},
        {2, "GUITAR", "8CCCCCCCC000", 2, 3, 25, 175, true, 4000},
        {5, "DRUMS ", "688888800000", 3, 2, 30, 210, false, 40},
    };
    for (const auto &r : receivers) {
        SimReceiver s;
        s.address = r.address;
        s.name = r.name;
        s.groupTable = r.table;
        s.group = r.group;
        s.channel = r.channel;
        s.squelch = r.squelch;
        s.muted = r.muted;
        s.bandWidth = r.bandWidth;
        s.transmitter.strength = r.strength;
        bus.addReceiver(s);
    }
}

// The program as main() wires it, on doubles: start-up, main screen, work loop.
struct Session
{
    // setup runs on the surroundings before the program starts.
    bool start(const std::function<void(Session &)> &setup)
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
        ctx.endProgram = [this] { ++ended; };
        wireWindows(ctx);
        windows = std::make_unique<StartupWindows>(ctx);
        if (!startProgram(ctx, windows->views()))
            return false;
        main = windows->mainWindow();
        main->installSteps(loop);
        return true;
    }
    ~Session()
    {
        windows.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // Work-loop passes, each as the loop runs it.
    void passes(int count)
    {
        for (int i = 0; i < count; ++i) {
            loop.runSteps();
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    void trigger(const QString &name) { main->findChild<QAction *>(name)->trigger(); }
    RcvPanel &panel(int index) { return *main->panel(index); }
    FrmMore &openDetail(int index)
    {
        QTest::mouseClick(panel(index).moreButton(), Qt::LeftButton);
        return static_cast<FrmMore &>(*main->detailWindow());
    }
    template <typename W = QWidget> W *in(QWidget *parent, const QString &name)
    {
        W *w = parent->findChild<W *>(name);
        if (!w)
            qFatal("no widget %s", qPrintable(name));
        return w;
    }
    // A radio button only takes clicks on its circle and caption, at its left.
    void click(QWidget *parent, const QString &name)
    {
        QWidget *w = in(parent, name);
        const QPoint at = qobject_cast<QRadioButton *>(w) ? QPoint(6, w->height() / 2) : w->rect().center();
        QTest::mouseClick(w, Qt::LeftButton, {}, at);
    }
    // Press and hold: the release comes with the first DoEvents the handler
    // runs once the button was held this long on the virtual clock.
    void hold(FrmMore &f, const QString &name, int heldMillis)
    {
        auto *b = in<QPushButton>(&f, name);
        const std::uint64_t releaseAt = clock.nowMicros() + heldMillis * 1000ull;
        bool released = false;
        desktop.script = [&, b](int) {
            if (!released && clock.nowMicros() >= releaseAt) {
                released = true;
                QTest::mouseRelease(b, Qt::LeftButton);
            }
        };
        QTest::mousePress(b, Qt::LeftButton);
        desktop.script = nullptr;
    }
    void enter(QLineEdit *box, const QString &text)
    {
        box->selectAll();
        QTest::keyClicks(box, text);
        QTest::keyClick(box, Qt::Key_Return);
    }
    void exitProgram()
    {
        dialogs.queueAnswer(MessageAnswer::Yes);
        trigger(QStringLiteral("mnuExit"));
    }
    // What went over the line since start-up, or since the start when whole.
    void forgetStartup()
    {
        line.clearWritten();
        replies.clear();
        dialogs.clear();
    }

    QString transcript() const
    {
        struct Event
        {
            std::uint64_t micros;
            QString text;
        };
        std::vector<Event> events;
        QString lineSettings;
        for (const auto &w : line.written()) {
            const QString settingsNow = QStringLiteral("COM%1 %2").arg(w.port).arg(w.baud);
            if (settingsNow != lineSettings)
                events.push_back({w.micros, QStringLiteral("= ") + settingsNow});
            lineSettings = settingsNow;
            events.push_back({w.micros, QStringLiteral("> ") + visible(w.bytes)});
        }
        for (const auto &r : replies)
            events.push_back({r.micros, QStringLiteral("< ") + visible(r.bytes)});
        std::stable_sort(events.begin(), events.end(),
                         [](const Event &a, const Event &b) { return a.micros < b.micros; });
        QString out;
        for (const Event &e : events)
            out += QStringLiteral("%1 %2\n").arg(e.micros, 10).arg(e.text);
        for (const auto &shown : dialogs.shown())
            out += QStringLiteral("# %1: %2\n").arg(shown.kind, visible(shown.text.toUtf8()));
        return out;
    }

    struct Reply
    {
        std::uint64_t micros;
        QByteArray bytes;
    };
    std::vector<Reply> replies;
    VirtualClock clock;
    SimBus bus{7};
    SimSerialLine line{clock};
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    test::ScriptedDesktop desktop;
    Context ctx{Platform{clock, line, settings, dialogs, desktop}};
    WorkLoop loop{ctx.bus};
    std::unique_ptr<StartupWindows> windows;
    FrmMain *main = nullptr;
    int ended = 0;
};

using Script = std::function<void(Session &)>;
struct Run
{
    Script setup; // before start-up
    Script script;
};

const std::map<QString, Run> &runs()
{
    static const std::map<QString, Run> table{
        {"startup",
         {{},
          [](Session &s) {
              s.passes(2);
              s.trigger(QStringLiteral("mnuExit")); // answered No: nothing goes out
              s.passes(1);
              s.exitProgram();
          }}},
        {"polling",
         {{},
          [](Session &s) {
              s.forgetStartup();
              s.passes(2);
              s.bus.receiver(2)->powered = false;
              s.passes(2);
              s.bus.receiver(2)->powered = true;
              s.passes(1);
              QTest::mouseClick(s.panel(1).nameLabel(), Qt::LeftButton);
              s.passes(2);
              s.exitProgram();
          }}},
        {"detail-tuning",
         {{},
          [](Session &s) {
              s.forgetStartup();
              FrmMore &f = s.openDetail(0);
              s.passes(2);
              for (const char *button :
                   {"cmdChanUp", "cmdChanUp", "cmdChanDown", "cmdGroupUp", "cmdGroupDown"})
                  s.click(&f, QString::fromLatin1(button));
              s.passes(1);
              s.enter(f.settings().txtFreq, QStringLiteral("812.5"));
              s.click(&f, QStringLiteral("cmdFreqUp"));
              s.click(&f, QStringLiteral("Option2"));
              s.click(&f, QStringLiteral("cmdFreqUp"));
              s.click(&f, QStringLiteral("cmdFreqDown"));
              s.passes(1);
              s.click(&f, QStringLiteral("cmdExit"));
              s.passes(1);
              s.exitProgram();
          }}},
        {"detail-controls",
         {{},
          [](Session &s) {
              s.forgetStartup();
              FrmMore &f = s.openDetail(2);
              s.passes(1);
              s.dialogs.queueAnswer(MessageAnswer::Yes);
              s.enter(f.settings().txtAddr, QStringLiteral("9"));
              s.enter(f.settings().txtRName, QStringLiteral("LEAD"));
              s.passes(1);
              s.hold(f, QStringLiteral("cmdSQinc"), 500);
              s.hold(f, QStringLiteral("cmdSQdec"), 0); // a short click
              s.click(&f, QStringLiteral("Mute"));
              s.click(&f, QStringLiteral("Mute"));
              s.click(&f, QStringLiteral("cmdKob"));
              s.passes(1);
              s.click(&f, QStringLiteral("cmdExit"));
              s.passes(1);
              s.exitProgram();
          }}},
        {"scan-sweep",
         {{},
          [](Session &s) {
              s.forgetStartup();
              FrmMore &f = s.openDetail(2);
              s.passes(1);
              f.tabs()->setCurrentIndex(1);
              s.click(&f, QStringLiteral("optSingle"));
              s.click(&f, QStringLiteral("Option3"));
              s.click(&f, QStringLiteral("SP_Run"));
              s.passes(12); // 11 points of the sweep, then the detail read again
              s.click(&f, QStringLiteral("SP_Peak"));
              s.click(&f, QStringLiteral("SP_Peak_Next"));
              s.click(&f, QStringLiteral("cmdNext"));
              s.click(&f, QStringLiteral("cmdPrev"));
              s.passes(1);
              s.click(&f, QStringLiteral("cmdExit"));
              s.passes(1);
              s.exitProgram();
          }}},
        {"recorder",
         {{},
          [](Session &s) {
              s.forgetStartup();
              FrmMore &f = s.openDetail(0);
              f.tabs()->setCurrentIndex(2);
              s.click(&f, QStringLiteral("OptHigh"));
              s.click(&f, QStringLiteral("RF_Run"));
              s.passes(6);
              s.click(&f, QStringLiteral("RF_Stop"));
              s.passes(1);
              s.click(&f, QStringLiteral("cmdExit"));
              s.passes(1);
              s.exitProgram();
          }}},
        {"settings-load",
         {{},
          [](Session &s) {
              s.forgetStartup();
              QTemporaryDir dir;
              QFile file(dir.filePath(QStringLiteral("stage.zun")));
              QVERIFY(file.open(QIODevice::WriteOnly));
              file.write("1,\"LEAD\",3,4,\"7A12\",\"7B00\",25,48,0,-1\r\n"
                         "5,\"BASS\",1,2,\"72C4\",\"7300\",30,32,-1,0\r\n"
                         "9,\"NOBODY\",1,1,\"72BA\",\"72BA\",20,48,0,0\r\n");
              file.close();
              s.dialogs.queueFileName(file.fileName());
              s.trigger(QStringLiteral("mnuLoad"));
              s.passes(1);
              s.exitProgram();
          }}},
        {"display-mode",
         {{},
          [](Session &s) {
              s.forgetStartup();
              for (const char *item :
                   {"mnu_PM_GCH", "mnu_PM_Frq", "mnu_PM_SQ", "mnu_PM_Rname", "mnu_PM_Addr", "mnu_PM_VOL"}) {
                  s.main->popupMenu()->findChild<QAction *>(QString::fromLatin1(item))->trigger();
                  s.passes(1);
              }
              s.exitProgram();
          }}},
        {"panel-clicks",
         {{},
          [](Session &s) {
              s.forgetStartup();
              QTest::mouseClick(s.panel(0).muteButton(), Qt::LeftButton);
              s.passes(1);
              QTest::mouseClick(s.panel(0).muteButton(), Qt::LeftButton);
              QTest::mouseClick(s.panel(1).pilotSign(), Qt::LeftButton);
              s.passes(1);
              s.exitProgram();
          }}},
        {"menus",
         {{},
          [](Session &s) {
              s.forgetStartup();
              s.trigger(QStringLiteral("mnuReconnect"));
              s.passes(1);
              s.dialogs.queueInput(QStringLiteral("38400"));
              s.trigger(QStringLiteral("mnuBaud1"));
              s.passes(1);
              s.trigger(QStringLiteral("mnuAuto"));
              s.passes(1);
              s.exitProgram();
          }}},
        {"port-search",
         {[](Session &s) {
              // The stored port is there but silent; the receivers sit on COM1.
              s.settings.save(kAppName, QStringLiteral("MSComm"), QStringLiteral("CommPort"),
                              QStringLiteral("2"));
              s.line.attachBus(2, nullptr);
          },
          [](Session &s) {
              s.passes(1);
              s.exitProgram();
          }}},
        {"odd-replies",
         {[](Session &s) {
              SimReceiver odd;
              odd.address = 7;
              odd.name = "M\xC4RZ  ";
              s.bus.addReceiver(odd);
          },
          [](Session &s) {
              s.forgetStartup();
              s.passes(1);
              s.bus.scriptFaults(1, SimFault::Garbled);
              s.bus.scriptFaults(5, SimFault::Late);
              s.passes(2);
              QTest::mouseClick(s.panel(0).nameLabel(), Qt::LeftButton);
              s.passes(1);
              s.exitProgram();
          }}},
    };
    return table;
}

QString goldenPath(const QString &run)
{
    return QStringLiteral(ZUN_GOLDEN_DIR "/%1.txt").arg(run);
}

// The first differing line with a little context on both sides.
QString firstDifference(const QString &expected, const QString &actual)
{
    const QStringList want = expected.split(QLatin1Char('\n'));
    const QStringList got = actual.split(QLatin1Char('\n'));
    int at = 0;
    while (at < want.size() && at < got.size() && want[at] == got[at])
        ++at;
    QString out = QStringLiteral("first difference at line %1 (- recorded, + this run)\n").arg(at + 1);
    for (int i = std::max(0, at - 3); i < at; ++i)
        out += QStringLiteral("    %1\n").arg(want[i]);
    for (int i = at; i < std::min<int>(at + 3, want.size()); ++i)
        out += QStringLiteral("  - %1\n").arg(want[i]);
    for (int i = at; i < std::min<int>(at + 3, got.size()); ++i)
        out += QStringLiteral("  + %1\n").arg(got[i]);
    return out;
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
        Session session;
        QVERIFY(session.start(runs().at(run).setup));
        runs().at(run).script(session);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(session.ended, 1);
        const QString actual = session.transcript();

        QFile file(goldenPath(run));
        if (qEnvironmentVariableIntValue("ZUN_UPDATE_GOLDEN") == 1) {
            QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(file.errorString()));
            file.write(actual.toUtf8());
            return;
        }
        QVERIFY2(
            file.open(QIODevice::ReadOnly),
            qPrintable(file.fileName() + QStringLiteral(" is missing; record it with ZUN_UPDATE_GOLDEN=1")));
        const QString expected = QString::fromUtf8(file.readAll());
        if (expected != actual)
            QFAIL(qPrintable(firstDifference(expected, actual)));
    }
};

QTEST_MAIN(TestWireTranscripts)
#include "tst_wiretranscripts.moc"
