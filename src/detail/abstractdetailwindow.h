#pragma once

#include "core/detailhost.h"

#include <QWidget>

namespace zun {

// The detail window as the main screen and the work loop see it. It works on
// the receiver selected when it was made and deletes itself when closed.
class AbstractDetailWindow : public QWidget
{
public:
    using QWidget::QWidget;

    // Reads the record into the window.
    virtual void load() = 0;
    // The window's work-loop steps: level read, scan point, recorder sample.
    [[nodiscard]] virtual bool readDetailLevels() = 0;
    [[nodiscard]] virtual bool scanStep() = 0;
    [[nodiscard]] virtual bool recorderStep() = 0;
};

} // namespace zun
