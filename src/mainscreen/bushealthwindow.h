#pragma once

class QWidget;

namespace zun {

class BusHealthModel;

// The "Bus health" window over model: a sortable table, the line's summary
// and "Reset counters". The caller shows it; it deletes itself on close.
QWidget *createBusHealthWindow(BusHealthModel *model, QWidget *parent = nullptr);

} // namespace zun
