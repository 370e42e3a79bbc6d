#include "rftools/rfrecorder.h"

#include "core/context.h"
#include "core/rftoolspanel.h"
#include "rftools/plotparts.h"
#include "rftools/recorderplot.h"
#include "rftools/recordertab.h"
#include "rftools/scanstate.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>

namespace zun {

namespace {
void showAntenna(QLabel *dbm, QLabel *uv, int level)
{
    dbm->setText(formatDbm(levelDbm(level)));
    uv->setText(formatMicrovolts(recorderMicrovolts(level)));
}
} // namespace

RfRecorder::RfRecorder(Context &ctx, RfToolsHost &host, const ScanState &scan, RecorderState &state,
                       RecorderTab &tab, QObject *parent)
    : QObject(parent), m_ctx(ctx), m_host(host), m_scan(scan), m_state(state), m_tab(tab)
{
    connect(m_tab.runButton(), &QPushButton::clicked, this, &RfRecorder::startRecorder);
    connect(m_tab.stopButton(), &QPushButton::clicked, this, &RfRecorder::stopRecorder);
    connect(m_tab.clearButton(), &QPushButton::clicked, this, &RfRecorder::clearRecorder);
    connect(m_tab.slowOption(), &QRadioButton::clicked, this, [this] { speedChosen(RecorderState::kSlow); });
    connect(m_tab.fastOption(), &QRadioButton::clicked, this, [this] { speedChosen(RecorderState::kFast); });
}

void RfRecorder::load()
{
    m_state.speed = m_tab.fastOption()->isChecked() ? RecorderState::kFast : RecorderState::kSlow;
    m_state.clear(m_scan.geometry);
    m_tab.plot()->clearPicture();
}

bool RfRecorder::recorderStep()
{
    // A receiver that stopped answering closes the window from inside the read.
    const QPointer<RfRecorder> alive(this);
    m_host.recorderRead();
    if (!alive)
        return true;
    const int rfA = m_scan.rfA;
    const int rfB = m_scan.rfB;
    showAntenna(m_tab.dbmReadoutA(), m_tab.microvoltReadoutA(), rfA);
    showAntenna(m_tab.dbmReadoutB(), m_tab.microvoltReadoutB(), rfB);

    RecorderPlot *plot = m_tab.plot();
    const RecorderSegment segment = m_state.step(rfA, rfB, plot->width(), m_scan.geometry);
    plot->drawStep(segment, m_tab.legendA()->borderColor(), m_tab.legendB()->borderColor());

    m_state.timer.update(m_ctx.platform.clock.secondsSinceMidnight());
    m_tab.elapsedLabel()->setText(QLatin1Char(' ') + formatElapsed(m_state.timer.elapsedSeconds()));
    return true;
}

void RfRecorder::startRecorder()
{
    m_ctx.bus.setWorkMode(WorkMode::Recorder);
    m_state.timer.start(m_ctx.platform.clock.secondsSinceMidnight());
}

void RfRecorder::stopRecorder()
{
    m_ctx.bus.setWorkMode(WorkMode::DetailRead);
    m_state.timer.stop();
}

void RfRecorder::clearRecorder()
{
    m_ctx.bus.setWorkMode(WorkMode::DetailRead);
    m_tab.plot()->clearPicture();
    m_state.clear(m_scan.geometry);
    m_tab.elapsedLabel()->setText(QStringLiteral(" 00:00:00:0"));
}

void RfRecorder::speedChosen(double columnsPerSample)
{
    m_state.speed = columnsPerSample;
}

void RfRecorder::placeSquelchLine()
{
    m_tab.plot()->squelchLine()->setRow(m_scan.yOf(m_scan.squelchLevel));
}

} // namespace zun
