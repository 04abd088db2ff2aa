#include "platform/ImageLoader.h"

#include <QFileInfo>

namespace marigold {

namespace {

LoadedImage decode(vips::VImage header) {
    const long long pixels = (long long)header.width() * header.height();
    if (pixels > kMaxImagePixels) {
        return {{}, QStringLiteral("image is too large (%1 x %2 pixels)")
                        .arg(header.width())
                        .arg(header.height())};
    }
    return {Image::fromVips(header), {}};
}

vips::VOption* loadOptions() {
    // Random access: the pipeline crops anywhere. fail_on truncated: a cut-off file is an
    // error, not a half-grey picture.
    return vips::VImage::option()
        ->set("access", VIPS_ACCESS_RANDOM)
        ->set("fail_on", VIPS_FAIL_ON_TRUNCATED);
}

QString firstLine(const char* message) {
    const QString text = QString::fromUtf8(message).trimmed();
    return text.section(QLatin1Char('\n'), 0, 0);
}

}  // namespace

LoadedImage loadImageFile(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return {{}, QStringLiteral("no such file")};
    if (!info.isFile() || !info.isReadable()) return {{}, QStringLiteral("cannot read the file")};
    if (info.size() == 0) return {{}, QStringLiteral("the file is empty")};
    const QByteArray name = path.toLocal8Bit();
    if (!vips_foreign_find_load(name.constData())) {
        vips_error_clear();
        return {{}, QStringLiteral("not an image file")};
    }
    try {
        return decode(vips::VImage::new_from_file(name.constData(), loadOptions()));
    } catch (const vips::VError& error) {
        vips_error_clear();
        return {{}, firstLine(error.what())};
    }
}

LoadedImage loadImageData(const QByteArray& data) {
    if (data.isEmpty()) return {{}, QStringLiteral("no image data")};
    if (!vips_foreign_find_load_buffer(data.constData(), size_t(data.size()))) {
        vips_error_clear();
        return {{}, QStringLiteral("not image data")};
    }
    try {
        return decode(vips::VImage::new_from_buffer(data.constData(), size_t(data.size()), "",
                                                    loadOptions()));
    } catch (const vips::VError& error) {
        vips_error_clear();
        return {{}, firstLine(error.what())};
    }
}

}  // namespace marigold
