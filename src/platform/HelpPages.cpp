#include "platform/HelpPages.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QUrl>

namespace marigold {

bool openHelpPage(const QString& page, const QString& folder) {
    const QString help = QDir(folder).filePath(QStringLiteral("help"));
    const QString target = QDir(help).filePath(page);
    if (!QFile::exists(target)) {
        if (!QDir().mkpath(help) || !QFile::copy(QStringLiteral(":/help/") + page, target)) {
            return false;
        }
    }
    return QDesktopServices::openUrl(QUrl::fromLocalFile(target));
}

}  // namespace marigold
