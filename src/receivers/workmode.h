#pragma once

namespace zun {

// What the work loop does on each pass. The values are those the receivers'
// own tools have always used, so they may be shown or stored as numbers.
enum class WorkMode {
    Idle = 0,       // nothing: start-up, or a detection that found nobody
    Polling = 1,    // pollAllLevels: the main screen's level poll
    DetailRead = 2, // readDetailLevels: the open detail window's meters
    Scan = 3,       // scanStep: one point of the spectrum scan
    Recorder = 4,   // recorderStep: one sample of the RF recorder
};

} // namespace zun
