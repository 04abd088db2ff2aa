#pragma once

#include <QImage>
#include <QMap>
#include <QPoint>
#include <QString>
#include <optional>

#include "platform/Defaults.h"

namespace marigold {

// A pointer picture as a timed capture paints it: the image and the pixel that points.
struct CursorImage {
    QImage image;
    QPoint hotSpot;
};

// "arrow", "IBeam", "crosshair", "openHand" and "pointingHand", loaded once per process.
const QMap<QString, CursorImage>& cursorImages();

// The names of the stored "Cursor" codes 1 to 5, in code order.
const QStringList& cursorNames();

// The pointer the stored "Cursor" chooses; none for 0 or a code that means nothing.
std::optional<CursorImage> selectedCursor(const Defaults& defaults);

}  // namespace marigold
