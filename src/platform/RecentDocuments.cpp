#include "platform/RecentDocuments.h"

#include <glib.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QtDebug>
#include <algorithm>
#include <memory>
#include <vector>

namespace marigold {

namespace {

constexpr const char* kAppName = "Marigold";
constexpr const char* kAppExec = "marigold %u";

struct BookmarkFileFree {
    void operator()(GBookmarkFile* file) const { g_bookmark_file_free(file); }
};
using BookmarkFile = std::unique_ptr<GBookmarkFile, BookmarkFileFree>;

// The list as stored, an empty one when there is none yet (or an empty file, which holds
// nothing to lose), or null when the file is there but unreadable.
BookmarkFile load(const QString& xbelPath) {
    BookmarkFile file(g_bookmark_file_new());
    if (QFileInfo(xbelPath).size() == 0) return file;
    GError* error = nullptr;
    if (g_bookmark_file_load_from_file(file.get(), QFile::encodeName(xbelPath).constData(),
                                       &error)) {
        return file;
    }
    const bool missing = g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_NOENT);
    if (!missing) {
        qWarning("recent documents: cannot read %s: %s", qPrintable(xbelPath), error->message);
    }
    g_error_free(error);
    return missing ? std::move(file) : nullptr;
}

}  // namespace

RecentDocuments::RecentDocuments(QString xbelPath) : _xbelPath(std::move(xbelPath)) {}

QString RecentDocuments::defaultPath() {
    return QFile::decodeName(g_get_user_data_dir()) + QStringLiteral("/recently-used.xbel");
}

bool RecentDocuments::noteNewRecentDocument(const QString& path) {
    if (path.isEmpty()) return false;
    BookmarkFile file = load(_xbelPath);
    if (!file) return false;

    const QFileInfo info(path);
    gchar* uri =
        g_filename_to_uri(QFile::encodeName(info.absoluteFilePath()).constData(), nullptr, nullptr);
    if (!uri) return false;
    const QByteArray mime = QMimeDatabase().mimeTypeForFile(info).name().toUtf8();
    // Adding the application creates the entry when needed, stamps it with the current time
    // and counts the use; the entry's own dates follow.
    g_bookmark_file_add_application(file.get(), uri, kAppName, kAppExec);
    g_bookmark_file_set_mime_type(file.get(), uri, mime.constData());
    GDateTime* now = g_date_time_new_now_utc();
    g_bookmark_file_set_visited_date_time(file.get(), uri, now);
    g_bookmark_file_set_modified_date_time(file.get(), uri, now);
    g_date_time_unref(now);
    g_free(uri);

    QDir().mkpath(QFileInfo(_xbelPath).absolutePath());
    GError* error = nullptr;
    // Written to a temporary file and renamed, so a failed save leaves the old list intact.
    if (!g_bookmark_file_to_file(file.get(), QFile::encodeName(_xbelPath).constData(), &error)) {
        qWarning("recent documents: cannot save %s: %s", qPrintable(_xbelPath), error->message);
        g_error_free(error);
        return false;
    }
    return true;
}

QStringList RecentDocuments::recentDocuments() const {
    BookmarkFile file = load(_xbelPath);
    if (!file) return {};

    struct Entry {
        QString path;
        gint64 stamp;
    };
    std::vector<Entry> entries;
    gchar** uris = g_bookmark_file_get_uris(file.get(), nullptr);
    for (gchar** uri = uris; *uri; ++uri) {
        GDateTime* stamp = nullptr;
        if (!g_bookmark_file_get_application_info(file.get(), *uri, kAppName, nullptr, nullptr,
                                                  &stamp, nullptr)) {
            continue;  // another application's entry
        }
        gchar* name = g_filename_from_uri(*uri, nullptr, nullptr);
        const gint64 usec =
            g_date_time_to_unix(stamp) * G_USEC_PER_SEC + g_date_time_get_microsecond(stamp);
        if (name) entries.push_back({QFile::decodeName(name), usec});
        g_free(name);
    }
    g_strfreev(uris);

    // Equal stamps (coarse clocks, hand-edited files): the entry added later counts as newer.
    std::reverse(entries.begin(), entries.end());
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.stamp > b.stamp; });
    QStringList paths;
    for (const Entry& entry : entries) paths << entry.path;
    return paths;
}

}  // namespace marigold
