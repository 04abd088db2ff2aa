#include "platform/ImageLoader.h"

#include <QFileInfo>
#include <future>
#include <optional>

#include "platform/VipsRuntime.h"

namespace marigold {

namespace {

// JPEGs this large decode in parallel (see decodeJpegInParallel).
constexpr long long kParallelJpegPixels = 4'000'000;

QString tooLarge(const vips::VImage& header) {
    const long long pixels = (long long)header.width() * header.height();
    if (pixels <= kMaxImagePixels) return {};
    return QStringLiteral("image is too large (%1 x %2 pixels)")
        .arg(header.width())
        .arg(header.height());
}

vips::VOption* loadOptions(DamagedFiles damaged) {
    // Random access: the pipeline crops anywhere. A file cut short is an error unless the
    // readable part is wanted.
    return vips::VImage::option()
        ->set("access", VIPS_ACCESS_RANDOM)
        ->set("fail_on",
              damaged == DamagedFiles::Refuse ? VIPS_FAIL_ON_TRUNCATED : VIPS_FAIL_ON_NONE);
}

// The picture upright: turned as its orientation tag says. Part of the pipeline that makes the
// one in-memory copy, so turning adds no copy of its own.
vips::VImage opened(const QByteArray& name, vips::VOption* options) {
    return vips::VImage::new_from_file(name.constData(), options).autorot();
}

QString firstLine(const char* message) {
    const QString text = QString::fromUtf8(message).trimmed();
    return text.section(QLatin1Char('\n'), 0, 0);
}

// Entropy decoding makes a large JPEG slow to decode (about 0.4 s for 24 megapixels here) and
// it cannot be split. So the idle core decodes at half size through DCT scaling (about 40%
// faster), which is enough to show the picture and to preview from, while the full
// resolution completes in the background; only reading the full pixels waits for it. A
// damaged file fails the half-size decode too, so failures are still reported at open.
Image decodeJpegInParallel(const QByteArray& name, const vips::VImage& upright,
                           DamagedFiles damaged) {
    std::shared_future<vips::VImage> full =
        std::async(std::launch::async, [name, damaged] {
            bool opaque = true;
            return Image::normalisedPixels(opened(name, loadOptions(damaged)), &opaque);
        }).share();
    bool opaque = true;
    const vips::VImage half =
        Image::normalisedPixels(opened(name, loadOptions(damaged)->set("shrink", 2)), &opaque);
    return Image::fromPendingDecode(upright.width(), upright.height(), std::move(full), half,
                                    opaque);
}

// The picture of the file, or why there is none; libvips errors are thrown. One open serves the
// size check and the decode.
LoadedImage decoded(const QByteArray& name, bool jpeg, DamagedFiles damaged) {
    const vips::VImage upright = opened(name, loadOptions(damaged));
    if (QString reason = tooLarge(upright); !reason.isEmpty()) return {{}, reason, {}};
    if (jpeg && (long long)upright.width() * upright.height() >= kParallelJpegPixels) {
        return {decodeJpegInParallel(name, upright, damaged), {}, {}};
    }
    return {Image::fromVips(upright), {}, {}};
}

}  // namespace

LoadedImage loadImageFile(const QString& path, DamagedFiles damaged) {
    const QFileInfo info(path);
    if (!info.exists()) return {{}, QStringLiteral("no such file"), {}};
    if (!info.isFile() || !info.isReadable())
        return {{}, QStringLiteral("cannot read the file"), {}};
    if (info.size() == 0) return {{}, QStringLiteral("the file is empty"), {}};
    const QByteArray name = path.toLocal8Bit();
    const char* loader = vips_foreign_find_load(name.constData());
    if (!loader) {
        vips_error_clear();
        // Perhaps a format whose module was left out at start-up.
        if (!loadDeferredVipsModules() || !(loader = vips_foreign_find_load(name.constData()))) {
            vips_error_clear();
            return {{}, QStringLiteral("not an image file"), {}};
        }
    }
    const bool jpeg = QByteArray(loader).startsWith("VipsForeignLoadJpeg");
    try {
        return decoded(name, jpeg, DamagedFiles::Refuse);
    } catch (const vips::VError& error) {
        vips_error_clear();
        const QString reason = firstLine(error.what());
        if (damaged == DamagedFiles::Refuse) return {{}, reason, {}};
        try {
            LoadedImage partial = decoded(name, jpeg, damaged);
            if (!partial.image.isNull()) {
                partial.notice = QStringLiteral(
                    "only part of the picture could be read, the rest of the file is damaged");
            }
            return partial;
        } catch (const vips::VError&) {
            vips_error_clear();
            return {{}, reason, {}};
        }
    }
}

namespace {

// The header of an image file libvips reads (pixels not decoded), or nothing.
std::optional<vips::VImage> readableHeader(const QByteArray& name) {
    if (!QFileInfo(QString::fromLocal8Bit(name)).isFile() ||
        !vips_foreign_find_load(name.constData())) {
        vips_error_clear();
        return std::nullopt;
    }
    try {
        return vips::VImage::new_from_file(name.constData());
    } catch (const vips::VError&) {
        vips_error_clear();
        return std::nullopt;
    }
}

}  // namespace

Image thumbnailOfFile(const QString& path, int box) {
    const QByteArray name = path.toLocal8Bit();
    const std::optional<vips::VImage> header = readableHeader(name);
    if (!header || !tooLarge(*header).isEmpty()) return {};
    try {
        return Image::fromVips(vips::VImage::thumbnail(
            name.constData(), box,
            // As stored: this is the file's own thumbnail, not the picture as Marigold shows it.
            vips::VImage::option()
                ->set("height", box)
                ->set("size", VIPS_SIZE_DOWN)
                ->set("no_rotate", true)));
    } catch (const vips::VError&) {
        vips_error_clear();
        return {};
    }
}

QSize imagePixelSize(const QString& path) {
    const std::optional<vips::VImage> header = readableHeader(path.toLocal8Bit());
    return header ? QSize(header->width(), header->height()) : QSize();
}

}  // namespace marigold
