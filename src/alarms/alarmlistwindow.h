#pragma once

#include <QWidget>

class QTableWidget;

namespace zun {

class AlarmEngine;
class WallTime;

// Every alarm of the session, newest last: when it was raised, the receiver,
// the condition and when it cleared. Kept up to date while hidden.
class AlarmListWindow : public QWidget
{
    Q_OBJECT
public:
    AlarmListWindow(const AlarmEngine &engine, const WallTime &wallTime, QWidget *parent = nullptr);

    QTableWidget *table() const { return m_table; }

    void alarmRaised(int index);
    void alarmChanged(int index);

private:
    void fillRow(int index);

    const AlarmEngine &m_engine;
    const WallTime &m_wallTime;
    QTableWidget *m_table;
};

} // namespace zun
