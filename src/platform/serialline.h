#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace zun {

// The serial line as the program uses it: one port at a time, chosen by its
// number n (COM1..COM8). Every operation reports failure instead of throwing;
// a transaction that meets a closed or broken port simply fails.
class SerialLine
{
public:
    virtual ~SerialLine() = default;

    // The existence test of port n: opens it read-write and exclusively, then
    // closes it again. Only existing devices count.
    [[nodiscard]] virtual bool portExists(int n) = 0;

    virtual void selectPort(int n) = 0;
    virtual int portNumber() const = 0;
    [[nodiscard]] virtual bool open() = 0;
    virtual void close() = 0;
    [[nodiscard]] virtual bool isOpen() const = 0;

    // Settings text such as "115200,N,8,1". False when the text is not understood.
    [[nodiscard]] virtual bool applySettings(const QString &settings) = 0;
    virtual void setRequestToSend(bool on) = 0;
    virtual void setTextMode() = 0;

    [[nodiscard]] virtual bool write(const QByteArray &text) = 0;
    virtual int bytesWaiting() = 0;
    virtual QByteArray readAll() = 0;
    virtual void discardInput() = 0;
    virtual void discardOutput() = 0;
    // Both at once, where the device can do it in one request.
    virtual void discardInputAndOutput()
    {
        discardInput();
        discardOutput();
    }

    // Blocks until more input may be waiting or the time is up. It neither
    // processes UI events nor spins; it may return early, so callers keep
    // their own deadline.
    virtual void waitForInput(int millis) = 0;
    // The same for waits shorter than a millisecond, such as a few
    // characters' time; a line that cannot wait so finely waits a millisecond.
    virtual void waitForInputMicros(std::uint64_t micros)
    {
        waitForInput(static_cast<int>((micros + 999) / 1000));
    }

    // How many bytes the caller now waits for in all. A line may use it to
    // sleep until they are all there instead of waking for each one; waits
    // still end at their time limit with whatever came.
    virtual void expectInput(int bytes) { (void)bytes; }

    // Characters dropped since the line was made because more came than
    // the longest reply needs: line noise, or a device that never stops.
    virtual std::uint64_t discardedInput() const { return 0; }

    // A warning the user should see once, such as a serial server that
    // cannot set the far port's speed; empty when there is none. Taking it
    // clears it.
    virtual QString takeNotice() { return {}; }
};

} // namespace zun
