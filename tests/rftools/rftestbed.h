#pragma once

// A detail window's worth of surroundings for the RF tools: one receiver at
// address 5 on a fake line driven by a virtual clock, and a host that plays
// the settings tab.

#include "core/context.h"
#include "core/rftoolspanel.h"
#include "link/hex.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/serialline.h"
#include "platform/settingsstore.h"
#include "rftools/rftools.h"

#include <QStringList>
#include <QWidget>

#include <cmath>
#include <functional>
#include <map>

namespace zun::test {

// Answers "E" (tune and read), "K" (tune) and "N" (read) from a table of raw
// antenna readings per frequency code; every exchange costs 2 ms.
class FakeReceiverLine final : public SerialLine
{
public:
    explicit FakeReceiverLine(VirtualClock &clock) : m_clock(clock) {}

    bool silent = false;
    QStringList written;
    std::map<int, std::pair<int, int>> rawByCode; // code -> raw A, raw B
    std::pair<int, int> rawElsewhere{0x10, 0x0C};
    std::pair<int, int> rawN{0x90, 0x80};
    // What the receiver at 05 reports of itself.
    int squelch = 20;
    int bandWidth = 12;

    bool portExists(int) override { return true; }
    void selectPort(int) override {}
    int portNumber() const override { return 1; }
    bool open() override { return true; }
    void close() override {}
    bool isOpen() const override { return true; }
    bool applySettings(const QString &) override { return true; }
    void setRequestToSend(bool) override {}
    void setTextMode() override {}
    bool write(const QByteArray &text) override
    {
        written << QString::fromLatin1(text);
        m_clock.advanceMillis(2);
        if (!silent)
            m_pending = replyTo(QString::fromLatin1(text));
        return true;
    }
    int bytesWaiting() override { return static_cast<int>(m_pending.size()); }
    QByteArray readAll() override { return std::exchange(m_pending, {}); }
    void discardInput() override { m_pending.clear(); }
    void discardOutput() override {}
    void waitForInput(int millis) override
    {
        m_clock.advanceMillis(static_cast<std::uint64_t>(std::max(millis, 1)));
    }

private:
    QByteArray replyTo(const QString &cmd)
    {
        const QString addr = cmd.mid(1, 2);
        const QChar letter = cmd.size() > 3 ? cmd.at(3) : QChar();
        auto levels = [&](std::pair<int, int> raw) {
            return QStringLiteral("$%1%2%3%4%5\r")
                .arg(addr, NumToHex(0x41, 2), NumToHex(raw.first, 2), NumToHex(raw.second, 2),
                     NumToHex(0x22, 2));
        };
        if (letter == QLatin1Char('E')) {
            const auto it = rawByCode.find(HexToNum(cmd.mid(4, 4)));
            return levels(it == rawByCode.end() ? rawElsewhere : it->second).toLatin1();
        }
        if (letter == QLatin1Char('K'))
            return QStringLiteral("$%1\r").arg(addr).toLatin1();
        if (letter == QLatin1Char('N'))
            return levels(rawN).toLatin1();
        if (letter == QLatin1Char('M') && addr == QLatin1String("05"))
            return (QStringLiteral("$05RCV01 1172BA") + NumToHex(squelch, 2) +
                    QStringLiteral("30B0000000000072BA") + NumToHex(bandWidth, 4) + QStringLiteral("0\r"))
                .toLatin1();
        return {};
    }

    VirtualClock &m_clock;
    QByteArray m_pending;
};

class FakeHost final : public RfToolsHost
{
public:
    explicit FakeHost(Context &ctx) : m_ctx(ctx) {}

    RfTools *tools = nullptr;
    QString txtFreq;
    QString txtGroup = QStringLiteral("3");
    QString txtChannel = QStringLiteral("4");
    double tvFrequency = 0;
    int meterCalls = 0;
    int unloads = 0;

    const ReceiverRecord &record() const override { return m_ctx.bus.record(0); }
    double bandStart() const override { return (25.0 * HexToNum(record().bandStartCode) + 65750) / 1000; }
    QString ComputeNA(double mhz) const override
    {
        return NumToHex(static_cast<int>(std::nearbyint((mhz * 1000 - 65750) / 25)), 4);
    }
    void setTxtFreq(const QString &text) override { txtFreq = text; }
    void showOffPreset() override { txtGroup = txtChannel = QStringLiteral("**"); }
    void showTvChannel(double mhz) override { tvFrequency = mhz; }
    void ShowMeters(const DetailReading &reading) override
    {
        ++meterCalls;
        tools->meterReading(reading);
    }
    void recorderRead() override
    {
        if (const auto reading = m_ctx.bus.recorderStep())
            ShowMeters(*reading);
    }
    void unloadForm() override { ++unloads; }

private:
    Context &m_ctx;
};

// Everything wired; call open() after adjusting the record.
struct RfBench
{
    VirtualClock clock{0, 12 * 3600.0};
    FakeReceiverLine line{clock};
    MemorySettingsStore settings;
    ScriptedDialogs dialogs;
    FakeDesktop desktop;
    Context ctx{Platform{clock, line, settings, dialogs, desktop}};
    QWidget window;
    FakeHost host{ctx};
    RfTools tools{ctx, host, &window};

    RfBench() { host.tools = &tools; }
    // Finds the receiver (the clock keeps its time of day), opens its tools.
    void open()
    {
        const double timeOfDay = clock.secondsSinceMidnight();
        ctx.bus.resizeTable(1);
        ctx.bus.CheckReceivers();
        clock.setSecondsSinceMidnight(timeOfDay);
        ctx.bus.openDetail(0);
        ctx.bus.setWorkMode(WorkMode::DetailRead);
        line.written.clear();
        tools.load();
    }
    int codeOfPoint(int i) const { return HexToNum(host.record().bandStartCode) + i; }
};

} // namespace zun::test
