#pragma once

#include <QSize>
#include <QString>

#include "platform/Image.h"

namespace marigold {

// Images above this many pixels are refused before decoding: 200 megapixels of RGBA is
// 800 MB, the most a desktop editor can hold comfortably with its reduced copies.
inline constexpr long long kMaxImagePixels = 200'000'000;

struct LoadedImage {
    Image image;    // null on failure
    QString error;  // one line, for the command line; empty on success
};

// Decodes image 0 of any file libvips reads, as stored (no orientation applied), converted
// to 8-bit RGBA sRGB. Truncated and oversized files fail instead of yielding partial images.
LoadedImage loadImageFile(const QString& path);

// The pixel size of an image file, read from its header alone; empty when unreadable.
QSize imagePixelSize(const QString& path);

// The picture of a file shrunk to fit `box` pixels (never enlarged), decoded at a reduced
// size where the format allows; a null image when the file is no readable image.
Image thumbnailOfFile(const QString& path, int box);

}  // namespace marigold
