#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
class QRadioButton;

namespace zun {

class LegendLine;
class RecorderPlot;

// The "RF-Monitor" tab: the strip chart of both antennas, its buttons, the
// speed options, the read-outs with their legend and the elapsed time.
class RecorderTab : public QWidget
{
    Q_OBJECT
public:
    explicit RecorderTab(QWidget *parent = nullptr);

    RecorderPlot *plot() const { return m_plot; }
    QPushButton *runButton() const { return m_run; }
    QPushButton *stopButton() const { return m_stop; }
    QPushButton *clearButton() const { return m_clear; }
    QPushButton *pngButton() const { return m_png; }
    QRadioButton *slowOption() const { return m_slow; }
    QRadioButton *fastOption() const { return m_fast; }
    QLabel *elapsedLabel() const { return m_elapsed; }
    QLabel *dbmReadoutA() const { return m_dbmA; }
    QLabel *microvoltReadoutA() const { return m_uvA; }
    QLabel *dbmReadoutB() const { return m_dbmB; }
    QLabel *microvoltReadoutB() const { return m_uvB; }
    LegendLine *legendA() const { return m_lineA; }
    LegendLine *legendB() const { return m_lineB; }

private:
    RecorderPlot *m_plot;
    QPushButton *m_run;
    QPushButton *m_stop;
    QPushButton *m_clear;
    QPushButton *m_png;
    QRadioButton *m_slow;
    QRadioButton *m_fast;
    QLabel *m_elapsed;
    QLabel *m_dbmA;
    QLabel *m_uvA;
    QLabel *m_dbmB;
    QLabel *m_uvB;
    LegendLine *m_lineA;
    LegendLine *m_lineB;
};

} // namespace zun
