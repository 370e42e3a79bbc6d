#include "mainscreen/alarmlistwindow.h"

#include "alarms/alarmengine.h"
#include "platform/walltime.h"
#include "windowing/widgetname.h"

#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

namespace zun {

namespace {
enum Column { Time, Receiver, Condition, Cleared, ColumnCount };
} // namespace

AlarmListWindow::AlarmListWindow(const AlarmEngine &engine, const WallTime &wallTime, QWidget *parent)
    : QWidget(parent, Qt::Window), m_engine(engine), m_wallTime(wallTime),
      m_table(new QTableWidget(0, ColumnCount))
{
    setObjectName(QStringLiteral("frmAlarms"));
    setWindowTitle(QStringLiteral("Alarms"));
    named(m_table, QStringLiteral("lstAlarms"));
    m_table->setHorizontalHeaderLabels({QStringLiteral("Time"), QStringLiteral("Receiver"),
                                        QStringLiteral("Condition"), QStringLiteral("Cleared at")});
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    resize(560, 320);
    sizeColumns();
    m_firstIndex = engine.firstId();
    for (int i = 0; i < engine.alarms().size(); ++i)
        alarmRaised(engine.firstId() + i);
}

// Sized once for the widest texts: measuring every row at every new alarm
// made each alarm cost as much as all before it.
void AlarmListWindow::sizeColumns()
{
    const QFontMetrics metrics(m_table->font());
    const QString widest[] = {QStringLiteral("0000-00-00 00:00:00"), QStringLiteral("00 WWWWWW"),
                              conditionText(AlarmCondition::RfBelowSquelch)};
    for (int c = 0; c < 3; ++c)
        m_table->setColumnWidth(c, metrics.horizontalAdvance(widest[c]) + 4 * metrics.averageCharWidth());
}

void AlarmListWindow::alarmRaised(int index)
{
    const int row = index - m_firstIndex;
    if (row < 0 || !m_engine.alarm(index))
        return;
    if (row >= m_table->rowCount())
        m_table->setRowCount(row + 1);
    fillRow(index);
    while (m_table->rowCount() > kMaxRows) {
        m_table->removeRow(0);
        ++m_firstIndex;
    }
    if (isVisible())
        m_table->scrollToBottom();
}

void AlarmListWindow::alarmChanged(int index)
{
    const int row = index - m_firstIndex;
    if (row >= 0 && row < m_table->rowCount() && m_engine.alarm(index))
        fillRow(index);
}

void AlarmListWindow::fillRow(int index)
{
    const int row = index - m_firstIndex;
    const Alarm &alarm = *m_engine.alarm(index);
    auto timeText = [this](std::uint64_t micros) {
        return m_wallTime.at(micros).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    };
    const QString texts[ColumnCount] = {
        timeText(alarm.raisedMicros),
        QStringLiteral("%1 %2").arg(alarm.address, 2, 10, QLatin1Char('0')).arg(alarm.receiverName),
        conditionText(alarm.condition),
        alarm.clearedMicros ? timeText(*alarm.clearedMicros) : QString(),
    };
    for (int c = 0; c < ColumnCount; ++c) {
        auto *item = m_table->item(row, c);
        if (!item) {
            item = new QTableWidgetItem;
            m_table->setItem(row, c, item);
        }
        item->setText(texts[c]);
        // Bold while nobody has looked at it.
        QFont font = item->font();
        font.setBold(!alarm.acknowledgedMicros);
        item->setFont(font);
    }
}

} // namespace zun
