#pragma once

#include "alarms/alarmengine.h"
#include "alarms/receiverlisteners.h"
#include "platform/walltime.h"
#include "showlog/showlog.h"

#include <QObject>
#include <QPointer>
#include <QSet>

#include <functional>

class QAction;
class QMenu;
class QSoundEffect;
class QTimer;

namespace zun {

struct Context;
class AlarmListWindow;
class FrmMain;

// The main screen's watch over a show: the alarm engine with its flashing
// panel names, list window and sound, and the show log. Both listen to the
// receiver layer (see connectMonitoring); this object adds the "Monitor"
// menu and the reactions a user sees.
class Monitoring : public QObject
{
    Q_OBJECT
public:
    // addressOfPanel gives the bus address behind a panel index (0 for none).
    Monitoring(Context &ctx, FrmMain &mainWindow, std::function<int(int index)> addressOfPanel);
    ~Monitoring() override;

    AlarmEngine &alarms() { return m_alarms; }
    ShowLog &showLog() { return m_showLog; }
    AlarmListWindow *alarmList() const { return m_list; }
    QMenu *menu() const { return m_menu; }

    // The "Show Log..." item: asks for a file and starts, or stops a running log.
    void mnuShowLogClicked();
    void mnuAlarmDelayClicked();
    // A click on a panel's name acknowledges that receiver's alarms.
    void acknowledgePanel(int index);

private:
    void buildMenu();
    QAction *addOption(const QString &text, const QString &name, bool AlarmSettings::*flag);
    void saveSettings(const AlarmSettings &settings);
    void alarmRaised(int index);
    void flashTick();
    void logFailed(const QString &message);
    int panelIndexOf(int address) const;

    Context &m_ctx;
    FrmMain &m_main;
    std::function<int(int index)> m_addressOfPanel;
    WallTime m_wallTime;
    AlarmEngine m_alarms;
    ShowLog m_showLog;
    AlarmListWindow *m_list = nullptr;
    QMenu *m_menu = nullptr;
    QAction *m_showLogAction = nullptr;
    QTimer *m_flashTimer = nullptr;
    QSoundEffect *m_sound = nullptr;
    QSet<int> m_flashing; // addresses with alarms nobody acknowledged
    bool m_flashPhase = false;
};

// The main screen's monitoring on the receiver layer: connectMonitoring(&bus, *frmMain.monitoring()).
template <typename Source> void connectMonitoring(const Source *source, Monitoring &monitoring)
{
    connectMonitoring(source, &monitoring.alarms(), &monitoring.showLog());
}

} // namespace zun
