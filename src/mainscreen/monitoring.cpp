#include "mainscreen/monitoring.h"

#include "core/options.h"
#include "mainscreen/alarmlistwindow.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/rcvpanel.h"
#include "session/session.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSoundEffect>
#include <QTimer>

namespace zun {

namespace {
constexpr int kFlashMillis = 400;
constexpr int kPanelCount = 64;
} // namespace

Monitoring::Monitoring(Session &session, MainWindow &mainWindow, std::function<int(int index)> addressOfPanel)
    : QObject(&mainWindow), m_session(session), m_main(mainWindow),
      m_addressOfPanel(std::move(addressOfPanel)), m_alarms(session.alarms()), m_showLog(session.showLog())
{
    m_list = new AlarmListWindow(m_alarms, session.wallTime(), &mainWindow);
    const auto nameList = [this](const QString &line) {
        m_list->setWindowTitle(line.isEmpty() ? QStringLiteral("Alarms")
                                              : QStringLiteral("Alarms - %1").arg(line));
    };
    nameList(session.lineName());
    connect(&session, &Session::lineNameChanged, this, nameList);
    m_flashTimer = new QTimer(this);
    m_flashTimer->setInterval(kFlashMillis);
    connect(m_flashTimer, &QTimer::timeout, this, &Monitoring::flashTick);

    // Queued: a raise inside a polling pass costs the pass nothing but the signal.
    connect(&m_alarms, &AlarmEngine::alarmRaised, this, &Monitoring::alarmRaised, Qt::QueuedConnection);
    connect(&m_alarms, &AlarmEngine::alarmChanged, m_list, &AlarmListWindow::alarmChanged,
            Qt::QueuedConnection);
    connect(&m_showLog, &ShowLog::failed, this, &Monitoring::logFailed, Qt::QueuedConnection);

    for (int i = 0; i < kPanelCount; ++i)
        if (RcvPanel *panel = mainWindow.panel(i))
            connect(panel, &RcvPanel::nameClicked, this, &Monitoring::acknowledgePanel);
    buildMenu();
}

Monitoring::~Monitoring() = default;

void Monitoring::buildMenu()
{
    m_menu = new QMenu(QStringLiteral("&Monitor"), &m_main);
    m_menu->setObjectName(QStringLiteral("mnuMonitor"));
    QAction *list = m_menu->addAction(QStringLiteral("Alarm &List..."));
    list->setObjectName(QStringLiteral("mnuAlarmList"));
    connect(list, &QAction::triggered, this, [this] {
        m_list->show();
        m_list->raise();
    });
    m_menu->addSeparator();
    addOption(QStringLiteral("Alarm: &Battery Low"), QStringLiteral("mnuAlarmBattery"),
              &AlarmSettings::batteryOn);
    addOption(QStringLiteral("Alarm: &RF Below Squelch"), QStringLiteral("mnuAlarmRF"),
              &AlarmSettings::rfLowOn);
    addOption(QStringLiteral("Alarm: Receiver &Offline"), QStringLiteral("mnuAlarmOffline"),
              &AlarmSettings::offlineOn);
    addOption(QStringLiteral("Alarm: &Audio Clipping"), QStringLiteral("mnuAlarmClip"),
              &AlarmSettings::clipOn);
    QAction *delay = m_menu->addAction(QStringLiteral("RF-Low &Delay..."));
    delay->setObjectName(QStringLiteral("mnuAlarmDelay"));
    connect(delay, &QAction::triggered, this, &Monitoring::alarmDelayChosen);
    addOption(QStringLiteral("Alarm &Sound"), QStringLiteral("mnuAlarmSound"), &AlarmSettings::soundOn);
    m_menu->addSeparator();
    m_showLogAction = m_menu->addAction(QStringLiteral("Show Lo&g..."));
    m_showLogAction->setObjectName(QStringLiteral("mnuShowLog"));
    m_showLogAction->setCheckable(true);
    m_showLogAction->setChecked(m_showLog.isLogging());
    connect(m_showLogAction, &QAction::triggered, this, &Monitoring::showLogChosen);
    m_menu->addSeparator();
    // Off by default: on a desk the user brings a receiver back with a click.
    QAction *recover = m_menu->addAction(QStringLiteral("Re&cover Receivers Automatically"));
    recover->setObjectName(QStringLiteral("mnuAutoRecover"));
    recover->setCheckable(true);
    recover->setChecked(m_session.autoRecover());
    connect(recover, &QAction::toggled, this, [this](bool on) {
        m_session.setAutoRecover(on);
        m_session.context().platform.settings.save(kAppName, kMonitorSection, kAutoRecoverKey,
                                                   on ? QStringLiteral("1") : QStringLiteral("0"));
    });

    QMenuBar *bar = m_main.menuBar();
    QAction *before = nullptr;
    for (QAction *action : bar->actions())
        if (action->menu() && action->menu()->objectName() == QLatin1String("mnuHelp"))
            before = action;
    bar->insertMenu(before, m_menu);
}

QAction *Monitoring::addOption(const QString &text, const QString &name, bool AlarmSettings::*flag)
{
    QAction *action = m_menu->addAction(text);
    action->setObjectName(name);
    action->setCheckable(true);
    action->setChecked(m_alarms.settings().*flag);
    connect(action, &QAction::toggled, this, [this, flag](bool on) {
        AlarmSettings settings = m_alarms.settings();
        settings.*flag = on;
        saveSettings(settings);
    });
    return action;
}

void Monitoring::saveSettings(const AlarmSettings &settings)
{
    m_alarms.setSettings(settings);
    settings.save(m_session.context().platform.settings);
}

void Monitoring::alarmDelayChosen()
{
    const auto text = m_session.context().platform.dialogs.inputBox(
        QStringLiteral("Seconds both antennas may stay below the squelch level before the alarm:"),
        QStringLiteral("RF-Low Delay"), QString::number(m_alarms.settings().rfLowSeconds));
    if (!text)
        return;
    bool ok = false;
    const double seconds = text->trimmed().replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&ok);
    if (!ok || seconds < 0 || seconds > 3600) {
        m_session.context().platform.dialogs.message(
            QStringLiteral("Please enter a number of seconds from 0 to 3600."));
        return;
    }
    AlarmSettings settings = m_alarms.settings();
    settings.rfLowSeconds = seconds;
    saveSettings(settings);
}

void Monitoring::showLogChosen()
{
    if (m_showLog.isLogging()) {
        m_showLog.stop();
    } else {
        const QString suggested =
            QStringLiteral("show-%1-%2.csv")
                .arg(m_session.lineName(), WallTime::iso(m_session.wallTime().now()).left(10));
        const QString file = m_session.context().platform.dialogs.saveFileName(
            QStringLiteral("Show Log(*.csv)|*.csv"), suggested);
        QString error;
        if (!file.isEmpty() && !m_showLog.start(file, &error))
            m_session.context().platform.dialogs.message(
                QStringLiteral("The show log cannot be written to %1: %2").arg(file, error));
    }
    m_showLogAction->setChecked(m_showLog.isLogging());
}

void Monitoring::logFailed(const QString &message)
{
    m_showLogAction->setChecked(false);
    // Not modal: polling goes on while the message is up.
    auto *box =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Zunoria"), message, QMessageBox::Ok, &m_main);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    box->show();
}

void Monitoring::alarmRaised(int index)
{
    m_list->alarmRaised(index);
    const Alarm *alarm = m_alarms.alarm(index);
    if (!alarm)
        return;
    m_flashing.insert(alarm->address);
    if (!m_flashTimer->isActive())
        m_flashTimer->start();
    if (!m_alarms.settings().soundOn)
        return;
    if (!m_sound) {
        m_sound = new QSoundEffect(this);
        m_sound->setSource(QUrl(QStringLiteral("qrc:/alarm.wav")));
    }
    m_sound->play();
}

int Monitoring::panelIndexOf(int address) const
{
    for (int i = 0; i < kPanelCount; ++i)
        if (m_addressOfPanel(i) == address)
            return i;
    return -1;
}

void Monitoring::flashTick()
{
    m_flashPhase = !m_flashPhase;
    for (int address : std::as_const(m_flashing))
        if (RcvPanel *panel = m_main.panel(panelIndexOf(address)))
            panel->setAlarmLit(m_flashPhase);
    if (m_flashing.isEmpty())
        m_flashTimer->stop();
}

void Monitoring::acknowledgePanel(int index)
{
    const int address = m_addressOfPanel(index);
    if (address <= 0)
        return;
    m_alarms.acknowledge(address);
    m_flashing.remove(address);
    if (RcvPanel *panel = m_main.panel(index))
        panel->setAlarmLit(false);
}

} // namespace zun
