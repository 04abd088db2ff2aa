#include "output/ImageEncoders.h"

#include "output/JpegSizeSearch.h"
#include "platform/AtomicFile.h"

#include <algorithm>
#include <cstring>
#include <limits>
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

int copyRgbRows(VipsRegion* out, void* sequence, void*, void*, gboolean*) {
    auto* in = static_cast<VipsRegion*>(sequence);
    const VipsRect& area = out->valid;
    if (vips_region_prepare(in, &area) != 0) return -1;
    for (int y = 0; y < area.height; ++y) {
        const uint8_t* from = VIPS_REGION_ADDR(in, area.left, area.top + y);
        uint8_t* to = VIPS_REGION_ADDR(out, area.left, area.top + y);
        // Four bytes a move, the fourth overwritten by the next pixel; three for the last.
        int x = 0;
        for (; x < area.width - 1; ++x) std::memcpy(to + 3 * x, from + 4 * x, 4);
        std::memcpy(to + 3 * x, from + 4 * x, 3);
    }
    return 0;
}

// RGBA uchar without its alpha. libvips' band extraction moves one sample at a time, which
// made a 24-megapixel JPEG about 30% slower than the encoder alone; this keeps it close.
VImage withoutAlpha(const VImage& rgba) {
    VipsImage* in = rgba.get_image();
    VipsImage* out = vips_image_new();
    if (vips_image_pipelinev(out, VIPS_DEMAND_STYLE_THINSTRIP, in, nullptr) != 0) {
        g_object_unref(out);
        throw vips::VError();
    }
    out->Bands = 3;
    // The output reads the input for as long as it lives.
    g_object_ref(in);
    vips_object_local(out, in);
    if (vips_image_generate(out, vips_start_one, copyRgbRows, vips_stop_one, in, nullptr) != 0) {
        g_object_unref(out);
        throw vips::VError();
    }
    return VImage(out);
}

// The pixels as the encoder should see them: RGB when nothing is transparent, else RGBA
// or (for formats without alpha) flattened on white; 72 pixels per inch either way.
VImage encoderPixels(const Image& image, bool keepAlpha) {
    VImage pixels = image.pixels();
    if (image.isOpaque()) {
        pixels = withoutAlpha(pixels);
    } else if (!keepAlpha) {
        pixels =
            pixels.flatten(VImage::option()->set("background", std::vector<double>{255, 255, 255}));
    }
    return pixels.copy(
        VImage::option()->set("xres", kPixelsPerMillimetre)->set("yres", kPixelsPerMillimetre));
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

// Collects an encoded JPEG as libvips writes it, inserting the JFIF header libvips leaves
// out (readers that go by it would take the file for 1 dpi), and gives up once the file
// reaches `stopAt` bytes: a size search needs no more than that to decide its next step.
struct JpegSink {
    static constexpr char kJfif[] = "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x01\x00\x48\x00\x48\x00\x00";
    QByteArray data;
    qint64 stopAt = 0;  // 0: never

    static gint64 write(VipsTargetCustom*, const void* bytes, gint64 length, void* user) {
        auto* sink = static_cast<JpegSink*>(user);
        const char* chunk = static_cast<const char*>(bytes);
        if (sink->data.isEmpty() && length >= 2) {
            sink->data.append(chunk, 2)
                .append(kJfif, sizeof kJfif - 1)
                .append(chunk + 2, length - 2);
        } else {
            sink->data.append(chunk, length);
        }
        return sink->stopAt > 0 && sink->data.size() >= sink->stopAt ? -1 : length;
    }
};

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

JpegEncoder::JpegEncoder(const Image& image) {
    if (image.isNull()) return;
    try {
        _pixels = encoderPixels(image, false);
    } catch (const vips::VError&) {
        _pixels = VImage();
    }
}

QByteArray JpegEncoder::encode(int quality, qint64 stopAt, qint64* size) {
    *size = 0;
    if (_pixels.is_null()) return {};
    // A second encode means a size search: from then on the prepared pixels are kept in
    // memory instead of being prepared again for every attempt.
    if (++_encodes == 2) {
        try {
            _pixels = _pixels.copy_memory();
        } catch (const vips::VError&) {
            return {};
        }
    }
    JpegSink sink;
    sink.stopAt = stopAt;
    VipsTargetCustom* target = vips_target_custom_new();
    g_signal_connect(target, "write", G_CALLBACK(JpegSink::write), &sink);
    const int failed = vips_jpegsave_target(_pixels.get_image(), VIPS_TARGET(target), "Q",
                                            std::clamp(quality, 1, 100), "strip", TRUE, nullptr);
    g_object_unref(target);
    *size = sink.data.size();
    if (failed) {
        // A stop on purpose is reported like a write error; only its size matters.
        vips_error_clear();
        return {};
    }
    return sink.data;
}

QByteArray encodeJpeg(const Image& image, int quality) {
    qint64 size = 0;
    return JpegEncoder(image).encode(quality, 0, &size);
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

bool writeToJPEGFile(JpegEncoder& encoder, const QString& path, int quality, int byteLimit,
                     int stopAt, int* returnSize, const JpegFinish& finish) {
    qint64 size = 0;
    // Metadata only adds bytes, so a stop before it is added still stops in time.
    QByteArray data = encoder.encode(quality, stopAt, &size);
    if (finish && !data.isEmpty()) data = finish(data);
    if (!data.isEmpty()) size = data.size();
    *returnSize = int(std::min<qint64>(size, std::numeric_limits<int>::max()));
    if (data.isEmpty()) return false;
    if (byteLimit != 0 && *returnSize >= byteLimit) return false;
    return writeFileAtomically(path, data);
}

bool writeToJPEGFile(const Image& image, const QString& path, int compression, int filesizeLimitKB,
                     const JpegFinish& finish, std::vector<JpegAttempt>* trace) {
    JpegEncoder encoder(image);
    return searchJpegQuality(
        compression, filesizeLimitKB,
        [&](int quality, int byteLimit, int stopAt, int* size) {
            return writeToJPEGFile(encoder, path, quality, byteLimit, stopAt, size, finish);
        },
        trace);
}

}  // namespace marigold
