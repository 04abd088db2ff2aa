#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <optional>

#include "output/ImageMetadata.h"
#include "output/JpegSizeSearch.h"
#include "platform/Image.h"

namespace marigold {

// The output encoders. Encoding happens in memory; files are written atomically, so a
// failed write never leaves a half-written file. Opaque images are written without an
// alpha channel; JPEG, having none, puts transparent areas on white. Every format records
// 72 pixels per inch, one pixel per point. An empty result means the encoder failed.
QByteArray encodePng(const Image& image);
QByteArray encodeJpeg(const Image& image, int quality);
// LZW-compressed.
QByteArray encodeTiff(const Image& image);
// A palette chosen for the picture, dithered colours, and transparency dithered to the
// format's on/off alpha.
QByteArray encodeGif(const Image& image);

// One image's JPEGs at any quality, its pixels prepared once.
class JpegEncoder {
public:
    explicit JpegEncoder(const Image& image);
    // The file's bytes, JFIF header included. With `stopAt` > 0, encoding gives up once the
    // file reaches that many bytes and returns nothing; `size` then says how far it got.
    QByteArray encode(int quality, qint64 stopAt, qint64* size);

private:
    vips::VImage _pixels;
    int _encodes = 0;
};

bool writeToPNGFile(const Image& image, const QString& path);
bool writeToGIFFile(const Image& image, const QString& path);
bool writeToTIFFFile(const Image& image, const QString& path,
                     const std::optional<Metadata>& metadata);

// Adds metadata to an encoded JPEG's bytes before they are measured against a limit.
using JpegFinish = std::function<QByteArray(const QByteArray& jpeg)>;

// One attempt at `quality`: writes the file only when `byteLimit` is 0 or the encoded size,
// metadata included, is below it. `returnSize` receives that size, or with `stopAt` > 0 at
// least `stopAt` when the file would have reached it.
bool writeToJPEGFile(JpegEncoder& encoder, const QString& path, int quality, int byteLimit,
                     int stopAt, int* returnSize, const JpegFinish& finish);
// Steps the quality down from `compression` until the finished file fits under
// `filesizeLimitKB` (0: no limit); false, with nothing written, when no quality fits.
// `trace` (optional) receives each attempt's quality and size.
bool writeToJPEGFile(const Image& image, const QString& path, int compression, int filesizeLimitKB,
                     const JpegFinish& finish, std::vector<JpegAttempt>* trace = nullptr);

}  // namespace marigold
