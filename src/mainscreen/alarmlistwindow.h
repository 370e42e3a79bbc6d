#pragma once

#include <QWidget>

class QTableWidget;

namespace zun {

class AlarmEngine;
class WallTime;

// The alarms of the session, newest last: when it was raised, the receiver,
// the condition and when it cleared. Kept up to date while hidden; a flaky
// line raises thousands in a night, so only the newest kMaxRows stay listed.
class AlarmListWindow : public QWidget
{
    Q_OBJECT
public:
    AlarmListWindow(const AlarmEngine &engine, const WallTime &wallTime, QWidget *parent = nullptr);

    static constexpr int kMaxRows = 1000;

    QTableWidget *table() const { return m_table; }

    void alarmRaised(int index);
    void alarmChanged(int index);

private:
    void fillRow(int index);
    void sizeColumns();

    const AlarmEngine &m_engine;
    const WallTime &m_wallTime;
    QTableWidget *m_table;
    int m_firstIndex = 0; // the engine's alarm shown in row 0
};

} // namespace zun
