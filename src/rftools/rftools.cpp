#include "rftools/rftools.h"

#include "core/context.h"
#include "rftools/dropcounterpanel.h"
#include "rftools/recordertab.h"
#include "rftools/rfrecorder.h"
#include "rftools/rftoolshost.h"
#include "rftools/scansweep.h"
#include "rftools/scantab.h"

#include <QLabel>
#include <QPushButton>

namespace zun {

SquelchBarSpan squelchBarSpan(int squelchLevel)
{
    SquelchBarSpan span{squelchLevel - 7, squelchLevel + 7};
    if (span.from < 0)
        span = {0, 14};
    if (span.to > 99)
        span = {85, 99};
    return span;
}

RfTools::RfTools(Context &ctx, RfToolsHost &host, QWidget *parentWidget)
    : QObject(parentWidget), m_ctx(ctx), m_host(host), m_spectrumTab(new SpectrumTab(parentWidget)),
      m_recorderTab(new RecorderTab(parentWidget)), m_dropPanel(new DropCounterPanel(parentWidget))
{
    m_spectrum = new SpectrumScan(ctx, host, m_scan, *m_spectrumTab, this);
    m_recorder = new RfRecorder(ctx, host, m_scan, m_recording, *m_recorderTab, this);
    // The recorder's buttons change the work mode too; the scan's Run/Stop
    // caption must not go on saying "Stop" once the scan no longer runs.
    for (QPushButton *b :
         {m_recorderTab->runButton(), m_recorderTab->stopButton(), m_recorderTab->clearButton()})
        connect(b, &QPushButton::clicked, m_spectrum, &SpectrumScan::updateRunCaption);

    connect(m_dropPanel->runButton(), &QPushButton::clicked, this, [this] {
        m_drops.run();
        showDrops();
    });
    connect(m_dropPanel->pauseButton(), &QPushButton::clicked, this, [this] {
        m_drops.pause();
        showDrops();
    });
    connect(m_dropPanel->clearButton(), &QPushButton::clicked, this, [this] {
        m_drops.clear();
        showDrops();
    });
}

RfTools::~RfTools() = default;

void RfTools::load()
{
    m_spectrum->load();
    m_recorder->load();
    ShowSquelch();
    showDrops();
}

bool RfTools::ScanFreq()
{
    return m_spectrum->ScanFreq();
}

bool RfTools::RFRecorder()
{
    return m_recorder->RFRecorder();
}

void RfTools::meterReading(int statusByte, int rfA, int rfB, int audioByte)
{
    m_scan.statusByte = statusByte;
    m_scan.rfA = rfA;
    m_scan.rfB = rfB;
    m_scan.audioByte = audioByte;
    if (m_drops.count(rfA, rfB, m_scan.squelchLevel))
        showDrops();
}

void RfTools::showDrops()
{
    m_dropPanel->countA()->setText(m_drops.textA());
    m_dropPanel->countB()->setText(m_drops.textB());
    m_dropPanel->showCounting(m_drops.counting());
}

void RfTools::ShowSquelch()
{
    m_scan.squelchLevel = squelchLevel(m_ctx.state.levelTable, m_host.record().squelch);
    m_spectrum->placeSquelchLine();
    m_recorder->placeSquelchLine();
    const SquelchBarSpan span = squelchBarSpan(m_scan.squelchLevel);
    m_host.drawSquelchBar(span.from, span.to);
}

void RfTools::cmdNextClick()
{
    m_spectrum->cmdNextClick();
}

void RfTools::cmdPrevClick()
{
    m_spectrum->cmdPrevClick();
}

void RfTools::SSTab1Click(int previousTab)
{
    m_spectrum->tabClicked(previousTab);
}

} // namespace zun
