#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace zun {

// The signal-drop counters for the settings tab: "Signal Drop A"/"B" with
// their counts and the DropRun, DropPause and DropClear buttons.
class DropCounterPanel : public QWidget
{
    Q_OBJECT
public:
    explicit DropCounterPanel(QWidget *parent = nullptr);

    QLabel *countA() const { return m_dropA; }
    QLabel *countB() const { return m_dropB; }
    QPushButton *runButton() const { return m_run; }
    QPushButton *pauseButton() const { return m_pause; }
    QPushButton *clearButton() const { return m_clear; }

    // The run button stays down while drops are being counted.
    void showCounting(bool on);

private:
    QLabel *m_dropA;
    QLabel *m_dropB;
    QPushButton *m_run;
    QPushButton *m_pause;
    QPushButton *m_clear;
};

} // namespace zun
