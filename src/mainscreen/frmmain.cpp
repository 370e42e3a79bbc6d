#include "mainscreen/frmmain.h"

#include "core/context.h"
#include "core/options.h"
#include "core/workloop.h"
#include "link/ports.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QMenuBar>
#include <QVBoxLayout>

namespace zun {

namespace {
QAction *namedAction(QMenu *menu, const QString &text, const QString &name)
{
    QAction *action = menu->addAction(text);
    action->setObjectName(name);
    return action;
}
} // namespace

FrmMain::FrmMain(Context &ctx, QWidget *parent) : QMainWindow(parent), m_ctx(ctx)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Zunoria"));
    buildMenus();
    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("Frame1"));
    setCentralWidget(central);
    resize(1280, 760);
}

void FrmMain::buildMenus()
{
    QMenuBar *bar = menuBar();

    m_optionMenu = bar->addMenu(QStringLiteral("&Option"));
    m_optionMenu->setObjectName(QStringLiteral("mnuOption"));

    QMenu *port = m_optionMenu->addMenu(QStringLiteral("Serial Port"));
    port->setObjectName(QStringLiteral("mnuPort"));
    for (int n = 1; n <= 8; ++n) {
        // Choosing a port here does nothing on purpose: only detection picks the port.
        QAction *com = namedAction(port, QStringLiteral("COM%1").arg(n), QStringLiteral("mnuCom"));
        com->setProperty("index", n);
        com->setCheckable(true);
        connect(com, &QAction::triggered, com, [this, n](bool) {
            m_mnuCom[n]->setChecked(m_ctx.state.PortAvailable[n] && m_ctx.state.CommPort == n &&
                                    m_ctx.platform.line.isOpen());
        });
        m_mnuCom[n] = com;
    }

    QMenu *baud = m_optionMenu->addMenu(QStringLiteral("Baud Rate"));
    baud->setObjectName(QStringLiteral("mnubaud"));
    m_mnuBaud1 = namedAction(baud, QStringLiteral("Default"), QStringLiteral("mnuBaud1"));
    m_mnuBaud1->setEnabled(false);
    connect(m_mnuBaud1, &QAction::triggered, this, &FrmMain::mnuBaud1Clicked);

    // The retry count comes only from the stored setting; these items are inert on purpose.
    QMenu *retry = m_optionMenu->addMenu(QStringLiteral("Retry"));
    retry->setObjectName(QStringLiteral("mnuRetry"));
    for (int n = 0; n <= 3; ++n)
        namedAction(retry, QString::number(n), QStringLiteral("mnuRetry%1").arg(n));

    m_optionMenu->addSeparator();
    m_mnuHide = namedAction(m_optionMenu, QStringLiteral("&Hide Unused Panel"), QStringLiteral("mnuHide"));
    m_mnuHide->setCheckable(true);

    QMenu *receiver = bar->addMenu(QStringLiteral("&Receiver"));
    receiver->setObjectName(QStringLiteral("mnuReceiver"));
    connect(namedAction(receiver, QStringLiteral("Auto &Detect Receivers"), QStringLiteral("mnuAuto")),
            &QAction::triggered, this, &FrmMain::mnuAutoClicked);
    connect(namedAction(receiver, QStringLiteral("&Reconnect"), QStringLiteral("mnuReconnect")),
            &QAction::triggered, this, &FrmMain::mnuReconnectClicked);

    QMenu *help = bar->addMenu(QStringLiteral("&Help"));
    help->setObjectName(QStringLiteral("mnuHelp"));
    connect(namedAction(help, QStringLiteral("C&ontent"), QStringLiteral("mnuContent")), &QAction::triggered,
            this, &FrmMain::mnuContentClicked);
    connect(namedAction(help, QStringLiteral("&About"), QStringLiteral("mnuAbout")), &QAction::triggered, this,
            &FrmMain::mnuAboutClicked);

    QAction *exit = bar->addAction(QStringLiteral("E&xit"));
    exit->setObjectName(QStringLiteral("mnuExit"));
    connect(exit, &QAction::triggered, this, &QWidget::close);
}

QAction *FrmMain::action(const QString &objectName) const
{
    return findChild<QAction *>(objectName);
}

void FrmMain::load()
{
    SettingsStore &store = m_ctx.platform.settings;
    if (readFunctionFlag(store, QStringLiteral("ChangeBaudrate")))
        m_mnuBaud1->setEnabled(true);
    m_mainKob = readFunctionFlag(store, QStringLiteral("MainKOB"));
    m_ctx.state.TVtype = readTvType(store);

    m_ctx.state.receivers.assign(64, ReceiverRecord{});

    mnuAutoClicked();
    m_ctx.state.WorkMode = 1;
}

void FrmMain::installSteps(WorkLoop &loop)
{
    loop.setStep(1, [this] { return ReadAllAD(m_ctx, *this); });
}

void FrmMain::UpdateRcvPanel(int, const QString &) {}

void FrmMain::showOffline(int) {}

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
}

void FrmMain::mnuBaud1Clicked()
{
    const auto answer = m_ctx.platform.dialogs.inputBox(QStringLiteral("Enter new baudrate:"));
    if (!answer)
        return;
    if (changeBaudrate(m_ctx, *answer))
        m_mnuBaud1->setText(QString::number(m_ctx.state.Baudrate));
}

void FrmMain::mnuAutoClicked()
{
    openLine(m_ctx);
    UpdateLinkMenus();
}

void FrmMain::mnuReconnectClicked() {}

void FrmMain::mnuContentClicked()
{
    QString folder = QCoreApplication::applicationDirPath();
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    m_ctx.platform.desktop.openDocument(folder + QStringLiteral("ZUN.HLP"));
}

void FrmMain::mnuAboutClicked() {}

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
    m_ctx.endProgram();
}

} // namespace zun
