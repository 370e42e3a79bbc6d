#include "rftools/recordertab.h"

#include "rftools/plotframe.h"
#include "rftools/plotparts.h"
#include "rftools/recorderplot.h"
#include "rftools/rfnaming.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace zun {

RecorderTab::RecorderTab(QWidget *parent) : QWidget(parent)
{
    m_plot = new RecorderPlot;
    auto *zero = new QLabel(QStringLiteral("0"));
    zero->setObjectName(QStringLiteral("scaleTime0"));
    auto *seconds = new QLabel(QStringLiteral("Sec."));
    seconds->setObjectName(QStringLiteral("scaleSec"));
    auto *frame = new PlotFrame(m_plot, zero, nullptr, seconds);

    m_run = named(new QPushButton(QStringLiteral("Run")), QStringLiteral("RF_Run"));
    m_stop = named(new QPushButton(QStringLiteral("Stop")), QStringLiteral("RF_Stop"));
    m_clear = named(new QPushButton(QStringLiteral("Clear")), QStringLiteral("RF_Clear"));
    m_png = named(new QPushButton(QStringLiteral("PNG...")), QStringLiteral("RF_Png"));
    m_png->setToolTip(QStringLiteral("Save the picture as a PNG image"));

    auto *speed = named(new QGroupBox(QStringLiteral("Speed")), QStringLiteral("Frame5"));
    m_slow = named(new QRadioButton(QStringLiteral("Slow")), QStringLiteral("OptLow"));
    m_fast = named(new QRadioButton(QStringLiteral("Fast")), QStringLiteral("OptHigh"));
    auto *speedColumn = new QVBoxLayout(speed);
    speedColumn->addWidget(m_slow);
    speedColumn->addWidget(m_fast);
    m_slow->setChecked(true);

    m_lineA = new LegendLine(QStringLiteral("LineA"), plotColors::kAntennaA);
    m_lineB = new LegendLine(QStringLiteral("LineB"), plotColors::kAntennaB);
    m_dbmA = makeReadout(QStringLiteral("lbRFA_dBm"), QString(), QStringLiteral("-107.0dBm"));
    m_uvA = makeReadout(QStringLiteral("lbRFA_uV"), QString(), QStringLiteral("0000uV"));
    m_dbmB = makeReadout(QStringLiteral("lbRFB_dBm"), QString(), QStringLiteral("-107.0dBm"));
    m_uvB = makeReadout(QStringLiteral("lbRFB_uV"), QString(), QStringLiteral("0000uV"));
    m_elapsed = makeReadout(QStringLiteral("RF_Elapsed"), QStringLiteral("00:00:00:0"),
                            QStringLiteral(" 00:00:00:0"));

    auto *legend = new QGridLayout;
    legend->setColumnMinimumWidth(0, 40);
    auto addAntenna = [&](int row, const QString &name, const QString &caption, LegendLine *line, QLabel *dbm,
                          QLabel *uv) {
        legend->addWidget(named(new QLabel(caption), name), row, 1);
        legend->addWidget(line, row, 2);
        legend->addWidget(dbm, row, 3);
        legend->addWidget(uv, row, 4);
    };
    addAntenna(0, QStringLiteral("lbRFA"), QStringLiteral("A:"), m_lineA, m_dbmA, m_uvA);
    addAntenna(1, QStringLiteral("lbRFB"), QStringLiteral("B:"), m_lineB, m_dbmB, m_uvB);
    legend->setColumnStretch(5, 1);
    legend->addWidget(new QLabel(QStringLiteral("Elapsed:")), 0, 6, Qt::AlignRight);
    legend->addWidget(m_elapsed, 0, 7);

    auto *left = new QVBoxLayout;
    left->addWidget(frame);
    left->addLayout(legend);
    left->addStretch(1);

    auto *right = new QVBoxLayout;
    right->addWidget(m_run);
    right->addWidget(m_stop);
    right->addWidget(m_clear);
    right->addWidget(speed);
    right->addWidget(m_png);
    right->addStretch(1);

    auto *top = new QHBoxLayout(this);
    top->addLayout(left);
    top->addLayout(right);
}

} // namespace zun
