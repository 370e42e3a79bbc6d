#include "core/context.h"
#include "core/startup.h"
#include "core/workloop.h"
#include "detail/frmmore.h"
#include "feeds/feedhub.h"
#include "mainscreen/frmmain.h"
#include "mainscreen/startupwindows.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"
#include "rftools/rftools.h"
#include "sim/demobus.h"
#include "sim/simserialline.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

struct Options
{
    bool demo = false;
    QStringList ports;
};

Options parseArguments(const QApplication &app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Watches and adjusts wireless audio receivers on one serial line."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption demo(QStringLiteral("demo"),
                                  QStringLiteral("Run on 64 built-in simulated receivers on COM1."));
    parser.addOption(demo);
    parser.addOption(zun::PortMap::commandLineOption());
    parser.process(app);
    return {parser.isSet(demo), parser.values(QStringLiteral("port"))};
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zunoria"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));
    const Options options = parseArguments(app);

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
    zun::QtSerialLine realLine(portMap);
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
    // The stored feeds listen to the receiver layer from the first detection on.
    zun::attachFeeds(zun::loadFeedOptions(settings, QStringLiteral("KESTA_ZUN")), &ctx.bus, &app);
    // Every setting is on disk the moment it is saved, so the process can end at once.
    ctx.endProgram = [] { std::_Exit(0); };

    zun::StartupWindows windows(ctx);
    if (!zun::startProgram(ctx, windows.views()))
        return 1;
    windows.mainWindow()->installSteps(loop);
    loop.run();
    return 0;
}
