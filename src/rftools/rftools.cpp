#include "rftools/rftools.h"

#include "core/context.h"
#include "core/rftoolspanel.h"
#include "rftools/dropcounterpanel.h"
#include "rftools/recorderplot.h"
#include "rftools/recordertab.h"
#include "rftools/rfrecorder.h"
#include "rftools/scanfiles.h"
#include "rftools/scanplot.h"
#include "rftools/scansweep.h"
#include "rftools/scantab.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace zun {

RfTools::RfTools(Context &ctx, RfToolsHost &host, QWidget *parentWidget)
    : QObject(parentWidget), m_ctx(ctx), m_host(host), m_spectrumTab(new SpectrumTab(parentWidget)),
      m_recorderTab(new RecorderTab(parentWidget)), m_dropPanel(new DropCounterPanel(parentWidget))
{
    m_spectrum = new SpectrumScan(ctx, host, m_scan, *m_spectrumTab, this);
    m_recorder = new RfRecorder(ctx, host, m_scan, m_recording, *m_recorderTab, this);
    // SP_Run's caption is set only by the scan's own buttons and steps and by
    // leaving its tab: the recorder or a silent receiver may change the work
    // mode meanwhile, and the caption shows that only once the scan looks again.
    m_files = new ScanFiles(ctx, host, m_scan, *m_spectrumTab, this);

    // Connected after the scan's own Clear, so the comparison traces come back on the cleared picture.
    connect(m_spectrumTab->clearButton(), &QPushButton::clicked, m_files, &ScanFiles::redraw);
    connect(m_spectrumTab->plot(), &SpectrumPlot::pictureRebuilt, m_files, &ScanFiles::redraw);
    connect(m_spectrumTab->exportButton(), &QPushButton::clicked, m_files, &ScanFiles::exportScan);
    connect(m_spectrumTab->importButton(), &QPushButton::clicked, m_files, &ScanFiles::importReference);
    connect(m_spectrumTab->pngButton(), &QPushButton::clicked, m_files,
            [this] { m_files->savePng(m_spectrumTab->plot()); });
    connect(m_recorderTab->pngButton(), &QPushButton::clicked, m_files,
            [this] { m_files->savePng(m_recorderTab->plot()); });
    connect(m_spectrumTab->maxHoldBox(), &QCheckBox::toggled, m_files,
            [this](bool on) { m_files->holdToggled(HoldTraces::Max, on); });
    connect(m_spectrumTab->minHoldBox(), &QCheckBox::toggled, m_files,
            [this](bool on) { m_files->holdToggled(HoldTraces::Min, on); });

    connect(m_dropPanel->runButton(), &QPushButton::clicked, this, [this] {
        m_ctx.detail.drops().run();
        showDrops();
    });
    connect(m_dropPanel->pauseButton(), &QPushButton::clicked, this, [this] {
        m_ctx.detail.drops().pause();
        showDrops();
    });
    connect(m_dropPanel->clearButton(), &QPushButton::clicked, this, [this] {
        m_ctx.detail.drops().clear();
        showDrops();
    });
}

RfTools::~RfTools() = default;

QWidget *RfTools::spectrumPage()
{
    return m_spectrumTab;
}

QWidget *RfTools::recorderPage()
{
    return m_recorderTab;
}

QWidget *RfTools::dropCounterPage()
{
    return m_dropPanel;
}

QAbstractButton *RfTools::stepOption(int option)
{
    return m_spectrumTab->stepOption(option);
}

void RfTools::load()
{
    m_spectrum->load();
    m_recorder->load();
    showSquelch();
    showDrops();
}

bool RfTools::scanStep()
{
    return m_spectrum->scanStep();
}

bool RfTools::recorderStep()
{
    return m_recorder->recorderStep();
}

void RfTools::meterReading(const LevelReading &reading)
{
    m_scan.rfA = reading.rfA;
    m_scan.rfB = reading.rfB;
    showDrops();
}

void RfTools::showDrops()
{
    m_dropPanel->countA()->setText(m_ctx.detail.drops().textA());
    m_dropPanel->countB()->setText(m_ctx.detail.drops().textB());
    m_dropPanel->showCounting(m_ctx.detail.drops().counting());
}

void RfTools::showSquelch()
{
    m_scan.squelchLevel = squelchLevel(m_ctx.bus.levelTable(), m_host.record().squelch);
    m_spectrum->placeSquelchLine();
    m_recorder->placeSquelchLine();
}

void RfTools::nextPressed()
{
    m_spectrum->nextPressed();
}

void RfTools::previousPressed()
{
    m_spectrum->previousPressed();
}

void RfTools::tabSwitched(int previousTab)
{
    m_spectrum->tabClicked(previousTab);
}

} // namespace zun
