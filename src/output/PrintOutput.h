#pragma once

#include <QRectF>

class QPageLayout;
class QPrinter;

namespace marigold {

class Image;

// Prints `image` inside 10-point margins, shrunk to fit, never enlarged.
void printImage(QPrinter& printer, const Image& image);
// Where a picture of `size` points lands on the page, in points from the corner of the
// margins.
QRectF printedRect(QSizeF size, const QPageLayout& layout);

}  // namespace marigold
