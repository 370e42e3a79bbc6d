#include "core/leveltable.h"
#include "mainscreen/frmabout.h"
#include "mainscreen/frmchecknet.h"
#include "mainscreen/frmsplash.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/panelreadout.h"
#include "mainscreen/rcvpanel.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

using namespace zun;

namespace {

// A plausible stage: named receivers with live levels, a few muted, one
// dropped off the line, the rest of the 64 panels unused.
void populate(PanelGrid &grid, int receivers)
{
    const LevelTable table = buildLevelTable();
    const char *names[] = {"VOCAL1", "VOCAL2", "GTR  L", "GTR  R", "BASS  ", "KEYS  ", "SAX   ",
                           "TPT   ", "HOST  ", "GUEST1", "GUEST2", "PASTOR", "CHOIR1", "CHOIR2",
                           "DRUM  ", "SPARE "};
    for (int i = 0; i < receivers; ++i) {
        RcvPanel *p = grid.panel(i);
        p->enableLive(i % 7 == 3);
        p->setNameText(QStringLiteral("%1 %2")
                           .arg(i + 1, 2, 10, QLatin1Char('0'))
                           .arg(QString::fromLatin1(names[i % 16]).trimmed()));
        if (i % 11 == 9) {
            p->setOffline();
            continue;
        }
        const int rfA = (40 + i * 37) % 230 + 20;
        const int rfB = (90 + i * 53) % 230 + 10;
        const int audio = (i * 29) % 150 + 80;
        const int battery = 16 + (i * 5) % 22;
        BatteryAverage average;
        PanelReadout r;
        for (int n = 0; n < 21; ++n) {
            const QString reply = QStringLiteral("$%1%2%3%4%5")
                                      .arg(i + 1, 2, 16, QLatin1Char('0'))
                                      .arg(audio, 2, 16, QLatin1Char('0'))
                                      .arg(rfA, 2, 16, QLatin1Char('0'))
                                      .arg(rfB, 2, 16, QLatin1Char('0'))
                                      .arg(battery, 2, 16, QLatin1Char('0'))
                                      .toUpper();
            r = readPanelReply(reply, i % 5 == 4 ? 99 : 20, table, average);
        }
        p->showReadout(r);
    }
}

QString grabPath(const QString &name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

} // namespace

class TestPanelGrid : public QObject
{
    Q_OBJECT

private slots:
    void pagesShowTheirHalf_data();
    void pagesShowTheirHalf();
    void hideUnusedKeepsPlaces();
    void fullViewShowsAllInFourRows();
    void grabForReview_data();
    void grabForReview();
    void grabViewsForReview();
};

void TestPanelGrid::pagesShowTheirHalf_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("firstShown");
    QTest::newRow("screen 1") << 0 << 0;
    QTest::newRow("screen 2") << 1 << 32;
    QTest::newRow("past the end stays on screen 2") << 5 << 32;
}

void TestPanelGrid::pagesShowTheirHalf()
{
    QFETCH(int, page);
    QFETCH(int, firstShown);
    PanelGrid grid;
    grid.resize(1280, 740);
    grid.show();
    grid.setPage(page);
    QVERIFY(QTest::qWaitForWindowExposed(&grid));
    for (int i = 0; i < grid.panelCount(); ++i) {
        const bool expected = i >= firstShown && i < firstShown + 32;
        QCOMPARE(grid.panel(i)->isVisible(), expected);
        QCOMPARE(grid.isPanelShown(i), expected);
    }
    // 16 strips in the first row, the next 16 below them.
    const RcvPanel *first = grid.panel(firstShown);
    const RcvPanel *sixteenth = grid.panel(firstShown + 15);
    const RcvPanel *secondRow = grid.panel(firstShown + 16);
    QCOMPARE(sixteenth->y(), first->y());
    QVERIFY(sixteenth->x() > first->x());
    QCOMPARE(secondRow->x(), first->x());
    QVERIFY(secondRow->y() >= first->geometry().bottom());
    QVERIFY(sixteenth->geometry().right() < grid.width());
    QVERIFY(secondRow->geometry().bottom() < grid.height());
}

void TestPanelGrid::hideUnusedKeepsPlaces()
{
    PanelGrid grid;
    grid.resize(1280, 740);
    grid.show();
    QVERIFY(QTest::qWaitForWindowExposed(&grid));
    const QRect before = grid.panel(4)->geometry();
    grid.setHideUnused(true, 5);
    QCoreApplication::processEvents();
    for (int i = 0; i < 32; ++i)
        QCOMPARE(grid.panel(i)->isVisible(), i < 5);
    QCOMPARE(grid.panel(4)->geometry(), before);

    grid.setPage(1);
    QVERIFY(!grid.panel(32)->isVisible());
    grid.setHideUnused(false, 5);
    QVERIFY(grid.panel(32)->isVisible());
    QVERIFY(!grid.panel(4)->isVisible()); // other page
}

void TestPanelGrid::fullViewShowsAllInFourRows()
{
    PanelGrid grid;
    grid.resize(1920, 1000);
    grid.show();
    grid.setPage(1);
    grid.setFullView(true);
    QVERIFY(QTest::qWaitForWindowExposed(&grid));
    QCoreApplication::processEvents();
    for (int i = 0; i < 64; ++i)
        QVERIFY2(grid.panel(i)->isVisible(), qPrintable(QString::number(i)));
    QCOMPARE(grid.panel(48)->x(), grid.panel(0)->x());
    QVERIFY(grid.panel(48)->y() > grid.panel(32)->y());
    QVERIFY(grid.panel(63)->geometry().bottom() < grid.height());
    QVERIFY(grid.panel(0)->isCompact());

    grid.setFullView(false);
    QVERIFY(!grid.panel(0)->isVisible()); // back to the page chosen before
    QVERIFY(grid.panel(32)->isVisible());
    QVERIFY(!grid.panel(32)->isCompact());
}

void TestPanelGrid::grabForReview_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("full");
    QTest::addColumn<QString>("file");
    QTest::newRow("normal 1280") << QSize(1280, 740) << false << "panelgrid-normal.png";
    QTest::newRow("full 1920") << QSize(1920, 1040) << true << "panelgrid-full.png";
    QTest::newRow("full 1280") << QSize(1280, 740) << true << "panelgrid-full-1280.png";
    QTest::newRow("normal 3840") << QSize(3840, 2060) << false << "panelgrid-normal-4k.png";
}

// Writes pictures of the grid beside the test binary for a human to look at.
void TestPanelGrid::grabForReview()
{
    QFETCH(QSize, size);
    QFETCH(bool, full);
    QFETCH(QString, file);
    PanelGrid grid;
    populate(grid, 44);
    grid.setFullView(full);
    grid.resize(size);
    grid.show();
    QVERIFY(QTest::qWaitForWindowExposed(&grid));
    QCoreApplication::processEvents();
    const QPixmap shot = grid.grab();
    QCOMPARE(shot.size() / shot.devicePixelRatio(), size);
    QVERIFY(shot.save(grabPath(file)));
}

void TestPanelGrid::grabViewsForReview()
{
    frmSplash splash;
    splash.show();
    QVERIFY(QTest::qWaitForWindowExposed(&splash));
    QVERIFY(splash.width() >= 480 && splash.height() >= 200);
    QVERIFY(splash.grab().save(grabPath(QStringLiteral("frmsplash.png"))));

    frmAbout about;
    about.show();
    QVERIFY(QTest::qWaitForWindowExposed(&about));
    QVERIFY(about.grab().save(grabPath(QStringLiteral("frmabout.png"))));

    frmCheckNet check;
    check.setMessage(QStringLiteral("Checking Connected Receivers --> COM2"));
    check.show();
    QVERIFY(QTest::qWaitForWindowExposed(&check));
    check.setProgress(23);
    QVERIFY(check.grab().save(grabPath(QStringLiteral("frmchecknet.png"))));
}

QTEST_MAIN(TestPanelGrid)
#include "tst_panelgrid.moc"
