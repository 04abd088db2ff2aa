#include "output/TmpFileWriter.h"

#include <QFileInfo>

#include "output/TempFolder.h"

namespace marigold {

namespace {

// The source path and its metadata are left out: the document's revision covers them.
bool sameChoices(const OutputSettings& a, const OutputSettings& b) {
    return a.format == b.format && a.quality == b.quality && a.limitKB == b.limitKB &&
           a.preserveExif == b.preserveExif;
}

}  // namespace

QString TmpFileWriter::cachedPath(quint64 revision, const OutputSettings& settings) const {
    const bool valid = _cacheValid && revision == _revision && sameChoices(settings, _settings) &&
                       QFileInfo(_path).isReadable();
    return valid ? _path : QString();
}

QString TmpFileWriter::writeTmpFile(const Image& image, const OutputSettings& settings,
                                    const QString& name, quint64 revision) {
    _cacheValid = false;
    _limitTooLow = false;
    const QString path = _folder.pathForImageNamed(name, extensionForFormat(settings.format));
    if (path.isEmpty() || image.isNull()) return {};
    const OutputResult result = writeOutputFile(image, path, settings);
    _limitTooLow = result == OutputResult::LimitTooLow;
    if (result != OutputResult::Written) return {};
    _path = path;
    _revision = revision;
    _settings = settings;
    _cacheValid = true;
    return path;
}

}  // namespace marigold
