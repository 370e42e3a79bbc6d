#pragma once

#include "coordination/scancsv.h"
#include "rftools/holdtraces.h"

#include <QObject>

namespace zun {

struct Context;
struct ScanState;
class PlotCanvas;
class RfToolsHost;
class SpectrumTab;

// What the scan trades with files: CSV export of the live or a hold trace,
// a CSV scan imported as the reference trace, and PNG pictures of either
// plot. Also switches the hold traces, which change nothing on the wire.
class ScanFiles : public QObject
{
    Q_OBJECT
public:
    ScanFiles(Context &ctx, RfToolsHost &host, ScanState &state, SpectrumTab &tab, QObject *parent = nullptr);

    // Asks for the trace and the variant, then the file.
    void exportScan();
    void importReference();
    void savePng(PlotCanvas *plot);
    void holdToggled(HoldTraces::Kind kind, bool on);
    // Redraws what the picture shows from the scan state.
    void redraw();

    // The points of one trace as they would be exported: only points that
    // were measured (or held), in ascending frequency.
    std::vector<ScanPoint> tracePoints(int trace) const;

private:
    [[nodiscard]] double bandStop() const;

    Context &m_ctx;
    RfToolsHost &m_host;
    ScanState &m_state;
    SpectrumTab &m_tab;
};

} // namespace zun
