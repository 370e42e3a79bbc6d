#include "core/context.h"
#include "core/startup.h"
#include "core/workloop.h"
#include "mainscreen/frmmain.h"
#include "platform/portmap.h"
#include "platform/qtserialline.h"

#include <QApplication>
#include <QCommandLineParser>

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
                                  QStringLiteral("Run on a dozen built-in simulated receivers on COM1."));
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
    zun::FileSettingsStore settings;
    zun::QtDialogs dialogs;
    zun::QtDesktop desktop;
    zun::PortMap portMap(settings);
    for (const QString &spec : options.ports) {
        if (!portMap.addOverride(spec)) {
            std::fprintf(stderr, "zunoria: --port expects COMn=DEVICE with n from 1 to 8, not \"%s\"\n",
                         qPrintable(spec));
            return 2;
        }
    }
    zun::QtSerialLine line(portMap);

    zun::Context ctx(zun::Platform{clock, line, settings, dialogs, desktop});
    zun::WorkLoop loop(ctx.state);
    // Every setting is on disk the moment it is saved, so the process can end at once.
    ctx.endProgram = [] { std::_Exit(0); };

    std::unique_ptr<zun::FrmMain> mainWindow;
    zun::StartupViews views;
    views.showMainScreen = [&] {
        mainWindow = std::make_unique<zun::FrmMain>(ctx);
        mainWindow->show();
        mainWindow->load();
    };
    if (!zun::startProgram(ctx, views))
        return 1;
    mainWindow->installSteps(loop);
    loop.run();
    return 0;
}
