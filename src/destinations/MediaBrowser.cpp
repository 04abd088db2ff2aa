#include "destinations/MediaBrowser.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "platform/AtomicFile.h"

namespace marigold {

namespace {

const QString kChosenPrefix = QStringLiteral("open ");

}  // namespace

MediaBrowser::MediaBrowser(const QString& helper) : _helper(helper) {
    connect(&_task, &ChildProcess::lineWritten, this, [this](const QString& line) {
        if (line.startsWith(kChosenPrefix)) Q_EMIT photoChosen(line.mid(kChosenPrefix.size()));
    });
}

MediaBrowser::~MediaBrowser() {
    close();
}

std::unique_ptr<MediaBrowser> MediaBrowser::create(const QString& appSupportPath,
                                                   const QString& windowTitle,
                                                   const QString& helper) {
    std::unique_ptr<MediaBrowser> browser(new MediaBrowser(helper));
    if (!browser->_installMediaBrowserAtPath(appSupportPath, windowTitle)) return nullptr;
    return browser;
}

bool MediaBrowser::_copyMediaBrowserToPath(const QString& folder) {
    const QString target = QDir(folder).filePath(QStringLiteral("MediaBrowser"));
    // An existing working copy is reused as it is.
    if (!QFileInfo(target).isDir() && !QDir().mkpath(target)) {
        _installedPath.clear();
        return false;
    }
    _installedPath = target;
    return true;
}

QString MediaBrowser::workflowWithWindowTitle(const QString& title,
                                              const QString& applicationPath) {
    QFile templateFile(QStringLiteral(":/photos/document_wflow_template"));
    if (!templateFile.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(templateFile.readAll())
        .replace(QLatin1String("BF_APPLICATION_PATH"), applicationPath)
        .replace(QLatin1String("BF_WINDOW_TITLE"), title);
}

bool MediaBrowser::_installMediaBrowserAtPath(const QString& folder, const QString& title) {
    if (!_copyMediaBrowserToPath(folder)) return false;
    const QString workflow =
        workflowWithWindowTitle(title, QCoreApplication::applicationFilePath());
    return !workflow.isEmpty() &&
           writeFileAtomically(QDir(_installedPath).filePath(QStringLiteral("document.wflow")),
                               workflow.toUtf8());
}

void MediaBrowser::open() {
    close();
    _task.start(_helper, {QDir(_installedPath).filePath(QStringLiteral("document.wflow"))});
}

void MediaBrowser::close() {
    _task.stop();
}

bool MediaBrowser::isOpen() const {
    return _task.isRunning();
}

}  // namespace marigold
