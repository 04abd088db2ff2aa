// The document controller's commands that take the output out: the temporary file every way
// out goes through, saving, copying and printing.
#include <QFileInfo>

#include "core/AppController.h"
#include "core/AppControllerTemplates.h"
#include "core/WindowSide.h"
#include "output/FileSizeText.h"
#include "platform/AtomicFile.h"
#include "platform/Clipboard.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

namespace {

// Outputs larger than this get their file when one is asked for, not after every edit: the
// encoder would hold a core and hundreds of megabytes for a size nobody may need.
constexpr qint64 kMaxLiveFilePixels = 64'000'000;

}  // namespace

bool AppController::cleanupTmpdir() {
    _liveWriter.waitUntilIdle();
    return _tempFolder.cleanupTmpdir();
}

void AppController::clearCache() {
    // Every drag step lands here: only a label that changes is sent out.
    _writer.clearCache();
    _setFilesizeText(QString());
}

void AppController::_outputSettingsChanged() {
    clearCache();
    _scheduleLiveFile();
}

void AppController::_setFilesizeText(const QString& text) {
    if (text == _filesizeText) return;
    _filesizeText = text;
    Q_EMIT filesizeTextChanged(text);
}

OutputSettings AppController::_outputSettings() const {
    return outputSettingsFor(fileFormat(), compression(),
                             hasFilesizeLimit() ? filesizeLimit().toInt() : 0,
                             preserveMetadata(), sourcePath());
}

void AppController::_showWrittenFile(const WrittenFile& file, const OutputSettings& settings) {
    if (file.outcome == OutputResult::LimitTooLow) {
        _setFilesizeText(
            tr("File Size Limit Too Low: unable to keep file under %1 KB").arg(settings.limitKB));
    } else if (file.size <= 0) {
        _setFilesizeText(QString());
    } else if (settings.limitKB > 0) {
        _setFilesizeText(
            tr("%1 at quality %2").arg(stringWithFilesize(file.size)).arg(file.quality));
    } else {
        _setFilesizeText(stringWithFilesize(file.size));
    }
}

// Several changes in one pass make one file, after them.
void AppController::_scheduleLiveFile() {
    if (_liveFilePending) return;
    _liveFilePending = true;
    _later(0, [this] {
        _liveFilePending = false;
        _startLiveFile();
    });
}

void AppController::_startLiveFile() {
    const quint64 generation = _writer.generation();
    if (!hasOutput() || _writer.isCacheValid() || _writer.limitTooLow() ||
        _liveWriter.isWriting(generation)) {
        return;
    }
    // Huge outputs are written when they are asked for, not on every edit.
    const CropPlan plan = _document.cropPlan();
    if (qint64(plan.outputWide) * plan.outputHigh > kMaxLiveFilePixels) return;
    const OutputSettings settings = _outputSettings();
    const QString name = filename();
    _liveJob = {generation, _document.revision(), settings};
    _liveWriter.start(
        {generation, _outputRenderer(false), _writer.freshPath(name, settings), settings});
}

void AppController::_liveFileDone(const WrittenFile& file, quint64 generation) {
    const bool current = generation == _liveJob.generation &&
                         _writer.adopt(file, generation, _liveJob.revision, _liveJob.settings);
    if (current) {
        _showWrittenFile(file, _liveJob.settings);
    } else if (generation != _liveJob.generation) {
        removeOutputFile(file.path);
    }
}

QString AppController::writeTmpFile() {
    return _writeTmpFile(nullptr);
}

QString AppController::_writeTmpFile(Image* rendered) {
    if (!hasOutput()) return {};
    const OutputSettings settings = _outputSettings();
    // First: naming an unnamed document is itself a change of the document.
    const QString name = filename();
    const quint64 generation = _writer.generation();
    // The file being made in the background is the one wanted: waiting beats a second write.
    if (_liveWriter.isWriting(generation)) {
        if (const std::optional<WrittenFile> file = _liveWriter.waitFor(generation)) {
            _liveFileDone(*file, generation);
        }
    }
    QString path = _writer.cachedPath(_document.revision(), settings);
    if (path.isEmpty() && _writer.limitTooLow()) return {};
    if (path.isEmpty()) {
        if (_window) _window->setBusy(true);
        const Image output = _renderOutput(false);
        const WrittenFile file = _writer.writeTmpFile(output, settings, name, _document.revision());
        if (_window) _window->setBusy(false);
        _showWrittenFile(file, settings);
        path = file.path;
        if (rendered) *rendered = output;
    } else if (rendered) {
        *rendered = _renderOutput(false);
    }
    // Whoever asked hands the file on: it stays until quit.
    if (!path.isEmpty()) _writer.markHandedOut();
    return path;
}

void AppController::copyOutputImage() {
    Image output;
    const QString path = _writeTmpFile(&output);
    // The pixels of the file just written, never the preview, which may be a reduced copy.
    if (!path.isEmpty()) putOutputOnClipboard(output, path);
}

void AppController::sendTo(int tag) {
    const QString path = writeTmpFile();
    if (path.isEmpty()) {
        alertIfLimitTooLow();
        return;
    }
    _targetController.sendFile(tag, path);
}

void AppController::saveDocumentAs() {
    saveDocumentInFolder(QString());
}

void AppController::saveDocumentInFolder(const QString& directory) {
    if (!_window) return;
    _window->chooseSaveTarget(directory, filename(), fileFormat(),
                              [this](const QString& path) { savePanelDidEnd(true, path); });
}

QString AppController::userEnteredFilename(const QString& name, int format) {
    static const QStringList recognised = {QStringLiteral("png"), QStringLiteral("jpg"),
                                           QStringLiteral("gif"), QStringLiteral("tif")};
    // A leading dot starts a hidden name, not an extension.
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const bool known = dot > 0 && recognised.contains(name.mid(dot + 1).toLower());
    return (known ? name.left(dot) : name) + QLatin1Char('.') + extensionForFormat(format);
}

void AppController::alertIfLimitTooLow() {
    if (!_writer.limitTooLow()) return;
    _alert(tr("File Size Limit Too Low"),
           tr("Unable to keep file under %1 KB.\nPlease turn off file size limit or increase the "
              "limit.")
               .arg(filesizeLimit()));
}

void AppController::savePanelDidEnd(bool accepted, const QString& target) {
    if (!accepted) return;
    const QString temp = writeTmpFile();
    if (temp.isEmpty() && _writer.limitTooLow()) {
        _alert(tr("File Size Limit Too Low"),
               tr("Unable to keep file under %1 KB.\nPlease turn off file size limit or "
                  "increase the limit and try again.")
                   .arg(filesizeLimit()));
        return;
    }
    const QFileInfo chosen(target);
    const QString name = chosen.fileName();
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const QString base = dot > 0 ? name.left(dot) : name;
    if (base.isEmpty() || temp.isEmpty()) return;
    // The written file's extension wins over whatever the dialog returned; the file stays
    // in the chosen folder. The temporary file stays for later copies and drags; the copy
    // replaces any old file in one step.
    copyFileAtomically(temp, chosen.absolutePath() + QLatin1Char('/') + base + QLatin1Char('.') +
                                 QFileInfo(temp).suffix());
}

void AppController::print() {
    if (!_window || !hasOutput()) return;
    _window->print(_renderOutput(false));
}

}  // namespace marigold
