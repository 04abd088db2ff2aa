#include "platform/ScreenPointer.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace marigold {

std::optional<QPoint> pointerOnMainScreen() {
    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen || QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        return std::nullopt;
    }
    const QPointF fromCorner = QCursor::pos(screen) - screen->geometry().topLeft();
    return (fromCorner * screen->devicePixelRatio()).toPoint();
}

}  // namespace marigold
