#pragma once

#include <QDateTime>
#include <QFont>
#include <QImage>
#include <QPoint>
#include <QString>

#include "platform/Image.h"

namespace marigold {

// What a screen capture is decorated with: the pointer, and a stamp of when it was taken.
namespace overlays {

// `image` with the pointer picture drawn so that its hot spot (from the picture's top-left)
// lands on `at`, in the image's pixels from its top-left; unchanged when `at` is outside.
Image drawCursor(const QImage& cursor, QPoint hotSpot, const Image& image, QPoint at);

// `image` above a band 1.2 times the text's height, white at 90 % opacity, holding `text`
// centred in it from `posX`; a negative `posX` makes the text end that far from the right.
Image imageWithTextBelowImage(const QString& text, const QFont& font, const Image& image,
                              float posX);

// The stamp's text: the locale's short date, and short time when `timed`.
QString stampText(const QDateTime& when, bool timed);
// Bold, 12 points (pixels, on a bitmap).
QFont stampFont();
// `image` with the stamp below it, in black, ending 10 points from the right edge.
Image datedImage(const Image& image, bool timed, const QDateTime& when);

}  // namespace overlays

}  // namespace marigold
