#pragma once

#include <QString>
#include <functional>

#include "platform/Image.h"

namespace marigold {

class OutputViewDelegate;

// Output formats, as stored under "FileFormat". Anything else is written as JPEG.
enum FileFormatTag { JpegFormat = 101, PngFormat = 102, TiffFormat = 103, GifFormat = 104 };
QString extensionForFormat(int format);

// Writes the current output into the temporary folder in the document's format, with the
// metadata the "PreserveExif" setting asks for, and remembers whether the last file
// written still shows the current output.
class TmpFileWriter {
public:
    explicit TmpFileWriter(OutputViewDelegate& document) : _document(document) {}

    // The path written, or empty when a JPEG could not be kept under the size limit.
    QString writeTmpFile(const Image& image);
    QString writeTmpFileWithFormat(const Image& image, int format);

    bool isValidCacheAtPath(const QString& path) const;
    void clearCache() { _cacheValid = false; }
    bool isCacheValid() const { return _cacheValid; }

    // Copies the EXIF block of a source file into a freshly written JPEG
    // ("PreserveExif" 1). Unset, such JPEGs carry no metadata.
    std::function<void(const QString& sourcePath, const QString& jpegPath)> copyExif;

private:
    QString _writeJpeg(const Image& image, int preserveExif);
    QString _written(const QString& path);

    OutputViewDelegate& _document;
    bool _cacheValid = false;
};

}  // namespace marigold
