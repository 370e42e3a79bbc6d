#pragma once

class QWidget;

namespace zun {

// Moves a top-level window to the middle of the screen it is on.
void centreOnScreen(QWidget *window);

} // namespace zun
