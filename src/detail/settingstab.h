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

    QLineEdit *addressEdit = nullptr;
    QLineEdit *nameEdit = nullptr;
    QLineEdit *groupEdit = nullptr;
    QLineEdit *channelEdit = nullptr;
    QLineEdit *frequencyEdit = nullptr;
    QLineEdit *bandStartEdit = nullptr;
    QLineEdit *bandStopEdit = nullptr;
    QLineEdit *tvChannelEdit = nullptr;
    QToolButton *groupUpButton = nullptr;
    QToolButton *groupDownButton = nullptr;
    QToolButton *channelUpButton = nullptr;
    QToolButton *channelDownButton = nullptr;
    QToolButton *frequencyUpButton = nullptr;
    QToolButton *frequencyDownButton = nullptr;

    DetailMeter *rfAMeter = nullptr;
    DetailMeter *rfBMeter = nullptr;
    DetailMeter *deviationMeter = nullptr;
    QLabel *rfAValueLabel = nullptr;
    QLabel *rfBValueLabel = nullptr;
    QLabel *batteryLabel = nullptr;

    QPushButton *squelchDownButton = nullptr;
    QPushButton *squelchUpButton = nullptr;
    SquelchBar *squelchBar = nullptr;
    QLabel *squelchValueLabel = nullptr;
    QPushButton *muteButton = nullptr;
    QLabel *muteStateLabel = nullptr;

    // Room below the meters for widgets other parts of the window add.
    QVBoxLayout *extraArea = nullptr;
};

} // namespace zun
