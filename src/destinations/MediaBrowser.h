#pragma once

#include <QObject>
#include <memory>

#include "platform/ChildProcess.h"

namespace marigold {

// The photo browser: the `marigold-photos` helper run as a child, given a settings document
// in a working folder (the per-process temporary folder) that names its window and the
// program to open photos with. A photo double-clicked there comes back as `photoChosen`.
class MediaBrowser : public QObject {
    Q_OBJECT

public:
    // Null when the working copy cannot be written. `helper` is the browser program.
    static std::unique_ptr<MediaBrowser> create(const QString& appSupportPath,
                                                const QString& windowTitle,
                                                const QString& helper);
    ~MediaBrowser() override;

    // Starts the browser, ending a running one first.
    void open();
    // Ends it and waits until it has gone.
    void close();
    bool isOpen() const;

    // The settings document's text: the template with the application path put in first,
    // then the title, so a title is never expanded again.
    static QString workflowWithWindowTitle(const QString& title, const QString& applicationPath);
    // The working folder's copy; its "document.wflow" is what the helper reads.
    QString installedPath() const { return _installedPath; }

Q_SIGNALS:
    void photoChosen(const QString& path);

private:
    explicit MediaBrowser(const QString& helper);
    bool _copyMediaBrowserToPath(const QString& folder);
    bool _installMediaBrowserAtPath(const QString& folder, const QString& title);

    QString _helper;
    QString _installedPath;
    ChildProcess _task;
};

}  // namespace marigold
