#pragma once

#include "platform/netaddress.h"

#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <optional>
#include <utility>

class QCommandLineOption;

namespace zun {

class SettingsStore;

// Which Linux device stands behind "COM" + n (n = 1..8). In order of
// precedence: a "--port COMn=DEVICE" option, the "Ports"/"COMn" entry of the
// settings store, else the n-th serial port of the machine (USB adapters
// first, the kernel console left out).
//
// The enumerated list is taken once, on first use, so that plugging in an
// adapter while the program runs cannot shift the numbers under it.
class PortMap
{
public:
    // Device paths of the serial ports present, in any order.
    using Enumerator = std::function<QStringList()>;
    enum class Source { None, Override, Settings, Enumerated };

    static constexpr int kPortCount = 8;

    // The real machine: Qt's port list and /sys/class/tty/console/active.
    explicit PortMap(const SettingsStore &settings);
    // consoleFile names a file listing console devices, e.g. "tty0 ttyS0".
    PortMap(const SettingsStore &settings, Enumerator enumerate, QString consoleFile);

    // Takes "COM3=/dev/ttyUSB0" (later texts for the same n win). False,
    // and nothing changes, when the text is malformed.
    [[nodiscard]] bool addOverride(const QString &mapping);
    // "COM3=..." taken apart: the port number (0 when malformed) and the
    // target as it will be used; an empty target ("COM3=") is allowed.
    static std::pair<int, QString> parseMapping(const QString &mapping);
    // What the user chose for port n during this run; it wins over the
    // command line and the store. An empty target drops the choice.
    void setOverride(int n, const QString &target);

    // The target of port n as mapped (device path or network address),
    // before symbolic links are resolved.
    QString mapping(int n) const;
    [[nodiscard]] std::optional<NetAddress> networkAddress(int n) const;
    // What the port menu shows: the network address, else the stable
    // /dev/serial/by-id name of the device when there is one.
    QString displayName(int n) const;

    // The device for port n with symbolic links resolved; empty when n is
    // out of range or nothing is mapped to it.
    QString devicePath(int n) const;
    Source source(int n) const;

    // "--port COMn=DEVICE", for the program's command-line parser.
    [[nodiscard]] static QCommandLineOption commandLineOption();
    [[nodiscard]] static QStringList systemDevices();
    // USB adapters (ttyUSB, then ttyACM) before other ports, each by number;
    // names listed in consoles are dropped.
    [[nodiscard]] static QStringList orderCandidates(const QStringList &devices, const QStringList &consoles);
    // The /dev/serial/by-id link (in byIdFolder) that leads to device, or empty.
    [[nodiscard]] static QString stableName(const QString &device, const QString &byIdFolder);

private:
    QString mappedPath(int n, Source *source) const;
    const QStringList &candidates() const;

    const SettingsStore &m_settings;
    Enumerator m_enumerate;
    QString m_consoleFile;
    std::array<QString, kPortCount + 1> m_overrides; // index 1..8
    mutable std::optional<QStringList> m_candidates;
};

} // namespace zun
