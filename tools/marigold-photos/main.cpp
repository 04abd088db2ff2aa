// marigold-photos: a window of thumbnails of the user's pictures, from which photos are
// dragged into Marigold or double-clicked to open there. Marigold starts it with the path of
// a settings document; a chosen photo is reported on standard output as "open PATH", and
// opened with the document's application when nobody reads that.
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QProcess>
#include <QStandardPaths>
#include <QStatusBar>
#include <csignal>
#include <cstdio>

#include "PhotoGrid.h"
#include "PhotoSettings.h"

namespace {

void choose(const QString& path, const QString& application) {
    const QByteArray line = "open " + path.toUtf8() + '\n';
    const bool told = std::fwrite(line.constData(), 1, size_t(line.size()), stdout) ==
                          size_t(line.size()) &&
                      std::fflush(stdout) == 0;
    if (!told && !application.isEmpty()) QProcess::startDetached(application, {path});
}

}  // namespace

int main(int argc, char* argv[]) {
    // A Marigold that has gone makes the answer fail, not the browser die.
    std::signal(SIGPIPE, SIG_IGN);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("marigold-photos"));
    const QStringList arguments = QApplication::arguments();
    const PhotoSettings settings =
        arguments.size() > 1 ? readPhotoSettings(arguments.at(1)) : PhotoSettings{};

    QMainWindow window;
    window.setWindowTitle(settings.title.isEmpty() ? QStringLiteral("Photos") : settings.title);
    auto* grid = new PhotoGrid;
    window.setCentralWidget(grid);
    auto* status = new QLabel;
    status->setAccessibleName(QStringLiteral("Status"));
    window.statusBar()->addWidget(status, 1);
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    QObject::connect(grid, &PhotoGrid::loaded, status, [status, folder](int count) {
        status->setText(count == 0 ? QObject::tr("No pictures in %1").arg(folder)
                                   : QObject::tr("%1 pictures in %2").arg(count).arg(folder));
    });
    QObject::connect(grid, &PhotoGrid::photoChosen, grid,
                     [application = settings.application](const QString& path) {
                         choose(path, application);
                     });
    grid->load(folder);
    window.resize(720, 520);
    window.show();
    // Asked for from Marigold's menu: it comes to the front, ready for the keyboard.
    window.raise();
    window.activateWindow();
    grid->setFocus();
    return QApplication::exec();
}
