#include "rftools/scansweep.h"

#include "core/context.h"
#include "core/rftoolspanel.h"
#include "receivers/receiverbus.h"
#include "rftools/plotparts.h"
#include "rftools/scanplot.h"
#include "rftools/scanstate.h"
#include "rftools/scantab.h"

#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace zun {

namespace {
// The run time's number-to-text: positive numbers get a leading blank.
QString numberText(int value)
{
    return value >= 0 ? QLatin1Char(' ') + QString::number(value) : QString::number(value);
}
} // namespace

SpectrumScan::SpectrumScan(Context &ctx, RfToolsHost &host, ScanState &state, SpectrumTab &tab,
                           QObject *parent)
    : QObject(parent), m_ctx(ctx), m_host(host), m_state(state), m_tab(tab)
{
    SpectrumPlot *plot = m_tab.plot();
    connect(m_tab.runButton(), &QPushButton::clicked, this, &SpectrumScan::runOrStopScan);
    connect(m_tab.clearButton(), &QPushButton::clicked, this, &SpectrumScan::clearScan);
    connect(m_tab.peakButton(), &QPushButton::clicked, this, &SpectrumScan::tuneToStrongestPeak);
    connect(m_tab.nextPeakButton(), &QPushButton::clicked, this, &SpectrumScan::tuneToNextPeak);
    connect(&m_tab, &SpectrumTab::stepChosen, this, &SpectrumScan::stepChosen);
    connect(plot, &SpectrumPlot::pointerMoved, this, &SpectrumScan::pointerMoved);
    connect(plot, &SpectrumPlot::clicked, this, &SpectrumScan::pictureClicked);
    // A rebuilt picture (new pixel ratio) would otherwise stay blank until the next step.
    connect(plot, &SpectrumPlot::pictureRebuilt, this, &SpectrumScan::redrawTrace);
}

void SpectrumScan::load()
{
    const Receiver &record = m_host.record();
    m_state.setPointCount(record.bandWidth);
    m_state.setGeometry(m_tab.plot()->width(), m_tab.plot()->height());
    m_state.step = m_tab.checkedStep();
    m_state.cursorY = m_state.geometry.baseLine;
    const double start = m_host.bandStart();
    m_tab.bandStartLabel()->setText(formatMHz(start));
    m_tab.bandStopLabel()->setText(formatMHz(pointFrequency(start, m_state.pointCount)));
    DiamondMarker *diamond = m_tab.plot()->diamond();
    diamond->placeAt(m_state.cursorX - diamond->width() / 2, m_state.cursorY - diamond->height());
    updateRunCaption();
}

double SpectrumScan::cursorFrequency() const
{
    return pointFrequency(m_host.bandStart(), m_state.scanIndex);
}

bool SpectrumScan::scanStep()
{
    const double f = cursorFrequency();
    const auto point = m_ctx.detail.scanStep(m_state.scanIndex, f);
    if (!point) {
        const Receiver &record = m_host.record();
        m_ctx.platform.dialogs.message(record.name + QStringLiteral(" no response!, address=") +
                                           numberText(record.address) + QStringLiteral("\r\n"),
                                       MessageButtons::Ok);
        m_host.unloadForm();
        return true;
    }

    m_host.rfTuned({RfTuning::Kind::OffPresets, f});
    m_host.showMeters(point->levels);

    m_state.storeLevel();
    redrawTrace();
    showScanCursor();
    m_tab.plot()->present();

    m_state.timer.update(m_ctx.platform.clock.secondsSinceMidnight());
    m_tab.elapsedLabel()->setText(QLatin1Char(' ') + formatElapsed(m_state.timer.elapsedSeconds()));

    if (m_state.stopReached(m_tab.sweepMode()))
        m_ctx.bus.setWorkMode(WorkMode::DetailRead);
    updateRunCaption();
    m_state.advance();
    return true;
}

void SpectrumScan::redrawTrace()
{
    m_tab.plot()->drawTrace(m_state.levels, m_state.pointCount, m_state.xScale);
}

void SpectrumScan::showScanCursor()
{
    m_state.placeCursorY();
    DiamondMarker *diamond = m_tab.plot()->diamond();
    diamond->placeAt(m_state.cursorX - 3, m_state.cursorY - diamond->height());

    const double f = cursorFrequency();
    m_tab.frequencyReadout()->setText(formatMHz(f) + QStringLiteral("MHz"));
    m_tab.dbmReadout()->setText(formatDbm(levelDbm(m_state.level)));
    m_tab.microvoltReadout()->setText(formatMicrovolts(cursorMicrovolts(m_state.level, m_state.rfA)));
    m_ctx.detail.setCursorCode(m_host.codeFromMhz(f));
}

void SpectrumScan::tune(int timeoutMillis)
{
    if (!m_ctx.detail.tuneCursor(timeoutMillis))
        m_ctx.platform.dialogs.message(QStringLiteral("No Response from receiver!"), MessageButtons::Ok);
}

void SpectrumScan::updateRunCaption()
{
    m_tab.runButton()->setText(m_ctx.bus.workMode() == WorkMode::Scan ? QStringLiteral("Stop")
                                                                      : QStringLiteral("Run"));
}

void SpectrumScan::runOrStopScan()
{
    m_state.peakListValid = false;
    if (m_ctx.bus.workMode() == WorkMode::Scan) {
        m_ctx.bus.setWorkMode(WorkMode::DetailRead);
        m_state.timer.stop();
    } else {
        m_ctx.bus.setWorkMode(WorkMode::Scan);
        m_state.timer.start(m_ctx.platform.clock.secondsSinceMidnight());
    }
    updateRunCaption();
}

void SpectrumScan::clearScan()
{
    m_ctx.bus.setWorkMode(WorkMode::DetailRead);
    m_state.clear();
    m_tab.plot()->clearPicture();
    DiamondMarker *diamond = m_tab.plot()->diamond();
    diamond->placeAt(m_state.cursorX - diamond->width() / 2, m_state.cursorY - diamond->height());
    m_tab.elapsedLabel()->setText(QStringLiteral(" 00:00:00:0"));
    updateRunCaption();
}

void SpectrumScan::tuneToStrongestPeak()
{
    if (!m_state.peakListValid)
        m_ctx.bus.setWorkMode(WorkMode::DetailRead); // the scan stops before the list is sorted
    m_state.goToStrongest();
    showScanCursor();
    tune(300);
    m_host.rfTuned({RfTuning::Kind::Cursor, cursorFrequency()});
    updateRunCaption();
}

void SpectrumScan::tuneToNextPeak()
{
    if (!m_state.goToNextPeak())
        return;
    showScanCursor();
    tune(300);
    m_host.rfTuned({RfTuning::Kind::Cursor, cursorFrequency()});
    updateRunCaption();
}

void SpectrumScan::pointerMoved(double x, Qt::MouseButtons buttons)
{
    m_state.notePointer(x, m_tab.plot()->width());
    // Dragging reads points without retuning the receiver.
    if (buttons == Qt::LeftButton) {
        m_state.moveCursorTo(m_state.pointUnderPointer());
        showScanCursor();
    }
}

void SpectrumScan::pictureClicked()
{
    m_state.moveCursorTo(m_state.pointUnderPointer());
    showScanCursor();
    tune(300);
    m_host.rfTuned({RfTuning::Kind::Cursor, cursorFrequency()});
}

void SpectrumScan::stepChosen(int points)
{
    m_state.step = points;
}

void SpectrumScan::tabClicked(int previousTab)
{
    if (previousTab == 1)
        updateRunCaption();
}

void SpectrumScan::nextPressed()
{
    m_state.markerNext();
    showScanCursor();
    tune(250);
    m_host.rfTuned({RfTuning::Kind::Cursor, cursorFrequency()});
}

void SpectrumScan::previousPressed()
{
    m_state.markerPrevious();
    showScanCursor();
    tune(250);
    m_host.rfTuned({RfTuning::Kind::Cursor, cursorFrequency()});
}

void SpectrumScan::placeSquelchLine()
{
    m_tab.plot()->squelchLine()->setRow(m_state.yOf(m_state.squelchLevel));
}

} // namespace zun
