// The operations that change the source before it is cropped: free rotation, mirror images
// and grey. Pure functions of their arguments.
#include <QThreadPool>
#include <array>
#include <cmath>
#include <future>
#include <numbers>

#include "processing/BitmapOps.h"
#include "processing/CropGeometry.h"
#include "processing/ImageProcessor.h"
#include "processing/PixelLoops.h"
#include "processing/RotationGeometry.h"

namespace marigold {

namespace {

Image quarterTurned(const Image& image, double degrees) {
    const int quarters = ((int(degrees / 90) % 4) + 4) % 4;  // counter-clockwise
    switch (quarters) {
        case 1:
            return bitmap::rotatingCounterClockwise(image);
        case 2:
            return bitmap::rotating180(image);
        case 3:
            return bitmap::rotatingClockwise(image);
        default:
            return image;
    }
}

}  // namespace

Image ImageProcessor::rotateImage(const Image& image, double degrees) {
    if (image.isNull() || !std::isfinite(degrees)) return {};
    if (isQuarterTurn(degrees)) return quarterTurned(image, degrees);
    const double w = image.pixelsWide(), h = image.pixelsHigh();
    const RotatedCanvas canvas = rotatedCanvas({float(w), float(h)}, degrees);
    const int wide = int(canvas.size.width), high = int(canvas.size.height);
    if (wide <= 0 || high <= 0 || (long long)wide * high > kMaxOutputPixels) return {};
    return bitmap::guarded("rotation", [&] {
        const double radians = std::numbers::pi * degrees / 180;
        const double c = std::cos(radians), s = std::sin(radians);
        const double tx = canvas.translation.x, ty = canvas.translation.y;
        // The turn is counter-clockwise with y up; in pixel rows (y down) a point (x, y) of
        // the picture lands at (c x + s y, -s x + c y) plus this offset, in edge coordinates.
        const double ox = c * tx - s * (h + ty);
        const double oy = high - s * tx - c * (h + ty);
        // libvips maps pixel indices, not edges: the centre of pixel 0 is at 0, not 0.5.
        const double odx = ox + 0.5 * (c + s) - 0.5;
        const double ody = oy + 0.5 * (c - s) - 0.5;
        // libvips weighs the colours by alpha itself, so the transparent corners do not
        // darken the edges they meet.
        const vips::VImage turned = image.pixels().affine(
            {c, s, -s, c}, vips::VImage::option()
                               ->set("interpolate", vips::VInterpolate::new_from_name("bicubic"))
                               ->set("oarea", std::vector<int>{0, 0, wide, high})
                               ->set("odx", odx)
                               ->set("ody", ody)
                               ->set("extend", VIPS_EXTEND_BACKGROUND)
                               ->set("background", std::vector<double>{0, 0, 0, 0}));
        return Image::fromRgba(turned, false);
    });
}

Image ImageProcessor::rotateImageShownFirst(const Image& image, double degrees) {
    // Below this, turning the whole picture is as quick as turning a copy.
    constexpr long long kPixelsWorthSplitting = 4'000'000;
    if (image.isNull() || isQuarterTurn(degrees) ||
        (long long)image.pixelsWide() * image.pixelsHigh() < kPixelsWorthSplitting) {
        return rotateImage(image, degrees);
    }
    const RotatedCanvas canvas =
        rotatedCanvas({float(image.pixelsWide()), float(image.pixelsHigh())}, degrees);
    const int wide = int(canvas.size.width), high = int(canvas.size.height);
    const Image half = rotateImage(
        image.levelWithAtLeast(image.pixelsWide() / 2, image.pixelsHigh() / 2), degrees);
    if (half.isNull() || (long long)wide * high > kMaxOutputPixels) return {};
    // A promise kept on the shared pool, not std::async: the future of std::async would hold
    // up whoever lets go of this picture until the turn is done.
    auto promise = std::make_shared<std::promise<vips::VImage>>();
    std::shared_future<vips::VImage> full = promise->get_future().share();
    QThreadPool::globalInstance()->start([promise, image, degrees] {
        const Image turned = rotateImage(image, degrees);
        if (turned.isNull()) {
            promise->set_exception(
                std::make_exception_ptr(vips::VError("the full-size turn failed")));
        } else {
            promise->set_value(turned.pixels());
        }
    });
    // The half-size turn may come out a pixel off the exact half; the pyramid wants the half.
    const vips::VImage halfLevel = half.pixels().embed(
        0, 0, wide / 2, high / 2, vips::VImage::option()->set("extend", VIPS_EXTEND_BACKGROUND));
    return Image::fromPendingDecode(wide, high, std::move(full), halfLevel.copy_memory(), false);
}

Image ImageProcessor::flipImageHorizontal(const Image& image) {
    if (image.isNull()) return {};
    return bitmap::guarded("flip", [&] {
        return Image::fromRgba(image.pixels().flip(VIPS_DIRECTION_HORIZONTAL), image.isOpaque())
            .withSize(image.size());
    });
}

Image ImageProcessor::flipImageVertical(const Image& image) {
    if (image.isNull()) return {};
    return bitmap::guarded("flip", [&] {
        return Image::fromRgba(image.pixels().flip(VIPS_DIRECTION_VERTICAL), image.isOpaque())
            .withSize(image.size());
    });
}

// rint(0.222 R + 0.707 G + 0.071 B) in double precision, exactly: the three products come
// from tables holding the very doubles the expression makes, summed in its order. The result
// is opaque grey: alpha is dropped, as a grey bitmap has none.
Image ImageProcessor::desaturate(const Image& image) {
    if (image.isNull()) return {};
    return bitmap::guarded("desaturation", [&] {
        std::array<double, 256> red{}, green{}, blue{};
        for (int v = 0; v < 256; ++v) {
            red[v] = 0.222 * v;
            green[v] = 0.707 * v;
            blue[v] = 0.071 * v;
        }
        const vips::VImage& source = image.pixels();
        const int wide = source.width(), high = source.height();
        vips::VImage grey = bitmap::newImage(wide, high);
        bitmap::inParallel(high, [&](int begin, int end) {
            for (int y = begin; y < end; ++y) {
                const uint8_t* in = bitmap::rowOf<uint8_t>(source, y);
                uint8_t* out = bitmap::rowOf(grey, y);
                for (int x = 0; x < wide; ++x, in += 4, out += 4) {
                    const auto value = uint8_t(std::rint(red[in[0]] + green[in[1]] + blue[in[2]]));
                    out[0] = out[1] = out[2] = value;
                    out[3] = 255;
                }
            }
        });
        return Image::fromRgba(grey, true).withSize(image.size());
    });
}

}  // namespace marigold
