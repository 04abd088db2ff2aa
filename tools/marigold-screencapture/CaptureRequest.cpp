#include "CaptureRequest.h"

#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

ParsedRequest parseCaptureRequest(const QStringList& arguments) {
    CaptureRequest request;
    if (arguments.isEmpty()) return {std::nullopt, QStringLiteral("no output file given")};
    for (qsizetype i = 0; i + 1 < arguments.size(); ++i) {
        const QString& flag = arguments[i];
        if (flag == QLatin1String("-i")) {
            request.interactive = true;
        } else if (flag == QLatin1String("-W")) {
            request.window = true;
        } else if (flag == QLatin1String("-o")) {
            request.noFrame = true;
        } else if (flag == QLatin1String("-m")) {
            request.mainScreenOnly = true;
        } else if (flag == QLatin1String("-x")) {
            request.silent = true;
        } else {
            return {std::nullopt, QStringLiteral("unknown option %1").arg(flag)};
        }
    }
    request.output = arguments.last();
    if (request.output.startsWith(QLatin1Char('-')))
        return {std::nullopt, QStringLiteral("no output file given")};
    return {request, {}};
}

bool writeCapture(const QImage& image, const QString& path, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !image.save(&file, "PNG") || !file.commit()) {
        *error = QStringLiteral("%1: cannot write the capture: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

void playShutterSound() {
    const QString player = QStandardPaths::findExecutable(QStringLiteral("canberra-gtk-play"));
    if (!player.isEmpty()) {
        QProcess::startDetached(player, {QStringLiteral("--id"), QStringLiteral("camera-shutter")});
    }
}
