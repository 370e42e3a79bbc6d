#include "feeds/oscfeed.h"

#include "feeds/statusjson.h"

#include <QHostInfo>

#include <lo/lo.h>

#include <cstdlib>
#include <memory>

namespace zun {
namespace {

struct BundleDeleter
{
    void operator()(lo_bundle b) const { lo_bundle_free_recursive(b); }
};

void addMessage(lo_bundle bundle, const QString &path, lo_message message)
{
    lo_bundle_add_message(bundle, path.toUtf8().constData(), message);
}

void addBool(lo_message m, bool value)
{
    value ? lo_message_add_true(m) : lo_message_add_false(m);
}

} // namespace

OscFeed::OscFeed(const QList<OscTarget> &targets, const QString &lineName, QObject *parent)
    : QObject(parent), m_line(lineName)
{
    m_clock.start();
    m_sendTimer.setSingleShot(true);
    connect(&m_sendTimer, &QTimer::timeout, this, &OscFeed::sendNow);
    for (const OscTarget &target : targets) {
        m_targets.append({target, QHostAddress(target.host)});
        if (!m_targets.last().address.isNull())
            continue;
        const qsizetype index = m_targets.size() - 1;
        QHostInfo::lookupHost(target.host, this, [this, index](const QHostInfo &info) {
            if (info.error() != QHostInfo::NoError || info.addresses().isEmpty()) {
                reportOnce(QStringLiteral("OSC: cannot find host %1").arg(m_targets[index].where.host));
                return;
            }
            m_targets[index].address = info.addresses().constFirst();
        });
    }
}

QByteArray OscFeed::encodeBundle(const QString &lineName, const QList<Receiver> &online,
                                 const QList<int> &wentOffline, std::optional<bool> paused)
{
    std::unique_ptr<std::remove_pointer_t<lo_bundle>, BundleDeleter> bundle(lo_bundle_new(LO_TT_IMMEDIATE));
    for (const Receiver &s : online) {
        const QString base = QStringLiteral("/zunoria/%1/rx/%2/").arg(lineName, addressText(s.address));
        lo_message m = lo_message_new();
        lo_message_add_string(m, s.shownName().toUtf8().constData());
        addMessage(bundle.get(), base + QLatin1String("name"), m);
        m = lo_message_new();
        lo_message_add_float(m, static_cast<float>(s.frequencyMHz()));
        addMessage(bundle.get(), base + QLatin1String("freq"), m);
        m = lo_message_new();
        lo_message_add_int32(m, s.levels.rfA);
        lo_message_add_float(m, static_cast<float>(s.rfADbm()));
        addMessage(bundle.get(), base + QLatin1String("rfa"), m);
        m = lo_message_new();
        lo_message_add_int32(m, s.levels.rfB);
        lo_message_add_float(m, static_cast<float>(s.rfBDbm()));
        addMessage(bundle.get(), base + QLatin1String("rfb"), m);
        m = lo_message_new();
        lo_message_add_int32(m, s.audioPercent());
        addMessage(bundle.get(), base + QLatin1String("af"), m);
        m = lo_message_new();
        lo_message_add_int32(m, s.batteryPercent);
        addMessage(bundle.get(), base + QLatin1String("battery"), m);
        m = lo_message_new();
        addBool(m, s.mute);
        addMessage(bundle.get(), base + QLatin1String("mute"), m);
        m = lo_message_new();
        addBool(m, true);
        addMessage(bundle.get(), base + QLatin1String("online"), m);
    }
    for (int address : wentOffline) {
        lo_message m = lo_message_new();
        addBool(m, false);
        addMessage(bundle.get(),
                   QStringLiteral("/zunoria/%1/rx/%2/online").arg(lineName, addressText(address)), m);
    }
    if (paused) {
        lo_message m = lo_message_new();
        addBool(m, *paused);
        addMessage(bundle.get(), QStringLiteral("/zunoria/%1/paused").arg(lineName), m);
    }
    size_t size = 0;
    void *data = lo_bundle_serialise(bundle.get(), nullptr, &size);
    if (!data)
        return {};
    QByteArray bytes(static_cast<const char *>(data), static_cast<qsizetype>(size));
    std::free(data);
    return bytes;
}

void OscFeed::store(const Receiver &status, bool urgent)
{
    m_receivers.insert(status.address, status);
    if (!status.online)
        m_wentOffline.insert(status.address);
    else
        m_wentOffline.remove(status.address);
    if (urgent)
        requestSend();
}

void OscFeed::onPassEnded(int)
{
    requestSend();
}

void OscFeed::setPaused(bool paused)
{
    m_paused = paused;
    requestSend();
}

void OscFeed::requestSend()
{
    if (m_targets.isEmpty() || m_sendTimer.isActive())
        return;
    m_sendTimer.start(static_cast<int>(m_limiter.waitFor(0, m_clock.elapsed())));
}

void OscFeed::sendNow()
{
    QList<Receiver> online;
    for (const Receiver &s : std::as_const(m_receivers)) {
        if (s.online)
            online.append(s);
    }
    const bool pausedChanged = m_paused != m_sentPaused;
    if (online.isEmpty() && m_wentOffline.isEmpty() && !pausedChanged)
        return;
    const QByteArray bundle = encodeBundle(m_line, online, m_wentOffline.values(),
                                           pausedChanged ? std::optional<bool>(m_paused) : std::nullopt);
    m_wentOffline.clear();
    m_sentPaused = m_paused;
    m_limiter.markSent(0, m_clock.elapsed());
    for (const Target &target : std::as_const(m_targets)) {
        if (target.address.isNull())
            continue;
        if (m_socket.writeDatagram(bundle, target.address, target.where.port) < 0)
            reportOnce(QStringLiteral("OSC: %1:%2: %3")
                           .arg(target.where.host)
                           .arg(target.where.port)
                           .arg(m_socket.errorString()));
    }
}

void OscFeed::reportOnce(const QString &message)
{
    if (message == m_lastError)
        return;
    m_lastError = message;
    emit failed(message);
}

} // namespace zun
