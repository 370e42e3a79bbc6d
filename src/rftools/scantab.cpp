#include "rftools/scantab.h"

#include "rftools/plotframe.h"
#include "rftools/plotparts.h"
#include "rftools/rfnaming.h"
#include "rftools/scanplot.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace zun {

namespace {
constexpr int kStepPoints[4] = {1, 2, 4, 5};
} // namespace

SpectrumTab::SpectrumTab(QWidget *parent) : QWidget(parent)
{
    m_plot = new SpectrumPlot;
    m_bandStart = named(new QLabel(QStringLiteral("800.000")), QStringLiteral("lbBandStart"));
    m_bandStop = named(new QLabel(QStringLiteral("900.000")), QStringLiteral("lbBandStop"));
    auto *mhz = new QLabel(QStringLiteral("MHz"));
    mhz->setObjectName(QStringLiteral("scaleMHz"));
    auto *frame = new PlotFrame(m_plot, m_bandStart, mhz, m_bandStop);

    m_run = named(new QPushButton(QStringLiteral("Run")), QStringLiteral("SP_Run"));
    m_clear = named(new QPushButton(QStringLiteral("Clear")), QStringLiteral("SP_Clear"));
    m_peak = named(new QPushButton(QStringLiteral("Peak")), QStringLiteral("SP_Peak"));
    m_nextPeak = named(new QPushButton(QStringLiteral("Next P")), QStringLiteral("SP_Peak_Next"));
    m_nextPeak->setToolTip(QStringLiteral("Search Next Peak"));

    m_freq = makeReadout(QStringLiteral("lbSP_Freq"), QString(), QStringLiteral("0000.000MHz"));
    m_dbm = makeReadout(QStringLiteral("lbSP_dBm"), QString(), QStringLiteral("-107.0dBm"));
    m_uv = makeReadout(QStringLiteral("lbSP_uV"), QString(), QStringLiteral("0000uV"));
    m_elapsed = makeReadout(QStringLiteral("SP_Elapsed"), QStringLiteral("00:00:00:0"),
                            QStringLiteral(" 00:00:00:0"));

    auto *readouts = new QHBoxLayout;
    readouts->addSpacing(40);
    readouts->addWidget(m_freq);
    readouts->addWidget(m_dbm);
    readouts->addWidget(m_uv);
    readouts->addStretch(1);
    readouts->addWidget(new QLabel(QStringLiteral("Elapsed:")));
    readouts->addWidget(m_elapsed);

    auto *left = new QVBoxLayout;
    left->addWidget(frame);
    left->addLayout(readouts);
    left->addStretch(1);

    auto *buttons = new QGridLayout;
    buttons->addWidget(m_run, 0, 0);
    buttons->addWidget(m_clear, 0, 1);
    buttons->addWidget(m_peak, 1, 0);
    buttons->addWidget(m_nextPeak, 1, 1);

    auto *right = new QVBoxLayout;
    right->addLayout(buttons);
    right->addWidget(buildStepFrame());
    right->addWidget(buildSweepFrame());
    right->addLayout(buildFileButtons());
    right->addStretch(1);

    auto *top = new QHBoxLayout(this);
    top->addLayout(left);
    top->addLayout(right);
}

QGroupBox *SpectrumTab::buildStepFrame()
{
    auto *box = named(new QGroupBox(QStringLiteral("Step (KHz)")), QStringLiteral("Frame1"));
    auto *grid = new QGridLayout(box);
    const char *captions[4] = {"25", "50", "100", "125"};
    for (int k = 0; k < 4; ++k) {
        auto *option =
            named(new QRadioButton(QString::fromLatin1(captions[k])), QStringLiteral("Option%1").arg(k + 1));
        grid->addWidget(option, k / 2, k % 2);
        const int points = kStepPoints[k];
        connect(option, &QRadioButton::clicked, this, [this, points] { emit stepChosen(points); });
        m_stepOptions[k] = option;
    }
    m_stepOptions[0]->setChecked(true);
    return box;
}

QGroupBox *SpectrumTab::buildSweepFrame()
{
    auto *box = named(new QGroupBox(QStringLiteral("Sweep")), QStringLiteral("Frame2"));
    auto *column = new QVBoxLayout(box);
    m_single = named(new QRadioButton(QStringLiteral("Single")), QStringLiteral("optSingle"));
    m_continuous = named(new QRadioButton(QStringLiteral("Continuous")), QStringLiteral("optCont"));
    m_halt = named(new QRadioButton(QStringLiteral("Halt")), QStringLiteral("optHalt"));
    m_halt->setToolTip(QStringLiteral("Halt if greater than squelch level"));
    column->addWidget(m_single);
    column->addWidget(m_continuous);
    column->addWidget(m_halt);
    m_continuous->setChecked(true);
    return box;
}

QLayout *SpectrumTab::buildFileButtons()
{
    m_maxHold = named(new QCheckBox(QStringLiteral("Max hold")), QStringLiteral("chkMaxHold"));
    m_minHold = named(new QCheckBox(QStringLiteral("Min hold")), QStringLiteral("chkMinHold"));
    m_export = named(new QPushButton(QStringLiteral("Export...")), QStringLiteral("SP_Export"));
    m_export->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    m_export->setToolTip(QStringLiteral("Export the scan as CSV (Ctrl+E)"));
    m_import = named(new QPushButton(QStringLiteral("Import...")), QStringLiteral("SP_Import"));
    m_import->setToolTip(QStringLiteral("Show a scan file as a reference trace"));
    m_png = named(new QPushButton(QStringLiteral("PNG...")), QStringLiteral("SP_Png"));
    m_png->setToolTip(QStringLiteral("Save the picture as a PNG image"));

    auto *grid = new QGridLayout;
    grid->addWidget(m_maxHold, 0, 0);
    grid->addWidget(m_minHold, 0, 1);
    grid->addWidget(m_export, 1, 0);
    grid->addWidget(m_import, 1, 1);
    grid->addWidget(m_png, 2, 0);
    return grid;
}

SweepMode SpectrumTab::sweepMode() const
{
    if (m_single->isChecked())
        return SweepMode::Single;
    return m_halt->isChecked() ? SweepMode::Halt : SweepMode::Continuous;
}

int SpectrumTab::checkedStep() const
{
    for (int k = 0; k < 4; ++k)
        if (m_stepOptions[k]->isChecked())
            return kStepPoints[k];
    return 1;
}

} // namespace zun
