#include "fleet/fleetservice.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/startupwindows.h"
#include "platform/consoledialogs.h"
#include "platform/mappedserialline.h"
#include "platform/portmap.h"
#include "platform/terminationsignals.h"
#include "session/session.h"
#include "sim/demobus.h"
#include "sim/simserialline.h"
#include "windowing/qtdesktop.h"
#include "windowing/qtdialogs.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QElapsedTimer>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

void describeOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Watches and adjusts wireless audio receivers on one serial line.\n\n"
        "Serial ports COM1..COM8 map to devices by --port, else by the key Ports/COMn in\n"
        "~/.config/KESTA_ZUN/KESTA_ZUN.ini, else to the serial ports present (USB adapters first).\n"
        "A port may also be a serial server: tcp://HOST:PORT (raw) or rfc2217://HOST:PORT.\n"
        "Example: zunoria --port COM1=/dev/serial/by-id/usb-FTDI_...-if00-port0\n\n"
        "With --headless it runs without a window (a rack PC, a systemd service:\n"
        "zunoria-headless@LINE.service): one event a line on standard error, SIGTERM ends it.\n\n"
        "With --fleet --mqtt HOST --web PORT it opens no serial line and shows every line\n"
        "on the broker on one web dashboard."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption(
        {QStringLiteral("demo"), QStringLiteral("Run on 64 built-in simulated receivers on COM1.")});
    parser.addOption(zun::PortMap::commandLineOption());
    parser.addOptions(zun::sessionCommandLineOptions());
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("A receiver settings file (.zun), offered for loading once "
                                                "the receivers are found."),
                                 QStringLiteral("[file]"));
}

// Help and version must print on a console without a display, and so must
// a run without a window.
bool needsNoWindow(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i)
        for (const char *option :
             {"-h", "--help", "--help-all", "-v", "--version", "-?", "--headless", "--fleet"})
            if (std::strcmp(argv[i], option) == 0)
                return true;
    return false;
}

void nameApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("Zunoria"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZUN_VERSION));
}

void fail(const QString &text)
{
    std::fprintf(stderr, "zunoria: %s\n", qUtf8Printable(text));
}

} // namespace

int main(int argc, char *argv[])
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    std::unique_ptr<QCoreApplication> app;
    if (needsNoWindow(argc, argv))
        app = std::make_unique<QCoreApplication>(argc, argv);
    else
        app = std::make_unique<QApplication>(argc, argv);
    nameApplication();
    QCommandLineParser parser;
    describeOptions(parser);
    parser.process(*app); // help and version print and end here
    const bool demo = parser.isSet(QStringLiteral("demo"));

    zun::SystemClock clock;
    zun::FileSettingsStore fileSettings;
    zun::MemorySettingsStore demoSettings;
    // A demonstration must not change the user's stored port or speed; it
    // runs on settings of its own with every optional feature switched on.
    zun::SettingsStore &settings = demo ? static_cast<zun::SettingsStore &>(demoSettings) : fileSettings;
    for (const auto &[section, key] :
         {std::pair{"MSComm", "CommPort"}, {"Function", "ChangeBaudrate"}, {"Function", "MainKOB"}})
        demoSettings.save(QStringLiteral("KESTA_ZUN"), QLatin1String(section), QLatin1String(key),
                          QStringLiteral("1"));
    QString error;
    const auto options = zun::readSessionOptions(parser, settings, &error);
    if (!options) {
        fail(error);
        return 2;
    }
    if (const QString problem = zun::fleetOptionsProblem(parser, *options); !problem.isEmpty()) {
        fail(problem);
        return 1;
    }
    if (options->fleet) {
        const auto fleet = zun::assembleFleet(options->feeds);
        if (!fleet->start()) {
            fail(fleet->errorText());
            return 1;
        }
        std::fprintf(stderr, "zunoria: fleet dashboard at %s\n", qUtf8Printable(fleet->url()));
        zun::TerminationSignals termination;
        QObject::connect(&termination, &zun::TerminationSignals::requested, app.get(),
                         &QCoreApplication::quit);
        return app->exec();
    }
    zun::PortMap portMap(settings);
    for (const QString &mapping : parser.values(QStringLiteral("port"))) {
        if (!portMap.addOverride(mapping)) {
            fail(QStringLiteral("--port expects COMn=DEVICE with n from 1 to 8, not \"%1\"").arg(mapping));
            return 2;
        }
    }
    zun::MappedSerialLine realLine(portMap);
    zun::SimSerialLine demoLine(clock);
    const auto demoBus = zun::makeDemoBus(static_cast<std::uint64_t>(QDateTime::currentMSecsSinceEpoch()));
    demoLine.attachBus(1, demoBus.get());
    zun::SerialLine &line = demo ? static_cast<zun::SerialLine &>(demoLine) : realLine;

    zun::QtDialogs windowDialogs;
    zun::QtDesktop windowDesktop;
    zun::ConsoleDialogs consoleDialogs;
    zun::ConsoleDesktop consoleDesktop;
    const bool headless = options->headless;
    zun::Dialogs &dialogs = headless ? static_cast<zun::Dialogs &>(consoleDialogs) : windowDialogs;
    zun::Desktop &desktop = headless ? static_cast<zun::Desktop &>(consoleDesktop) : windowDesktop;

    const auto session =
        zun::assembleSession(zun::Platform{clock, line, settings, dialogs, desktop}, *options);
    // Every setting is on disk the moment it is saved, so the process can end at once.
    session->context().endProgram = [] { std::_Exit(0); };

    if (headless) {
        zun::TerminationSignals termination;
        QObject::connect(&termination, &zun::TerminationSignals::requested, session.get(), [&session] {
            session->bus().sayGoodbye();
            session->endProgram();
        });
        if (!session->start({}))
            return 1;
        session->loop().run();
        return 0;
    }

    zun::StartupWindows windows(*session, &portMap);
    if (!session->start(windows.views()))
        return 1;
    const QString settingsFile = parser.positionalArguments().value(0);
    if (!settingsFile.isEmpty())
        windows.mainWindow()->offerSettingsFile(settingsFile);
    // For the benchmark: start-up cost with the line's share taken out.
    if (qEnvironmentVariableIsSet("ZUN_REPORT_STARTUP"))
        std::fprintf(stderr, "zunoria: main window shown after %lld ms, load %lld ms\n",
                     static_cast<long long>(sinceStart.elapsed()),
                     static_cast<long long>(windows.loadMillis()));
    session->loop().run();
    return 0;
}
