#pragma once

#include <QString>
#include <optional>

#include "platform/Image.h"

class QMimeData;

namespace marigold {

// The output as the clipboard carries it: the pixels (Qt's image data, offered in every
// format Qt can write, always including image/png) and, when `filePath` is not empty, the
// encoded file as a URI list, in the form GNOME-style file managers paste
// (x-special/gnome-copied-files), and as plain text. The caller has written the file already.
QMimeData* outputMimeData(const Image& image, const QString& filePath);
void putOutputOnClipboard(const Image& image, const QString& filePath);

// The image carried by clipboard or drop data, one point per pixel whatever resolution the
// data declares; nullopt when there is none or it cannot be decoded.
std::optional<Image> imageFromMimeData(const QMimeData* data);
std::optional<Image> imageFromClipboard();

}  // namespace marigold
