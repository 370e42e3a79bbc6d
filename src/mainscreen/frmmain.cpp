#include "mainscreen/frmmain.h"

#include "core/context.h"
#include "core/options.h"
#include "core/workloop.h"
#include "detail/frmmore.h"
#include "detail/tvregion.h"
#include "link/detection.h"
#include "link/ports.h"
#include "mainscreen/frmabout.h"
#include "mainscreen/frmchecknet.h"
#include "mainscreen/imageresources.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/rcvpanel.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace zun {

namespace {
QAction *namedAction(QMenu *menu, const QString &text, const QString &name)
{
    QAction *action = menu->addAction(text);
    action->setObjectName(name);
    return action;
}

// The progress view as detection sees it.
class CheckNetProgress final : public DetectionProgress
{
public:
    explicit CheckNetProgress(frmCheckNet &view) : m_view(view) {}
    void begin(const QString &message) override
    {
        m_view.reset();
        m_view.setMessage(message);
        m_view.show();
        m_view.raise();
    }
    void setProgress(int address) override { m_view.setProgress(address); }
    bool skipRequested() const override { return m_view.skipRequested(); }
    void end() override { m_view.hide(); }

private:
    frmCheckNet &m_view;
};
} // namespace

FrmMain::FrmMain(Context &ctx, QWidget *parent) : QMainWindow(parent), m_ctx(ctx)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Zunoria"));
    buildMenus();
    setCentralWidget(buildCentral());
    buildPopupMenu();
    m_checkNet = new frmCheckNet(this);
    m_checkNet->setWindowFlag(Qt::Dialog);
    m_checkNet->setWindowModality(Qt::ApplicationModal);
    m_timer1 = new QTimer(this);
    m_timer1->setObjectName(QStringLiteral("Timer1"));
    connect(m_timer1, &QTimer::timeout, this, &FrmMain::Timer1Tick);
    resize(1280, 760);
}

FrmMain::~FrmMain()
{
    delete m_more;
}

QWidget *FrmMain::buildCentral()
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

    connect(m_grid, &PanelGrid::muteClicked, this, &FrmMain::muteClicked);
    connect(m_grid, &PanelGrid::pilotClicked, this, &FrmMain::pilotClicked);
    connect(m_grid, &PanelGrid::nameClicked, this, &FrmMain::nameClicked);
    connect(m_grid, &PanelGrid::moreClicked, this, &FrmMain::moreClicked);
    connect(m_grid, &PanelGrid::contextMenuRequested, this,
            [this](int, QPoint globalPos) { m_popup->popup(globalPos); });
    connect(m_grid, &PanelGrid::backgroundContextMenuRequested, this,
            [this](QPoint globalPos) { m_popup->popup(globalPos); });
    showPage(0);
    return central;
}

void FrmMain::buildMenus()
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
            m_mnuCom[n]->setChecked(m_ctx.state.PortAvailable[n] && m_ctx.state.CommPort == n);
        });
        m_mnuCom[n] = com;
    }

    QMenu *baud = option->addMenu(QStringLiteral("Baud Rate"));
    baud->setObjectName(QStringLiteral("mnubaud"));
    m_mnuBaud1 = namedAction(baud, QStringLiteral("Default"), QStringLiteral("mnuBaud1"));
    m_mnuBaud1->setEnabled(false);
    connect(m_mnuBaud1, &QAction::triggered, this, &FrmMain::mnuBaud1Clicked);

    // The retry count comes only from the stored setting; these items are inert on purpose.
    QMenu *retry = option->addMenu(QStringLiteral("Retry"));
    retry->setObjectName(QStringLiteral("mnuRetry"));
    for (int n = 0; n <= 3; ++n)
        namedAction(retry, QString::number(n), QStringLiteral("mnuRetry%1").arg(n));

    m_tvItems = addTvRegionMenu(option, m_ctx);

    option->addSeparator();
    m_mnuHide = namedAction(option, QStringLiteral("&Hide Unused Panel"), QStringLiteral("mnuHide"));
    m_mnuHide->setCheckable(true);
    connect(m_mnuHide, &QAction::triggered, this, &FrmMain::mnuHideClicked);
    m_mnuFullView = namedAction(option, QStringLiteral("&Full View"), QStringLiteral("mnuFullView"));
    m_mnuFullView->setCheckable(true);
    connect(m_mnuFullView, &QAction::triggered, this, &FrmMain::mnuFullViewClicked);

    QMenu *receiver = bar->addMenu(QStringLiteral("&Receiver"));
    receiver->setObjectName(QStringLiteral("mnuReceiver"));
    connect(namedAction(receiver, QStringLiteral("Auto &Detect Receivers"), QStringLiteral("mnuAuto")),
            &QAction::triggered, this, &FrmMain::mnuAutoClicked);
    connect(namedAction(receiver, QStringLiteral("&Reconnect"), QStringLiteral("mnuReconnect")),
            &QAction::triggered, this, &FrmMain::mnuReconnectClicked);
    receiver->addSeparator();
    connect(namedAction(receiver, QStringLiteral("&Save Settings..."), QStringLiteral("mnuSave")),
            &QAction::triggered, this, &FrmMain::mnuSaveClicked);
    connect(namedAction(receiver, QStringLiteral("&Load Settings..."), QStringLiteral("mnuLoad")),
            &QAction::triggered, this, &FrmMain::mnuLoadClicked);

    QMenu *help = bar->addMenu(QStringLiteral("&Help"));
    help->setObjectName(QStringLiteral("mnuHelp"));
    connect(namedAction(help, QStringLiteral("C&ontent"), QStringLiteral("mnuContent")), &QAction::triggered,
            this, &FrmMain::mnuContentClicked);
    connect(namedAction(help, QStringLiteral("&About"), QStringLiteral("mnuAbout")), &QAction::triggered,
            this, &FrmMain::mnuAboutClicked);

    QAction *exit = bar->addAction(QStringLiteral("E&xit"));
    exit->setObjectName(QStringLiteral("mnuExit"));
    connect(exit, &QAction::triggered, this, &QWidget::close);
}

QAction *FrmMain::action(const QString &objectName) const
{
    return findChild<QAction *>(objectName);
}

RcvPanel *FrmMain::panel(int index) const
{
    return m_grid->panel(index);
}

void FrmMain::load()
{
    setWindowIcon(namedIcon(QStringLiteral("icon")));
    SettingsStore &store = m_ctx.platform.settings;
    if (readFunctionFlag(store, QStringLiteral("ChangeBaudrate")))
        m_mnuBaud1->setEnabled(true);
    m_mainKob = readFunctionFlag(store, QStringLiteral("MainKOB"));
    for (int i = 0; i < m_grid->panelCount(); ++i)
        m_grid->panel(i)->setKobCaption(m_mainKob ? QStringLiteral("KOB") : QString());
    loadTvRegion(m_tvItems, m_ctx);

    m_ctx.state.receivers.assign(m_grid->panelCount(), ReceiverRecord{});
    for (int i = 0; i < m_ctx.state.receiverCount(); ++i)
        DisableRcvPanel(i);
    m_timer1->start(300);

    mnuAutoClicked();
    m_ctx.state.WorkMode = 1;
    for (int i = 0; i < m_ctx.state.receiverCount(); ++i) {
        if (m_ctx.state.receivers[i].online) {
            ReadRcvA(m_ctx, i);
            ReadRcvB(m_ctx, i);
        }
    }
}

void FrmMain::installSteps(WorkLoop &loop)
{
    loop.setStep(1, [this] { return ReadAllAD(m_ctx, *this); });
    loop.setStep(2, [this] { return m_more ? m_more->ReadOneAD() : false; });
    loop.setStep(3, [this] { return m_more ? m_more->tools().ScanFreq() : false; });
    loop.setStep(4, [this] { return m_more ? m_more->tools().RFRecorder() : false; });
}

void FrmMain::UpdateLinkMenus()
{
    const AppState &state = m_ctx.state;
    m_mnuBaud1->setText(QString::number(state.Baudrate));
    for (int n = 1; n <= 8; ++n) {
        m_mnuCom[n]->setChecked(false);
        m_mnuCom[n]->setEnabled(state.PortAvailable[n]);
    }
    if (state.CommPort >= 1 && state.CommPort <= 8 && state.PortAvailable[state.CommPort])
        m_mnuCom[state.CommPort]->setChecked(true);
    m_mnuHide->setChecked(false);
    m_grid->setHideUnused(false, m_ctx.state.foundCount);
}

void FrmMain::mnuBaud1Clicked()
{
    const auto answer = m_ctx.platform.dialogs.inputBox(QStringLiteral("Enter new baudrate:"));
    if (!answer)
        return;
    if (changeBaudrate(m_ctx, *answer))
        m_mnuBaud1->setText(QString::number(m_ctx.state.Baudrate));
}

bool FrmMain::checkCurrentPort()
{
    CheckNetProgress progress(*m_checkNet);
    return CheckReceivers(m_ctx, progress);
}

void FrmMain::mnuAutoClicked()
{
    AppState &state = m_ctx.state;
    SerialLine &line = m_ctx.platform.line;
    for (int i = 0; i < state.receiverCount(); ++i)
        DisableRcvPanel(i);
    openLine(m_ctx);

    bool found = checkCurrentPort();
    if (!found) {
        line.close();
        const int failed = state.CommPort;
        for (int n = 1; n <= 8 && !found; ++n) {
            if (!state.PortAvailable[n] || n == failed)
                continue;
            if (!(line.isOpen() && line.portNumber() == n)) {
                if (line.isOpen())
                    line.close();
                line.selectPort(n);
                state.CommPort = n;
                line.open();
            }
            found = checkCurrentPort();
        }
        if (!found) {
            UpdateLinkMenus();
            return;
        }
    }
    for (int i = 0; i < state.foundCount; ++i)
        EnableRcvPanel(i);
    UpdateLinkMenus();
}

void FrmMain::mnuReconnectClicked()
{
    for (int i = 0; i < m_ctx.state.receiverCount(); ++i)
        DisableRcvPanel(i);
    // A line that was lost under us (adapter pulled) is opened again on the same port.
    if (!m_ctx.platform.line.isOpen())
        openLine(m_ctx);
    if (!checkCurrentPort())
        return;
    for (int i = 0; i < m_ctx.state.foundCount; ++i)
        EnableRcvPanel(i);
}

void FrmMain::mnuContentClicked()
{
    QString folder = QCoreApplication::applicationDirPath();
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    m_ctx.platform.desktop.openDocument(folder + QStringLiteral("ZUN.HLP"));
}

void FrmMain::mnuAboutClicked()
{
    auto *about = new frmAbout(this);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->show();
    about->activateWindow();
}

bool FrmMain::confirmExit()
{
    if (m_ctx.platform.dialogs.message(QStringLiteral("Really want to QUIT ?"), MessageButtons::YesNo) !=
        MessageAnswer::Yes)
        return false;
    if (m_ctx.platform.line.isOpen()) {
        QString reply;
        for (int i = 0; i < 3; ++i)
            m_ctx.link.SendCommand(QStringLiteral("#00A0\r"), 0, reply, 50);
    }
    return true;
}

void FrmMain::closeEvent(QCloseEvent *event)
{
    if (!confirmExit()) {
        event->ignore();
        return;
    }
    event->accept();
    if (m_more)
        m_more->hide();
    m_ctx.endProgram();
}

void FrmMain::contextMenuEvent(QContextMenuEvent *event)
{
    m_popup->popup(event->globalPos());
}

} // namespace zun
