#pragma once

#include "core/rftoolspanel.h"
#include "rftools/recorderstate.h"
#include "rftools/scanstate.h"

#include <QObject>

class QWidget;

namespace zun {

struct Context;
struct LevelReading;
class DropCounterPanel;
class RecorderTab;
class RfRecorder;
class ScanFiles;
class SpectrumScan;
class SpectrumTab;

// The RF analysis tools of the detail window: the spectrum scan, the RF
// recorder and the signal-drop counters, with the state they share (the last
// antenna reading and the squelch level).
//
// The window creates one per opening, puts spectrumTab() and recorderTab()
// into its tab control as "Spectrum" and "RF-Monitor", places
// dropCounterPanel() on its settings tab, calls load() once its own load has
// read the receiver's band, and hands the work loop scanStep (mode 3) and
// recorderStep (mode 4).
class RfTools : public QObject, public RfToolsPanel
{
    Q_OBJECT
public:
    // The three widgets are created as children of parentWidget (the window)
    // and live as long as it does; the window moves them where they belong.
    RfTools(Context &ctx, RfToolsHost &host, QWidget *parentWidget);
    ~RfTools() override;

    SpectrumTab *spectrumTab() const { return m_spectrumTab; }
    QWidget *spectrumPage() override;
    QWidget *recorderPage() override;
    QWidget *dropCounterPage() override;
    QAbstractButton *stepOption(int option) override;
    RecorderTab *recorderTab() const { return m_recorderTab; }
    DropCounterPanel *dropCounterPanel() const { return m_dropPanel; }

    // After the window's load: band size, scales, options, squelch lines.
    void load() override;

    // Work-loop steps; both return true because they always use the line.
    [[nodiscard]] bool scanStep() override;
    [[nodiscard]] bool recorderStep() override;

    // The share of the window's showMeters that belongs here: keeps the
    // reading for the tools and shows the drop counts.
    void meterReading(const LevelReading &reading) override;
    // Squelch level from the record's squelch, and both squelch lines.
    void showSquelch() override;

    // The settings tab's marker buttons and the tab control's click.
    void nextPressed() override;
    void previousPressed() override;
    void tabSwitched(int previousTab) override;

    SpectrumScan &spectrum() const { return *m_spectrum; }
    RfRecorder &recorderControl() const { return *m_recorder; }
    ScanFiles &files() const { return *m_files; }
    const ScanState &scanState() const { return m_scan; }
    const RecorderState &recorderState() const { return m_recording; }

private:
    void showDrops();

    Context &m_ctx;
    RfToolsHost &m_host;
    ScanState m_scan;
    RecorderState m_recording;
    SpectrumTab *m_spectrumTab;
    RecorderTab *m_recorderTab;
    DropCounterPanel *m_dropPanel;
    SpectrumScan *m_spectrum;
    RfRecorder *m_recorder;
    ScanFiles *m_files;
};

} // namespace zun
