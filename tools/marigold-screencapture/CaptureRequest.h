#pragma once

#include <QImage>
#include <QString>
#include <QStringList>
#include <optional>

// What the command line asks for: "-i" interactive, "-W" a window rather than a region,
// "-o" without the window's frame, "-m" the main screen only, "-x" silent; the output path
// comes last.
struct CaptureRequest {
    bool interactive = false;
    bool window = false;
    bool noFrame = false;
    bool mainScreenOnly = false;
    bool silent = false;
    QString output;
};

struct ParsedRequest {
    std::optional<CaptureRequest> request;
    QString error;  // one line, when there is no request
};
ParsedRequest parseCaptureRequest(const QStringList& arguments);

// Writes `image` as a PNG at `path` through a new file renamed into place, so a link planted
// at that name is replaced, never followed.
bool writeCapture(const QImage& image, const QString& path, QString* error);

// The desktop's shutter sound, when a player for it is installed.
void playShutterSound();
