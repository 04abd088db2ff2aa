#include "selection/SelectionCursors.h"

#include <QHash>
#include <QPixmap>

#include "platform/Resources.h"

namespace marigold {

namespace {

QCursor fromResource(const char* name) {
    const QPixmap picture(QStringLiteral(":/cursors/%1.png").arg(QLatin1String(name)));
    return picture.isNull() ? QCursor(Qt::ArrowCursor) : QCursor(picture, 8, 8);
}

}  // namespace

QCursor cursorFor(CursorKind kind) {
    static const QHash<CursorKind, QCursor> cursors = [] {
        initResources();
        return QHash<CursorKind, QCursor>{
            {CursorKind::Arrow, QCursor(Qt::ArrowCursor)},
            {CursorKind::Cross, fromResource("cursor_cross")},
            {CursorKind::OpenHand, fromResource("cursor_open_hand")},
            {CursorKind::ClosedHand, fromResource("cursor_closed_hand")},
            {CursorKind::DiagUp, fromResource("cursor_diag_up")},
            {CursorKind::DiagDown, fromResource("cursor_diag_down")},
        };
    }();
    return cursors.value(kind);
}

}  // namespace marigold
