#include "output/PrintOutput.h"

#include <QPainter>
#include <QPrinter>

#include "output/FittedRect.h"
#include "platform/Image.h"

namespace marigold {

void printImage(QPrinter& printer, const Image& image) {
    printer.setPageMargins(QMarginsF(10, 10, 10, 10), QPageLayout::Point);
    if (image.isNull()) return;
    QPainter painter(&printer);
    // Points on paper: the painter works in device pixels of the printer.
    const qreal pixelsPerPoint = printer.resolution() / 72.0;
    painter.scale(pixelsPerPoint, pixelsPerPoint);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QSizeF size(image.size().width, image.size().height);
    painter.drawImage(printedRect(size, printer.pageLayout()), image.toQImage());
}

QRectF printedRect(QSizeF size, const QPageLayout& layout) {
    return fittedRect(size, QRectF(QPointF(0, 0), layout.paintRect(QPageLayout::Point).size()));
}

}  // namespace marigold
