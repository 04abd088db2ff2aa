// marigold-screencapture [-i] [-W] [-o] [-m] [-x] OUTPUT
// Writes a PNG of the screen, of a region dragged out (-i) or of a window clicked (-i -W) to
// OUTPUT: through the desktop's screenshot portal when the session has one, otherwise from
// the X server. Exit status 0 with the file written, or with no file when the person cancels;
// otherwise non-zero, with one line on standard error saying why.
#include <QApplication>
#include <QEventLoop>
#include <cstdio>

#include "CaptureRequest.h"
#include "PortalCapture.h"
#include "SelectionOverlay.h"
#include "X11Capture.h"

namespace {

int failed(const QString& reason) {
    std::fprintf(stderr, "marigold-screencapture: %s\n", qPrintable(reason));
    return 1;
}

// The region or window the person chooses over the frozen screen; null when cancelled.
QRect chooseOnScreen(const QImage& frozen, QPoint origin, const CaptureRequest& request) {
    SelectionOverlay overlay(frozen, origin, request.window, request.noFrame);
    QRect chosen;
    QEventLoop loop;
    QObject::connect(&overlay, &SelectionOverlay::chosen, &loop, [&](QRect region) {
        chosen = region;
        loop.quit();
    });
    overlay.show();
    loop.exec();
    return chosen;
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QStringList arguments = QApplication::arguments();
    arguments.removeFirst();
    const ParsedRequest parsed = parseCaptureRequest(arguments);
    if (!parsed.request) {
        std::fprintf(stderr, "marigold-screencapture: %s\n", qPrintable(parsed.error));
        return 2;
    }
    const CaptureRequest& request = *parsed.request;
    QString error;
    switch (captureWithPortal(request, &error)) {
        case PortalOutcome::Written:
            return 0;
        case PortalOutcome::Cancelled:
            return 0;
        case PortalOutcome::Failed:
            return failed(error);
        case PortalOutcome::Unavailable:
            break;
    }
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return failed(QStringLiteral("no screen to capture on the %1 platform")
                          .arg(QGuiApplication::platformName()));

    const bool wholeDesktop = request.interactive || !request.mainScreenOnly;
    QImage image = x11capture::grabScreens(!wholeDesktop);
    if (image.isNull()) return failed(QStringLiteral("the screen could not be read"));
    if (request.interactive) {
        const QRect chosen =
            chooseOnScreen(image, x11capture::grabOrigin(!wholeDesktop), request);
        if (chosen.isEmpty()) return 0;
        image = image.copy(chosen);
    }
    if (!request.silent) playShutterSound();
    return writeCapture(image, request.output, &error) ? 0 : failed(error);
}
