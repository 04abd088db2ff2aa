#pragma once

#include <QImage>
#include <QRect>

// What the X server shows: the screen's pixels, and the top-level windows on it.
namespace x11capture {

// The primary screen, or every screen, at device resolution.
QImage grabScreens(bool mainScreenOnly);
// Where the grab of `grabScreens(false)` starts, in the X server's pixels.
QPoint grabOrigin(bool mainScreenOnly);

// The topmost visible window at `point` (X server pixels), other than `ignored`: its frame,
// or with `noFrame` the application's own window inside it (the same when there is no
// frame); null when there is none.
QRect windowAt(QPoint point, bool noFrame, unsigned ignored);

}  // namespace x11capture
