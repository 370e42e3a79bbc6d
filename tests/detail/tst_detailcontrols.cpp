// Address, name, squelch, mute and KOB controls, and the TV region menu.
#include "detail/detailrig.h"

#include "detail/detailmeters.h"
#include "mainscreen/tvregion.h"

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
