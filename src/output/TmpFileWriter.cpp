#include "output/TmpFileWriter.h"

#include <QFileInfo>

#include "output/ImageEncoders.h"
#include "output/OutputViewDelegate.h"
#include "output/TempFolder.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

QString extensionForFormat(int format) {
    switch (format) {
        case PngFormat: return QStringLiteral("png");
        case TiffFormat: return QStringLiteral("tif");
        case GifFormat: return QStringLiteral("gif");
        default: return QStringLiteral("jpg");
    }
}

QString TmpFileWriter::writeTmpFile(const Image& image) {
    return writeTmpFileWithFormat(image, _document.fileFormat());
}

QString TmpFileWriter::writeTmpFileWithFormat(const Image& image, int format) {
    const int preserveExif = _document.defaults().integerForKey(keys::DefPreserveExif);
    if (format != PngFormat && format != TiffFormat && format != GifFormat) {
        return _writeJpeg(image, preserveExif);
    }
    // A fresh path first, then the cache check: each file keeps a folder of its own.
    const QString path =
        _document.tempFolder().pathForImageNamed(_document.filename(), extensionForFormat(format));
    if (isValidCacheAtPath(path)) return path;
    // As with every way out, a failed write is not reported here: the label simply stays
    // empty and the path leads nowhere.
    if (format == PngFormat) writeToPNGFile(image, path);
    if (format == GifFormat) writeToGIFFile(image, path);
    if (format == TiffFormat) {
        writeToTIFFFile(image, path, preserveExif != 0 ? _document.metadata() : std::nullopt);
    }
    return _written(path);
}

QString TmpFileWriter::_writeJpeg(const Image& image, int preserveExif) {
    const QString path =
        _document.tempFolder().pathForImageNamed(_document.filename(), extensionForFormat(JpegFormat));
    if (isValidCacheAtPath(path)) return path;
    const int limit = _document.hasFilesizeLimit() ? _document.filesizeLimit().toInt() : 0;
    const auto metadata = preserveExif == 2 ? _document.metadata() : std::nullopt;
    if (!writeToJPEGFile(image, path, _document.compression(), limit, metadata)) return {};
    const QString exifSource = _document.sourcePath();
    if (preserveExif == 1 && !exifSource.isEmpty() && copyExif) copyExif(exifSource, path);
    return _written(path);
}

QString TmpFileWriter::_written(const QString& path) {
    _cacheValid = true;
    return path;
}

bool TmpFileWriter::isValidCacheAtPath(const QString& path) const {
    return _cacheValid && QFileInfo(path).isReadable();
}

}  // namespace marigold
