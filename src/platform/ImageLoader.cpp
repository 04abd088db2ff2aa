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

LoadedImage decode(vips::VImage header) {
    if (QString reason = tooLarge(header); !reason.isEmpty()) return {{}, reason};
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

// Entropy decoding makes a large JPEG slow to decode (about 0.4 s for 24 megapixels here) and
// it cannot be split. So the idle core decodes at half size through DCT scaling (about 40%
// faster), which is enough to show the picture and to preview from, while the full
// resolution completes in the background; only reading the full pixels waits for it. A
// damaged file fails the half-size decode too, so failures are still reported at open.
Image decodeJpegInParallel(const QByteArray& name, const vips::VImage& header) {
    std::shared_future<vips::VImage> full =
        std::async(std::launch::async, [name] {
            bool opaque = true;
            return Image::normalisedPixels(
                vips::VImage::new_from_file(name.constData(), loadOptions()), &opaque);
        }).share();
    bool opaque = true;
    const vips::VImage half = Image::normalisedPixels(
        vips::VImage::new_from_file(name.constData(), loadOptions()->set("shrink", 2)), &opaque);
    return Image::fromPendingDecode(header.width(), header.height(), std::move(full), half,
                                    opaque);
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
        // Perhaps a format whose module was left out at start-up.
        if (!loadDeferredVipsModules() || !vips_foreign_find_load(name.constData())) {
            vips_error_clear();
            return {{}, QStringLiteral("not an image file")};
        }
    }
    try {
        vips::VImage header = vips::VImage::new_from_file(name.constData(), loadOptions());
        if (QString reason = tooLarge(header); !reason.isEmpty()) return {{}, reason};
        const char* loader = vips_foreign_find_load(name.constData());
        if (loader && QByteArray(loader).startsWith("VipsForeignLoadJpeg") &&
            (long long)header.width() * header.height() >= kParallelJpegPixels) {
            return {decodeJpegInParallel(name, header), {}};
        }
        return decode(header);
    } catch (const vips::VError& error) {
        vips_error_clear();
        return {{}, firstLine(error.what())};
    }
}

namespace {

// The header of an image file libvips reads (pixels not decoded), or nothing.
std::optional<vips::VImage> readableHeader(const QByteArray& name) {
    if (!QFileInfo(QString::fromLocal8Bit(name)).isFile() || !vips_foreign_find_load(name.constData())) {
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
            // As stored, like every picture here: no EXIF orientation applied.
            vips::VImage::option()->set("height", box)->set("size", VIPS_SIZE_DOWN)->set("no_rotate", true)));
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
