#include "processing/BitmapOps.h"

#include <QDebug>
#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>
#include <vector>

namespace marigold::bitmap {

namespace {

using vips::VImage;

// Larger requests (a gigabyte of RGBA) come only from nonsense scales or rectangles; they are
// refused rather than left to exhaust memory or run for minutes.
constexpr double kMaxPixels = double(1 << 28);
// libvips' Lanczos kernel has a bounded number of taps; steeper reductions first average
// whole blocks, leaving the kernel a factor of at least 2 so the result looks the same.
constexpr double kMaxLanczosReduction = 100;
constexpr int kTaps = 6;
constexpr int kBands = 4;
// The unsharp mask works on detail finer than this gaussian (output pixels).
constexpr double kSharpenSigma = 1.7;
constexpr double kLumaRed = 0.222;
constexpr double kLumaGreen = 0.707;
constexpr double kLumaBlue = 0.071;

// libvips errors and failed allocations become the project's "no result" here, in one place.
template <class Make>
Image guarded(const char* operation, Make make) {
    try {
        return make();
    } catch (const vips::VError& error) {
        qWarning("marigold: %s failed: %s", operation, error.what());
    } catch (const std::bad_alloc&) {
        qWarning("marigold: %s failed: out of memory", operation);
    }
    return {};
}

VImage tagged(const VImage& rgba) {
    return rgba.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// Resampled values back to bytes: rounded to nearest, where a plain cast would truncate.
VImage toBytes(const VImage& image) {
    if (image.format() == VIPS_FORMAT_UCHAR) return image;
    return (image + 0.5).cast(VIPS_FORMAT_UCHAR);
}

// Truncates toward zero; out-of-range and not-a-number values must not reach the conversion.
int clampedInt(double value) { return std::isnan(value) ? 0 : int(std::clamp(value, -1e9, 1e9)); }

// Pixel rectangle, y-down rows.
struct PixelRect {
    int left = 0;
    int top = 0;
    int wide = 0;
    int high = 0;
};

// The one conversion from the image's lower-left origin to libvips' rows. Edges snap to the
// nearest pixel boundary: exact for whole-point rectangles on full-size images, within half a
// pixel on a reduced copy.
PixelRect pixelRect(const Image& image, RectF rect) {
    const double perPointX = image.pixelsWide() / double(image.size().width);
    const double perPointY = image.pixelsHigh() / double(image.size().height);
    const double imageHigh = image.size().height;
    const int left = clampedInt(std::round(rect.x * perPointX));
    const int right = clampedInt(std::round((double(rect.x) + rect.width) * perPointX));
    const int top = clampedInt(std::round((imageHigh - (double(rect.y) + rect.height)) * perPointY));
    const int bottom = clampedInt(std::round((imageHigh - rect.y) * perPointY));
    return {left, top, right - left, bottom - top};
}

double lanczos3(double x) {
    if (x == 0) return 1;
    if (std::abs(x) >= 3) return 0;
    const double px = std::numbers::pi * x;
    return 3 * std::sin(px) * std::sin(px / 3) / (px * px);
}

// For enlarging `inLength` samples to `outLength`: each output sample's six neighbours
// (clamped to the edge) and their normalised Lanczos3 weights, pixel centres aligned.
struct Taps {
    std::vector<int> index;
    std::vector<float> weight;
};

Taps enlargingTaps(int inLength, int outLength) {
    Taps taps;
    taps.index.resize(size_t(outLength) * kTaps);
    taps.weight.resize(size_t(outLength) * kTaps);
    const double step = double(inLength) / outLength;
    for (int i = 0; i < outLength; ++i) {
        const double centre = (i + 0.5) * step - 0.5;
        const int first = int(std::floor(centre)) - (kTaps / 2 - 1);
        double weights[kTaps];
        double sum = 0;
        for (int t = 0; t < kTaps; ++t) {
            weights[t] = lanczos3(centre - (first + t));
            sum += weights[t];
        }
        for (int t = 0; t < kTaps; ++t) {
            taps.index[size_t(i) * kTaps + t] = std::clamp(first + t, 0, inLength - 1);
            taps.weight[size_t(i) * kTaps + t] = float(weights[t] / sum);
        }
    }
    return taps;
}

// Samples are interleaved RGBA floats, rows packed.
std::vector<float> enlargedRows(const float* in, int wide, int high, int outWide) {
    const Taps taps = enlargingTaps(wide, outWide);
    std::vector<float> out(size_t(outWide) * high * kBands);
    for (int y = 0; y < high; ++y) {
        const float* row = in + size_t(y) * wide * kBands;
        float* target = out.data() + size_t(y) * outWide * kBands;
        for (int x = 0; x < outWide; ++x) {
            float sum[kBands] = {};
            for (int t = 0; t < kTaps; ++t) {
                const float weight = taps.weight[size_t(x) * kTaps + t];
                const float* pixel = row + size_t(taps.index[size_t(x) * kTaps + t]) * kBands;
                for (int b = 0; b < kBands; ++b) sum[b] += weight * pixel[b];
            }
            std::copy_n(sum, kBands, target + size_t(x) * kBands);
        }
    }
    return out;
}

std::vector<float> enlargedColumns(const float* in, int wide, int high, int outHigh) {
    const Taps taps = enlargingTaps(high, outHigh);
    const size_t rowLength = size_t(wide) * kBands;
    std::vector<float> out(rowLength * outHigh);
    for (int y = 0; y < outHigh; ++y) {
        float* target = out.data() + size_t(y) * rowLength;
        for (int t = 0; t < kTaps; ++t) {
            const float weight = taps.weight[size_t(y) * kTaps + t];
            const float* row = in + size_t(taps.index[size_t(y) * kTaps + t]) * rowLength;
            for (size_t k = 0; k < rowLength; ++k) target[k] += weight * row[k];
        }
    }
    return out;
}

// libvips enlarges only through interpolators (cubic at best), so Lanczos3 enlargement is
// done here, separably, on a float copy.
VImage enlarging(const VImage& image, int outWide, int outHigh) {
    const VImage source = image.cast(VIPS_FORMAT_FLOAT).copy_memory();
    int wide = source.width();
    int high = source.height();
    std::vector<float> samples(static_cast<const float*>(source.data()),
                               static_cast<const float*>(source.data()) +
                                   size_t(wide) * high * kBands);
    if (outWide > wide) {
        samples = enlargedRows(samples.data(), wide, high, outWide);
        wide = outWide;
    }
    if (outHigh > high) {
        samples = enlargedColumns(samples.data(), wide, high, outHigh);
        high = outHigh;
    }
    VipsImage* made = vips_image_new_from_memory_copy(
        samples.data(), samples.size() * sizeof(float), wide, high, kBands, VIPS_FORMAT_FLOAT);
    if (!made) throw vips::VError();
    return VImage(made);
}

VImage reducing(VImage image, int outLength, bool vertical) {
    double factor = double(vertical ? image.height() : image.width()) / outLength;
    if (factor > kMaxLanczosReduction) {
        const int block = int(factor / 2);
        auto ceil = VImage::option()->set("ceil", true);
        image = vertical ? image.shrinkv(block, ceil) : image.shrinkh(block, ceil);
        factor = double(vertical ? image.height() : image.width()) / outLength;
    }
    // The exact factor (not a rounded one) keeps output centres on input centres and makes
    // the output exactly outLength long.
    auto options = VImage::option()->set("kernel", VIPS_KERNEL_LANCZOS3)->set("gap", 0.0);
    return vertical ? image.reducev(factor, options) : image.reduceh(factor, options);
}

// `image` stretched to exactly outWide x outHigh with Lanczos3, edges extended outward.
// Reducing the rows first keeps the horizontal pass short, as libvips' own resize does.
VImage stretching(VImage image, int outWide, int outHigh) {
    if (outHigh < image.height()) image = reducing(image, outHigh, true);
    if (outWide < image.width()) image = reducing(image, outWide, false);
    if (outWide > image.width() || outHigh > image.height()) {
        image = enlarging(image, outWide, outHigh);
    }
    return image;
}

VImage transparent(int wide, int high) {
    return tagged(VImage::black(wide, high, VImage::option()->set("bands", kBands)));
}

VImage ink(const QColor& colour) {
    return VImage::black(1, 1, VImage::option()->set("bands", kBands)) +
           std::vector<double>{double(colour.red()), double(colour.green()),
                               double(colour.blue()), double(colour.alpha())};
}

// Straight-alpha RGBA drawn over a plain colour.
VImage over(const VImage& rgba, const QColor& colour) {
    const VImage base = tagged(ink(colour)
                                   .cast(VIPS_FORMAT_UCHAR)
                                   .embed(0, 0, rgba.width(), rgba.height(),
                                          VImage::option()->set("extend", VIPS_EXTEND_COPY)));
    return toBytes(base.composite2(rgba, VIPS_BLEND_MODE_OVER));
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
    if (wide < 1 || high < 1 || double(wide) * high > kMaxPixels) return {};
    return guarded("new bitmap", [&] { return Image::fromRgba(transparent(wide, high), false); });
}

Image croppingAndScaling(const Image& image, RectF rect, SizeF size,
                         std::optional<QColor> background) {
    const int outWide = clampedInt(size.width);
    const int outHigh = clampedInt(size.height);
    if (image.isNull() || outWide < 1 || outHigh < 1) return {};
    const PixelRect region = pixelRect(image, rect);
    if (double(outWide) * outHigh > kMaxPixels ||
        double(std::max(region.wide, 0)) * std::max(region.high, 0) > kMaxPixels) {
        return {};
    }
    if (background && !background->isValid()) background.reset();

    return guarded("crop and scale", [&] {
        const VImage& pixels = image.pixels();
        const int left = std::max(region.left, 0);
        const int top = std::max(region.top, 0);
        const int right = std::min(region.left + region.wide, pixels.width());
        const int bottom = std::min(region.top + region.high, pixels.height());

        VImage stretched;
        bool opaque = false;
        if (right <= left || bottom <= top) {
            stretched = transparent(outWide, outHigh);
        } else {
            VImage part = pixels.crop(left, top, right - left, bottom - top);
            const bool inside = part.width() == region.wide && part.height() == region.high;
            if (!inside) {
                part = part.embed(left - region.left, top - region.top, region.wide, region.high,
                                  VImage::option()->set("extend", VIPS_EXTEND_BLACK));
            }
            opaque = inside && image.isOpaque();
            if (opaque) {
                stretched = toBytes(stretching(part, outWide, outHigh));
            } else {
                // Weighting colour by alpha keeps transparent pixels from darkening edges.
                stretched =
                    toBytes(stretching(part.premultiply(), outWide, outHigh).unpremultiply());
            }
        }
        if (background) {
            stretched = over(stretched, background->toRgb());
            opaque = opaque || background->alpha() == 255;
        }
        return Image::fromRgba(tagged(stretched), opaque);
    });
}

Image scaling(const Image& image, SizeF size, std::optional<QColor> background) {
    const SizeF whole = image.size();
    return croppingAndScaling(image, {0, 0, whole.width, whole.height}, size, background);
}

// An unsharp mask on luma only: the detail (luma minus its gaussian blur, sigma 1.7 px),
// times the sharpness, is added equally to R, G and B, so hue is kept and alpha untouched.
// Transparent images are sharpened premultiplied so their empty pixels add no dark halo.
Image sharpening(const Image& image, float sharpness) {
    if (image.isNull() || !(sharpness > 0)) return image;
    return guarded("sharpening", [&] {
        const VImage& pixels = image.pixels();
        const bool opaque = image.isOpaque();
        const VImage source = opaque ? pixels : pixels.premultiply();
        const VImage colour = source.extract_band(0, VImage::option()->set("n", 3));
        const VImage luma =
            colour.recomb(VImage::new_matrixv(3, 1, kLumaRed, kLumaGreen, kLumaBlue));
        const VImage detail = (luma - luma.gaussblur(kSharpenSigma)) * double(sharpness);
        VImage sharpened = (colour + detail).bandjoin(source[3]);
        if (!opaque) sharpened = sharpened.unpremultiply();
        return Image::fromRgba(tagged(toBytes(sharpened)), opaque).withSize(image.size());
    });
}

Image bordered(const Image& image, int thickness, const QColor& color) {
    if (image.isNull() || thickness <= 0) return image;
    return guarded("border", [&] {
        const QColor colour = color.isValid() ? color.toRgb() : QColor(Qt::black);
        const int wide = image.pixelsWide();
        const int high = image.pixelsHigh();
        VImage frame = VImage::new_memory();
        if (colour.alpha() == 255) {
            // Drawing changes pixels in place, so the argument's pixels are copied first.
            image.pixels().write(frame);
        } else {
            transparent(wide, high).write(frame);
        }
        const std::vector<double> paint = {double(colour.red()), double(colour.green()),
                                           double(colour.blue()), double(colour.alpha())};
        auto fillRect = [&](int left, int top, int rectWide, int rectHigh) {
            frame.draw_rect(paint, left, top, rectWide, rectHigh,
                            VImage::option()->set("fill", true));
        };
        fillRect(0, 0, wide, thickness);
        fillRect(0, high - thickness, wide, thickness);
        fillRect(0, 0, thickness, high);
        fillRect(wide - thickness, 0, thickness, high);
        if (colour.alpha() != 255) {
            frame = toBytes(image.pixels().composite2(frame, VIPS_BLEND_MODE_OVER));
        }
        return Image::fromRgba(tagged(frame), image.isOpaque()).withSize(image.size());
    });
}

Image rotatingClockwise(const Image& image) { return turned(image, VIPS_ANGLE_D90); }
Image rotatingCounterClockwise(const Image& image) { return turned(image, VIPS_ANGLE_D270); }
Image rotating180(const Image& image) { return turned(image, VIPS_ANGLE_D180); }

int brightnessAt(const vips::VImage& bitmap, int x, int y) {
    if (!bitmap.get_image() || x < 0 || y < 0 || x >= bitmap.width() || y >= bitmap.height()) {
        return 0;
    }
    try {
        const std::vector<double> sample = bitmap.getpoint(x, y);
        if (sample.size() == 3) {
            return int(std::rint(kLumaRed * sample[0] + kLumaGreen * sample[1] +
                                 kLumaBlue * sample[2]));
        }
        return int(sample[0]);
    } catch (const vips::VError& error) {
        qWarning("marigold: brightness probe failed: %s", error.what());
        return 0;
    }
}

}  // namespace marigold::bitmap
