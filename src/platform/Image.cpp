#include "platform/Image.h"

#include "platform/PyramidLevel.h"

#include <QColorSpace>

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <vector>

namespace marigold {

namespace {

// Brings any decoded image to 8-bit sRGB, honouring an embedded colour profile.
vips::VImage toSrgb(vips::VImage in) {
    const bool hasProfile = in.get_typeof(VIPS_META_ICC_NAME) != 0;
    const bool cmyk = in.interpretation() == VIPS_INTERPRETATION_CMYK;
    if (hasProfile || cmyk) {
        try {
            // embedded: use the file's own profile as the input profile when there is one.
            in = in.icc_transform("srgb", vips::VImage::option()
                                              ->set("embedded", hasProfile)
                                              ->set("intent", VIPS_INTENT_RELATIVE)
                                              ->set("depth", 8));
        } catch (const vips::VError&) {
            // A broken profile: fall through to the plain conversion below.
        }
        if (in.get_typeof(VIPS_META_ICC_NAME) != 0) in.remove(VIPS_META_ICC_NAME);
    }
    if (in.interpretation() != VIPS_INTERPRETATION_sRGB ||
        in.format() != VIPS_FORMAT_UCHAR) {
        in = in.colourspace(VIPS_INTERPRETATION_sRGB);
    }
    if (in.format() != VIPS_FORMAT_UCHAR) in = in.cast(VIPS_FORMAT_UCHAR);
    return in;
}

vips::VImage toRgba(vips::VImage in, bool* opaque) {
    // Grey (+alpha) images come out of toSrgb with 3 (+1) bands already; anything
    // stranger is trimmed or padded to RGB(A). (The list form of bandjoin is static: it
    // joins exactly the images listed.)
    if (in.bands() == 2) in = vips::VImage::bandjoin({in[0], in[0], in[0], in[1]});
    if (in.bands() == 1) in = vips::VImage::bandjoin({in, in, in});
    if (in.bands() > 4) in = in.extract_band(0, vips::VImage::option()->set("n", 4));
    *opaque = in.bands() == 3;
    if (in.bands() == 3) in = in.bandjoin_const({255});
    return in;
}

}  // namespace

// The full-resolution pixels: there at once, or still being decoded on another thread.
struct Image::Source {
    std::mutex lock;
    vips::VImage pixels;
    std::shared_future<vips::VImage> pending;
    vips::VImage fallback;  // the half-size decode, used if the full decode fails late
    int width = 0;
    int height = 0;

    const vips::VImage& resolved() {
        std::lock_guard guard(lock);
        if (pending.valid()) {
            try {
                pixels = pending.get();
            } catch (const vips::VError& error) {
                std::fprintf(stderr, "marigold: full-size decode failed: %s\n", error.what());
                pixels = fallback.resize(2.0)
                             .embed(0, 0, width, height,
                                    vips::VImage::option()->set("extend", VIPS_EXTEND_COPY))
                             .cast(VIPS_FORMAT_UCHAR)
                             .copy_memory();
            }
            pending = {};
            fallback = {};
        }
        return pixels;
    }
};

struct Image::Data {
    std::shared_ptr<Source> source;
    SizeF size;
    bool opaque = true;
    // Reduced copies, shared by every Image made from the same pixels.
    struct Pyramid {
        std::mutex lock;
        std::vector<vips::VImage> levels;
    };
    std::shared_ptr<Pyramid> pyramid = std::make_shared<Pyramid>();

    static std::shared_ptr<Data> of(const vips::VImage& memoryPixels, bool opaque) {
        auto data = std::make_shared<Data>();
        data->source = std::make_shared<Source>();
        data->source->pixels = memoryPixels;
        data->source->width = memoryPixels.width();
        data->source->height = memoryPixels.height();
        data->opaque = opaque;
        data->size = {float(memoryPixels.width()), float(memoryPixels.height())};
        return data;
    }
};

vips::VImage Image::normalisedPixels(const vips::VImage& any, bool* opaque) {
    return toRgba(toSrgb(any), opaque).copy_memory();
}

Image Image::fromVips(const vips::VImage& any) {
    bool opaque = true;
    const vips::VImage pixels = normalisedPixels(any, &opaque);
    return Image(Data::of(pixels, opaque));
}

Image Image::fromPendingDecode(int pixelsWide, int pixelsHigh,
                               std::shared_future<vips::VImage> pending,
                               const vips::VImage& halfLevel, bool opaque) {
    auto data = std::make_shared<Data>();
    data->source = std::make_shared<Source>();
    data->source->pending = std::move(pending);
    data->source->fallback = halfLevel;
    data->source->width = pixelsWide;
    data->source->height = pixelsHigh;
    data->opaque = opaque;
    data->size = {float(pixelsWide), float(pixelsHigh)};
    data->pyramid->levels.push_back(halfLevel);
    return Image(std::move(data));
}

Image Image::fromRgba(const vips::VImage& rgba, bool opaque) {
    return Image(Data::of(rgba.copy_memory(), opaque));
}

Image Image::fromQImage(const QImage& image) {
    if (image.isNull()) return {};
    QImage rgba = image;
    if (rgba.colorSpace().isValid() && rgba.colorSpace() != QColorSpace::SRgb) {
        rgba.convertToColorSpace(QColorSpace::SRgb);
    }
    // Straight alpha, as the pixels are kept; rows of RGBA8888 are packed (width * 4 bytes).
    rgba.convertTo(QImage::Format_RGBA8888);
    // The copy() makes a pipeline over the borrowed bytes, so fromRgba's copy_memory really
    // copies them instead of keeping a reference to `rgba`'s buffer.
    const vips::VImage wrapped =
        vips::VImage::new_from_memory(const_cast<uchar*>(rgba.constBits()), rgba.sizeInBytes(),
                                      rgba.width(), rgba.height(), 4, VIPS_FORMAT_UCHAR)
            .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    // Screenshots and pasted images often carry an alpha channel that is 255 everywhere.
    const bool opaque = !image.hasAlphaChannel() || wrapped[3].min() >= 255.0;
    return fromRgba(wrapped, opaque);
}

int Image::pixelsWide() const { return _data ? _data->source->width : 0; }
int Image::pixelsHigh() const { return _data ? _data->source->height : 0; }
SizeF Image::size() const { return _data ? _data->size : SizeF{}; }
bool Image::isOpaque() const { return !_data || _data->opaque; }

Image Image::withSize(SizeF size) const {
    if (!_data) return {};
    auto data = std::make_shared<Data>(*_data);
    data->size = size;
    return Image(std::move(data));
}

const vips::VImage& Image::pixels() const {
    static const vips::VImage empty;
    return _data ? _data->source->resolved() : empty;
}

QImage Image::toQImage() const {
    if (!_data) return {};
    // Zero copy: the QImage borrows libvips' packed memory and holds a reference to it.
    VipsImage* held = pixels().get_image();
    g_object_ref(held);
    const auto* bits = static_cast<const uchar*>(vips_image_get_data(held));
    return QImage(bits, pixelsWide(), pixelsHigh(), pixelsWide() * 4, QImage::Format_RGBA8888,
                  [](void* image) { g_object_unref(image); }, held);
}

int Image::levelFactorFor(int minPixelsWide, int minPixelsHigh) const {
    if (!_data) return 1;
    int factor = 1;
    while (pixelsWide() / (factor * 2) >= std::max(minPixelsWide, 1) &&
           pixelsHigh() / (factor * 2) >= std::max(minPixelsHigh, 1)) {
        factor *= 2;
    }
    return factor;
}

Image Image::levelWithAtLeast(int minPixelsWide, int minPixelsHigh) const {
    const int factor = levelFactorFor(minPixelsWide, minPixelsHigh);
    if (factor == 1) return *this;
    int depth = 0;
    while ((1 << depth) < factor) ++depth;

    Data::Pyramid& pyramid = *_data->pyramid;
    std::lock_guard guard(pyramid.lock);
    while (int(pyramid.levels.size()) < depth) {
        const vips::VImage& above = pyramid.levels.empty() ? pixels() : pyramid.levels.back();
        pyramid.levels.push_back(halveRgba(above, _data->opaque));
    }
    auto data = Data::of(pyramid.levels[depth - 1], _data->opaque);
    data->size = _data->size;
    return Image(std::move(data));
}

}  // namespace marigold
