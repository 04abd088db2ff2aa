#include "output/TmpFileWriter.h"

#include <QFileInfo>

#include "output/OutputViewDelegate.h"
#include "output/TempFolder.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

QString TmpFileWriter::writeTmpFile(const Image& image) {
    return writeTmpFileWithFormat(image, _document.fileFormat());
}

QString TmpFileWriter::writeTmpFileWithFormat(const Image& image, int format) {
    OutputSettings settings;
    settings.format = format;
    settings.preserveExif = _document.defaults().integerForKey(keys::DefPreserveExif);
    const bool jpeg = format != PngFormat && format != TiffFormat && format != GifFormat;
    if (jpeg) {
        settings.quality = _document.compression();
        settings.limitKB = _document.hasFilesizeLimit() ? _document.filesizeLimit().toInt() : 0;
    }
    if (settings.preserveExif == 2 || (format == TiffFormat && settings.preserveExif != 0)) {
        settings.metadata = _document.metadata();
    }
    settings.sourcePath = _document.sourcePath();
    settings.copyExif = copyExif;

    // A fresh path first, then the cache check: each file keeps a folder of its own.
    _limitTooLow = false;
    const QString path =
        _document.tempFolder().pathForImageNamed(_document.filename(), extensionForFormat(format));
    if (path.isEmpty()) return {};
    if (isValidCacheAtPath(path)) return path;
    // Only an unreachable size limit is answered with no path. Other failures are not
    // reported here: the label stays empty and the path leads nowhere.
    const OutputResult result = writeOutputFile(image, path, settings);
    _limitTooLow = result == OutputResult::LimitTooLow;
    if (_limitTooLow) return {};
    _cacheValid = result == OutputResult::Written;
    return path;
}

bool TmpFileWriter::isValidCacheAtPath(const QString& path) const {
    return _cacheValid && QFileInfo(path).isReadable();
}

}  // namespace marigold
