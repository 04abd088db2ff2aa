#include "output/ImageEncoders.h"

#include "output/JpegSizeSearch.h"
#include "platform/AtomicFile.h"

#include <algorithm>
#include <vector>

namespace marigold {

namespace {

using vips::VImage;

constexpr double kPixelsPerMillimetre = 72.0 / 25.4;

// Every libvips failure becomes an empty result here, so callers see "no data".
template <typename Encode>
QByteArray guarded(const Image& image, Encode encode) {
    if (image.isNull()) return {};
    try {
        VipsBlob* blob = encode();
        size_t length = 0;
        const void* bytes = vips_blob_get(blob, &length);
        QByteArray data(static_cast<const char*>(bytes), qsizetype(length));
        vips_area_unref(VIPS_AREA(blob));
        return data;
    } catch (const vips::VError&) {
        return {};
    }
}

// The pixels as the encoder should see them: RGB when nothing is transparent, else RGBA
// or (for formats without alpha) flattened on white; 72 pixels per inch either way.
VImage encoderPixels(const Image& image, bool keepAlpha) {
    VImage pixels = image.pixels();
    if (image.isOpaque()) {
        pixels = pixels.extract_band(0, VImage::option()->set("n", 3));
    } else if (!keepAlpha) {
        pixels = pixels.flatten(VImage::option()->set("background", std::vector<double>{255, 255, 255}));
    }
    return pixels.copy(VImage::option()
                           ->set("xres", kPixelsPerMillimetre)
                           ->set("yres", kPixelsPerMillimetre));
}

// Floyd-Steinberg on the alpha channel alone, so soft edges and shadows become a
// scattered pattern of on and off pixels instead of a hard threshold.
VImage ditheredAlpha(const VImage& rgba) {
    VImage memory = rgba.copy_memory();
    const int wide = memory.width(), high = memory.height();
    std::vector<uint8_t> pixels(size_t(wide) * high * 4);
    std::copy_n(static_cast<const uint8_t*>(memory.data()), pixels.size(), pixels.begin());
    std::vector<float> errors(size_t(wide + 2) * 2, 0.0f);
    for (int y = 0; y < high; ++y) {
        float* current = errors.data() + size_t(y % 2) * (wide + 2) + 1;
        float* next = errors.data() + size_t((y + 1) % 2) * (wide + 2) + 1;
        std::fill_n(next - 1, wide + 2, 0.0f);
        uint8_t* row = pixels.data() + size_t(y) * wide * 4;
        for (int x = 0; x < wide; ++x) {
            const float wanted = row[x * 4 + 3] + current[x];
            const uint8_t chosen = wanted >= 127.5f ? 255 : 0;
            const float error = wanted - chosen;
            row[x * 4 + 3] = chosen;
            current[x + 1] += error * 7 / 16;
            next[x - 1] += error * 3 / 16;
            next[x] += error * 5 / 16;
            next[x + 1] += error * 1 / 16;
        }
    }
    return VImage::new_from_memory(pixels.data(), pixels.size(), wide, high, 4, VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
        .copy_memory();
}

// libvips writes no JFIF header; readers that go by it would take the file for 1 dpi.
QByteArray withJfifHeader(QByteArray jpeg) {
    static const char soi[] = "\xFF\xD8";
    static const char app0[] = "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x01\x00\x48\x00\x48\x00\x00";
    if (!jpeg.startsWith(QByteArray(soi, 2)) || jpeg.mid(2, 2) == QByteArray(app0, 2)) return jpeg;
    return jpeg.insert(2, QByteArray(app0, sizeof app0 - 1));
}

bool writeEncoded(const QByteArray& data, const QString& path) {
    return !data.isEmpty() && writeFileAtomically(path, data);
}

}  // namespace

QByteArray encodePng(const Image& image) {
    return guarded(image, [&] {
        return encoderPixels(image, true)
            .pngsave_buffer(VImage::option()->set("compression", 6)->set("strip", true));
    });
}

QByteArray encodeJpeg(const Image& image, int quality) {
    return withJfifHeader(guarded(image, [&] {
        return encoderPixels(image, false)
            .jpegsave_buffer(VImage::option()
                                 ->set("Q", std::clamp(quality, 1, 100))
                                 ->set("strip", true));
    }));
}

QByteArray encodeTiff(const Image& image) {
    return guarded(image, [&] {
        return encoderPixels(image, true)
            .tiffsave_buffer(VImage::option()
                                 ->set("compression", VIPS_FOREIGN_TIFF_COMPRESSION_LZW)
                                 ->set("resunit", VIPS_FOREIGN_TIFF_RESUNIT_INCH)
                                 ->set("strip", true));
    });
}

QByteArray encodeGif(const Image& image) {
    return guarded(image, [&] {
        // The encoder wants four bands; opaque pictures skip the alpha pass.
        VImage pixels = image.isOpaque() ? image.pixels() : ditheredAlpha(image.pixels());
        return pixels.gifsave_buffer(VImage::option()->set("dither", 1.0)->set("strip", true));
    });
}

bool writeToPNGFile(const Image& image, const QString& path) {
    return writeEncoded(encodePng(image), path);
}

bool writeToGIFFile(const Image& image, const QString& path) {
    return writeEncoded(encodeGif(image), path);
}

bool writeToTIFFFile(const Image& image, const QString& path,
                     const std::optional<Metadata>& metadata) {
    QByteArray data = encodeTiff(image);
    if (metadata && !data.isEmpty()) data = metadata::combineDataAndMetadata(data, *metadata);
    return writeEncoded(data, path);
}

bool writeToJPEGFile(const Image& image, const QString& path, int quality, int byteLimit,
                     int* returnSize, const std::optional<Metadata>& metadata) {
    QByteArray data = encodeJpeg(image, quality);
    if (metadata && !data.isEmpty()) data = metadata::combineDataAndMetadata(data, *metadata);
    *returnSize = int(data.size());
    if (data.isEmpty()) return false;
    if (byteLimit != 0 && *returnSize >= byteLimit) return false;
    return writeFileAtomically(path, data);
}

bool writeToJPEGFile(const Image& image, const QString& path, int compression,
                     int filesizeLimitKB, const std::optional<Metadata>& metadata,
                     std::vector<JpegAttempt>* trace) {
    return searchJpegQuality(
        compression, filesizeLimitKB,
        [&](int quality, int byteLimit, int* size) {
            return writeToJPEGFile(image, path, quality, byteLimit, size, metadata);
        },
        trace);
}

}  // namespace marigold
