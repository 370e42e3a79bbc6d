#include "core/leveltable.h"
#include "mainscreen/clicklabel.h"
#include "mainscreen/colors.h"
#include "mainscreen/frmabout.h"
#include "mainscreen/frmchecknet.h"
#include "mainscreen/imageresources.h"
#include "mainscreen/imagesign.h"
#include "mainscreen/levelmeter.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/panelreadout.h"
#include "mainscreen/rcvpanel.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <map>

using namespace zun;

namespace {

// Counts the paint events each watched widget receives.
class PaintCounter : public QObject
{
public:
    void watch(QWidget *w) { w->installEventFilter(this); }
    int count(QWidget *w) const
    {
        const auto it = m_counts.find(w);
        return it == m_counts.end() ? 0 : it->second;
    }
    void reset() { m_counts.clear(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++m_counts[watched];
        return false;
    }

private:
    std::map<QObject *, int> m_counts;
};

PanelReadout readout(int audio, int rfA, int rfB)
{
    static const LevelTable table = buildLevelTable();
    BatteryAverage battery;
    const QString text = QStringLiteral("$01%1%2%3%4")
                             .arg(audio, 2, 16, QLatin1Char('0'))
                             .arg(rfA, 2, 16, QLatin1Char('0'))
                             .arg(rfB, 2, 16, QLatin1Char('0'))
                             .arg(0, 2, 16, QLatin1Char('0'));
    return readPanelReply(text, 20, table, battery);
}

QRgb rgbOf(quint32 bgrValue)
{
    return bgrColor(bgrValue).rgb();
}

QString imageOf(const QWidget *w)
{
    return w->property("imageName").toString();
}

// Lets pending update requests turn into paint events.
void settle()
{
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::processEvents();
        QTest::qWait(5);
    }
}

} // namespace

class TestRcvPanel : public QObject
{
    Q_OBJECT

private slots:
    void everyPanelPartIsNamedAndIndexed();
    void meterRepaintsOnlyOnChange_data();
    void meterRepaintsOnlyOnChange();
    void meterDrawsTheBoxes_data();
    void meterDrawsTheBoxes();
    void blinkTouchesOnlyRedAndButtonFace_data();
    void blinkTouchesOnlyRedAndButtonFace();
    void enableDisableOfflineLooks();
    void batteryKeptUntilReadoutCarriesIt();
    void clicksReportTheIndex();
    void checkNetProgressAndSkip_data();
    void checkNetProgressAndSkip();
    void aboutClosesOnClick();
    void namedImagesLoad();
};

void TestRcvPanel::everyPanelPartIsNamedAndIndexed()
{
    PanelGrid grid;
    const QStringList names = {"RcvPanel", "lbRname",    "PB_RFA", "PB_RFB", "PB_AF", "RF_SIGN",
                               "BatV",     "BAT_SIGN",   "PILOT_SIGN", "Mute", "More", "lbKOB"};
    for (const QString &name : names) {
        const QList<QWidget *> found = grid.findChildren<QWidget *>(name);
        QCOMPARE(found.size(), 64);
        QList<bool> seen(64, false);
        for (QWidget *w : found) {
            bool ok = false;
            const int index = w->property("index").toInt(&ok);
            QVERIFY2(ok && index >= 0 && index < 64, qPrintable(name));
            QVERIFY2(!seen[index], qPrintable(name + QString::number(index)));
            seen[index] = true;
            QCOMPARE(w->accessibleDescription(), QStringLiteral("%1(%2)").arg(name).arg(index));
            if (name != QLatin1String("RcvPanel"))
                QCOMPARE(w->property("index").toInt(), grid.panel(index)->index());
        }
    }
    for (QWidget *mute : grid.findChildren<QWidget *>(QStringLiteral("Mute")))
        QCOMPARE(mute->accessibleName(), QStringLiteral("Mute"));
    QCOMPARE(grid.panel(5)->kobLabel()->text(), QString());
    grid.panel(5)->setKobCaption(QStringLiteral("KOB"));
    QCOMPARE(grid.panel(5)->kobLabel()->text(), QStringLiteral("KOB"));
}

void TestRcvPanel::meterRepaintsOnlyOnChange_data()
{
    QTest::addColumn<QList<int>>("first");  // audio, rfA, rfB raw bytes
    QTest::addColumn<QList<int>>("second");
    QTest::addColumn<QList<bool>>("repainted"); // PB_AF, PB_RFA, PB_RFB

    QTest::newRow("same reply") << QList<int>{150, 120, 90} << QList<int>{150, 120, 90}
                                << QList<bool>{false, false, false};
    QTest::newRow("raw differs, same level") << QList<int>{150, 72, 90} << QList<int>{150, 79, 95}
                                             << QList<bool>{false, false, false};
    QTest::newRow("RF A moves") << QList<int>{150, 120, 90} << QList<int>{150, 200, 90}
                                << QList<bool>{false, true, false};
    QTest::newRow("RF B moves") << QList<int>{150, 120, 90} << QList<int>{150, 120, 100}
                                << QList<bool>{false, false, true};
    QTest::newRow("audio below 86 both empty") << QList<int>{10, 120, 90} << QList<int>{80, 120, 90}
                                               << QList<bool>{false, false, false};
    QTest::newRow("audio clips") << QList<int>{150, 120, 90} << QList<int>{255, 120, 90}
                                 << QList<bool>{true, false, false};
}

void TestRcvPanel::meterRepaintsOnlyOnChange()
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
        counter.watch(m);
    panel.showReadout(readout(second[0], second[1], second[2]));
    settle();
    for (int k = 0; k < 3; ++k)
        QCOMPARE(counter.count(meters[k]) > 0, repainted[k]);
}

void TestRcvPanel::meterDrawsTheBoxes_data()
{
    QTest::addColumn<bool>("audio");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("clip");
    QTest::addColumn<QList<int>>("rows"); // rows of a 100 pixel face
    QTest::addColumn<QList<quint32>>("colours");

    QTest::newRow("RF 50 blue") << false << 50 << false << QList<int>{49, 50, 99}
                                << QList<quint32>{bgr::White, bgr::Blue, bgr::Blue};
    QTest::newRow("RF 14 red") << false << 14 << false << QList<int>{85, 86}
                               << QList<quint32>{bgr::White, bgr::Red};
    QTest::newRow("RF 99 full") << false << 99 << false << QList<int>{0, 99}
                                << QList<quint32>{bgr::Blue, bgr::Blue};
    QTest::newRow("RF 0 empty") << false << 0 << false << QList<int>{0, 99}
                                << QList<quint32>{bgr::White, bgr::White};
    QTest::newRow("audio 25") << true << 25 << false << QList<int>{80, 81, 99}
                              << QList<quint32>{bgr::White, bgr::Green, bgr::Green};
    QTest::newRow("audio 128, red above the clip mark")
        << true << 128 << true << QList<int>{0, 1, 10, 11, 99}
        << QList<quint32>{bgr::White, bgr::Red, bgr::Red, bgr::Green, bgr::Green};
    QTest::newRow("audio 193, red to the top") << true << 193 << true << QList<int>{0, 10, 11}
                                               << QList<quint32>{bgr::Red, bgr::Red, bgr::Green};
}

void TestRcvPanel::meterDrawsTheBoxes()
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
    for (int k = 0; k < rows.size(); ++k) {
        const QPoint at(int(6 * dpr), int((1 + rows[k]) * dpr));
        QVERIFY2(image.pixelColor(at).rgb() == rgbOf(colours[k]),
                 qPrintable(QStringLiteral("row %1").arg(rows[k])));
    }
}

void TestRcvPanel::blinkTouchesOnlyRedAndButtonFace_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<int>("phase");
    QTest::addColumn<QString>("expected"); // "red", "face", "white", "other"

    QTest::newRow("red, phase 0") << "red" << 0 << "face";
    QTest::newRow("red, phase 1") << "red" << 1 << "red";
    QTest::newRow("face, phase 1") << "face" << 1 << "red";
    QTest::newRow("face, phase 0") << "face" << 0 << "face";
    QTest::newRow("live, phase 0") << "live" << 0 << "white";
    QTest::newRow("live, phase 1") << "live" << 1 << "white";
    QTest::newRow("blank, phase 0") << "blank" << 0 << "other";
    QTest::newRow("blank, phase 1") << "blank" << 1 << "other";
}

void TestRcvPanel::blinkTouchesOnlyRedAndButtonFace()
{
    QFETCH(QString, state);
    QFETCH(int, phase);
    QFETCH(QString, expected);

    RcvPanel panel(7);
    if (state == QLatin1String("live") || state == QLatin1String("red")
        || state == QLatin1String("face"))
        panel.enableLive(false);
    if (state == QLatin1String("red") || state == QLatin1String("face"))
        panel.setOffline();
    if (state == QLatin1String("face"))
        panel.blinkPhase(0);
    const QColor before = panel.nameTextColor();

    panel.blinkPhase(phase);
    const QRgb now = panel.nameTextColor().rgb();
    if (expected == QLatin1String("red"))
        QCOMPARE(now, rgbOf(bgr::Red));
    else if (expected == QLatin1String("face"))
        QCOMPARE(now, buttonFaceColor().rgb());
    else if (expected == QLatin1String("white"))
        QCOMPARE(now, rgbOf(bgr::White));
    else
        QCOMPARE(now, before.rgb());
    // The background never blinks.
    if (state != QLatin1String("blank"))
        QCOMPARE(panel.nameLabel()->palette().color(QPalette::Window).rgb(),
                 rgbOf(state == QLatin1String("live") ? bgr::Teal : bgr::White));
}

void TestRcvPanel::enableDisableOfflineLooks()
{
    RcvPanel panel(3);
    panel.enableLive(true);
    const QPalette name = panel.nameLabel()->palette();
    QVERIFY(panel.isEnabled());
    QCOMPARE(name.color(QPalette::WindowText).rgb(), rgbOf(bgr::White));
    QCOMPARE(name.color(QPalette::Window).rgb(), rgbOf(bgr::Teal));
    QVERIFY(panel.nameLabel()->autoFillBackground());
    QVERIFY(panel.meterRfA()->isLive() && panel.meterRfB()->isLive() && panel.meterAudio()->isLive());
    QCOMPARE(panel.batteryLabel()->text(), QStringLiteral("OFF"));
    QCOMPARE(panel.batteryLabel()->palette().color(QPalette::Window).rgb(), rgbOf(bgr::LightYellow));
    QVERIFY(panel.batteryLabel()->alignment() & Qt::AlignRight);
    QVERIFY(panel.batteryLabel()->font().pointSizeF() < panel.font().pointSizeF());
    QVERIFY(panel.muteButton()->isEnabled() && panel.moreButton()->isEnabled());
    QCOMPARE(imageOf(panel.muteButton()), QStringLiteral("SpeakerOFF"));
    QVERIFY(!panel.muteButton()->icon().isNull());
    QCOMPARE(imageOf(panel.pilotSign()), QStringLiteral("GreenBall"));

    panel.setMutePicture(false);
    QCOMPARE(imageOf(panel.muteButton()), QStringLiteral("SpeakerON"));
    panel.setNameText(QStringLiteral("03 VOCAL1"));
    panel.showReadout(readout(150, 120, 90));
    QCOMPARE(imageOf(panel.rfSign()), QStringLiteral("GreenBall"));

    panel.setOffline();
    QVERIFY(panel.isEnabled());
    QCOMPARE(panel.nameTextColor().rgb(), rgbOf(bgr::Red));
    QCOMPARE(panel.nameLabel()->palette().color(QPalette::Window).rgb(), rgbOf(bgr::White));
    QVERIFY(!panel.muteButton()->isEnabled() && !panel.moreButton()->isEnabled());
    QCOMPARE(panel.nameText(), QStringLiteral("03 VOCAL1"));

    panel.disableBlank();
    QVERIFY(!panel.isEnabled());
    QVERIFY(!panel.muteButton()->isEnabledTo(&panel) && !panel.moreButton()->isEnabledTo(&panel));
    QCOMPARE(panel.nameText(), QString());
    QCOMPARE(panel.batteryLabel()->text(), QString());
    QCOMPARE(panel.rfSign()->imageName(), QString());
    QCOMPARE(panel.pilotSign()->imageName(), QString());
    QCOMPARE(panel.batterySign()->imageName(), QString());
    QVERIFY(!panel.meterRfA()->isLive() && !panel.meterAudio()->isLive());
    QVERIFY(!panel.nameLabel()->autoFillBackground());

    // Enabling again starts from empty meters, not the last levels.
    panel.enableLive(false);
    QCOMPARE(panel.meterRfA()->value(), 0);
    QCOMPARE(panel.nameTextColor().rgb(), rgbOf(bgr::White));
}

void TestRcvPanel::batteryKeptUntilReadoutCarriesIt()
{
    RcvPanel panel(0);
    panel.enableLive(false);
    PanelReadout r = readout(150, 120, 90);
    r.batteryShown = true;
    r.batteryCaption = QStringLiteral("80%");
    r.batteryImage = QStringLiteral("YellowBall");
    panel.showReadout(r);
    QCOMPARE(panel.batteryLabel()->text(), QStringLiteral("80%"));
    QCOMPARE(panel.batterySign()->imageName(), QStringLiteral("YellowBall"));

    PanelReadout quiet = readout(0, 0, 0);
    QVERIFY(!quiet.batteryShown);
    panel.showReadout(quiet);
    QCOMPARE(panel.batteryLabel()->text(), QStringLiteral("80%"));
    QCOMPARE(panel.batterySign()->imageName(), QStringLiteral("YellowBall"));
    QCOMPARE(panel.rfSign()->imageName(), QStringLiteral("RedBall"));
    QCOMPARE(panel.meterRfA()->barColor().rgb(), rgbOf(bgr::Red));

    r.batteryCaption = QStringLiteral("OFF");
    r.batteryImage.clear();
    panel.showReadout(r);
    QCOMPARE(panel.batteryLabel()->text(), QStringLiteral("OFF"));
    QCOMPARE(panel.batterySign()->imageName(), QString());
}

void TestRcvPanel::clicksReportTheIndex()
{
    PanelGrid grid;
    grid.resize(1280, 740);
    grid.setPage(1);
    grid.panel(40)->enableLive(false);
    grid.panel(41)->enableLive(false);
    grid.panel(41)->setOffline();
    grid.show();
    QVERIFY(QTest::qWaitForWindowExposed(&grid));

    QSignalSpy name(&grid, &PanelGrid::nameClicked);
    QSignalSpy menu(&grid, &PanelGrid::contextMenuRequested);
    QSignalSpy pilot(&grid, &PanelGrid::pilotClicked);
    QSignalSpy mute(&grid, &PanelGrid::muteClicked);
    QSignalSpy more(&grid, &PanelGrid::moreClicked);

    RcvPanel *live = grid.panel(40);
    QTest::mouseClick(live->nameLabel(), Qt::LeftButton);
    QTest::mouseClick(live->nameLabel(), Qt::RightButton);
    QTest::mouseClick(live->pilotSign(), Qt::LeftButton);
    QTest::mouseClick(live->muteButton(), Qt::LeftButton);
    QTest::mouseClick(live->moreButton(), Qt::LeftButton);
    QCOMPARE(name.size(), 1);
    QCOMPARE(name.at(0).at(0).toInt(), 40);
    QCOMPARE(menu.size(), 1);
    QCOMPARE(menu.at(0).at(0).toInt(), 40);
    QCOMPARE(pilot.size(), 1);
    QCOMPARE(pilot.at(0).at(0).toInt(), 40);
    QCOMPARE(mute.size(), 1);
    QCOMPARE(more.size(), 1);

    // Offline: the name still answers (it brings the receiver back), the
    // buttons do not.
    RcvPanel *offline = grid.panel(41);
    QTest::mouseClick(offline->nameLabel(), Qt::LeftButton);
    QTest::mouseClick(offline->muteButton(), Qt::LeftButton);
    QTest::mouseClick(offline->moreButton(), Qt::LeftButton);
    QCOMPARE(name.size(), 2);
    QCOMPARE(name.at(1).at(0).toInt(), 41);
    QCOMPARE(mute.size(), 1);
    QCOMPARE(more.size(), 1);

    // A blank panel ignores everything.
    QTest::mouseClick(grid.panel(42)->nameLabel(), Qt::LeftButton);
    QCOMPARE(name.size(), 2);
    QVERIFY(!grid.panel(-1) && !grid.panel(64));
}

void TestRcvPanel::checkNetProgressAndSkip_data()
{
    QTest::addColumn<int>("address");
    QTest::addColumn<QString>("percent");
    QTest::newRow("1") << 1 << "1%";
    QTest::newRow("10") << 10 << "15%";
    QTest::newRow("32") << 32 << "50%";
    QTest::newRow("63") << 63 << "98%";
    QTest::newRow("64") << 64 << "100%";
}

void TestRcvPanel::checkNetProgressAndSkip()
{
    QFETCH(int, address);
    frmCheckNet view;
    view.setMessage(QStringLiteral("Checking Connected Receivers --> COM2"));
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QCOMPARE(view.objectName(), QStringLiteral("frmCheckNet"));
    QCOMPARE(view.progressBox()->objectName(), QStringLiteral("Picture1"));
    QCOMPARE(view.skipLabel()->text(), QStringLiteral("SKIP"));

    view.setProgress(address);
    QTEST(view.percentLabel()->text(), "percent");

    // The blue box reaches address/64 of the width, white beyond.
    const QImage bar = view.progressBox()->grab().toImage();
    const qreal dpr = bar.devicePixelRatio();
    const int w = view.progressBox()->width();
    const int filled = w * address / 64;
    const int y = int(view.progressBox()->height() / 2 * dpr);
    QCOMPARE(bar.pixelColor(int((filled - 2) * dpr), y).rgb(), qRgb(0, 0, 255));
    if (filled < w - 2)
        QCOMPARE(bar.pixelColor(int((filled + 1) * dpr), y).rgb(), qRgb(255, 255, 255));

    QVERIFY(!view.skipRequested());
    QTest::mouseClick(view.skipLabel(), Qt::LeftButton);
    QVERIFY(view.skipRequested());
    QVERIFY(!view.skipLabel()->isEnabled());

    // A new search starts with "SKIP" usable again.
    view.hide();
    view.show();
    QVERIFY(!view.skipRequested());
    QCOMPARE(view.percentLabel()->text(), QStringLiteral("0%"));
}

void TestRcvPanel::aboutClosesOnClick()
{
    for (bool onIcon : {false, true}) {
        frmAbout about;
        about.show();
        QVERIFY(QTest::qWaitForWindowExposed(&about));
        QTest::mouseClick(onIcon ? static_cast<QWidget *>(about.iconLabel()) : about.textLabel(),
                          Qt::LeftButton);
        QVERIFY(!about.isVisible());
    }
}

void TestRcvPanel::namedImagesLoad()
{
    for (const char *name : {"GreenBall", "YellowBall", "OrangeBall", "RedBall", "SpeakerON",
                             "SpeakerOFF", "icon", "logo"}) {
        const QPixmap p = namedImage(QString::fromLatin1(name));
        QVERIFY2(!p.isNull(), name);
        QVERIFY2(p.width() >= 32, name);
    }
    QVERIFY(namedImage(QStringLiteral("NoSuchPicture")).isNull());
    QVERIFY(namedImage(QString()).isNull());
    QVERIFY(namedIcon(QStringLiteral("NoSuchPicture")).isNull());
}

QTEST_MAIN(TestRcvPanel)
#include "tst_rcvpanel.moc"
