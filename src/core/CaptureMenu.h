#pragma once

#include <QMenu>

namespace marigold {

class AppController;

// File ▸ Capture: a selection, a window, the screen, or the screen after a countdown; the
// timed one asks for its delay first.
QMenu* buildCaptureMenu(AppController& controller, QWidget* window);

}  // namespace marigold
