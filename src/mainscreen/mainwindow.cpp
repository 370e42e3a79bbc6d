#include "mainscreen/mainwindow.h"

#include "core/context.h"
#include "core/options.h"
#include "core/workloop.h"
#include "mainscreen/aboutwindow.h"
#include "mainscreen/bushealthwindow.h"
#include "mainscreen/imageresources.h"
#include "mainscreen/monitoring.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/portmapping.h"
#include "mainscreen/rcvpanel.h"
#include "mainscreen/searchprogresswindow.h"
#include "planning/planwindow.h"
#include "platform/portmap.h"
#include "session/session.h"
#include "windowing/framepacer.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

namespace zun {

namespace {
QAction *namedAction(QMenu *menu, const QString &text, const QString &name)
{
    QAction *action = menu->addAction(text);
    action->setObjectName(name);
    return action;
}

} // namespace

MainWindow::MainWindow(Session &session, QWidget *parent)
    : QMainWindow(parent), m_session(session), m_ctx(session.context())
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Zunoria"));
    new FramePacer(this); // the line passes faster than the screen refreshes
    buildMenus();
    setCentralWidget(buildCentral());
    buildPopupMenu();
    m_checkNet = new SearchProgressWindow(this);
    m_checkNet->setWindowFlag(Qt::Dialog);
    m_checkNet->setWindowModality(Qt::ApplicationModal);
    m_timer1 = new QTimer(this);
    m_timer1->setObjectName(QStringLiteral("Timer1"));
    connect(m_timer1, &QTimer::timeout, this, &MainWindow::blinkOfflineNames);
    connect(&m_ctx.bus, &ReceiverBus::panelLevels, this, &MainWindow::updatePanel);
    connect(&m_ctx.bus, &ReceiverBus::panelOffline, this, &MainWindow::showOffline);
    connectDetection();
    connectSession();
    m_monitoring = new Monitoring(session, *this, [this](int index) {
        return validIndex(index) ? m_ctx.bus.table().at(index).address : 0;
    });
    addBusHealthItem();
    addFrequencyPlanItem();
    resize(1280, 760);
}

void MainWindow::connectSession()
{
    connect(&m_session, &Session::receiversCleared, this, [this] {
        for (int i = 0; i < m_ctx.bus.table().size(); ++i)
            disablePanel(i);
    });
    connect(&m_session, &Session::receiversDetected, this, [this](bool found) {
        if (found)
            enableFoundPanels();
        updateLinkMenus();
    });
    connect(&m_session, &Session::receiversReconnected, this, [this](bool found) {
        showLineNotice();
        if (found)
            enableFoundPanels();
    });
    connect(&m_session, &Session::receiverBackOnPoll, this, &MainWindow::enablePanel);
    // A request from the broker shows as the same click in the window would.
    connect(&m_session, &Session::receiverEdited, this, [this](int index) {
        if (!validIndex(index))
            return;
        const Receiver &r = m_ctx.bus.table().at(index);
        m_grid->panel(index)->setMutePicture(r.mute);
        setPanelNameCaption(index, QStringLiteral("%1 ").arg(r.address, 2, 10, QLatin1Char('0')) + r.name);
    });
    const auto showStatus = [this](const QString &text) {
        if (!text.isEmpty())
            statusBar()->showMessage(text);
    };
    connect(&m_session, &Session::feedStatusChanged, this, showStatus);
    connect(&m_session, &Session::notice, this, showStatus);
}

void MainWindow::enableFoundPanels()
{
    for (int i = 0; i < m_ctx.bus.table().foundCount(); ++i)
        enablePanel(i);
}

void MainWindow::addBusHealthItem()
{
    QMenu *receiverMenu = findChild<QMenu *>(QStringLiteral("mnuReceiver"));
    QAction *health = receiverMenu->addAction(QStringLiteral("&Bus Health..."));
    health->setObjectName(QStringLiteral("mnuBusHealth"));
    connect(health, &QAction::triggered, this, [this, window = QPointer<QWidget>()]() mutable {
        if (!window)
            window = createBusHealthWindow(&m_session.busHealth(), this);
        window->show();
        window->raise();
    });
}

void MainWindow::addFrequencyPlanItem()
{
    QMenu *receiverMenu = findChild<QMenu *>(QStringLiteral("mnuReceiver"));
    QAction *plan = receiverMenu->addAction(QStringLiteral("Frequency Plan..."));
    plan->setObjectName(QStringLiteral("mnuFreqPlan"));
    connect(plan, &QAction::triggered, this, [this] {
        if (!m_plan)
            m_plan = new PlanWindow(m_session, this);
        m_plan->show();
        m_plan->raise();
    });
}

PlanWindow *MainWindow::planWindow() const
{
    return m_plan;
}

MainWindow::~MainWindow()
{
    delete m_more;
}

QWidget *MainWindow::buildCentral()
{
    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(4);

    m_grid = new PanelGrid(central);
    m_grid->setObjectName(QStringLiteral("Frame1"));
    layout->addWidget(m_grid, 1);

    auto *pages = new QHBoxLayout;
    m_cmdPage1 = new QPushButton(QStringLiteral("Screen 1"), central);
    m_cmdPage1->setObjectName(QStringLiteral("cmdPage1"));
    m_cmdPage2 = new QPushButton(QStringLiteral("Screen 2"), central);
    m_cmdPage2->setObjectName(QStringLiteral("cmdPage2"));
    for (QPushButton *b : {m_cmdPage1, m_cmdPage2}) {
        b->setAccessibleDescription(b->objectName());
        b->setFocusPolicy(Qt::NoFocus);
        pages->addWidget(b);
    }
    pages->addStretch(1);
    layout->addLayout(pages);
    connect(m_cmdPage1, &QPushButton::clicked, this, [this] { showPage(0); });
    connect(m_cmdPage2, &QPushButton::clicked, this, [this] { showPage(1); });

    connect(m_grid, &PanelGrid::muteClicked, this, &MainWindow::muteClicked);
    connect(m_grid, &PanelGrid::pilotClicked, this, &MainWindow::pilotClicked);
    connect(m_grid, &PanelGrid::nameClicked, this, &MainWindow::nameClicked);
    connect(m_grid, &PanelGrid::moreClicked, this, &MainWindow::moreClicked);
    connect(m_grid, &PanelGrid::contextMenuRequested, this,
            [this](int, QPoint globalPos) { m_popup->popup(globalPos); });
    connect(m_grid, &PanelGrid::backgroundContextMenuRequested, this,
            [this](QPoint globalPos) { m_popup->popup(globalPos); });
    showPage(0);
    return central;
}

void MainWindow::buildMenus()
{
    QMenuBar *bar = menuBar();

    QMenu *option = bar->addMenu(QStringLiteral("&Option"));
    option->setObjectName(QStringLiteral("mnuOption"));

    QMenu *port = option->addMenu(QStringLiteral("Serial Port"));
    port->setObjectName(QStringLiteral("mnuPort"));
    for (int n = 1; n <= 8; ++n) {
        // Choosing a port here does nothing on purpose: only detection picks the port.
        QAction *com = namedAction(port, QStringLiteral("COM%1").arg(n), QStringLiteral("mnuCom"));
        com->setProperty("index", n);
        com->setCheckable(true);
        connect(com, &QAction::triggered, this, [this, n](bool) {
            const LineOptions &options = m_ctx.bus.options();
            m_mnuCom[n]->setChecked(options.portAvailable[std::size_t(n)] && options.port == n);
        });
        m_mnuCom[n] = com;
    }
    port->addSeparator();
    connect(namedAction(port, QStringLiteral("Set port..."), QStringLiteral("mnuSetPort")),
            &QAction::triggered, this, &MainWindow::setPortChosen);

    QMenu *baud = option->addMenu(QStringLiteral("Baud Rate"));
    baud->setObjectName(QStringLiteral("mnubaud"));
    m_mnuBaud1 = namedAction(baud, QStringLiteral("Default"), QStringLiteral("mnuBaud1"));
    m_mnuBaud1->setEnabled(false);
    connect(m_mnuBaud1, &QAction::triggered, this, &MainWindow::baudRateChosen);

    // The retry count comes only from the stored setting; these items are inert on purpose.
    QMenu *retry = option->addMenu(QStringLiteral("Retry"));
    retry->setObjectName(QStringLiteral("mnuRetry"));
    for (int n = 0; n <= 3; ++n)
        namedAction(retry, QString::number(n), QStringLiteral("mnuRetry%1").arg(n));

    m_tvItems = addTvRegionMenu(option, m_ctx);

    option->addSeparator();
    m_mnuHide = namedAction(option, QStringLiteral("&Hide Unused Panel"), QStringLiteral("mnuHide"));
    m_mnuHide->setCheckable(true);
    connect(m_mnuHide, &QAction::triggered, this, &MainWindow::hideChosen);
    m_mnuFullView = namedAction(option, QStringLiteral("&Full View"), QStringLiteral("mnuFullView"));
    m_mnuFullView->setCheckable(true);
    connect(m_mnuFullView, &QAction::triggered, this, &MainWindow::fullViewChosen);

    QMenu *receiver = bar->addMenu(QStringLiteral("&Receiver"));
    receiver->setObjectName(QStringLiteral("mnuReceiver"));
    connect(namedAction(receiver, QStringLiteral("Auto &Detect Receivers"), QStringLiteral("mnuAuto")),
            &QAction::triggered, this, &MainWindow::autoDetectChosen);
    connect(namedAction(receiver, QStringLiteral("&Reconnect"), QStringLiteral("mnuReconnect")),
            &QAction::triggered, this, &MainWindow::reconnectChosen);
    receiver->addSeparator();
    connect(namedAction(receiver, QStringLiteral("&Save Settings..."), QStringLiteral("mnuSave")),
            &QAction::triggered, this, &MainWindow::saveChosen);
    connect(namedAction(receiver, QStringLiteral("&Load Settings..."), QStringLiteral("mnuLoad")),
            &QAction::triggered, this, &MainWindow::loadChosen);

    QMenu *help = bar->addMenu(QStringLiteral("&Help"));
    help->setObjectName(QStringLiteral("mnuHelp"));
    connect(namedAction(help, QStringLiteral("C&ontent"), QStringLiteral("mnuContent")), &QAction::triggered,
            this, &MainWindow::contentsChosen);
    connect(namedAction(help, QStringLiteral("&About"), QStringLiteral("mnuAbout")), &QAction::triggered,
            this, &MainWindow::aboutChosen);

    QAction *exit = bar->addAction(QStringLiteral("E&xit"));
    exit->setObjectName(QStringLiteral("mnuExit"));
    connect(exit, &QAction::triggered, this, &QWidget::close);
}

QAction *MainWindow::action(const QString &objectName) const
{
    return findChild<QAction *>(objectName);
}

RcvPanel *MainWindow::panel(int index) const
{
    return m_grid->panel(index);
}

void MainWindow::load()
{
    setWindowIcon(namedIcon(QStringLiteral("icon")));
    SettingsStore &store = m_ctx.platform.settings;
    if (readFunctionFlag(store, QStringLiteral("ChangeBaudrate")))
        m_mnuBaud1->setEnabled(true);
    m_mainKob = readFunctionFlag(store, QStringLiteral("MainKOB"));
    for (int i = 0; i < m_grid->panelCount(); ++i)
        m_grid->panel(i)->setKobCaption(m_mainKob ? QStringLiteral("KOB") : QString());
    loadTvRegion(m_tvItems, m_ctx);

    m_ctx.bus.table().resize(m_grid->panelCount());
    for (int i = 0; i < m_ctx.bus.table().size(); ++i)
        disablePanel(i);
    m_timer1->start(300);
    // The session runs the receiver search next, as "Auto Detect Receivers" does.
}

void MainWindow::installSteps(WorkLoop &loop)
{
    loop.setStep(WorkMode::DetailRead, [this] { return m_more ? m_more->readDetailLevels() : false; });
    loop.setStep(WorkMode::Scan, [this] { return m_more ? m_more->scanStep() : false; });
    loop.setStep(WorkMode::Recorder, [this] { return m_more ? m_more->recorderStep() : false; });
}

void MainWindow::updateLinkMenus()
{
    const LineOptions &options = m_ctx.bus.options();
    m_mnuBaud1->setText(QString::number(options.baudRate));
    for (int n = 1; n <= 8; ++n) {
        m_mnuCom[std::size_t(n)]->setChecked(false);
        m_mnuCom[std::size_t(n)]->setEnabled(options.portAvailable[std::size_t(n)]);
        const QString target = m_ports ? m_ports->displayName(n) : QString();
        m_mnuCom[std::size_t(n)]->setText(QStringLiteral("COM%1").arg(n) +
                                          (target.isEmpty() ? QString() : '\t' + target));
    }
    const int port = options.port;
    if (port >= 1 && port <= 8 && options.portAvailable[std::size_t(port)])
        m_mnuCom[std::size_t(port)]->setChecked(true);
    m_mnuHide->setChecked(false);
    m_grid->setHideUnused(false, m_ctx.bus.table().foundCount());
    showLineNotice();
}

void MainWindow::showLineNotice()
{
    const QString notice = m_ctx.platform.line.takeNotice();
    if (!notice.isEmpty())
        statusBar()->showMessage(notice);
}

void MainWindow::setPortChosen()
{
    if (m_ports && setPortMapping(m_ctx, *m_ports) != 0)
        updateLinkMenus();
}

void MainWindow::baudRateChosen()
{
    const auto answer = m_ctx.platform.dialogs.inputBox(QStringLiteral("Enter new baudrate:"));
    if (!answer)
        return;
    double value = 0;
    if (!isNumericText(*answer, &value) || value != std::nearbyint(value))
        return;
    if (m_ctx.bus.changeBaudRate(static_cast<int>(value)))
        m_mnuBaud1->setText(QString::number(m_ctx.bus.options().baudRate));
    showLineNotice();
}

void MainWindow::connectDetection()
{
    ReceiverBus &bus = m_ctx.bus;
    connect(&bus, &ReceiverBus::detectionStarted, this, [this](int commPort) {
        m_checkNet->reset();
        m_checkNet->setMessage(QStringLiteral("Checking Connected Receivers --> COM") +
                               QString::number(commPort));
        m_checkNet->show();
        m_checkNet->raise();
    });
    connect(&bus, &ReceiverBus::detectionProgress, m_checkNet, &SearchProgressWindow::setProgress);
    connect(&bus, &ReceiverBus::detectionEnded, m_checkNet, &QWidget::hide);
    bus.setSkipCheck(
        [view = QPointer<SearchProgressWindow>(m_checkNet)] { return view && view->skipRequested(); });
}

void MainWindow::autoDetectChosen()
{
    m_session.detectReceivers();
}

void MainWindow::reconnectChosen()
{
    m_session.reconnect();
}

void MainWindow::contentsChosen()
{
    QString folder = QCoreApplication::applicationDirPath();
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    m_ctx.platform.desktop.openDocument(folder + QStringLiteral("ZUN.HLP"));
}

void MainWindow::aboutChosen()
{
    auto *about = new AboutWindow(this);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->show();
    about->activateWindow();
}

bool MainWindow::confirmExit()
{
    if (m_ctx.platform.dialogs.message(QStringLiteral("Really want to QUIT ?"), MessageButtons::YesNo) !=
        MessageAnswer::Yes)
        return false;
    m_ctx.bus.sayGoodbye();
    return true;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!confirmExit()) {
        event->ignore();
        return;
    }
    event->accept();
    if (m_more)
        m_more->hide();
    m_session.endProgram();
}

void MainWindow::contextMenuEvent(QContextMenuEvent *event)
{
    m_popup->popup(event->globalPos());
}

} // namespace zun
