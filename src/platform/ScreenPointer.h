#pragma once

#include <QPoint>
#include <optional>

namespace marigold {

// Where the pointer is, in device pixels of the main screen from its top-left corner; none
// where the desktop does not tell a program (Wayland tells only within its own windows).
std::optional<QPoint> pointerOnMainScreen();

}  // namespace marigold
