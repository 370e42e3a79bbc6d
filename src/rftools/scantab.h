#pragma once

#include "rftools/scanstate.h"

#include <QWidget>

#include <algorithm>

class QButtonGroup;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLayout;
class QPushButton;
class QRadioButton;

namespace zun {

class SpectrumPlot;

// The "Spectrum" tab: the scan picture with its scale, the run and peak
// buttons, the step and sweep options and the cursor read-outs.
class SpectrumTab : public QWidget
{
    Q_OBJECT
public:
    explicit SpectrumTab(QWidget *parent = nullptr);

    SpectrumPlot *plot() const { return m_plot; }
    QPushButton *runButton() const { return m_run; }
    QPushButton *clearButton() const { return m_clear; }
    QPushButton *peakButton() const { return m_peak; }
    QPushButton *nextPeakButton() const { return m_nextPeak; }
    // Option1..Option4 of the step frame, k = 1..4.
    QRadioButton *stepOption(int k) const { return m_stepOptions[std::clamp(k, 1, 4) - 1]; }
    QRadioButton *singleOption() const { return m_single; }
    QRadioButton *continuousOption() const { return m_continuous; }
    QRadioButton *haltOption() const { return m_halt; }
    QLabel *frequencyReadout() const { return m_freq; }
    QLabel *dbmReadout() const { return m_dbm; }
    QLabel *microvoltReadout() const { return m_uv; }
    QLabel *elapsedLabel() const { return m_elapsed; }
    QLabel *bandStartLabel() const { return m_bandStart; }
    QLabel *bandStopLabel() const { return m_bandStop; }
    QPushButton *exportButton() const { return m_export; }
    QPushButton *importButton() const { return m_import; }
    QPushButton *pngButton() const { return m_png; }
    QCheckBox *maxHoldBox() const { return m_maxHold; }
    QCheckBox *minHoldBox() const { return m_minHold; }

    [[nodiscard]] SweepMode sweepMode() const;
    // Points per advance of the checked step option (1, 2, 4, 5).
    [[nodiscard]] int checkedStep() const;

signals:
    // A step option was clicked: 1, 2, 4 or 5 points.
    void stepChosen(int points);

private:
    QGroupBox *buildStepFrame();
    QGroupBox *buildSweepFrame();
    QLayout *buildFileButtons();

    SpectrumPlot *m_plot;
    QPushButton *m_run;
    QPushButton *m_clear;
    QPushButton *m_peak;
    QPushButton *m_nextPeak;
    QRadioButton *m_stepOptions[4];
    QRadioButton *m_single;
    QRadioButton *m_continuous;
    QRadioButton *m_halt;
    QLabel *m_freq;
    QLabel *m_dbm;
    QLabel *m_uv;
    QLabel *m_elapsed;
    QLabel *m_bandStart;
    QLabel *m_bandStop;
    QPushButton *m_export = nullptr;
    QPushButton *m_import = nullptr;
    QPushButton *m_png = nullptr;
    QCheckBox *m_maxHold = nullptr;
    QCheckBox *m_minHold = nullptr;
};

} // namespace zun
