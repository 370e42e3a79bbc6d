#pragma once

#include <QObject>

namespace zun {

struct Context;
struct RecorderState;
struct ScanState;
class RfToolsHost;
class RecorderTab;

// The recorder's behaviour: one reading and one chart segment per work-loop
// pass, and the tab's buttons.
class RfRecorder : public QObject
{
    Q_OBJECT
public:
    // The antenna levels come from the window's shared reading in scan.
    RfRecorder(Context &ctx, RfToolsHost &host, const ScanState &scan, RecorderState &state, RecorderTab &tab,
               QObject *parent = nullptr);

    // Window load: speed from the checked option, pen home, chart empty.
    void load();

    // One sample: read, show the read-outs, draw, time. Returns true (the
    // step always used the line).
    [[nodiscard]] bool recorderStep();

    void startRecorder();
    void stopRecorder();
    void clearRecorder();
    void speedChosen(double columnsPerSample);
    // SQ_Line2 on the picture row of the squelch level.
    void placeSquelchLine();

private:
    Context &m_ctx;
    RfToolsHost &m_host;
    const ScanState &m_scan;
    RecorderState &m_state;
    RecorderTab &m_tab;
};

} // namespace zun
