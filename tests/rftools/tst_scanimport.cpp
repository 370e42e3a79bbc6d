// A scan file imported as the reference in the running program's detail window.
#include "detail/detailwindow.h"
#include "rftools/rftools.h"
#include "rftools/scanplot.h"
#include "rftools/scantab.h"
#include "support/testbed.h"

#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace zun;

namespace {

struct ImportRig : TestBed
{
    ImportRig()
    {
        attachReceivers(1, {5}); // its band runs from 800 to 900 MHz
        MainWindow *main = loadMainScreen();
        main->moreClicked(0);
        auto *form = qobject_cast<DetailWindow *>(main->detailWindow());
        if (!form)
            qFatal("the detail window did not open");
        tools = &dynamic_cast<RfTools &>(form->tools());
    }

    // The message it gave, if any.
    QString import(const QString &path)
    {
        const int before = int(dialogs.messages().size());
        dialogs.queueFileName(path);
        tools->spectrumTab()->importButton()->click();
        return dialogs.messages().size() > before ? dialogs.messages().last() : QString();
    }
    QString importText(const QByteArray &text)
    {
        const QString path = dir.filePath(QStringLiteral("scan%1.csv").arg(++files));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write %s", qPrintable(path));
        file.close();
        return import(path);
    }
    const ReferenceTrace &reference() const { return tools->scanState().reference; }

    QTemporaryDir dir;
    RfTools *tools = nullptr;
    int files = 0;
};

} // namespace

class TstScanImport : public QObject
{
    Q_OBJECT
private slots:
    void whatIsNoScanIsRefused_data()
    {
        QTest::addColumn<QByteArray>("text"); // a file of this, or else the path in says
        QTest::addColumn<QString>("says");
        QTest::newRow("device") << QByteArray() << "/dev/zero";
        QTest::newRow("pipe") << QByteArray() << "pipe";
        QTest::newRow("one line of 15 MB")
            << "800.000," + QByteArray(15'000'000, '7') << "Line 1: the line is too long";
        QTest::newRow("level beyond any receiver")
            << QByteArray("800.000,-90.0\n800.025,1e308\n") << "Line 2: 1e308 dBm is not a level";
        QTest::newRow("level below -150 dBm") << QByteArray("800.000,-150.1\n") << "Line 1: -150.1 dBm";
        QTest::newRow("long line named shortly")
            << QByteArray("800.000,-90.0\n\n" + QByteArray(150, 'x') + ",-90\n") << "Line 3: \"xxxxxxx";
    }
    void whatIsNoScanIsRefused()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, says);
        ImportRig rig;
        QCOMPARE(rig.importText("800.000,-90.0\n800.025,+30.0\n800.050,-150.0\n"), QString());
        const ReferenceTrace before = rig.reference();
        QCOMPARE(before.size(), std::size_t(3));
        QString message;
        if (text.isEmpty()) {
            const QString path = says == "pipe" ? rig.dir.filePath("fifo.csv") : says;
            if (says == "pipe")
                QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
            message = rig.import(path);
            QCOMPARE(message, path + " could not be read: it is a " + (says == "pipe" ? "pipe" : "device") +
                                  ", not a file");
        } else {
            message = rig.importText(text);
            QVERIFY2(message.contains(says), qPrintable(message));
        }
        // The message quotes at most 80 characters of the line.
        QVERIFY2(message.size() < 200 + rig.dir.path().size(), qPrintable(message.left(300)));
        QCOMPARE(rig.reference(), before);
    }

    // A reference of a million points is drawn with at most four corners per
    // pixel column, and still shows.
    void hugeReferenceIsDrawnPerColumn()
    {
        ImportRig rig;
        QByteArray text;
        text.reserve(16'000'000);
        for (int i = 0; i < 1'000'000; ++i)
            text += QByteArray::number(800.0 + i * 0.0001, 'f', 4) + (i % 2 ? ",-60\n" : ",-95\n");
        QCOMPARE(rig.importText(text), QString());
        QCOMPARE(rig.reference().size(), std::size_t(1'000'000));
        SpectrumPlot *plot = rig.tools->spectrumTab()->plot();
        const QImage picture = plot->pictureImage();
        QVERIFY2(plot->referenceVertices() <= std::size_t(4 * picture.width()),
                 qPrintable(QString::number(plot->referenceVertices())));
        int shown = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                shown += picture.pixel(x, y) == traceColors::kReference.rgb();
        // Both levels are reached in every column the band covers.
        QVERIFY2(shown > picture.width(), qPrintable(QString::number(shown)));
    }
};

QTEST_MAIN(TstScanImport)
#include "tst_scanimport.moc"
