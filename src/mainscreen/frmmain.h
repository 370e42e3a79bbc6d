#pragma once

#include "mainscreen/polling.h"

#include <QMainWindow>

#include <array>

class QAction;
class QMenu;

namespace zun {

struct Context;

// The main screen: menus, the receiver panels and the exit path.
class WorkLoop;

class FrmMain : public QMainWindow, public PanelSink
{
    Q_OBJECT
public:
    explicit FrmMain(Context &ctx, QWidget *parent = nullptr);

    // The load step: options, panels, detection, polling on.
    void load();

    // Port, baud-rate and hide menus after a detection.
    void UpdateLinkMenus();

    QAction *action(const QString &objectName) const;

    // Hands the work loop its steps: main-screen polling and the detail window's work.
    void installSteps(WorkLoop &loop);

    void UpdateRcvPanel(int index, const QString &reply) override;
    void showOffline(int index) override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildMenus();
    void mnuBaud1Clicked();
    void mnuAutoClicked();
    void mnuReconnectClicked();
    void mnuContentClicked();
    void mnuAboutClicked();
    bool confirmExit();

    Context &m_ctx;
    QMenu *m_optionMenu = nullptr;
    QAction *m_mnuBaud1 = nullptr;
    std::array<QAction *, 9> m_mnuCom{}; // index 1..8
    QAction *m_mnuHide = nullptr;
    bool m_mainKob = false;
};

} // namespace zun
