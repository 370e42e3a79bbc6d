#include "bushealth/bushealthmodel.h"
#include "bushealth/bushealthwindow.h"
#include "core/context.h"
#include "core/startup.h"
#include "core/workloop.h"
#include "detail/frmmore.h"
#include "feeds/feedhub.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/startupwindows.h"
#include "platform/mappedserialline.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "rftools/rftools.h"
#include "sim/demobus.h"
#include "sim/simserialline.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QElapsedTimer>
#include <QMenu>
#include <QPointer>
#include <QStatusBar>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

struct Options
{
    bool demo = false;
    QStringList ports;
    QString settingsFile;
};

void parseArguments(const QCoreApplication &app, QCommandLineParser &parser, Options &options)
{
    parser.setApplicationDescription(QStringLiteral(
        "Watches and adjusts wireless audio receivers on one serial line.\n\n"
        "Serial ports COM1..COM8 map to devices by --port, else by the key Ports/COMn in\n"
        "~/.config/KESTA_ZUN/KESTA_ZUN.ini, else to the serial ports present (USB adapters first).\n"
        "A port may also be a serial server: tcp://HOST:PORT (raw) or rfc2217://HOST:PORT.\n"
        "Example: zunoria --port COM1=/dev/serial/by-id/usb-FTDI_...-if00-port0"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption demo(QStringLiteral("demo"),
                                  QStringLiteral("Run on 64 built-in simulated receivers on COM1."));
    parser.addOption(demo);
    parser.addOption(zun::PortMap::commandLineOption());
    parser.addOptions(zun::feedCommandLineOptions());
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("A receiver settings file (.zun), offered for loading once "
                                                "the receivers are found."),
                                 QStringLiteral("[file]"));
    parser.process(app);
    options = {parser.isSet(demo), parser.values(QStringLiteral("port")),
               parser.positionalArguments().value(0)};
}

// Help and version must print on a console without a display.
bool onlyPrints(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i)
        for (const char *option : {"-h", "--help", "--help-all", "-v", "--version", "-?"})
            if (std::strcmp(argv[i], option) == 0)
                return true;
    return false;
}

void nameApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("Zunoria"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZUN_VERSION));
}

} // namespace

int main(int argc, char *argv[])
{
    if (onlyPrints(argc, argv)) {
        QCoreApplication console(argc, argv);
        nameApplication();
        QCommandLineParser parser;
        Options unused;
        parseArguments(console, parser, unused); // prints and ends the process
        return 0;
    }
    QElapsedTimer sinceStart;
    sinceStart.start();
    QApplication app(argc, argv);
    nameApplication();
    QCommandLineParser parser;
    Options options;
    parseArguments(app, parser, options);

    zun::SystemClock clock;
    zun::FileSettingsStore fileSettings;
    zun::MemorySettingsStore demoSettings;
    // A demonstration must not change the user's stored port or speed; it
    // runs on settings of its own with every optional feature switched on.
    zun::SettingsStore &settings =
        options.demo ? static_cast<zun::SettingsStore &>(demoSettings) : fileSettings;
    demoSettings.save(QStringLiteral("KESTA_ZUN"), QStringLiteral("MSComm"), QStringLiteral("CommPort"),
                      QStringLiteral("1"));
    demoSettings.save(QStringLiteral("KESTA_ZUN"), QStringLiteral("Function"),
                      QStringLiteral("ChangeBaudrate"), QStringLiteral("1"));
    demoSettings.save(QStringLiteral("KESTA_ZUN"), QStringLiteral("Function"), QStringLiteral("MainKOB"),
                      QStringLiteral("1"));
    zun::QtDialogs dialogs;
    zun::QtDesktop desktop;
    zun::PortMap portMap(settings);
    for (const QString &mapping : options.ports) {
        if (!portMap.addOverride(mapping)) {
            std::fprintf(stderr, "zunoria: --port expects COMn=DEVICE with n from 1 to 8, not \"%s\"\n",
                         qPrintable(mapping));
            return 2;
        }
    }
    zun::MappedSerialLine realLine(portMap);
    zun::SimSerialLine demoLine(clock);
    const auto demoBus = zun::makeDemoBus(static_cast<std::uint64_t>(QDateTime::currentMSecsSinceEpoch()));
    demoLine.attachBus(1, demoBus.get());
    zun::SerialLine &line = options.demo ? static_cast<zun::SerialLine &>(demoLine) : realLine;

    zun::Context ctx(zun::Platform{clock, line, settings, dialogs, desktop});
    // The windows meet here, so that none of them includes another.
    ctx.makeDetailWindow = [](zun::Context &c, zun::DetailHost &host) { return new zun::FrmMore(c, host); };
    ctx.makeRfTools = [](zun::Context &c, zun::RfToolsHost &host, QWidget *parent) {
        return new zun::RfTools(c, host, parent);
    };
    zun::WorkLoop loop(ctx.bus);
    // The feeds listen to the receiver layer from the first detection on;
    // the command line switches them on for this run only.
    QString feedError;
    const auto feedOptions = zun::applyFeedArguments(
        parser, zun::loadFeedOptions(settings, QStringLiteral("KESTA_ZUN")), &feedError);
    if (!feedOptions) {
        std::fprintf(stderr, "zunoria: %s\n", qPrintable(feedError));
        return 2;
    }
    zun::FeedHub *feeds = zun::attachFeeds(*feedOptions, &ctx.bus, &app);
    zun::BusHealthModel busHealth;
    zun::connectBusHealth(&ctx.bus, &busHealth);
    // Every setting is on disk the moment it is saved, so the process can end at once.
    ctx.endProgram = [] { std::_Exit(0); };

    zun::StartupWindows windows(ctx, &portMap);
    if (!zun::startProgram(ctx, windows.views()))
        return 1;
    if (!options.settingsFile.isEmpty())
        windows.mainWindow()->offerSettingsFile(options.settingsFile);
    // For the benchmark: start-up cost with the line's share taken out.
    if (qEnvironmentVariableIsSet("ZUN_REPORT_STARTUP"))
        std::fprintf(stderr, "zunoria: main window shown after %lld ms, load %lld ms\n",
                     static_cast<long long>(sinceStart.elapsed()),
                     static_cast<long long>(windows.loadMillis()));
    zun::FrmMain *mainWindow = windows.mainWindow();
    if (!feeds->statusText().isEmpty())
        mainWindow->statusBar()->showMessage(feeds->statusText());
    QObject::connect(feeds, &zun::FeedHub::statusTextChanged, mainWindow,
                     [mainWindow](const QString &text) { mainWindow->statusBar()->showMessage(text); });
    if (auto *receiverMenu = mainWindow->findChild<QMenu *>(QStringLiteral("mnuReceiver"))) {
        QAction *health = receiverMenu->addAction(QStringLiteral("&Bus Health..."));
        health->setObjectName(QStringLiteral("mnuBusHealth"));
        QPointer<QWidget> window;
        QObject::connect(health, &QAction::triggered, mainWindow, [&busHealth, mainWindow, window]() mutable {
            if (!window)
                window = zun::createBusHealthWindow(&busHealth, mainWindow);
            window->show();
            window->raise();
        });
    }
    mainWindow->installSteps(loop);
    loop.run();
    return 0;
}
