#pragma once

#include "alarms/alarmengine.h"
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

class AlarmListWindow;
class MainWindow;
class Session;

// The main screen's face of the session's watch over a show: the "Monitor"
// menu, flashing panel names, the alarm list, the alarm sound and the show
// log's menu item. The alarm engine and the log belong to the session.
class Monitoring : public QObject
{
    Q_OBJECT
public:
    // addressOfPanel gives the bus address behind a panel index (0 for none).
    Monitoring(Session &session, MainWindow &mainWindow, std::function<int(int index)> addressOfPanel);
    ~Monitoring() override;

    AlarmEngine &alarms() { return m_alarms; }
    ShowLog &showLog() { return m_showLog; }
    AlarmListWindow *alarmList() const { return m_list; }
    QMenu *menu() const { return m_menu; }

    // The "Show Log..." item: asks for a file and starts, or stops a running log.
    void showLogChosen();
    void alarmDelayChosen();
    // A click on a panel's name acknowledges that receiver's alarms.
    void acknowledgePanel(int index);

private:
    void buildMenu();
    QAction *addOption(const QString &text, const QString &name, bool AlarmSettings::*flag);
    void saveSettings(const AlarmSettings &settings);
    void alarmRaised(int id);
    void flashTick();
    void logFailed(const QString &message);
    int panelIndexOf(int address) const;

    Session &m_session;
    MainWindow &m_main;
    std::function<int(int index)> m_addressOfPanel;
    AlarmEngine &m_alarms;
    ShowLog &m_showLog;
    AlarmListWindow *m_list = nullptr;
    QMenu *m_menu = nullptr;
    QAction *m_showLogAction = nullptr;
    QTimer *m_flashTimer = nullptr;
    QSoundEffect *m_sound = nullptr;
    QSet<int> m_flashing; // addresses with alarms nobody acknowledged
    bool m_flashPhase = false;
};

} // namespace zun
