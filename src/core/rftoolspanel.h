#pragma once

#include <QString>

#include <functional>

class QAbstractButton;
class QWidget;

namespace zun {

struct Context;
struct LevelReading;
struct Receiver;

// Where the RF tools moved the receiver's frequency. The host alone decides
// how its own controls show that.
struct RfTuning
{
    enum class Kind {
        // A scan point was measured here: the receiver now sits off its
        // presets, and its record says so.
        OffPresets,
        // The scan cursor points here and the receiver was asked to follow
        // it, whether or not it answered.
        Cursor,
    };
    Kind kind = Kind::Cursor;
    double mhz = 0;
};

// What the RF tools need from the detail window that hosts them. The detail
// window implements it; tests implement it with doubles.
class RfToolsHost
{
public:
    virtual ~RfToolsHost() = default;

    // The open receiver's record in the receiver table.
    [[nodiscard]] virtual const Receiver &record() const = 0;
    // The receiver's band start, MHz to the kHz: the scan's point 0.
    [[nodiscard]] virtual double bandStart() const = 0;
    // Frequency (MHz) to the receiver's four-digit frequency code.
    [[nodiscard]] virtual QString codeFromMhz(double mhz) const = 0;

    virtual void rfTuned(const RfTuning &tuning) = 0;

    // The meters' update for one reading. The host's version must
    // call RfTools::meterReading with it, which keeps the shared reading and
    // shows the drop counts.
    virtual void showMeters(const LevelReading &reading) = 0;
    // The recorder's level read (it ends in showMeters, or closes the window
    // after its message when the receiver does not answer).
    virtual void recorderRead() = 0;
    // The window's unload after a receiver stopped answering. It must not
    // delete the tools synchronously (close(), deleteLater()).
    virtual void unloadForm() = 0;
};

// The RF tools as the detail window hosts them: three pages to place, the
// step options it shares with its frequency buttons, and the calls it passes on.
class RfToolsPanel
{
public:
    virtual ~RfToolsPanel() = default;

    virtual QWidget *spectrumPage() = 0;
    virtual QWidget *recorderPage() = 0;
    virtual QWidget *dropCounterPage() = 0;
    // Option1..Option4 of the step frame.
    virtual QAbstractButton *stepOption(int option) = 0;

    // After the window's load: band size, scales, options, squelch lines.
    virtual void load() = 0;
    // The tools' share of the window's meter update.
    virtual void meterReading(const LevelReading &reading) = 0;
    virtual void showSquelch() = 0;
    virtual void nextPressed() = 0;
    virtual void previousPressed() = 0;
    virtual void tabSwitched(int previousTab) = 0;
    // Work-loop steps.
    [[nodiscard]] virtual bool scanStep() = 0;
    [[nodiscard]] virtual bool recorderStep() = 0;
};

// Makes the RF tools inside a detail window (their widgets are children of
// parentWidget); the app supplies it.
using RfToolsFactory = std::function<RfToolsPanel *(Context &ctx, RfToolsHost &host, QWidget *parentWidget)>;

} // namespace zun
