#pragma once

#include "coordination/scancsv.h"

#include <QObject>

#include <vector>

namespace zun {

class ReceiverBus;

// The points of the last spectrum scan, whichever window ran it, kept for
// frequency planning. A sweep that starts again at its first point begins a
// new scan.
class ScanMemory : public QObject
{
    Q_OBJECT
public:
    explicit ScanMemory(ReceiverBus &bus, QObject *parent = nullptr);

    const std::vector<ScanPoint> &points() const { return m_points; }
    int address() const { return m_address; }

signals:
    void changed();

private:
    void take(int address, int index, double frequencyMHz, int rfA, int rfB);

    std::vector<ScanPoint> m_points;
    int m_address = 0;
};

} // namespace zun
