#pragma once

namespace zun {

class Session;

// Without a window every event is one line on standard error, readable in
// the journal: receivers found, offline and back, alarms, feed status.
void attachConsoleReport(Session &session);

} // namespace zun
