#pragma once

#include <QString>
#include <QStringList>

namespace marigold::workspace {

// What a path names, as a destination sees it: a folder; an application (a desktop entry
// that launches something, or an executable file); anything else; or nothing at all.
enum class ItemKind { Missing, Folder, Application, Other };
ItemKind kindOf(const QString& path);

// The name a person knows the item by: a desktop entry's Name, otherwise the file or folder
// name in full (a dot in a folder's name is part of it).
QString displayName(const QString& path);

// The icon theme's names for the item, most specific first; empty when it has none.
QStringList iconNames(const QString& path);

// Opens `file` with the application at `application`: a desktop entry through GIO, an
// executable as a process of its own. False, with `error` set, when it cannot be started.
bool openWithApplication(const QString& file, const QString& application, QString* error);

}  // namespace marigold::workspace
