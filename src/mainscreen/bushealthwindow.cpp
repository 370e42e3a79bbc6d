#include "mainscreen/bushealthwindow.h"

#include "bushealth/bushealthmodel.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

namespace zun {

QWidget *createBusHealthWindow(BusHealthModel *model, QWidget *parent)
{
    auto *window = new QWidget(parent, Qt::Window);
    window->setObjectName(QStringLiteral("busHealth"));
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(QStringLiteral("Bus health"));

    auto *proxy = new QSortFilterProxyModel(window);
    proxy->setSourceModel(model);
    proxy->setSortRole(BusHealthModel::SortRole);

    auto *table = new QTableView(window);
    table->setObjectName(QStringLiteral("busHealthTable"));
    table->setModel(proxy);
    table->setSortingEnabled(true);
    table->sortByColumn(BusHealthModel::Address, Qt::AscendingOrder);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto *summary = new QLabel(model->lineSummary(), window);
    summary->setObjectName(QStringLiteral("busHealthSummary"));
    QObject::connect(model, &BusHealthModel::lineSummaryChanged, summary, &QLabel::setText);

    auto *reset = new QPushButton(QStringLiteral("Reset counters"), window);
    reset->setObjectName(QStringLiteral("busHealthReset"));
    QObject::connect(reset, &QPushButton::clicked, model, &BusHealthModel::resetCounters);

    auto *layout = new QVBoxLayout(window);
    layout->addWidget(table);
    layout->addWidget(summary);
    layout->addWidget(reset, 0, Qt::AlignRight);
    window->resize(760, 420);
    model->addViewer(window);
    return window;
}

} // namespace zun
