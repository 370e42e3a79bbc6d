#pragma once

#include <QString>

#include <functional>

class QAbstractButton;
class QWidget;

namespace zun {

struct Context;
struct LevelReading;
struct Receiver;

// What the RF tools need from the detail window that hosts them. The detail
// window implements it; tests implement it with doubles.
class RfToolsHost
{
public:
    virtual ~RfToolsHost() = default;

    // The open receiver's record in the receiver table.
    virtual const Receiver &record() const = 0;
    // The number shown in txtBandStart, MHz.
    virtual double bandStart() const = 0;
    // Frequency (MHz) to the receiver's four-digit frequency code.
    virtual QString codeFromMhz(double mhz) const = 0;

    // txtFreq shows this text ("000.000").
    virtual void showFrequencyText(const QString &text) = 0;
    // txtGroup and txtChannel show "**": the receiver is off its presets.
    virtual void showOffPreset() = 0;
    // The TV-channel read-out follows this frequency (MHz).
    virtual void showTvChannel(double mhz) = 0;

    // The settings tab's meter update for one reading. The host's version must
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
