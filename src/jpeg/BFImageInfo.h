#pragma once

#include <QDateTime>
#include <QImage>
#include <QList>
#include <QPair>
#include <QString>
#include <optional>

namespace marigold {

// Facts about one image file for the information window and `marigold --info`: what the
// JPEG section reader and EXIF parser find, or for other files what the image loader and
// the file system say.
class BFImageInfo {
public:
    // Nothing when the file is no JPEG and (with `fallbackOnFile`) no readable image either.
    static std::optional<BFImageInfo> fromFile(const QString& path, bool fallbackOnFile = true);
    // "JPEG", "Photoshop", "TIFF", "GIF", "PNG", or the extension in capitals.
    static QString kindForPath(const QString& path);
    // Fitted into w x h (aspect kept); null for an empty image.
    static QImage fittedImage(const QImage& image, int w, int h);

    QString path() const { return _path; }
    QString name() const;
    QString kind() const { return _kind; }
    QImage thumbnail() const { return _thumbnail; }
    int width() const { return _width; }
    int height() const { return _height; }
    qint64 size() const { return _size; }
    int orientation() const { return _orientation; }
    bool flashUsedBool() const { return _flashUsed; }
    float focalLengthFloat() const { return _focalLength; }
    float focalLength35Float() const;
    float exposureTimeFloat() const { return _exposureTime; }
    float apertureFloat() const { return _aperture; }
    float distanceFloat() const { return _distance; }
    float exposureBias() const { return _exposureBias; }
    int isoInt() const { return _iso; }
    QString cameraMake() const { return _cameraMake; }
    QString cameraModel() const { return _cameraModel; }
    QString creationDateString() const { return _creationDateString; }
    QDateTime creationDate() const { return _creationDate; }
    QDateTime fileDate() const { return _fileDate; }
    QString caption() const { return _caption; }
    QString comment() const { return _comment; }
    // Taken only when not empty.
    void setComment(const QString& comment);

    // Display strings: "-" for an unknown value.
    QString iso() const;
    QString distance() const;
    QString aperture() const;
    QString exposureTime() const;
    QString focalLength() const;
    QString focalLength35() const;
    QString flashUsed() const;

    // Sorting: negative, zero or positive; a tie goes to the names.
    int compareName(const BFImageInfo& other) const;
    int compareSize(const BFImageInfo& other) const;
    int compareWidth(const BFImageInfo& other) const;
    int compareHeight(const BFImageInfo& other) const;
    int compareIso(const BFImageInfo& other) const;
    int compareFlashused(const BFImageInfo& other) const;
    int compareCameramodel(const BFImageInfo& other) const;
    int compareKind(const BFImageInfo& other) const;
    int compareCreationdate(const BFImageInfo& other) const;
    // Compares this file date with the other's creation date: kept as it always sorted.
    int compareFiledate(const BFImageInfo& other) const;
    int compareExposurebias(const BFImageInfo& other) const;
    int compareDistance(const BFImageInfo& other) const;
    int compareAperture(const BFImageInfo& other) const;
    int compareExposuretime(const BFImageInfo& other) const;
    int compareFocallength(const BFImageInfo& other) const;
    int compareFocallength35(const BFImageInfo& other) const;

private:
    explicit BFImageInfo(const QString& path);
    bool _readJpeg();
    bool _readAnyImage();
    template <typename T>
    int _byValue(T mine, T theirs, const BFImageInfo& other) const;

    QString _path;
    QString _kind;
    QImage _thumbnail;
    int _width = 0;
    int _height = 0;
    qint64 _size = 0;
    int _orientation = 0;
    float _sensorWidth = 0;
    float _focalLength = 0;
    float _exposureTime = 0;
    float _aperture = 0;
    float _distance = 0;
    float _exposureBias = 0;
    int _iso = 0;
    bool _flashUsed = false;
    QString _cameraMake;
    QString _cameraModel;
    QString _creationDateString;
    QDateTime _creationDate;
    QDateTime _fileDate;
    QString _caption;
    QString _comment;
};

// The information window's fields in order, as label and text, with "dunno" and "-" where
// nothing is known (no record at all included).
QList<QPair<QString, QString>> infoFields(const std::optional<BFImageInfo>& info);

}  // namespace marigold
