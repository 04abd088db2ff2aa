#include "processing/BitmapOps.h"

#include <QDebug>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

#include "processing/CropGeometry.h"
#include "processing/LanczosResampler.h"
#include "processing/LumaSharpener.h"
#include "processing/PixelLoops.h"

namespace marigold::bitmap {

namespace {

using vips::VImage;

// Straight-alpha RGBA, 0 to 255 per channel.
struct Colour {
    float r, g, b, a;
};


// Truncates toward zero; out-of-range and not-a-number values must not reach the conversion.
int clampedInt(double value) {
    return std::isnan(value) ? 0 : int(std::clamp(value, -1e9, 1e9));
}

// The crop rectangle in pixel rows of `image`, which may be a reduced copy. Edges snap to the
// nearest pixel boundary: exact for whole-point rectangles on full-size images, within half a
// pixel on a reduced copy.
PixelRect pixelRect(const Image& image, RectF rect) {
    const double perPointX = image.pixelsWide() / double(image.size().width);
    const double perPointY = image.pixelsHigh() / double(image.size().height);
    const RectF rows = flipY(rect, image.size().height);
    const int left = clampedInt(std::round(rows.x * perPointX));
    const int right = clampedInt(std::round((double(rows.x) + rows.width) * perPointX));
    const int top = clampedInt(std::round(rows.y * perPointY));
    const int bottom = clampedInt(std::round((double(rows.y) + rows.height) * perPointY));
    return {left, top, right - left, bottom - top};
}

VImage transparent(int wide, int high) {
    VImage image = newImage(wide, high);
    std::memset(rowOf(image, 0), 0, VIPS_IMAGE_SIZEOF_IMAGE(image.get_image()));
    return image;
}

Colour rgbaOf(const QColor& colour) {
    const QColor rgb = colour.toRgb();
    return {float(rgb.red()), float(rgb.green()), float(rgb.blue()), float(rgb.alpha())};
}

// Straight-alpha source-over of one pixel.
void blend(Colour top, Colour bottom, uint8_t* out) {
    const float topAlpha = top.a / 255;
    const float bottomAlpha = bottom.a / 255 * (1 - topAlpha);
    const float alpha = topAlpha + bottomAlpha;
    if (alpha <= 0) {
        std::fill_n(out, kBands, 0);
        return;
    }
    out[0] = toByte((top.r * topAlpha + bottom.r * bottomAlpha) / alpha);
    out[1] = toByte((top.g * topAlpha + bottom.g * bottomAlpha) / alpha);
    out[2] = toByte((top.b * topAlpha + bottom.b * bottomAlpha) / alpha);
    out[3] = toByte(alpha * 255);
}

Colour pixelAt(const uint8_t* pixel) {
    return {float(pixel[0]), float(pixel[1]), float(pixel[2]), float(pixel[3])};
}

VImage overBackground(const VImage& rgba, Colour background) {
    VImage out = newImage(rgba.width(), rgba.height());
    for (int y = 0; y < rgba.height(); ++y) {
        const uint8_t* in = rowOf<uint8_t>(rgba, y);
        uint8_t* target = rowOf(out, y);
        for (int x = 0; x < rgba.width(); ++x) {
            blend(pixelAt(in + x * kBands), background, target + x * kBands);
        }
    }
    return out;
}

Image turned(const Image& image, VipsAngle angle) {
    if (image.isNull()) return {};
    return guarded("rotation", [&] {
        const SizeF size = image.size();
        const bool quarter = angle != VIPS_ANGLE_D180;
        return Image::fromRgba(image.pixels().rot(angle), image.isOpaque())
            .withSize(quarter ? SizeF{size.height, size.width} : size);
    });
}

}  // namespace

Image withSize(SizeF size) {
    const int wide = clampedInt(size.width);
    const int high = clampedInt(size.height);
    if (wide < 1 || high < 1 || double(wide) * high > double(kMaxOutputPixels)) return {};
    return guarded("new bitmap", [&] { return Image::fromRgba(transparent(wide, high), false); });
}

Image croppingAndScaling(const Image& image, RectF rect, SizeF size,
                         std::optional<QColor> background) {
    const int outWide = clampedInt(size.width);
    const int outHigh = clampedInt(size.height);
    if (image.isNull() || outWide < 1 || outHigh < 1) return {};
    const PixelRect region = pixelRect(image, rect);
    if (double(outWide) * outHigh > double(kMaxOutputPixels) ||
        double(std::max(region.width, 0)) * std::max(region.height, 0) > double(kMaxOutputPixels)) {
        qWarning("marigold: crop and scale refused: %d x %d pixels from %d x %d is too large",
                 outWide, outHigh, region.width, region.height);
        return {};
    }
    if (background && !background->isValid()) background.reset();

    return guarded("crop and scale", [&] {
        const VImage& pixels = image.pixels();
        const int left = std::max(region.x, 0);
        const int top = std::max(region.y, 0);
        const int right = std::min(region.x + region.width, pixels.width());
        const int bottom = std::min(region.y + region.height, pixels.height());

        VImage stretched;
        bool opaque = false;
        if (right <= left || bottom <= top) {
            stretched = transparent(outWide, outHigh);
        } else {
            VImage part = pixels.crop(left, top, right - left, bottom - top);
            const bool inside = part.width() == region.width && part.height() == region.height;
            if (!inside) {
                part = part.embed(left - region.x, top - region.y, region.width, region.height,
                                  VImage::option()->set("extend", VIPS_EXTEND_BLACK));
            }
            opaque = inside && image.isOpaque();
            stretched = stretching(part, outWide, outHigh, opaque);
        }
        if (background) {
            stretched = overBackground(stretched, rgbaOf(*background));
            opaque = opaque || background->alpha() == 255;
        }
        return Image::fromRgba(stretched, opaque);
    });
}

Image scaling(const Image& image, SizeF size, std::optional<QColor> background) {
    const SizeF whole = image.size();
    return croppingAndScaling(image, {0, 0, whole.width, whole.height}, size, background);
}

Image sharpening(const Image& image, float sharpness) {
    if (image.isNull() || !(sharpness > 0)) return image;
    return guarded("sharpening", [&] {
        const bool opaque = image.isOpaque();
        return Image::fromRgba(lumaSharpening(image.pixels(), opaque, sharpness), opaque)
            .withSize(image.size());
    });
}

Image bordered(const Image& image, int thickness, const QColor& color) {
    if (image.isNull() || thickness <= 0) return image;
    return guarded("border", [&] {
        const Colour ink = rgbaOf(color.isValid() ? color : QColor(Qt::black));
        const VImage& pixels = image.pixels();
        const int wide = pixels.width();
        const int high = pixels.height();
        VImage out = newImage(wide, high);
        std::memcpy(rowOf(out, 0), rowOf<uint8_t>(pixels, 0),
                    VIPS_IMAGE_SIZEOF_IMAGE(out.get_image()));
        const int band = std::min(thickness, std::max(wide, high));
        auto paint = [&](uint8_t* row, int from, int to) {
            for (int x = from; x < to; ++x) blend(ink, pixelAt(row + x * kBands), row + x * kBands);
        };
        for (int y = 0; y < high; ++y) {
            uint8_t* row = rowOf(out, y);
            if (y < band || y >= high - band) {
                paint(row, 0, wide);
            } else {
                paint(row, 0, std::min(band, wide));
                paint(row, std::max(band, wide - band), wide);
            }
        }
        return Image::fromRgba(out, image.isOpaque()).withSize(image.size());
    });
}

Image rotatingClockwise(const Image& image) {
    return turned(image, VIPS_ANGLE_D90);
}

Image rotatingCounterClockwise(const Image& image) {
    return turned(image, VIPS_ANGLE_D270);
}

Image rotating180(const Image& image) {
    return turned(image, VIPS_ANGLE_D180);
}

int brightnessAt(const vips::VImage& bitmap, int x, int y) {
    if (!bitmap.get_image() || x < 0 || y < 0 || x >= bitmap.width() || y >= bitmap.height()) {
        return 0;
    }
    try {
        const std::vector<double> sample = bitmap.getpoint(x, y);
        if (sample.size() == 3) {
            return int(std::rint(0.222 * sample[0] + 0.707 * sample[1] + 0.071 * sample[2]));
        }
        return int(sample[0]);
    } catch (const vips::VError& error) {
        qWarning("marigold: brightness probe failed: %s", error.what());
        return 0;
    }
}

}  // namespace marigold::bitmap
