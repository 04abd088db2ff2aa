#include "output/TmpFileWriter.h"

#include <QFileInfo>

#include "output/TempFolder.h"

namespace marigold {

namespace {

// The metadata is left out: it is read from the source, which the revision already covers.
bool sameChoices(const OutputSettings& a, const OutputSettings& b) {
    return a.format == b.format && a.quality == b.quality && a.limitKB == b.limitKB &&
           a.preserveExif == b.preserveExif && a.sourcePath == b.sourcePath;
}

}  // namespace

QString TmpFileWriter::cachedPath(quint64 revision, const OutputSettings& settings,
                                  const QString& name) const {
    const bool valid = _cacheValid && revision == _revision && sameChoices(settings, _settings) &&
                       name == _name && QFileInfo(_path).isReadable();
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
    _name = name;
    _cacheValid = true;
    return path;
}

}  // namespace marigold
