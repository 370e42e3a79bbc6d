#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace zun {

class DetailMeter;
class SquelchBar;

// The widgets of the detail window's settings tab, laid out and named; the
// window gives them their behaviour.
class SettingsTab : public QWidget
{
    Q_OBJECT
public:
    explicit SettingsTab(QWidget *parent = nullptr);

    QLineEdit *txtAddr = nullptr;
    QLineEdit *txtRName = nullptr;
    QLineEdit *txtGroup = nullptr;
    QLineEdit *txtChannel = nullptr;
    QLineEdit *txtFreq = nullptr;
    QLineEdit *txtBandStart = nullptr;
    QLineEdit *txtBandStop = nullptr;
    QLineEdit *TV = nullptr;
    QToolButton *cmdGroupUp = nullptr;
    QToolButton *cmdGroupDown = nullptr;
    QToolButton *cmdChanUp = nullptr;
    QToolButton *cmdChanDown = nullptr;
    QToolButton *cmdFreqUp = nullptr;
    QToolButton *cmdFreqDown = nullptr;

    DetailMeter *PB_RFA = nullptr;
    DetailMeter *PB_RFB = nullptr;
    DetailMeter *PB_Dev = nullptr;
    QLabel *lbRFAValue = nullptr;
    QLabel *lbRFBValue = nullptr;
    QLabel *BatV = nullptr;

    QPushButton *cmdSQdec = nullptr;
    QPushButton *cmdSQinc = nullptr;
    SquelchBar *PB_SQ = nullptr;
    QLabel *lbSQValue = nullptr;
    QPushButton *Mute = nullptr;
    QLabel *lbMuteState = nullptr;

    // Room below the meters for widgets other parts of the window add.
    QVBoxLayout *extraArea = nullptr;
};

} // namespace zun
