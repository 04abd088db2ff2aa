#pragma once

#include <QSize>
#include <QString>

#include "platform/Image.h"

namespace marigold {

// Images above this many pixels are refused before decoding: 200 megapixels of RGBA is
// 800 MB, the most a desktop editor can hold comfortably with its reduced copies.
inline constexpr long long kMaxImagePixels = 200'000'000;

struct LoadedImage {
    Image image;     // null on failure
    QString error;   // one line, when there is no image
    QString notice;  // one line, when the image is only the part of a damaged file that decodes
};

// What to do with a file whose data is cut short or damaged part-way: a picture viewer shows
// the part that decodes; a command that promises exact output refuses it.
enum class DamagedFiles { Refuse, OpenReadablePart };

// Decodes image 0 of any file libvips reads, turned upright by its orientation tag and
// converted to 8-bit RGBA sRGB. Oversized files are refused before decoding.
LoadedImage loadImageFile(const QString& path, DamagedFiles damaged = DamagedFiles::Refuse);

// The pixel size of an image file, read from its header alone; empty when unreadable.
QSize imagePixelSize(const QString& path);

// The picture of a file shrunk to fit `box` pixels (never enlarged), decoded at a reduced
// size where the format allows; a null image when the file is no readable image.
Image thumbnailOfFile(const QString& path, int box);

}  // namespace marigold
