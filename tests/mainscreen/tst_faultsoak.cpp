// A long show on a bad line: 64 receivers polled for 100,000 transactions
// while the simulator spoils one reply in twenty in every way it knows.
#include "core/options.h"
#include "core/workloop.h"
#include "mainscreen/startupwindows.h"
#include "support/testbed.h"

#include <QRegularExpression>
#include <QTest>

#include <malloc.h>
#include <map>

#if defined(__SANITIZE_ADDRESS__)
// From the sanitizer runtime; gcc ships no header for it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

using namespace zun;

namespace {

std::size_t heapInUse()
{
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

// The line as the program sees it, with every byte the bus sends tagged by
// the transaction whose frame made the bus answer. A transaction is one
// sendCommand: its first attempt and the retries of the same frame that
// follow an empty read.
class TracingLine final : public SerialLine
{
public:
    TracingLine(SimSerialLine &line, SimBus &bus, Clock &clock) : m_line(line), m_clock(clock)
    {
        bus.setReplyObserver([this](std::uint64_t start, const QByteArray &bytes, int baud) {
            // A head naming another receiver than the one asked was forged on the line.
            const bool forged = bytes.mid(1, 2) != m_frame.mid(1, 2);
            for (int i = 0; i < bytes.size(); ++i)
                m_landing.emplace(start + simWireMicros(i + 1, baud),
                                  Tagged{bytes[i], m_transaction, forged});
        });
    }

    struct Outcome
    {
        bool accepted = false; // the head matched: sendCommand's true
        QByteArray reply;
    };
    std::map<int, Outcome> lastByAddress; // the latest transaction to each address
    std::uint64_t transactions = 0;
    std::uint64_t pollTransactions = 0;
    std::uint64_t staleHeads = 0;    // a sound earlier reply taken as the answer
    std::uint64_t unheededHeads = 0; // a sound earlier reply read where no answer is awaited
    std::uint64_t forgedHeads = 0;   // an earlier reply whose head the line changed to the asked address
    std::uint64_t staleData = 0;     // own head, then bytes of an earlier reply within the frame
    std::uint64_t untracedBytes = 0;

    bool portExists(int n) override { return m_line.portExists(n); }
    void selectPort(int n) override { m_line.selectPort(n); }
    int portNumber() const override { return m_line.portNumber(); }
    bool open() override { return m_line.open(); }
    void close() override { m_line.close(); }
    bool isOpen() const override { return m_line.isOpen(); }
    bool applySettings(const QString &settings) override { return m_line.applySettings(settings); }
    void setRequestToSend(bool on) override { m_line.setRequestToSend(on); }
    void setTextMode() override { m_line.setTextMode(); }
    void discardOutput() override { m_line.discardOutput(); }
    void waitForInput(int millis) override { m_line.waitForInput(millis); }
    void waitForInputMicros(std::uint64_t micros) override { m_line.waitForInputMicros(micros); }
    int bytesWaiting() override { return m_line.bytesWaiting(); }

    bool write(const QByteArray &text) override
    {
        const bool retry = text == m_frame && m_readSinceWrite && m_lastReadEmpty;
        if (!retry) {
            ++transactions;
            if (text.startsWith('%') && text.endsWith("N\r"))
                ++pollTransactions;
        }
        m_transaction = transactions;
        m_frame = text;
        // Here only the name click sends "#"+address+"A1": it awaits no reply and drops what it
        // read, and the identification read after it starts by discarding input.
        m_unheeded = text.startsWith('#') && text.endsWith("A1\r");
        m_readSinceWrite = false;
        return m_line.write(text);
    }
    void discardInput() override
    {
        m_line.discardInput();
        takeLanded();
    }
    QByteArray readAll() override
    {
        const QByteArray bytes = m_line.readAll();
        const std::vector<Tagged> landed = takeLanded();
        m_readSinceWrite = true;
        m_lastReadEmpty = bytes.isEmpty();
        const QByteArray head = "$" + m_frame.mid(1, 2);
        const int address = m_frame.mid(1, 2).toInt(nullptr, 16);
        const bool accepted = bytes.size() >= 3 && bytes.startsWith(head);
        lastByAddress[address] = {accepted, bytes};
        // The reply must be exactly what the bus sent since the attempt began, as far as kept.
        QByteArray traced;
        for (const Tagged &t : landed)
            traced += t.byte;
        traced.truncate(kLongestReply); // the line keeps no more than the longest reply

        if (traced != bytes)
            untracedBytes += bytes.size();
        // The head that makes the program take a reply must answer its own question.
        if (accepted && traced == bytes) {
            const auto earlier = [&](int i) { return landed[i].transaction != m_transaction; };
            if (earlier(0) || earlier(1) || earlier(2)) {
                // A click follows a poll that gave up on its receiver before that receiver's
                // own reply came (another frame was read first); the reply then lands during
                // the click's "A1" with the very same head, which the line cannot tell from
                // an answer. Nothing is taken from it, so it is counted apart.
                if (landed[1].forged)
                    ++forgedHeads;
                else
                    ++(m_unheeded ? unheededHeads : staleHeads);
            } else {
                const int frameEnd = std::max<int>(bytes.indexOf('\r'), 2);
                for (int i = 3; i <= frameEnd; ++i)
                    if (earlier(i)) {
                        ++staleData;
                        break;
                    }
            }
        }
        return bytes;
    }

private:
    struct Tagged
    {
        char byte;
        std::uint64_t transaction;
        bool forged;
    };
    std::vector<Tagged> takeLanded()
    {
        std::vector<Tagged> landed;
        const auto end = m_landing.upper_bound(m_clock.nowMicros());
        for (auto it = m_landing.begin(); it != end; ++it)
            landed.push_back(it->second);
        m_landing.erase(m_landing.begin(), end);
        return landed;
    }

    SimSerialLine &m_line;
    Clock &m_clock;
    std::multimap<std::uint64_t, Tagged> m_landing;
    std::uint64_t m_transaction = 0;
    QByteArray m_frame;
    bool m_readSinceWrite = false;
    bool m_lastReadEmpty = false;
    bool m_unheeded = false;
};

bool wellFormedLevels(const QByteArray &reply, int address)
{
    static const QRegularExpression pattern(QStringLiteral("^\\$[0-9A-F]{10}"));
    return reply.startsWith("$" + QByteArray::number(address, 16).toUpper().rightJustified(2, '0')) &&
           pattern.match(QString::fromLatin1(reply)).hasMatch();
}

} // namespace

class TestFaultSoak : public QObject
{
    Q_OBJECT
private slots:
    void pollingSurvivesEveryFault()
    {
        VirtualClock clock;
        SimBus bus(2026);
        for (int address = 1; address <= 64; ++address)
            bus.addReceiver(address);
        SimSerialLine simLine(clock);
        simLine.attachBus(1, &bus);
        TracingLine line(simLine, bus, clock);
        MemorySettingsStore settings;
        ScriptedDialogs dialogs;
        FakeDesktop desktop;
        settings.save(kAppName, "MSComm", "CommPort", "1");
        const auto session = assembleSession(Platform{clock, line, settings, dialogs, desktop}, {});
        StartupWindows windows(*session);
        QVERIFY(session->start(windows.views()));
        // Nobody watches a soak: the panels are updated but never painted.
        windows.mainWindow()->hide();
        Context &ctx = session->context();
        QCOMPARE(ctx.bus.table().foundCount(), 64);
        WorkLoop &loop = session->loop();

        const double rate = 0.05 / 7;
        bus.setFaultRates({rate, rate, rate, rate, rate, rate, rate});
        const std::uint64_t pollsBefore = line.pollTransactions;
        std::uint64_t offline = 0, clicks = 0, recoveries = 0, wrongfulOffline = 0, refusedComebacks = 0;
        std::size_t heapAtHalf = 0;
        const std::uint64_t target = 100000;
        while (line.pollTransactions - pollsBefore < target) {
            std::vector<bool> wasOnline;
            for (int i = 0; i < ctx.bus.table().foundCount(); ++i)
                wasOnline.push_back(ctx.bus.table().at(i).online);
            loop.runSteps();
            for (int i = 0; i < ctx.bus.table().foundCount(); ++i) {
                const Receiver &r = ctx.bus.table().at(i);
                if (wasOnline[i] && !r.online) {
                    ++offline;
                    const auto &last = line.lastByAddress[r.address];
                    if (last.accepted && wellFormedLevels(last.reply, r.address))
                        ++wrongfulOffline;
                }
                if (r.online)
                    continue;
                // The user clicks the blinking name.
                ++clicks;
                windows.mainWindow()->nameClicked(i);
                const auto &answer = line.lastByAddress[r.address];
                const bool answered =
                    answer.accepted && answer.reply.size() >= 41 && answer.reply.indexOf('\r') == 40;
                if (r.online)
                    ++recoveries;
                else if (answered && QRegularExpression(QStringLiteral("^.{9}[0-9A-F]{31}\r"))
                                         .match(QString::fromLatin1(answer.reply))
                                         .hasMatch())
                    ++refusedComebacks;
            }
            simLine.clearWritten();
            if (!heapAtHalf && line.pollTransactions - pollsBefore >= target / 2)
                heapAtHalf = heapInUse();
        }
        const std::size_t heapAtEnd = heapInUse();

        // The line heals: one click brings every receiver back.
        bus.setFaultRates({});
        clock.advanceMillis(1000); // late replies still on the wire land and go
        for (int i = 0; i < 64; ++i)
            if (!ctx.bus.table().at(i).online)
                windows.mainWindow()->nameClicked(i);
        int online = 0;
        for (int i = 0; i < 64; ++i)
            online += ctx.bus.table().at(i).online ? 1 : 0;

        QStringList faults; // no reply, garbled, corrupt data, wrong address, partial, late, noise
        for (int kind = int(SimFault::NoReply); kind <= int(SimFault::Noise); ++kind)
            faults << QString::number(bus.faults().inflicted(SimFault(kind)));
        qInfo().nospace().noquote() << line.pollTransactions - pollsBefore << " polls (" << line.transactions
                                    << " transactions) in " << clock.nowMicros() / 1e6
                                    << " virtual s; faults " << faults.join('/') << "; " << offline
                                    << " offline, " << clicks << " clicks, " << recoveries
                                    << " recoveries; earlier replies taken: " << line.staleHeads << " sound, "
                                    << line.forgedHeads << " forged, " << line.staleData << " in the data, "
                                    << line.unheededHeads << " unheeded; heap +"
                                    << qint64(heapAtEnd) - qint64(heapAtHalf)
                                    << " bytes over the second half";

        QCOMPARE(line.untracedBytes, std::uint64_t(0)); // the tagging saw every byte
        QCOMPARE(line.staleHeads, std::uint64_t(0));
        QCOMPARE(wrongfulOffline, std::uint64_t(0));
        QCOMPARE(refusedComebacks, std::uint64_t(0));
        QVERIFY(offline > 100);
        QVERIFY(recoveries > 100);
        QCOMPARE(online, 64);
        QVERIFY2(heapAtEnd < heapAtHalf + 256 * 1024,
                 qPrintable(QStringLiteral("heap %1 -> %2").arg(heapAtHalf).arg(heapAtEnd)));
    }
};

QTEST_MAIN(TestFaultSoak)
#include "tst_faultsoak.moc"
