#include "platform/Workspace.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <memory>

namespace marigold::workspace {

namespace {

struct ObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using GObjectPtr = std::unique_ptr<T, ObjectUnref>;

bool isDesktopEntry(const QString& path) {
    return path.endsWith(QLatin1String(".desktop")) && QFileInfo(path).isFile();
}

GObjectPtr<GDesktopAppInfo> desktopEntry(const QString& path) {
    if (!isDesktopEntry(path)) return nullptr;
    return GObjectPtr<GDesktopAppInfo>(
        g_desktop_app_info_new_from_filename(QFile::encodeName(path).constData()));
}

QStringList namesOf(GIcon* icon) {
    QStringList names;
    if (icon && G_IS_THEMED_ICON(icon)) {
        for (const gchar* const* name = g_themed_icon_get_names(G_THEMED_ICON(icon));
             name && *name; ++name) {
            names << QString::fromUtf8(*name);
        }
    }
    return names;
}

}  // namespace

ItemKind kindOf(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists()) return ItemKind::Missing;
    if (info.isDir()) return ItemKind::Folder;
    if (isDesktopEntry(path)) return desktopEntry(path) ? ItemKind::Application : ItemKind::Other;
    return info.isFile() && info.isExecutable() ? ItemKind::Application : ItemKind::Other;
}

QString displayName(const QString& path) {
    if (const auto entry = desktopEntry(path)) {
        return QString::fromUtf8(g_app_info_get_name(G_APP_INFO(entry.get())));
    }
    return QFileInfo(path).fileName();
}

QStringList iconNames(const QString& path) {
    if (const auto entry = desktopEntry(path)) {
        return namesOf(g_app_info_get_icon(G_APP_INFO(entry.get())));
    }
    GObjectPtr<GFile> file(g_file_new_for_path(QFile::encodeName(path).constData()));
    GObjectPtr<GFileInfo> info(g_file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_ICON,
                                                 G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    return info ? namesOf(g_file_info_get_icon(info.get())) : QStringList();
}

bool openWithApplication(const QString& file, const QString& application, QString* error) {
    if (const auto entry = desktopEntry(application)) {
        GObjectPtr<GFile> target(g_file_new_for_path(QFile::encodeName(file).constData()));
        GList files{target.get(), nullptr, nullptr};
        GError* failure = nullptr;
        if (g_app_info_launch(G_APP_INFO(entry.get()), &files, nullptr, &failure)) return true;
        if (error) *error = QString::fromUtf8(failure ? failure->message : "");
        if (failure) g_error_free(failure);
        return false;
    }
    if (kindOf(application) != ItemKind::Application) {
        if (error) *error = QStringLiteral("%1 is not an application").arg(application);
        return false;
    }
    if (QProcess::startDetached(application, {file})) return true;
    if (error) *error = QStringLiteral("%1 could not be started").arg(application);
    return false;
}

}  // namespace marigold::workspace
