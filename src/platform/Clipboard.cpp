#include "platform/Clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMap>
#include <QMimeData>
#include <QUrl>

#include "platform/ImageLoader.h"

namespace marigold {

namespace {

const QString kPng = QStringLiteral("image/png");
const QString kTiff = QStringLiteral("image/tiff");

// Fast settings (zlib level 1, LZW): a paste should not stall for long, and the size of what
// passes through the clipboard matters little.
QByteArray imageBytes(const Image& image, const QString& mimeType) {
    try {
        vips::VImage pixels = image.pixels();
        if (image.isOpaque()) pixels = pixels.extract_band(0, vips::VImage::option()->set("n", 3));
        void* buffer = nullptr;
        size_t length = 0;
        if (mimeType == kPng) {
            pixels.write_to_buffer(".png", &buffer, &length,
                                   vips::VImage::option()->set("compression", 1));
        } else {
            pixels.write_to_buffer(".tif", &buffer, &length,
                                   vips::VImage::option()->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_LZW));
        }
        QByteArray bytes(static_cast<const char*>(buffer), qsizetype(length));
        g_free(buffer);
        return bytes;
    } catch (const vips::VError& error) {
        qWarning("clipboard: cannot encode %s: %s", qPrintable(mimeType), error.what());
        return {};
    }
}

// Qt can convert the image to every format it writes, but its platform plugins differ in
// which of those they advertise, and it writes no TIFF; PNG and TIFF are listed here so that
// every client sees them. The bytes are made when a client first asks: encoding a large
// output takes seconds, and most pastes (ours, or of the file) never need them.
class OutputMimeData : public QMimeData {
public:
    explicit OutputMimeData(Image image) : _image(std::move(image)) {}

    QStringList formats() const override {
        QStringList list = QMimeData::formats();
        for (const QString& format : {kTiff, kPng}) {
            if (!_image.isNull() && !list.contains(format)) list.prepend(format);
        }
        return list;
    }

protected:
    QVariant retrieveData(const QString& mimeType, QMetaType type) const override {
        if ((mimeType != kPng && mimeType != kTiff) || _image.isNull()) {
            return QMimeData::retrieveData(mimeType, type);
        }
        QByteArray& bytes = _encoded[mimeType];
        if (bytes.isEmpty()) bytes = imageBytes(_image, mimeType);
        return bytes;
    }

private:
    Image _image;
    mutable QMap<QString, QByteArray> _encoded;
};

// Lossless formats first; whatever else is offered as an image/ type after them.
QStringList imageFormatsByPreference(const QMimeData& data) {
    QStringList ordered = {kPng, kTiff};
    ordered.removeIf([&](const QString& format) { return !data.hasFormat(format); });
    for (const QString& format : data.formats()) {
        if (format.startsWith(QLatin1String("image/")) && !ordered.contains(format)) {
            ordered << format;
        }
    }
    return ordered;
}

// libvips reads formats Qt may have no plugin for (TIFF, WebP, HEIF) and refuses the
// oversized before allocating.
std::optional<Image> decodeBytes(const QByteArray& bytes) {
    try {
        const vips::VImage header = vips::VImage::new_from_buffer(
            bytes.constData(), size_t(bytes.size()), "",
            vips::VImage::option()->set("fail_on", VIPS_FAIL_ON_TRUNCATED));
        if ((long long)header.width() * header.height() > kMaxImagePixels) return std::nullopt;
        return Image::fromVips(header);
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

}  // namespace

QMimeData* outputMimeData(const Image& image, const QString& filePath) {
    auto* data = new OutputMimeData(image);
    if (!image.isNull()) data->setImageData(image.toQImage());
    if (!filePath.isEmpty()) {
        const QUrl url = QUrl::fromLocalFile(filePath);
        data->setUrls({url});
        data->setData(QStringLiteral("x-special/gnome-copied-files"), "copy\n" + url.toEncoded());
        data->setText(filePath);
    }
    return data;
}

void putOutputOnClipboard(const Image& image, const QString& filePath) {
    QGuiApplication::clipboard()->setMimeData(outputMimeData(image, filePath));
}

std::optional<Image> imageFromMimeData(const QMimeData* data) {
    if (!data) return std::nullopt;
    // Image::fromQImage and fromVips give one point per pixel; the declared dpi is dropped.
    if (data->hasImage()) {
        const QImage image = qvariant_cast<QImage>(data->imageData());
        if (!image.isNull()) return Image::fromQImage(image);
    }
    for (const QString& format : imageFormatsByPreference(*data)) {
        if (std::optional<Image> image = decodeBytes(data->data(format))) return image;
    }
    return std::nullopt;
}

std::optional<Image> imageFromClipboard() {
    return imageFromMimeData(QGuiApplication::clipboard()->mimeData());
}

}  // namespace marigold
