#include "platform/portmap.h"

#include "platform/settingsstore.h"

#include <QCommandLineOption>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSerialPortInfo>

#include <algorithm>
#include <tuple>

namespace zun {

namespace {
const QString kStoreApp = QStringLiteral("KESTA_ZUN");
const QString kStoreSection = QStringLiteral("Ports");

// "ttyUSB0" is as good as "/dev/ttyUSB0" on the command line or in the store.
QString absoluteDevice(const QString &device)
{
    return device.contains(QLatin1Char('/')) || looksLikeNetAddress(device)
               ? device
               : QStringLiteral("/dev/") + device;
}

QString portName(int n)
{
    return QStringLiteral("COM") + QString::number(n);
}

// Sort key: USB adapters first, then by kind and number ("ttyS10" after "ttyS9").
auto orderKey(const QString &path)
{
    static const QRegularExpression numbered(QStringLiteral("^(.*?)(\\d+)$"));
    const QString name = QFileInfo(path).fileName();
    const auto match = numbered.match(name);
    const QString kind = match.hasMatch() ? match.captured(1) : name;
    const qlonglong number = match.hasMatch() ? match.captured(2).toLongLong() : -1;
    int rank = 2;
    if (kind == QLatin1String("ttyUSB"))
        rank = 0;
    else if (kind == QLatin1String("ttyACM"))
        rank = 1;
    return std::make_tuple(rank, kind, number, name);
}

QStringList readConsoles(const QString &file)
{
    QFile f(file);
    if (file.isEmpty() || !f.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLocal8Bit(f.read(4096))
        .split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
}
} // namespace

PortMap::PortMap(const SettingsStore &settings)
    : PortMap(settings, &PortMap::systemDevices, QStringLiteral("/sys/class/tty/console/active"))
{
}

PortMap::PortMap(const SettingsStore &settings, Enumerator enumerate, QString consoleFile)
    : m_settings(settings), m_enumerate(std::move(enumerate)), m_consoleFile(std::move(consoleFile))
{
}

std::pair<int, QString> PortMap::parseMapping(const QString &mapping)
{
    static const QRegularExpression form(QStringLiteral("^\\s*COM([1-8])\\s*=\\s*(.*?)\\s*$"),
                                         QRegularExpression::CaseInsensitiveOption);
    const auto match = form.match(mapping);
    if (!match.hasMatch())
        return {0, {}};
    const QString target = match.captured(2);
    return {match.captured(1).toInt(), target.isEmpty() ? target : absoluteDevice(target)};
}

bool PortMap::addOverride(const QString &mapping)
{
    const auto [n, target] = parseMapping(mapping);
    if (n == 0 || target.isEmpty())
        return false;
    m_overrides[n] = target;
    return true;
}

void PortMap::setOverride(int n, const QString &target)
{
    if (n >= 1 && n <= kPortCount)
        m_overrides[n] = target.trimmed().isEmpty() ? QString() : absoluteDevice(target.trimmed());
}

QString PortMap::mapping(int n) const
{
    return mappedPath(n, nullptr);
}

std::optional<NetAddress> PortMap::networkAddress(int n) const
{
    return parseNetAddress(mappedPath(n, nullptr));
}

QString PortMap::displayName(int n) const
{
    const QString target = mappedPath(n, nullptr);
    if (target.isEmpty() || looksLikeNetAddress(target) || target.startsWith(QLatin1String("/dev/serial/")))
        return target;
    const QString stable = stableName(devicePath(n), QStringLiteral("/dev/serial/by-id"));
    return stable.isEmpty() ? target : stable;
}

QString PortMap::stableName(const QString &device, const QString &byIdFolder)
{
    const QDir folder(byIdFolder);
    const auto links = folder.entryInfoList(QDir::Files | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &link : links)
        if (!device.isEmpty() && link.canonicalFilePath() == device)
            return link.absoluteFilePath();
    return {};
}

QString PortMap::devicePath(int n) const
{
    const QString path = mappedPath(n, nullptr);
    if (path.isEmpty() || looksLikeNetAddress(path))
        return path;
    // Qt names its lock file after the path it is given, so every alias of a
    // device must come down to the same name for the lock to mean anything.
    const QString real = QFileInfo(path).canonicalFilePath();
    return real.isEmpty() ? path : real;
}

PortMap::Source PortMap::source(int n) const
{
    Source source = Source::None;
    mappedPath(n, &source);
    return source;
}

QString PortMap::mappedPath(int n, Source *source) const
{
    Source found = Source::None;
    QString path;
    if (n >= 1 && n <= kPortCount) {
        const QString stored = m_settings.get(kStoreApp, kStoreSection, portName(n)).trimmed();
        if (!m_overrides[n].isEmpty()) {
            found = Source::Override;
            path = m_overrides[n];
        } else if (!stored.isEmpty()) {
            found = Source::Settings;
            path = absoluteDevice(stored);
        } else if (n <= candidates().size()) {
            found = Source::Enumerated;
            path = candidates().at(n - 1);
        }
    }
    if (source)
        *source = found;
    return path;
}

const QStringList &PortMap::candidates() const
{
    if (!m_candidates)
        m_candidates =
            orderCandidates(m_enumerate ? m_enumerate() : QStringList(), readConsoles(m_consoleFile));
    return *m_candidates;
}

QCommandLineOption PortMap::commandLineOption()
{
    return QCommandLineOption(QStringLiteral("port"),
                              QStringLiteral("Use DEVICE for serial port COMn (n = 1..8); DEVICE is a device "
                                             "path or tcp://HOST:PORT or rfc2217://HOST:PORT. Repeatable."),
                              QStringLiteral("COMn=DEVICE"));
}

QStringList PortMap::systemDevices()
{
    QStringList devices;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : ports)
        devices.append(info.systemLocation());
    return devices;
}

QStringList PortMap::orderCandidates(const QStringList &devices, const QStringList &consoles)
{
    QStringList ordered;
    for (const QString &device : devices) {
        const QString path = absoluteDevice(device);
        if (!consoles.contains(QFileInfo(path).fileName()) && !ordered.contains(path))
            ordered.append(path);
    }
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const QString &a, const QString &b) { return orderKey(a) < orderKey(b); });
    return ordered;
}

} // namespace zun
