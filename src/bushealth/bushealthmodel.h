#pragma once

#include "bushealth/bushealthstats.h"

#include <QAbstractTableModel>
#include <QTimer>

namespace zun {

// The bus-health statistics as a table, one row per address. The slots only
// count; the table is refreshed at most twice a second so that a fast line
// never makes a view redraw per exchange.
class BusHealthModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column {
        Address,
        Exchanges,
        Timeouts,
        Retries,
        Garbled,
        Median,
        P99,
        WireLimit,
        LastError,
        Suspect,
        ColumnCount
    };
    static constexpr int SortRole = Qt::UserRole;
    static constexpr int kRefreshMs = 500;

    explicit BusHealthModel(int baudRate = 9600, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const BusHealthStats &stats() const { return m_stats; }
    // "Line utilisation 42.0 % · 3.2 passes/s · 115200 baud"
    QString lineSummary() const;

    // The table follows the counters only while some window shows it:
    // percentiles over 64 addresses twice a second would cost more than the
    // rest of polling. The count drops when the viewer is destroyed.
    void addViewer(QObject *viewer);

public slots:
    void onExchanged(const zun::ExchangeRecord &record);
    void onPassEnded(int receiversAsked);
    void onBaudRateChanged(int baudRate);
    void resetCounters();
    // Brings the table up to date with the counters; the timer calls it.
    void refresh();

signals:
    void lineSummaryChanged(const QString &text);

private:
    struct Row
    {
        int address = 0;
        AddressHealth health;
        double medianMs = -1, p99Ms = -1, wireLimitMs = -1;
        bool suspect = false;
    };
    void markDirty();

    BusHealthStats m_stats;
    QList<Row> m_rows;
    QTimer m_refreshTimer;
    int m_viewers = 0;
};

// Connects the model to an object with the receiver layer's signals.
template <class Source> void connectBusHealth(Source *source, BusHealthModel *model)
{
    QObject::connect(source, &Source::exchanged, model, &BusHealthModel::onExchanged);
    QObject::connect(source, &Source::passEnded, model, &BusHealthModel::onPassEnded);
    QObject::connect(source, &Source::baudRateChanged, model, &BusHealthModel::onBaudRateChanged);
}

} // namespace zun
