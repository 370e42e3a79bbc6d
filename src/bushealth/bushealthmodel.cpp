#include "bushealth/bushealthmodel.h"

#include "receivers/addresstext.h"

namespace zun {
namespace {

QVariant millis(double ms)
{
    return ms < 0 ? QStringLiteral("–") : QString::number(ms, 'f', 1);
}

} // namespace

BusHealthModel::BusHealthModel(int baudRate, QObject *parent) : QAbstractTableModel(parent), m_stats(baudRate)
{
    m_refreshTimer.setSingleShot(true);
    connect(&m_refreshTimer, &QTimer::timeout, this, &BusHealthModel::refresh);
}

int BusHealthModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int BusHealthModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant BusHealthModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &r = m_rows.at(index.row());
    if (role == Qt::TextAlignmentRole)
        return index.column() >= LastError ? QVariant() : QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != SortRole)
        return {};
    const bool sort = role == SortRole;
    switch (index.column()) {
    case Address:
        return sort ? QVariant(r.address) : QVariant(addressText(r.address));
    case Exchanges:
        return r.health.exchanges;
    case Timeouts:
        return r.health.timeouts;
    case Retries:
        return r.health.retries;
    case Garbled:
        return r.health.garbled;
    case Median:
        return sort ? QVariant(r.medianMs) : millis(r.medianMs);
    case P99:
        return sort ? QVariant(r.p99Ms) : millis(r.p99Ms);
    case WireLimit:
        return sort ? QVariant(r.wireLimitMs) : millis(r.wireLimitMs);
    case LastError:
        return r.health.lastError;
    case Suspect:
        return sort ? QVariant(r.suspect)
                    : QVariant(r.suspect ? QStringLiteral("two receivers on this address?") : QString());
    }
    return {};
}

QVariant BusHealthModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    static const QStringList captions{QStringLiteral("Address"),    QStringLiteral("Exchanges"),
                                      QStringLiteral("Time-outs"),  QStringLiteral("Retries"),
                                      QStringLiteral("Garbled"),    QStringLiteral("Median ms"),
                                      QStringLiteral("p99 ms"),     QStringLiteral("Wire ms"),
                                      QStringLiteral("Last error"), QStringLiteral("Duplicate")};
    return captions.value(section);
}

QString BusHealthModel::lineSummary() const
{
    QString summary = QStringLiteral("Line utilisation %1 % · %2 passes/s · %3 baud")
                          .arg(m_stats.utilisation() * 100.0, 0, 'f', 1)
                          .arg(m_stats.passesPerSecond(), 0, 'f', 1)
                          .arg(m_stats.baudRate());
    if (const quint64 noise = m_stats.lineNoise())
        summary += QStringLiteral(" · line noise: %1 characters discarded").arg(noise);
    return summary;
}

void BusHealthModel::onExchanged(const ExchangeRecord &record)
{
    m_stats.add(record);
    markDirty();
}

void BusHealthModel::onPassEnded(int)
{
    m_stats.passEnded();
    markDirty();
}

void BusHealthModel::onBaudRateChanged(int baudRate)
{
    m_stats.setBaudRate(baudRate);
    markDirty();
}

void BusHealthModel::resetCounters()
{
    m_stats.reset();
    refresh();
}

void BusHealthModel::addViewer(QObject *viewer)
{
    ++m_viewers;
    connect(viewer, &QObject::destroyed, this, [this] { --m_viewers; });
    markDirty();
}

void BusHealthModel::markDirty()
{
    if (m_viewers > 0 && !m_refreshTimer.isActive())
        m_refreshTimer.start(kRefreshMs);
}

void BusHealthModel::refresh()
{
    m_refreshTimer.stop();
    QList<Row> rows;
    for (int address : m_stats.addresses())
        rows.append({address, *m_stats.address(address), m_stats.medianMs(address), m_stats.p99Ms(address),
                     m_stats.wireLimitMs(address), m_stats.suspectDuplicate(address)});
    const bool sameRows = rows.size() == m_rows.size() &&
                          std::equal(rows.cbegin(), rows.cend(), m_rows.cbegin(),
                                     [](const Row &a, const Row &b) { return a.address == b.address; });
    if (sameRows) {
        m_rows = std::move(rows);
        if (!m_rows.isEmpty())
            emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
    } else {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
    }
    emit lineSummaryChanged(lineSummary());
}

} // namespace zun
