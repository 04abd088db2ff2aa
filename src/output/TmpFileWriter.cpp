#include "output/TmpFileWriter.h"

#include <QDir>
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

// Files handed out stay until quit: an application may still be reading them.
void removeOutputFile(const QString& path) {
    if (path.isEmpty()) return;
    QFile::remove(path);
    QDir().rmdir(QFileInfo(path).absolutePath());
}

WrittenFile writeOutputAt(const Image& image, const QString& path, const OutputSettings& settings) {
    WrittenFile file;
    if (path.isEmpty() || image.isNull()) return file;
    std::vector<JpegAttempt> attempts;
    file.outcome = writeOutputFile(image, path, settings, &attempts);
    if (file.outcome != OutputResult::Written) return file;
    file.path = path;
    file.size = QFileInfo(path).size();
    if (!attempts.empty()) file.quality = attempts.back().quality;
    return file;
}

QString TmpFileWriter::cachedPath(quint64 revision, const OutputSettings& settings) const {
    const bool valid = _cacheValid && revision == _revision && sameChoices(settings, _settings) &&
                       QFileInfo(_current.path).isReadable();
    return valid ? _current.path : QString();
}

QString TmpFileWriter::freshPath(const QString& name, const OutputSettings& settings) {
    return _folder.pathForImageNamed(name, extensionForFormat(settings.format));
}

WrittenFile TmpFileWriter::writeTmpFile(const Image& image, const OutputSettings& settings,
                                        const QString& name, quint64 revision) {
    const WrittenFile file = writeOutputAt(image, freshPath(name, settings), settings);
    adopt(file, _generation, revision, settings);
    return file;
}

bool TmpFileWriter::adopt(const WrittenFile& file, quint64 generation, quint64 revision,
                          const OutputSettings& settings) {
    if (generation != _generation) {
        removeOutputFile(file.path);
        return false;
    }
    _dropUnseenFile();
    _current = file;
    _handedOut = false;
    _revision = revision;
    _settings = settings;
    _cacheValid = file.outcome == OutputResult::Written;
    _limitTooLow = file.outcome == OutputResult::LimitTooLow;
    return true;
}

bool TmpFileWriter::clearCache() {
    ++_generation;
    const bool wasValid = _cacheValid || _limitTooLow;
    _dropUnseenFile();
    _current = {};
    _cacheValid = false;
    _limitTooLow = false;
    return wasValid;
}

void TmpFileWriter::_dropUnseenFile() {
    if (!_handedOut) removeOutputFile(_current.path);
}

}  // namespace marigold
