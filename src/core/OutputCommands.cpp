// The document controller's commands that take the output out: the temporary file every way
// out goes through, saving, copying and printing.
#include <QFileInfo>

#include "core/AppController.h"
#include "core/SettingRanges.h"
#include "core/WindowSide.h"
#include "output/FileSizeText.h"
#include "platform/AtomicFile.h"
#include "platform/Clipboard.h"
#include "platform/DefaultsKeys.h"

namespace marigold {

void AppController::clearCache() {
    // Only a file still valid has its size shown; every drag step lands here.
    if (!_writer.isCacheValid()) return;
    _writer.clearCache();
    Q_EMIT filesizeTextChanged(QString());
}

QString AppController::writeTmpFile() {
    return _writeTmpFile(nullptr);
}

QString AppController::_writeTmpFile(Image* rendered) {
    if (!hasOutput()) return {};
    const OutputSettings settings = outputSettingsFor(
        fileFormat(), compression(), hasFilesizeLimit() ? filesizeLimit().toInt() : 0,
        integerSetting(_defaults, keys::DefPreserveExif), sourcePath());
    // First: naming an unnamed document is itself a change of the document.
    const QString name = filename();
    QString path = _writer.cachedPath(_document.revision(), settings);
    if (!path.isEmpty()) {
        if (rendered) *rendered = _renderOutput(false);
        return path;
    }
    if (_window) _window->setBusy(true);
    const Image output = _renderOutput(false);
    path = _writer.writeTmpFile(output, settings, name, _document.revision());
    if (_window) _window->setBusy(false);
    const qint64 size = path.isEmpty() ? 0 : fileSizeAtPath(path);
    Q_EMIT filesizeTextChanged(size > 0 ? stringWithFilesize(size) : QString());
    if (rendered) *rendered = output;
    return path;
}

void AppController::copyOutputImage() {
    Image output;
    const QString path = _writeTmpFile(&output);
    // The pixels of the file just written, never the preview, which may be a reduced copy.
    if (!path.isEmpty()) putOutputOnClipboard(output, path);
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
