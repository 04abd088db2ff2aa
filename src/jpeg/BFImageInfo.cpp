#include "jpeg/BFImageInfo.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLocale>
#include <QObject>
#include <QStringList>
#include <cmath>

#include "jpeg/JpegContext.h"
#include "platform/ImageLoader.h"

namespace marigold {

namespace {

std::string fileSystemName(const QString& path) { return QFile::encodeName(path).toStdString(); }

QString shortDate(const QDateTime& date) {
    return date.isValid() ? QLocale().toString(date, QLocale::ShortFormat) : QString();
}

template <typename T>
int order(const T& a, const T& b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

}  // namespace

BFImageInfo::BFImageInfo(const QString& path) : _path(path), _kind(kindForPath(path)) {}

QString BFImageInfo::kindForPath(const QString& path) {
    static const QHash<QString, QString> kinds = {
        {QStringLiteral("jpg"), QStringLiteral("JPEG")}, {QStringLiteral("jpeg"), QStringLiteral("JPEG")},
        {QStringLiteral("psd"), QStringLiteral("Photoshop")}, {QStringLiteral("tiff"), QStringLiteral("TIFF")},
        {QStringLiteral("tif"), QStringLiteral("TIFF")}, {QStringLiteral("gif"), QStringLiteral("GIF")},
        {QStringLiteral("png"), QStringLiteral("PNG")},
    };
    const QString extension = QFileInfo(path).suffix().toLower();
    return kinds.value(extension, extension.toUpper());
}

QImage BFImageInfo::fittedImage(const QImage& image, int w, int h) {
    if (image.isNull() || image.width() == 0 || image.height() == 0) return {};
    const double aspect = double(image.width()) / image.height();
    const QSize size = aspect > double(w) / h ? QSize(w, int(std::lround(w / aspect)))
                                              : QSize(int(std::lround(aspect * h)), h);
    return image.scaled(size.expandedTo({1, 1}), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

std::optional<BFImageInfo> BFImageInfo::fromFile(const QString& path, bool fallbackOnFile) {
    BFImageInfo info(path);
    if (!info._readJpeg() && !(fallbackOnFile && info._readAnyImage())) return std::nullopt;
    if (info._thumbnail.isNull()) {
        info._thumbnail = fittedImage(thumbnailOfFile(path, 32).toQImage(), 32, 32);
    }
    return info;
}

bool BFImageInfo::_readJpeg() {
    JpegContext context;
    // The reader's reports are for a console; the window shows what could be read.
    context.setErrorStream(nullptr);
    context.setOutputStream(nullptr);
    if (!context.parseFile(fileSystemName(_path))) return false;
    const ImageInfo& record = context.imageInfo();
    _width = record.width;
    _height = record.height;
    _size = qint64(record.fileSize);
    _orientation = record.orientation;
    _sensorWidth = record.ccdWidth;
    _focalLength = record.focalLength;
    _exposureTime = record.exposureTime;
    _aperture = record.apertureFNumber;
    _distance = record.distance;
    _exposureBias = record.exposureBias;
    _iso = record.isoEquivalent;
    _flashUsed = record.flashUsed > 0;
    _cameraMake = QString::fromStdString(record.cameraMake);
    _cameraModel = QString::fromStdString(record.cameraModel);
    setComment(QString::fromStdString(record.comments));
    _creationDateString = QString::fromStdString(record.dateTime);
    if (!_creationDateString.isEmpty()) {
        _creationDate = QDateTime::fromString(_creationDateString, QStringLiteral("yyyy:MM:dd HH:mm:ss"));
    }
    _fileDate = QDateTime::fromSecsSinceEpoch(qint64(record.fileDateTime));
    const std::span<const std::uint8_t> thumbnail = record.thumbnail();
    if (!thumbnail.empty()) {
        _thumbnail = fittedImage(
            QImage::fromData(thumbnail.data(), int(thumbnail.size())), 32, 32);
    }
    context.discardData();
    return true;
}

bool BFImageInfo::_readAnyImage() {
    const Image image = thumbnailOfFile(_path, 32);
    const QSize pixels = imagePixelSize(_path);
    if (image.isNull() || pixels.isEmpty()) return false;
    _width = pixels.width();
    _height = pixels.height();
    _flashUsed = false;
    const QFileInfo file(_path);
    _size = file.size();
    _fileDate = file.lastModified();
    _thumbnail = fittedImage(image.toQImage(), 32, 32);
    return true;
}

QString BFImageInfo::name() const { return QFileInfo(_path).completeBaseName(); }

void BFImageInfo::setComment(const QString& comment) {
    if (!comment.isEmpty()) _comment = comment;
}

float BFImageInfo::focalLength35Float() const {
    if (!(_sensorWidth > 0)) return 0;
    return _focalLength / _sensorWidth * 36.0f + 0.5f;
}

QString BFImageInfo::iso() const {
    return _iso < 1 ? QStringLiteral("-") : QString::asprintf("%d", _iso);
}
QString BFImageInfo::distance() const {
    return _distance > 0 ? QString::asprintf("%.1f", _distance) : QStringLiteral("-");
}
QString BFImageInfo::aperture() const {
    return _aperture > 0 ? QString::asprintf("f/%0.1f", _aperture) : QStringLiteral("-");
}
QString BFImageInfo::exposureTime() const {
    return _exposureTime > 0 ? QString::asprintf("1/%.0f", 1.0 / _exposureTime) : QStringLiteral("-");
}
QString BFImageInfo::focalLength() const {
    return _focalLength > 0 ? QString::asprintf("%.0f", _focalLength) : QStringLiteral("-");
}
QString BFImageInfo::focalLength35() const {
    const float value = focalLength35Float();
    return value > 0 ? QString::asprintf("%.0f", std::floor(value)) : QStringLiteral("-");
}
QString BFImageInfo::flashUsed() const {
    return _flashUsed ? QStringLiteral("Yes") : QStringLiteral("No");
}

int BFImageInfo::compareName(const BFImageInfo& other) const {
    return order(name(), other.name());
}

template <typename T>
int BFImageInfo::_byValue(T mine, T theirs, const BFImageInfo& other) const {
    const int result = order(mine, theirs);
    return result != 0 ? result : compareName(other);
}

int BFImageInfo::compareSize(const BFImageInfo& o) const { return _byValue(_size, o._size, o); }
int BFImageInfo::compareWidth(const BFImageInfo& o) const { return _byValue(_width, o._width, o); }
int BFImageInfo::compareHeight(const BFImageInfo& o) const { return _byValue(_height, o._height, o); }
int BFImageInfo::compareIso(const BFImageInfo& o) const { return _byValue(_iso, o._iso, o); }
int BFImageInfo::compareFlashused(const BFImageInfo& o) const {
    // Pictures taken with flash first.
    return _byValue(!_flashUsed, !o._flashUsed, o);
}
int BFImageInfo::compareCameramodel(const BFImageInfo& o) const {
    // Without a value sorts first; the empty string already does.
    return _byValue(_cameraModel, o._cameraModel, o);
}
int BFImageInfo::compareKind(const BFImageInfo& o) const { return _byValue(_kind, o._kind, o); }
int BFImageInfo::compareCreationdate(const BFImageInfo& o) const {
    // An invalid date is earlier than every valid one.
    return _byValue(_creationDate, o._creationDate, o);
}
int BFImageInfo::compareFiledate(const BFImageInfo& o) const {
    if (!_fileDate.isValid()) return _byValue(_fileDate, o._fileDate, o);
    return _byValue(_fileDate, o._creationDate, o);
}
int BFImageInfo::compareExposurebias(const BFImageInfo& o) const {
    return _byValue(_exposureBias, o._exposureBias, o);
}
int BFImageInfo::compareDistance(const BFImageInfo& o) const { return _byValue(_distance, o._distance, o); }
int BFImageInfo::compareAperture(const BFImageInfo& o) const { return _byValue(_aperture, o._aperture, o); }
int BFImageInfo::compareExposuretime(const BFImageInfo& o) const {
    return _byValue(_exposureTime, o._exposureTime, o);
}
int BFImageInfo::compareFocallength(const BFImageInfo& o) const {
    return _byValue(_focalLength, o._focalLength, o);
}
int BFImageInfo::compareFocallength35(const BFImageInfo& o) const {
    return _byValue(focalLength35Float(), o.focalLength35Float(), o);
}

QList<QPair<QString, QString>> infoFields(const std::optional<BFImageInfo>& info) {
    const QString none = QStringLiteral("-");
    const QStringList labels = {
        QObject::tr("Name"), QObject::tr("Kind"), QObject::tr("Size"), QObject::tr("Width"),
        QObject::tr("Height"), QObject::tr("Camera make"), QObject::tr("Camera model"),
        QObject::tr("Created"), QObject::tr("File date"), QObject::tr("Flash"), QObject::tr("ISO"),
        QObject::tr("Focal length"), QObject::tr("Focal length (35 mm)"),
        QObject::tr("Exposure time"), QObject::tr("Aperture"), QObject::tr("Distance"),
        QObject::tr("Exposure bias"), QObject::tr("Orientation"), QObject::tr("Comment"),
    };
    QStringList values(labels.size(), none);
    values[0] = QStringLiteral("dunno");
    if (info) {
        const BFImageInfo& i = *info;
        const auto orNone = [&none](const QString& text) { return text.isEmpty() ? none : text; };
        values = {
            i.name().isEmpty() ? QStringLiteral("dunno") : i.name(),
            orNone(i.kind()),
            QString::number(i.size()),
            QStringLiteral("%1 pixels").arg(i.width()),
            QStringLiteral("%1 pixels").arg(i.height()),
            orNone(i.cameraMake()),
            orNone(i.cameraModel()),
            orNone(shortDate(i.creationDate())),
            orNone(shortDate(i.fileDate())),
            i.flashUsed(),
            i.iso(),
            i.focalLength(),
            i.focalLength35(),
            i.exposureTime(),
            i.aperture(),
            i.distance(),
            QString::number(double(i.exposureBias()), 'g', 3),
            QString::number(i.orientation()),
            orNone(i.comment()),
        };
    }
    QList<QPair<QString, QString>> fields;
    for (qsizetype n = 0; n < labels.size(); ++n) fields.append({labels[n], values[n]});
    return fields;
}

}  // namespace marigold
