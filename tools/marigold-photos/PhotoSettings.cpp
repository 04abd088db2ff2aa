#include "PhotoSettings.h"

#include <QFile>

PhotoSettings readPhotoSettings(const QString& path) {
    PhotoSettings settings;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return settings;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1Char('#'))) continue;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals < 0) continue;
        const QString key = line.left(equals).trimmed();
        const QString value = line.mid(equals + 1);
        if (key == QLatin1String("Title")) settings.title = value;
        if (key == QLatin1String("Application")) settings.application = value;
    }
    return settings;
}
