#pragma once

#include "detail/abstractdetailwindow.h"
#include "mainscreen/tvregion.h"
#include "receivers/levelreading.h"

#include <QMainWindow>
#include <QPointer>

#include <array>

class QAction;
class QMenu;
class QPushButton;
class QTimer;

namespace zun {

struct Context;
class Monitoring;
class Session;
class PanelGrid;
class PlanWindow;
class PortMap;
class RcvPanel;
class WorkLoop;
class SearchProgressWindow;

// The main screen: menus, the receiver panels and the exit path. The
// session finds and polls the receivers; this window draws what it reports
// and forwards the user's commands.
class MainWindow : public QMainWindow, public DetailHost
{
    Q_OBJECT
public:
    explicit MainWindow(Session &session, QWidget *parent = nullptr);
    ~MainWindow() override;

    // The load step up to the receiver search: options, menus, panels.
    void load();
    // The port names behind COM1..COM8; without them the port menu shows
    // bare numbers and cannot map a port.
    void setPortMap(PortMap *ports) { m_ports = ports; }

    // Hands the session's work loop the detail window's steps.
    void installSteps(WorkLoop &loop);

    // Port, baud-rate and hide menus after a detection.
    void updateLinkMenus();

    void enablePanel(int index);
    void disablePanel(int index);
    void updatePanel(int index, const LevelReading &reading);
    void showOffline(int index);

    // Detection as the menu runs it: this port first, then the others.
    void autoDetectChosen();
    void reconnectChosen();

    // Display modes from the popup menu, and the refresh the detail window asks for.
    void showDisplayMode(int mode);
    void refreshPanels() override;
    int displayMode() const { return m_displayMode; }

    // Detail window host.
    void setPanelMute(int index, bool muted) override;
    void setPanelNameCaption(int index, const QString &caption) override;
    QString panelBatteryText(int index) const override;

    void showPage(int page);
    void hideChosen();
    void fullViewChosen();
    void saveChosen();
    void loadChosen();
    // A settings file given at start (a double click on it): asked after detection.
    void offerSettingsFile(const QString &path);

    void muteClicked(int index);
    void pilotClicked(int index);
    void nameClicked(int index);
    void moreClicked(int index);
    void blinkOfflineNames();

    QAction *action(const QString &objectName) const;
    PanelGrid *panelGrid() const { return m_grid; }
    RcvPanel *panel(int index) const;
    AbstractDetailWindow *detailWindow() const { return m_more; }
    QMenu *popupMenu() const { return m_popup; }
    // The "Monitor" menu over the session's alarms and show log.
    Monitoring *monitoring() const { return m_monitoring; }
    // Null until "Frequency Plan..." was first chosen.
    PlanWindow *planWindow() const;

protected:
    void closeEvent(QCloseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void buildMenus();
    void buildPopupMenu();
    QWidget *buildCentral();
    void baudRateChosen();
    void contentsChosen();
    void aboutChosen();
    [[nodiscard]] bool confirmExit();
    void setPortChosen();
    void loadSettingsFile(const QString &path);
    void showLineNotice();
    // The progress view follows the detection.
    void connectDetection();
    void refreshNameCaption(int index);
    [[nodiscard]] bool validIndex(int index) const;
    void connectSession();
    void addBusHealthItem();
    void addFrequencyPlanItem();
    void enableFoundPanels();

    Session &m_session;
    Context &m_ctx;
    PanelGrid *m_grid = nullptr;
    SearchProgressWindow *m_checkNet = nullptr;
    QPointer<AbstractDetailWindow> m_more;
    Monitoring *m_monitoring = nullptr;
    QPointer<PlanWindow> m_plan;
    QMenu *m_popup = nullptr;
    QAction *m_mnuBaud1 = nullptr;
    std::array<QAction *, 9> m_mnuCom{}; // index 1..8
    PortMap *m_ports = nullptr;
    QAction *m_mnuHide = nullptr;
    QAction *m_mnuFullView = nullptr;
    QPushButton *m_cmdPage1 = nullptr;
    QPushButton *m_cmdPage2 = nullptr;
    QTimer *m_timer1 = nullptr;
    TvRegionItems m_tvItems{};
    int m_blinkPhase = 0;
    int m_displayMode = 4;
    bool m_mainKob = false;
};

} // namespace zun
