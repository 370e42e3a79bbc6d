// The receiver panels, their grid and the small windows around them, as
// pixels, colours, pictures and the signals their clicks raise.
#include "mainscreen/aboutwindow.h"
#include "mainscreen/clicklabel.h"
#include "mainscreen/colors.h"
#include "mainscreen/imageresources.h"
#include "mainscreen/imagesign.h"
#include "mainscreen/levelmeter.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/panelreadout.h"
#include "mainscreen/rcvpanel.h"
#include "mainscreen/searchprogresswindow.h"
#include "receivers/leveltable.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <map>

using namespace zun;

namespace {

class PaintCounter : public QObject
{
public:
    std::map<QObject *, int> counts;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++counts[watched];
        return false;
    }
};

PanelReadout readout(int audio, int rfA, int rfB)
{
    static const LevelTable table = buildLevelTable();
    BatteryAverager battery;
    return panelReadout(readLevels(LevelReply{audio, rfA, rfB, 0}, 20, table, battery));
}

QRgb rgbOf(quint32 bgrValue)
{
    return bgrColor(bgrValue).rgb();
}

QRgb background(const RcvPanel &panel)
{
    return panel.nameLabel()->palette().color(QPalette::Window).rgb();
}

QString imageOf(const QWidget *w)
{
    return w->property("imageName").toString();
}

// Turns pending update requests into paint events now, without waiting on time.
void settle()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

void showGrid(PanelGrid &grid, int width = 1280, int height = 740)
{
    grid.resize(width, height);
    grid.show();
    QVERIFY(QTest::qWaitForWindowExposed(&grid));
}

} // namespace

class TestRcvPanel : public QObject
{
    Q_OBJECT

private slots:
    void meterRepaintsOnlyOnChange_data()
    {
        QTest::addColumn<QList<int>>("first"); // audio, rfA, rfB raw bytes
        QTest::addColumn<QList<int>>("second");
        QTest::addColumn<QList<bool>>("repainted"); // PB_AF, PB_RFA, PB_RFB
        using R = QList<int>;
        using B = QList<bool>;
        const R base{150, 120, 90};
        QTest::newRow("same reply") << base << base << B{false, false, false};
        QTest::newRow("same level, new raw") << R{150, 72, 90} << R{150, 79, 95} << B{false, false, false};
        QTest::newRow("RF A moves") << base << R{150, 200, 90} << B{false, true, false};
        QTest::newRow("RF B moves") << base << R{150, 120, 100} << B{false, false, true};
        QTest::newRow("audio < 86 stays empty") << R{10, 120, 90} << R{80, 120, 90} << B{false, false, false};
        QTest::newRow("audio clips") << base << R{255, 120, 90} << B{true, false, false};
    }
    void meterRepaintsOnlyOnChange()
    {
        QFETCH(QList<int>, first);
        QFETCH(QList<int>, second);
        QFETCH(QList<bool>, repainted);
        RcvPanel panel(0);
        panel.resize(90, 340);
        panel.enableLive(false);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        panel.showReadout(readout(first[0], first[1], first[2]));
        settle();
        PaintCounter counter;
        QWidget *meters[] = {panel.meterAudio(), panel.meterRfA(), panel.meterRfB()};
        for (QWidget *m : meters)
            m->installEventFilter(&counter);
        panel.showReadout(readout(second[0], second[1], second[2]));
        settle();
        for (int k = 0; k < 3; ++k)
            QCOMPARE(counter.counts[meters[k]] > 0, repainted[k]);
    }

    void meterDrawsTheBoxes_data()
    {
        QTest::addColumn<bool>("audio");
        QTest::addColumn<int>("value");
        QTest::addColumn<bool>("clip");
        QTest::addColumn<QList<int>>("rows"); // rows of a 100 pixel face
        QTest::addColumn<QList<quint32>>("colours");
        using R = QList<int>;
        using C = QList<quint32>;
        QTest::newRow("RF 50") << false << 50 << false << R{49, 50, 99}
                               << C{bgr::White, bgr::Blue, bgr::Blue};
        QTest::newRow("RF 14 red") << false << 14 << false << R{85, 86} << C{bgr::White, bgr::Red};
        QTest::newRow("RF 0 empty") << false << 0 << false << R{0, 99} << C{bgr::White, bgr::White};
        QTest::newRow("audio 25") << true << 25 << false << R{80, 81, 99}
                                  << C{bgr::White, bgr::Green, bgr::Green};
        QTest::newRow("audio 128, clip mark") << true << 128 << true << R{0, 1, 10, 11, 99}
                                              << C{bgr::White, bgr::Red, bgr::Red, bgr::Green, bgr::Green};
        QTest::newRow("audio 193, red to the top")
            << true << 193 << true << R{0, 10, 11} << C{bgr::Red, bgr::Red, bgr::Green};
    }
    void meterDrawsTheBoxes()
    {
        QFETCH(bool, audio);
        QFETCH(int, value);
        QFETCH(bool, clip);
        QFETCH(QList<int>, rows);
        QFETCH(QList<quint32>, colours);
        LevelMeter meter(audio ? LevelMeter::Kind::Audio : LevelMeter::Kind::Rf);
        meter.setFixedSize(12, 102); // a one pixel border around a 10 x 100 face
        meter.setLive(true);
        if (audio)
            meter.setAudio(value, clip);
        else
            meter.setRfLevel(value, bgrColor(value < 15 ? bgr::Red : bgr::Blue));
        const QImage image = meter.grab().toImage();
        const qreal dpr = image.devicePixelRatio();
        for (int k = 0; k < rows.size(); ++k)
            QVERIFY2(image.pixelColor(int(6 * dpr), int((1 + rows[k]) * dpr)).rgb() == rgbOf(colours[k]),
                     qPrintable(QStringLiteral("row %1").arg(rows[k])));
    }

    void blinkTouchesOnlyRedAndButtonFace()
    {
        RcvPanel offline(7), live(8), blank(9);
        live.enableLive(false);
        offline.enableLive(false);
        offline.setOffline();
        const QRgb blankColour = blank.nameTextColor().rgb();
        // From red and from button face, into either phase.
        for (int phase : {0, 1, 1, 0, 0}) {
            for (RcvPanel *p : {&offline, &live, &blank})
                p->blinkPhase(phase);
            QCOMPARE(offline.nameTextColor().rgb(), phase ? rgbOf(bgr::Red) : buttonFaceColor().rgb());
            QCOMPARE(live.nameTextColor().rgb(), rgbOf(bgr::White));
            QCOMPARE(blank.nameTextColor().rgb(), blankColour);
            QCOMPARE(background(offline), rgbOf(bgr::White));
            QCOMPARE(background(live), rgbOf(bgr::Teal));
        }
    }

    void enableOfflineAndBlankLooks()
    {
        RcvPanel panel(3);
        panel.enableLive(true);
        for (LevelMeter *meter : {panel.meterRfA(), panel.meterRfB(), panel.meterAudio()})
            QVERIFY(meter->isLive());
        QCOMPARE(panel.batteryLabel()->text(), "OFF");
        QVERIFY(panel.muteButton()->isEnabled());
        QVERIFY(panel.moreButton()->isEnabled());
        QCOMPARE(imageOf(panel.muteButton()), "SpeakerOFF");
        QCOMPARE(imageOf(panel.pilotSign()), "GreenBall");
        for (const char *name :
             {"GreenBall", "YellowBall", "OrangeBall", "RedBall", "SpeakerON", "SpeakerOFF", "icon", "logo"})
            QVERIFY2(namedImage(name).width() >= 32, name);
        QVERIFY(namedImage("NoSuchPicture").isNull());
        panel.setNameText("03 VOCAL1");
        panel.showReadout(readout(150, 120, 90));
        QCOMPARE(imageOf(panel.rfSign()), "GreenBall");

        panel.setOffline();
        QVERIFY(panel.isEnabled());
        QCOMPARE(panel.nameTextColor().rgb(), rgbOf(bgr::Red));
        QVERIFY(!panel.muteButton()->isEnabled());
        QVERIFY(!panel.moreButton()->isEnabled());
        QCOMPARE(panel.nameText(), "03 VOCAL1");

        panel.disableBlank();
        QVERIFY(!panel.isEnabled());
        QCOMPARE(panel.nameText() + panel.batteryLabel()->text(), QString());
        for (ImageSign *sign : {panel.rfSign(), panel.pilotSign(), panel.batterySign()})
            QCOMPARE(sign->imageName(), QString());
        QVERIFY(!panel.meterRfA()->isLive());
        QVERIFY(!panel.meterAudio()->isLive());
        QVERIFY(!panel.nameLabel()->autoFillBackground());

        // Enabling again starts from empty meters, not the last levels.
        panel.enableLive(false);
        QCOMPARE(panel.meterRfA()->value(), 0);
        QCOMPARE(panel.nameTextColor().rgb(), rgbOf(bgr::White));
    }

    void batteryKeptUntilReadoutCarriesIt()
    {
        RcvPanel panel(0);
        panel.enableLive(false);
        PanelReadout r = readout(150, 120, 90);
        r.batteryShown = true;
        r.batteryCaption = "80%";
        r.batteryImage = "YellowBall";
        panel.showReadout(r);
        const PanelReadout quiet = readout(0, 0, 0);
        QVERIFY(!quiet.batteryShown);
        panel.showReadout(quiet);
        QCOMPARE(panel.batteryLabel()->text(), "80%");
        QCOMPARE(panel.batterySign()->imageName(), "YellowBall");
        QCOMPARE(panel.rfSign()->imageName(), "RedBall");
        QCOMPARE(panel.meterRfA()->barColor().rgb(), rgbOf(bgr::Red));
        r.batteryCaption = "OFF";
        r.batteryImage.clear();
        panel.showReadout(r);
        QCOMPARE(panel.batteryLabel()->text(), "OFF");
        QCOMPARE(panel.batterySign()->imageName(), QString());
    }

    void clicksReportTheIndex()
    {
        PanelGrid grid;
        grid.setPage(1);
        grid.panel(40)->enableLive(false);
        grid.panel(41)->enableLive(false);
        grid.panel(41)->setOffline();
        showGrid(grid);
        QSignalSpy name(&grid, &PanelGrid::nameClicked);
        QSignalSpy menu(&grid, &PanelGrid::contextMenuRequested);
        QSignalSpy pilot(&grid, &PanelGrid::pilotClicked);
        QSignalSpy mute(&grid, &PanelGrid::muteClicked);
        QSignalSpy more(&grid, &PanelGrid::moreClicked);
        auto clickAll = [](RcvPanel *p) {
            QTest::mouseClick(p->nameLabel(), Qt::LeftButton);
            QTest::mouseClick(p->nameLabel(), Qt::RightButton);
            QTest::mouseClick(p->pilotSign(), Qt::LeftButton);
            QTest::mouseClick(p->muteButton(), Qt::LeftButton);
            QTest::mouseClick(p->moreButton(), Qt::LeftButton);
        };
        clickAll(grid.panel(40));
        for (QSignalSpy *spy : {&name, &menu, &pilot, &mute, &more})
            QCOMPARE(spy->takeFirst().at(0).toInt(), 40);
        // Offline: the name still answers (it brings the receiver back), the buttons do not.
        clickAll(grid.panel(41));
        QCOMPARE(name.takeFirst().at(0).toInt(), 41);
        QCOMPARE(mute.size() + more.size(), 0);
        menu.clear();
        pilot.clear();
        // A blank panel ignores everything.
        clickAll(grid.panel(42));
        QCOMPARE(name.size() + menu.size() + pilot.size() + mute.size() + more.size(), 0);
        QVERIFY(!grid.panel(-1));
        QVERIFY(!grid.panel(64));
        // Each part is found by its name and carries its panel's index.
        for (const char *part : {"RcvPanel", "lbRname", "PB_RFA", "PB_RFB", "PB_AF", "RF_SIGN", "BatV",
                                 "BAT_SIGN", "PILOT_SIGN", "Mute", "More", "lbKOB"}) {
            const QList<QWidget *> found = grid.findChildren<QWidget *>(part);
            QCOMPARE(found.size(), 64);
            for (int i = 0; i < 64; ++i) {
                QVERIFY2(found[i]->property("index").toInt() == i, part);
                QVERIFY2(found[i]->accessibleDescription() == QStringLiteral("%1(%2)").arg(part).arg(i),
                         part);
            }
        }
        QCOMPARE(grid.panel(40)->muteButton()->accessibleName(), "Mute");
    }

    // Screen 2 (a page past the end stays there) holds two rows of sixteen;
    // hiding the unused keeps the places; the full view puts all 64 in four
    // compact rows and gives the page chosen before back.
    void gridPlacesThePanels()
    {
        PanelGrid grid;
        grid.setPage(5);
        showGrid(grid);
        const RcvPanel *first = grid.panel(32), *sixteenth = grid.panel(47), *secondRow = grid.panel(48);
        QVERIFY(first->isVisible());
        QVERIFY(grid.panel(63)->isVisible());
        QVERIFY(!grid.panel(31)->isVisible());
        QCOMPARE(sixteenth->y(), first->y());
        QVERIFY(sixteenth->x() > first->x());
        QCOMPARE(secondRow->x(), first->x());
        QVERIFY(secondRow->y() >= first->geometry().bottom());
        QVERIFY(sixteenth->geometry().right() < grid.width());
        QVERIFY(secondRow->geometry().bottom() < grid.height());

        const QRect before = grid.panel(36)->geometry();
        grid.setHideUnused(true, 37);
        QCoreApplication::processEvents();
        QVERIFY(grid.panel(36)->isVisible());
        QVERIFY(!grid.panel(37)->isVisible());
        QCOMPARE(grid.panel(36)->geometry(), before);
        grid.setHideUnused(false, 37);

        grid.resize(1920, 1000);
        grid.setFullView(true);
        QCoreApplication::processEvents();
        for (int i = 0; i < 64; ++i) {
            QVERIFY2(grid.panel(i)->isVisible(), qPrintable(QString::number(i)));
            QVERIFY2(grid.panel(i)->isCompact(), qPrintable(QString::number(i)));
        }
        QCOMPARE(grid.panel(48)->x(), grid.panel(0)->x());
        QVERIFY(grid.panel(48)->y() > grid.panel(32)->y());
        QVERIFY(grid.panel(63)->geometry().bottom() < grid.height());
        grid.setFullView(false);
        QVERIFY(!grid.panel(0)->isVisible());
        QVERIFY(grid.panel(32)->isVisible());
        QVERIFY(!grid.panel(32)->isCompact());
    }

    // The search window's progress and SKIP, and the About box a click closes.
    void smallWindowsAnswerClicks()
    {
        SearchProgressWindow view;
        view.setMessage("Checking Connected Receivers --> COM2");
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QCOMPARE(view.skipLabel()->text(), "SKIP");
        for (const auto &[address, percent] : {std::pair{1, "1%"}, {10, "15%"}, {64, "100%"}}) {
            view.setProgress(address);
            QCOMPARE(view.percentLabel()->text(), percent);
            // The blue box reaches address/64 of the width, white beyond.
            const QImage bar = view.progressBox()->grab().toImage();
            const qreal dpr = bar.devicePixelRatio();
            const int w = view.progressBox()->width(), filled = w * address / 64;
            const int y = int(view.progressBox()->height() / 2 * dpr);
            QCOMPARE(bar.pixelColor(int((filled - 2) * dpr), y).rgb(), qRgb(0, 0, 255));
            if (filled < w - 2)
                QCOMPARE(bar.pixelColor(int((filled + 1) * dpr), y).rgb(), qRgb(255, 255, 255));
        }
        QTest::mouseClick(view.skipLabel(), Qt::LeftButton);
        QVERIFY(view.skipRequested());
        QVERIFY(!view.skipLabel()->isEnabled());
        // A new search starts with "SKIP" usable again.
        view.hide();
        view.show();
        QVERIFY(!view.skipRequested());
        QCOMPARE(view.percentLabel()->text(), "0%");

        for (bool onIcon : {false, true}) {
            AboutWindow about;
            about.show();
            QTest::mouseClick(onIcon ? static_cast<QWidget *>(about.iconLabel()) : about.textLabel(),
                              Qt::LeftButton);
            QVERIFY(!about.isVisible());
        }
    }
};

QTEST_MAIN(TestRcvPanel)
#include "tst_rcvpanel.moc"
