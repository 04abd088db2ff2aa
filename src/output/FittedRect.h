#pragma once

#include <QRectF>
#include <algorithm>

namespace marigold {

// A picture of `size` shrunk to fit `area` (never enlarged) and centred in it: how the output
// is shown in its pane and laid out on paper.
inline QRectF fittedRect(QSizeF size, const QRectF& area) {
    const qreal scale = std::min({1.0, area.width() / size.width(), area.height() / size.height()});
    const QSizeF fitted = size * scale;
    return QRectF(area.center() - QPointF(fitted.width() / 2, fitted.height() / 2), fitted);
}

}  // namespace marigold
