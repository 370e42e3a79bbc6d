#include "bushealth/bushealthmodel.h"
#include "mainscreen/bushealthwindow.h"
#include "support/fakereceiverbus.h"
#include "support/testbed.h"

#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableView>
#include <QTest>

using namespace zun;

namespace {

ExchangeRecord record(int address, ExchangeRecord::Result result, qint64 roundTripMs, int replyChars = 12,
                      int attempts = 1)
{
    ExchangeRecord r;
    r.address = address;
    r.command = QLatin1Char('N');
    r.result = result;
    r.attempts = attempts;
    r.roundTripMicros = roundTripMs * 1000;
    r.commandChars = 5;
    r.replyChars = result == ExchangeRecord::Result::NoReply ? 0 : replyChars;
    return r;
}

// "3:ok*80 3:garbled*20 5:ok*100": exchanges by address, result and count;
// "doubled" is a good reply twice the usual length.
void feed(BusHealthStats &stats, const QString &script)
{
    using R = ExchangeRecord::Result;
    static const QHash<QString, R> kinds{
        {"ok", R::Ok}, {"doubled", R::Ok}, {"garbled", R::Garbled}, {"none", R::NoReply}};
    for (const QString &item : script.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QStringList parts = item.split(QRegularExpression(QStringLiteral("[:*]")));
        for (int i = 0; i < parts[2].toInt(); ++i)
            stats.add(record(parts[0].toInt(), kinds.value(parts[1]), 2, parts[1] == "doubled" ? 24 : 12));
    }
}

} // namespace

class TestBusHealth : public QObject
{
    Q_OBJECT
private slots:
    void countersAndTimes()
    {
        BusHealthStats stats(9600);
        for (int ms = 1; ms <= 100; ++ms)
            stats.add(record(3, ExchangeRecord::Result::Ok, ms));
        stats.add(record(3, ExchangeRecord::Result::NoReply, 750, 0, 3));
        stats.add(record(3, ExchangeRecord::Result::NoReply, 750, 0, 3));
        stats.add(record(3, ExchangeRecord::Result::Garbled, 5, 7, 2));
        stats.add(record(0, ExchangeRecord::Result::Broadcast, 1));

        QCOMPARE(stats.addresses(), QList<int>{3}); // broadcasts have no row
        const AddressHealth *h = stats.address(3);
        QCOMPARE(h->exchanges, 103);
        QCOMPARE(h->timeouts, 2);
        QCOMPARE(h->retries, 5);
        QCOMPARE(h->garbled, 1);
        QCOMPARE(h->lastError, QStringLiteral("garbled reply to N"));
        QCOMPARE(stats.medianMs(3), 51.0);
        QCOMPARE(stats.p99Ms(3), 750.0);
        QCOMPARE(qRound(stats.wireLimitMs(3) * 1000), 17708); // 17 characters at 9600 baud
        stats.setBaudRate(19200);
        QCOMPARE(qRound(stats.wireLimitMs(3) * 1000), 8854);

        // Two exchanges of 250 ms in one second of line time, two passes.
        stats.reset();
        QVERIFY(stats.addresses().isEmpty());
        ExchangeRecord first = record(4, ExchangeRecord::Result::Ok, 250), second = first;
        second.startMicros = 750000;
        stats.add(first);
        stats.passEnded();
        stats.add(second);
        stats.passEnded();
        QCOMPARE(stats.utilisation(), 0.5);
        QCOMPARE(stats.passesPerSecond(), 2.0);
    }

    void duplicateAddress_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<bool>("suspect"); // address 3 flagged; 5 never is
        const auto row = [](const char *name, const char *script, bool suspect) {
            QTest::newRow(name) << QString(script) << suspect;
        };
        row("clean line", "3:ok*100 5:ok*100", false);
        row("garbled at one address", "3:ok*80 3:garbled*20 5:ok*100 5:garbled*1", true);
        row("doubled at one address", "3:ok*85 3:doubled*15 5:ok*100", true);
        row("noisy everywhere", "3:ok*80 3:garbled*20 5:ok*80 5:garbled*20", false);
        row("too few exchanges", "3:ok*5 3:garbled*5 5:ok*100", false);
        row("silence is not garbling", "3:ok*50 3:none*50 5:ok*100", false);
        row("nothing to compare with", "3:ok*80 3:garbled*20", false);
    }
    void duplicateAddress()
    {
        QFETCH(QString, script);
        BusHealthStats stats;
        feed(stats, script);
        QTEST(stats.suspectDuplicate(3), "suspect");
        QVERIFY(!stats.suspectDuplicate(5));
    }

    // Characters without a carriage return, more than any reply: the line
    // keeps what a reply needs, polling goes on, and bus health counts the rest.
    void lineNoiseIsBoundedAndShown()
    {
        TestBed bed;
        bed.attachReceivers(1, {3});
        QVERIFY(bed.startHeadless());
        bed.line.injectInput(QByteArray(5000, 'x'));
        QCOMPARE(bed.line.bytesWaiting(), 41);
        QCOMPARE(bed.line.discardedInput(), quint64(5000 - 41));
        bed.line.clearWritten();
        bed.session->loop().runSteps();
        QCOMPARE(bed.framesSent().value(0), "%03N\r");
        QVERIFY(bed.ctx.bus.table().at(0).online);
        const QString summary = bed.session->busHealth().lineSummary();
        QVERIFY2(summary.endsWith(" · line noise: 4959 characters discarded"), qPrintable(summary));
        bed.session->busHealth().resetCounters();
        QVERIFY(!bed.session->busHealth().lineSummary().contains("noise"));
    }

    void windowSortsAndResets()
    {
        FakeReceiverBus bus;
        BusHealthModel model(115200);
        connectBusHealth(&bus, &model);
        for (int address : {2, 7, 9})
            for (int i = 0; i < (address == 7 ? 5 : 1); ++i)
                emit bus.exchanged(record(address, ExchangeRecord::Result::Ok, 2));
        emit bus.baudRateChanged(9600);
        std::unique_ptr<QWidget> window(createBusHealthWindow(&model));
        QCOMPARE(window->windowTitle(), QStringLiteral("Bus health"));
        auto *table = window->findChild<QTableView *>();
        QCOMPARE(table->model()->rowCount(), 0); // counted, not yet shown
        QTRY_COMPARE(table->model()->rowCount(), 3);
        QVERIFY(window->findChild<QLabel *>()->text().endsWith(QStringLiteral("9600 baud")));

        table->sortByColumn(BusHealthModel::Exchanges, Qt::DescendingOrder);
        QCOMPARE(table->model()->index(0, BusHealthModel::Address).data().toString(), QStringLiteral("07"));
        QCOMPARE(table->model()->index(0, BusHealthModel::Exchanges).data().toInt(), 5);

        window->findChild<QPushButton *>()->click();
        QCOMPARE(table->model()->rowCount(), 0);
    }
};

QTEST_MAIN(TestBusHealth)
#include "tst_bushealth.moc"
