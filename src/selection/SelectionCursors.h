#pragma once

#include <QCursor>

namespace marigold {

enum class CursorKind { Arrow, Cross, OpenHand, ClosedHand, DiagUp, DiagDown };

// The selection's cursors, made once from the PNGs in resources/cursors (hot spot 8, 8).
QCursor cursorFor(CursorKind kind);

}  // namespace marigold
