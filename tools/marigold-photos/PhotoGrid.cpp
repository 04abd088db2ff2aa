#include "PhotoGrid.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QDrag>
#include <QImageReader>
#include <QMimeData>
#include <QPointer>
#include <QStandardPaths>
#include <QThreadPool>
#include <QUrl>

namespace {

constexpr int kThumbnailSide = 128;
constexpr int kPathRole = Qt::UserRole + 1;

const QStringList kPictureSuffixes = {
    QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"), QStringLiteral("*.png"),
    QStringLiteral("*.tif"), QStringLiteral("*.tiff"), QStringLiteral("*.gif"),
    QStringLiteral("*.JPG"), QStringLiteral("*.JPEG"), QStringLiteral("*.PNG")};

// The freedesktop thumbnail of `path`, when the desktop has made one.
QImage cachedThumbnail(const QString& path) {
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
    const QString name =
        QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()) +
        QStringLiteral(".png");
    const QDir cache(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                     QStringLiteral("/thumbnails"));
    for (const char* size : {"large", "normal"}) {
        const QImage image(cache.filePath(QLatin1String(size) + QLatin1Char('/') + name));
        if (!image.isNull()) return image;
    }
    return {};
}

QImage thumbnail(const QString& path) {
    QImage image = cachedThumbnail(path);
    if (image.isNull()) {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (size.isValid()) {
            reader.setScaledSize(size.scaled(kThumbnailSide, kThumbnailSide, Qt::KeepAspectRatio));
        }
        image = reader.read();
    }
    return image.isNull() ? image
                          : image.scaled(kThumbnailSide, kThumbnailSide, Qt::KeepAspectRatio,
                                         Qt::SmoothTransformation);
}

}  // namespace

PhotoGrid::PhotoGrid(QWidget* parent) : QListView(parent) {
    setModel(&_photos);
    setViewMode(QListView::IconMode);
    setIconSize(QSize(kThumbnailSide, kThumbnailSide));
    setGridSize(QSize(kThumbnailSide + 24, kThumbnailSide + 36));
    setResizeMode(QListView::Adjust);
    setMovement(QListView::Static);
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setDragEnabled(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAccessibleName(tr("Photos"));
    connect(this, &QListView::activated, this, [this](const QModelIndex& index) {
        Q_EMIT photoChosen(index.data(kPathRole).toString());
    });
}

void PhotoGrid::load(const QString& folder) {
    QPointer<PhotoGrid> grid(this);
    QThreadPool::globalInstance()->start([grid, folder] {
        QStringList paths;
        QDirIterator found(folder, kPictureSuffixes, QDir::Files, QDirIterator::Subdirectories);
        while (found.hasNext()) paths << found.next();
        paths.sort();
        QMetaObject::invokeMethod(qApp, [grid, paths] {
            if (grid) grid->_show(paths);
        });
    });
}

void PhotoGrid::_show(const QStringList& paths) {
    QPointer<PhotoGrid> grid(this);
    for (const QString& path : paths) {
        auto* item = new QStandardItem(QFileInfo(path).fileName());
        item->setData(path, kPathRole);
        item->setToolTip(path);
        _photos.appendRow(item);
        QPersistentModelIndex index(item->index());
        QThreadPool::globalInstance()->start([grid, index, path] {
            const QImage image = thumbnail(path);
            QMetaObject::invokeMethod(qApp, [grid, index, image] {
                if (grid && index.isValid() && !image.isNull()) {
                    grid->_photos.setData(index, QPixmap::fromImage(image), Qt::DecorationRole);
                }
            });
        });
    }
    Q_EMIT loaded(int(paths.size()));
}

void PhotoGrid::startDrag(Qt::DropActions) {
    QList<QUrl> urls;
    for (const QModelIndex& index : selectionModel()->selectedIndexes()) {
        urls << QUrl::fromLocalFile(index.data(kPathRole).toString());
    }
    if (urls.isEmpty()) return;
    auto* data = new QMimeData;
    data->setUrls(urls);
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    const QIcon icon = selectionModel()->currentIndex().data(Qt::DecorationRole).value<QIcon>();
    if (!icon.isNull()) drag->setPixmap(icon.pixmap(64, 64));
    drag->exec(Qt::CopyAction);
}
