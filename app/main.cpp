#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

#include "core/AppController.h"
#include "core/HeadlessExport.h"
#include "core/HeadlessInfo.h"
#include "core/MainWindow.h"
#include "platform/Defaults.h"
#include "platform/VipsRuntime.h"

namespace {

void nameApplication() {
    QCoreApplication::setOrganizationName(QStringLiteral("Marigold"));
    QCoreApplication::setApplicationName(QStringLiteral("Marigold"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MARIGOLD_VERSION));
}

// Scripts and batch jobs run where there may be no display: no GUI application object, so
// no platform plugin is loaded.
int exportHeadless(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    nameApplication();
    return marigold::runExportCommand(QCoreApplication::arguments().mid(1), argv[0]);
}

}  // namespace

int main(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
    if (marigold::isExportCommand(arguments)) return exportHeadless(argc, argv);
    if (marigold::isInfoCommand(arguments)) {
        QCoreApplication app(argc, argv);
        nameApplication();
        return marigold::runInfoCommand(arguments, argv[0]);
    }

    QApplication app(argc, argv);
    nameApplication();

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Crop, scale and sharpen one image at a time, with a live preview."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The image to open."));
    // Handled before this parser runs; listed so that --help tells scripts it exists.
    parser.addOption({QStringLiteral("export"),
                      QStringLiteral("Export without a window; see marigold --export --help."),
                      QStringLiteral("OUT")});
    parser.addOption({QStringLiteral("info"),
                      QStringLiteral("Print what is known about an image file, without a window."),
                      QStringLiteral("FILE")});
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
