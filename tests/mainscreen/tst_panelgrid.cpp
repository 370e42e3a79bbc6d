#include "mainscreen/panelgrid.h"
#include "mainscreen/rcvpanel.h"

#include <QTest>

using namespace zun;

class TestPanelGrid : public QObject
{
    Q_OBJECT

private slots:
    void pageLayoutIsTwoRowsOfSixteen_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("firstShown");
        QTest::newRow("screen 1") << 0 << 0;
        QTest::newRow("past the end stays on screen 2") << 5 << 32;
    }
    void pageLayoutIsTwoRowsOfSixteen()
    {
        QFETCH(int, page);
        QFETCH(int, firstShown);
        PanelGrid grid;
        grid.resize(1280, 740);
        grid.show();
        grid.setPage(page);
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        for (int i = 0; i < grid.panelCount(); ++i)
            QCOMPARE(grid.panel(i)->isVisible(), i >= firstShown && i < firstShown + 32);
        const RcvPanel *first = grid.panel(firstShown);
        const RcvPanel *sixteenth = grid.panel(firstShown + 15);
        const RcvPanel *secondRow = grid.panel(firstShown + 16);
        QVERIFY(sixteenth->y() == first->y() && sixteenth->x() > first->x());
        QVERIFY(secondRow->x() == first->x() && secondRow->y() >= first->geometry().bottom());
        QVERIFY(sixteenth->geometry().right() < grid.width() &&
                secondRow->geometry().bottom() < grid.height());
    }

    void hideUnusedKeepsPlaces()
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
        QVERIFY(grid.panel(32)->isVisible() && !grid.panel(4)->isVisible());
    }

    void fullViewShowsAllInFourRows()
    {
        PanelGrid grid;
        grid.resize(1920, 1000);
        grid.show();
        grid.setPage(1);
        grid.setFullView(true);
        QVERIFY(QTest::qWaitForWindowExposed(&grid));
        QCoreApplication::processEvents();
        for (int i = 0; i < 64; ++i)
            QVERIFY2(grid.panel(i)->isVisible() && grid.panel(i)->isCompact(),
                     qPrintable(QString::number(i)));
        QVERIFY(grid.panel(48)->x() == grid.panel(0)->x() && grid.panel(48)->y() > grid.panel(32)->y());
        QVERIFY(grid.panel(63)->geometry().bottom() < grid.height());
        grid.setFullView(false); // back to the page chosen before
        QVERIFY(!grid.panel(0)->isVisible() && grid.panel(32)->isVisible() && !grid.panel(32)->isCompact());
    }
};

QTEST_MAIN(TestPanelGrid)
#include "tst_panelgrid.moc"
