#pragma once

#include <QObject>

namespace zun {

struct Context;
struct ScanState;
class RfToolsHost;
class SpectrumTab;

// The scan's behaviour: one measured point per work-loop pass, the cursor and
// its read-outs, the peak walk and the tab's buttons.
class SpectrumScan : public QObject
{
    Q_OBJECT
public:
    SpectrumScan(Context &ctx, RfToolsHost &host, ScanState &state, SpectrumTab &tab,
                 QObject *parent = nullptr);

    // Window load: band size and picture scale, band labels, cursor home.
    void load();

    // One point: tune and read with "E", redraw, time, stop tests, advance.
    // Returns true (the step always used the line).
    [[nodiscard]] bool scanStep();
    // Marker and the three read-outs for the scan index; stores the point's
    // frequency code as the receiver's next "K" argument.
    void showScanCursor();

    void runOrStopScan();
    void clearScan();
    void tuneToStrongestPeak();
    void tuneToNextPeak();
    void pointerMoved(double x, Qt::MouseButtons buttons);
    void pictureClicked();
    void stepChosen(int points);
    // The tab control was clicked; previousTab is the tab left.
    void tabClicked(int previousTab);
    // The settings tab's marker buttons.
    void nextPressed();
    void previousPressed();

    // SP_Run shows what a click would do next.
    void updateRunCaption();
    // SQ_Line1 on the picture row of the squelch level.
    void placeSquelchLine();

private:
    void redrawTrace();
    // "K" for the current frequency code; on failure only the message.
    void tune(int timeoutMillis);
    [[nodiscard]] double cursorFrequency() const;

    Context &m_ctx;
    RfToolsHost &m_host;
    ScanState &m_state;
    SpectrumTab &m_tab;
};

} // namespace zun
