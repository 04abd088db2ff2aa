// The document controller's screen capture: the helper run with the window off the screen,
// the timed capture's countdown, and the picture it writes opened as "screenshot".
#include <QDir>
#include <QFileInfo>

#include "core/AppController.h"
#include "core/AppControllerTemplates.h"
#include "core/CountdownThread.h"
#include "core/CursorImages.h"
#include "core/WindowSide.h"
#include "platform/DefaultsKeys.h"
#include "platform/ImageLoader.h"
#include "platform/ScreenPointer.h"
#include "processing/CaptureOverlays.h"

namespace marigold {

using namespace keys;

namespace {

// Long enough for the window to be gone from the screen before the helper reads it.
constexpr int kLeaveScreenMsec = 300;
// A helper that has not answered by then never will; 143 is how a shell reports the end
// it is given.
constexpr int kCaptureDeadlineMsec = 120000;
constexpr int kEndedStatus = 143;

QString captureTool() {
    return ChildProcess::besideExecutable(QStringLiteral("marigold-screencapture"));
}

}  // namespace

QStringList AppController::screenCaptureArguments(CaptureKind kind, bool playSound) {
    QStringList arguments;
    switch (kind) {
        case CaptureKind::Selection:
            arguments = {QStringLiteral("-i")};
            break;
        case CaptureKind::Window:
            arguments = {QStringLiteral("-i"), QStringLiteral("-W"), QStringLiteral("-o")};
            break;
        case CaptureKind::Screen:
            arguments = {QStringLiteral("-m")};
            break;
    }
    if (!playSound) arguments << QStringLiteral("-x");
    return arguments;
}

void AppController::captureSelection() {
    _startCapture(CaptureKind::Selection);
}

void AppController::captureWindow() {
    _startCapture(CaptureKind::Window);
}

void AppController::captureScreen() {
    _startCapture(CaptureKind::Screen);
}

void AppController::_startCapture(CaptureKind kind) {
    if (isCapturing()) return;
    if (_window) _window->leaveScreen();
    _lastShotIsTimed = false;
    const QStringList arguments = screenCaptureArguments(kind, _defaults.boolForKey(DefPlaySound));
    _later(kLeaveScreenMsec, [this, arguments] { runScreenCapture(arguments); });
}

void AppController::captureScreenTimedStart(int delay) {
    if (isCapturing()) return;
    delay = std::max(delay, 1);
    _defaults.setInteger(DefTimedCaptureDelay, delay);
    _lastShotIsTimed = true;
    if (_window) _window->leaveScreen();
    auto* countdown = new CountdownThread(*this, QDateTime::currentDateTime().addSecs(delay));
    connect(countdown, &QThread::finished, countdown, &QObject::deleteLater);
    connect(countdown, &QThread::finished, this, [this, countdown] {
        if (_countdown == countdown) _countdown = nullptr;
    });
    _countdown = countdown;
    countdown->start();
}

void AppController::captureAtCountdownEnd() {
    Q_EMIT countdownEnded();
    runScreenCapture(screenCaptureArguments(CaptureKind::Screen, _defaults.boolForKey(DefPlaySound)));
}

void AppController::runScreenCapture(const QStringList& arguments) {
    const QString tool = captureTool();
    if (!QFileInfo(tool).isExecutable()) {
        // Back first, so that the alert stands over the window it concerns.
        if (_window) _window->returnToScreen();
        _alert(tr("Error"), tr("Screen capture utility (%1) cannot be found.").arg(tool),
               tr("Okay"));
        return;
    }
    const QString output = QDir(tmpdir()).filePath(QStringLiteral("screenshot.png"));
    // The helper writes a new file; an old one left here would pass for a capture.
    QFile::remove(output);
    _cursorPosition = pointerOnMainScreen();
    connect(&_capture, &ChildProcess::exited, this, &AppController::_captureExited,
            Qt::UniqueConnection);
    if (!_capture.start(tool, QStringList(arguments) << output)) {
        _captureExited(127);
        return;
    }
    if (!_captureDeadline) {
        _captureDeadline = new QTimer(this);
        _captureDeadline->setSingleShot(true);
        connect(_captureDeadline, &QTimer::timeout, this, [this] {
            _capture.stop();
            _captureExited(kEndedStatus);
        });
    }
    _captureDeadline->start(kCaptureDeadlineMsec);
}

void AppController::_captureExited(int status) {
    if (_captureDeadline) _captureDeadline->stop();
    if (_window) _window->returnToScreen();
    if (status == 0) {
        // No file: the person cancelled, and the document stays as it was.
        loadScreenCapture(QDir(tmpdir()).filePath(QStringLiteral("screenshot.png")));
    } else {
        _alert(tr("Error"), tr("Screen capture exited with status %1").arg(status), tr("Okay"));
    }
}

bool AppController::loadScreenCapture(const QString& path) {
    const LoadedImage loaded = loadImageFile(path);
    if (loaded.image.isNull()) return false;
    Image image = loaded.image;
    if (_lastShotIsTimed && _cursorPosition) {
        if (const std::optional<CursorImage> cursor = selectedCursor(_defaults)) {
            image = overlays::drawCursor(cursor->image, cursor->hotSpot, image, *_cursorPosition);
        }
    }
    const int stamp = _defaults.integerForKey(DefTimeStamp);
    if (stamp == 1 || stamp == 2) {
        image = overlays::datedImage(image, stamp == 2, QDateTime::currentDateTime());
    }
    _showImage(image);
    setSourcePath(path);
    return true;
}

}  // namespace marigold
