#pragma once

#include <QString>

#include "output/OutputFile.h"
#include "platform/Image.h"

namespace marigold {

class OutputViewDelegate;

// Writes the current output into the temporary folder in the document's format, with the
// metadata the "PreserveExif" setting asks for, and remembers whether the last file
// written still shows the current output.
class TmpFileWriter {
public:
    explicit TmpFileWriter(OutputViewDelegate& document) : _document(document) {}

    // The path written; empty when a JPEG could not be kept under the size limit
    // (`limitTooLow` then says so) or when there is no temporary folder.
    QString writeTmpFile(const Image& image);
    QString writeTmpFileWithFormat(const Image& image, int format);
    bool limitTooLow() const { return _limitTooLow; }

    bool isValidCacheAtPath(const QString& path) const;
    void clearCache() { _cacheValid = false; }
    bool isCacheValid() const { return _cacheValid; }

    // Copies a source's EXIF block into JPEGs written with "PreserveExif" 1; unset, such
    // JPEGs carry no metadata.
    ExifCopier copyExif;

private:
    OutputViewDelegate& _document;
    bool _cacheValid = false;
    bool _limitTooLow = false;
};

}  // namespace marigold
