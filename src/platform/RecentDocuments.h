#pragma once

#include <QString>
#include <QStringList>

namespace marigold {

// The desktop's shared recent-files list (freedesktop recently-used.xbel). Other
// applications keep their entries in the same file, so a write keeps every entry it read,
// and a file that cannot be read is left alone rather than replaced.
class RecentDocuments {
public:
    explicit RecentDocuments(QString xbelPath = defaultPath());
    // $XDG_DATA_HOME/recently-used.xbel, where GTK and KDE look for it.
    static QString defaultPath();

    // Adds the file, or refreshes its entry, as used by Marigold now, and saves the list.
    // False (nothing written) when the list exists but is not readable as a bookmark file,
    // or when saving fails. A missing list is created.
    bool noteNewRecentDocument(const QString& path);
    // Local paths of the entries Marigold registered, most recently used first. Empty when
    // the list is missing or unreadable.
    QStringList recentDocuments() const;

    const QString& xbelPath() const { return _xbelPath; }

private:
    QString _xbelPath;
};

}  // namespace marigold
