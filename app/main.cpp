#include <QApplication>
#include <QCommandLineParser>
#include <cstdio>

#include "core/AppController.h"
#include "core/MainWindow.h"
#include "platform/Defaults.h"
#include "platform/VipsRuntime.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Marigold"));
    QApplication::setApplicationName(QStringLiteral("Marigold"));
    QApplication::setApplicationVersion(QStringLiteral(MARIGOLD_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Crop, scale and sharpen one image at a time, with a live preview."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The image to open."));
    parser.process(app);

    if (!marigold::startVips(argv[0])) return 1;

    marigold::Defaults defaults;
    marigold::AppController controller(defaults);
    controller.removeOldDefaults();
    controller.migrateCheckAtStartup();
    marigold::MainWindow window(controller);
    window.show();
    controller.applicationDidFinishLaunching();

    const QStringList files = parser.positionalArguments();
    if (!files.isEmpty()) {
        QString reason;
        if (!controller.openFile(files.first(), &reason)) {
            std::fprintf(stderr, "marigold: %s: %s\n", qPrintable(files.first()),
                         qPrintable(reason));
        }
    }
    const int status = app.exec();
    controller.cleanupTmpdir();
    return status;
}
