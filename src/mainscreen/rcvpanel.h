#pragma once

#include <QPoint>
#include <QString>
#include <QWidget>

class QGridLayout;
class QLabel;
class QToolButton;
class QVBoxLayout;

namespace zun {

class ClickLabel;
class ImageSign;
class LevelMeter;
struct PanelReadout;

// One receiver's strip on the main screen: name, RF A / RF B / audio meters,
// RF and pilot signs, battery, mute and detail buttons. It only displays and
// reports clicks; talking to the receiver is the owner's business.
class RcvPanel : public QWidget
{
    Q_OBJECT
public:
    explicit RcvPanel(int index, QWidget *parent = nullptr);

    int index() const { return m_index; }

    // Level reply shown: meters, RF sign, and the battery only when the
    // readout carries a new battery state.
    void showReadout(const PanelReadout &readout);

    // A receiver on the line: white name on teal, white meter faces, battery
    // "OFF", buttons enabled, pilot green.
    void enableLive(bool muted);
    // No receiver behind this panel: everything blank and disabled.
    void disableBlank();
    // The receiver stopped answering: red name on white, buttons disabled.
    void setOffline();

    void setNameText(const QString &text);
    QString nameText() const;
    void setMutePicture(bool muted);
    void setPilotPicture(const QString &imageName);
    void setKobCaption(const QString &caption);

    QColor nameTextColor() const;
    // One step of the offline blink: phase 0 turns a red name to the
    // button-face colour, phase 1 turns it back; other colours are left alone.
    void blinkPhase(int phase);
    // One step of an alarm flash: the name label lit in the alarm colour or
    // not. Drawn over the label, so its own colours stay as they are.
    void setAlarmLit(bool lit);
    [[nodiscard]] bool alarmLit() const;

    // Size of type and signs relative to the design size (1.0 = 80 px wide
    // strips); compact drops the meter captions for the all-panels view.
    void setScale(qreal scale);
    void setCompact(bool compact);
    [[nodiscard]] bool isCompact() const { return m_compact; }

    ClickLabel *nameLabel() const { return m_name; }
    LevelMeter *meterRfA() const { return m_rfA; }
    LevelMeter *meterRfB() const { return m_rfB; }
    LevelMeter *meterAudio() const { return m_audio; }
    ImageSign *rfSign() const { return m_rfSign; }
    ImageSign *batterySign() const { return m_batSign; }
    ImageSign *pilotSign() const { return m_pilot; }
    QLabel *batteryLabel() const { return m_batV; }
    QLabel *kobLabel() const { return m_kob; }
    QToolButton *muteButton() const { return m_mute; }
    QToolButton *moreButton() const { return m_more; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void nameClicked(int index);
    void contextMenuRequested(int index, QPoint globalPos);
    void pilotClicked(int index);
    void muteClicked(int index);
    void moreClicked(int index);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void name(QWidget *widget, const QString &objectName);
    void setNameColors(const QColor &text, const QColor &background);
    void clearNameColors();
    void setBatteryLive(bool live);
    void applyFonts();
    void fitMeters();

    int m_index;
    qreal m_scale = 1.0;
    bool m_compact = false;

    ClickLabel *m_name = nullptr;
    QWidget *m_alarmGlow = nullptr;
    QLabel *m_kob = nullptr;
    LevelMeter *m_rfA = nullptr;
    LevelMeter *m_rfB = nullptr;
    LevelMeter *m_audio = nullptr;
    QList<QLabel *> m_meterCaptions;
    QLabel *m_rfCaption = nullptr;
    ImageSign *m_rfSign = nullptr;
    ImageSign *m_pilot = nullptr;
    ImageSign *m_batSign = nullptr;
    QLabel *m_batV = nullptr;
    QToolButton *m_mute = nullptr;
    QToolButton *m_more = nullptr;
    QVBoxLayout *m_layout = nullptr;
    QGridLayout *m_meterGrid = nullptr;
};

} // namespace zun
