#pragma once

#include "rftools/dropcounter.h"
#include "rftools/recorderstate.h"
#include "rftools/scanstate.h"

#include <QObject>

class QWidget;

namespace zun {

struct Context;
class DropCounterPanel;
class RecorderTab;
class RfRecorder;
class RfToolsHost;
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
// filled the band boxes, and hands the work loop ScanFreq (mode 3) and
// RFRecorder (mode 4).
class RfTools : public QObject
{
    Q_OBJECT
public:
    // The three widgets are created as children of parentWidget (the window)
    // and live as long as it does; the window moves them where they belong.
    RfTools(Context &ctx, RfToolsHost &host, QWidget *parentWidget);
    ~RfTools() override;

    SpectrumTab *spectrumTab() const { return m_spectrumTab; }
    RecorderTab *recorderTab() const { return m_recorderTab; }
    DropCounterPanel *dropCounterPanel() const { return m_dropPanel; }

    // After the window's load: band size, scales, options, squelch lines.
    void load();

    // Work-loop steps; both return true because they always use the line.
    bool ScanFreq();
    bool RFRecorder();

    // The share of the window's ShowMeters that belongs here: keeps the
    // reading for the tools and counts signal drops.
    void meterReading(int statusByte, int rfA, int rfB, int audioByte);
    // Squelch level from the record's squelch, both squelch lines, and the
    // settings tab's squelch bar through the host.
    void ShowSquelch();

    // The settings tab's marker buttons and the tab control's click.
    void cmdNextClick();
    void cmdPrevClick();
    void SSTab1Click(int previousTab);

    SpectrumScan &spectrum() const { return *m_spectrum; }
    RfRecorder &recorderControl() const { return *m_recorder; }
    ScanFiles &files() const { return *m_files; }
    const ScanState &scanState() const { return m_scan; }
    const RecorderState &recorderState() const { return m_recording; }
    const DropCounter &drops() const { return m_drops; }

private:
    void showDrops();

    Context &m_ctx;
    RfToolsHost &m_host;
    ScanState m_scan;
    RecorderState m_recording;
    DropCounter m_drops;
    SpectrumTab *m_spectrumTab;
    RecorderTab *m_recorderTab;
    DropCounterPanel *m_dropPanel;
    SpectrumScan *m_spectrum;
    RfRecorder *m_recorder;
    ScanFiles *m_files;
};

// The squelch bar's span on the 0..99 scale: 7 levels either side of the
// squelch level, pushed back inside the scale at either end.
struct SquelchBarSpan
{
    int from;
    int to;
};
SquelchBarSpan squelchBarSpan(int squelchLevel);

} // namespace zun
