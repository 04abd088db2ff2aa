#include "processing/BitmapOps.h"

#include <QDebug>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <numbers>
#include <thread>
#include <vector>

namespace marigold::bitmap {

namespace {

using vips::VImage;

// Larger requests (half a gigabyte of RGBA) come only from nonsense scales or rectangles;
// they are refused rather than left to exhaust memory or run for minutes.
constexpr double kMaxPixels = double(1 << 27);
// libvips' Lanczos kernel has a bounded number of taps; steeper reductions of the rows first
// average whole blocks, leaving the kernel a factor of at least 2 so the result looks the same.
constexpr double kMaxLanczosReduction = 100;
constexpr int kBands = 4;
constexpr double kLanczosLobes = 3;
constexpr double kSharpenSigma = 1.7;
constexpr float kLumaRed = 0.222f;
constexpr float kLumaGreen = 0.707f;
constexpr float kLumaBlue = 0.071f;

// Straight-alpha RGBA, 0 to 255 per channel.
struct Colour {
    float r, g, b, a;
};

// libvips errors, failed allocations and failed threads become the project's "no result"
// here, in one place.
template <class Make>
Image guarded(const char* operation, Make make) {
    try {
        return make();
    } catch (const std::exception& error) {
        qWarning("marigold: %s failed: %s", operation, error.what());
    }
    return {};
}

// Truncates toward zero; out-of-range and not-a-number values must not reach the conversion.
int clampedInt(double value) {
    return std::isnan(value) ? 0 : int(std::clamp(value, -1e9, 1e9));
}

uint8_t toByte(float value) {
    return uint8_t(std::clamp(value + 0.5f, 0.0f, 255.0f));
}

// One RGBA pixel (or four samples) as a vector of four floats, so that the loops below use
// SIMD registers at the build's plain optimisation level (GCC and Clang vector extensions).
using Float4 = float __attribute__((vector_size(16)));

Float4 load4(const float* p) {
    Float4 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

void store4(float* p, Float4 v) {
    std::memcpy(p, &v, sizeof v);
}

// Compilers turn portable byte-to-float vector conversions into one scalar conversion per
// lane, which dominated the loops; SSE2 (every x86-64) does each in a few instructions.
#if defined(__SSE2__)
Float4 load4(const uint8_t* p) {
    int32_t packed;
    std::memcpy(&packed, p, sizeof packed);
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_cvtsi32_si128(packed);
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero));
}

// Rounded to nearest and clamped, as toByte (the packs saturate).
void store4(uint8_t* p, Float4 v) {
    const __m128i words = _mm_cvttps_epi32(v + 0.5f);
    const __m128i shorts = _mm_packs_epi32(words, words);
    const int32_t packed = _mm_cvtsi128_si32(_mm_packus_epi16(shorts, shorts));
    std::memcpy(p, &packed, sizeof packed);
}
#else
Float4 load4(const uint8_t* p) {
    return Float4{float(p[0]), float(p[1]), float(p[2]), float(p[3])};
}

void store4(uint8_t* p, Float4 v) {
    for (int b = 0; b < 4; ++b) p[b] = toByte(v[b]);
}
#endif

// The two loops that take most of a preview's time are also built for AVX2 with FMA (eight
// floats per instruction) and picked when the program loads if the CPU has them.
#if defined(__x86_64__) && defined(__GNUC__)
#define MARIGOLD_SIMD_CLONES __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define MARIGOLD_SIMD_CLONES
#endif

// Two RGBA pixels. Only ever a local: as a parameter it would change with the clone's ABI.
using Float8 = float __attribute__((vector_size(32)));

// target[k] = sum over t of weight[t] * sources[t][k], for k < length (a multiple of 4). Several
// independent sums are kept so that each addition does not wait on the one before.
MARIGOLD_SIMD_CLONES
void weightedRows(const float* const* sources, const Float4* weight, int count, size_t length,
                  float* target) {
    size_t k = 0;
    for (; k + 32 <= length; k += 32) {
        Float8 sum0{}, sum1{}, sum2{}, sum3{};
        for (int t = 0; t < count; ++t) {
            const float w = weight[t][0];
            const float* source = sources[t] + k;
            Float8 v;
            std::memcpy(&v, source, sizeof v);
            sum0 += w * v;
            std::memcpy(&v, source + 8, sizeof v);
            sum1 += w * v;
            std::memcpy(&v, source + 16, sizeof v);
            sum2 += w * v;
            std::memcpy(&v, source + 24, sizeof v);
            sum3 += w * v;
        }
        std::memcpy(target + k, &sum0, sizeof sum0);
        std::memcpy(target + k + 8, &sum1, sizeof sum1);
        std::memcpy(target + k + 16, &sum2, sizeof sum2);
        std::memcpy(target + k + 24, &sum3, sizeof sum3);
    }
    for (; k < length; k += 4) {
        Float4 sum{};
        for (int t = 0; t < count; ++t) sum += weight[t] * load4(sources[t] + k);
        store4(target + k, sum);
    }
}

// One row resampled across: output pixel x is the sum over t < count of weights[x * count + t]
// times the pixel first[x] + t of `padded` (RGBA floats). Pairs of taps fill eight lanes.
MARIGOLD_SIMD_CLONES
void acrossRow(const float* padded, const int* first, const Float4* weights, int count, int outWide,
               float* target) {
    for (int x = 0; x < outWide; ++x) {
        const float* pixel = padded + ptrdiff_t(first[x]) * kBands;
        const Float4* weight = weights + size_t(x) * count;
        Float8 even{}, odd{};
        int t = 0;
        for (; t + 4 <= count; t += 4) {
            Float8 w, p;
            std::memcpy(&w, weight + t, sizeof w);
            std::memcpy(&p, pixel + t * kBands, sizeof p);
            even += w * p;
            std::memcpy(&w, weight + t + 2, sizeof w);
            std::memcpy(&p, pixel + (t + 2) * kBands, sizeof p);
            odd += w * p;
        }
        const Float8 both = even + odd;
        Float4 sum = __builtin_shufflevector(both, both, 0, 1, 2, 3) +
                     __builtin_shufflevector(both, both, 4, 5, 6, 7);
        for (; t < count; ++t) sum += weight[t] * load4(pixel + t * kBands);
        store4(target + size_t(x) * kBands, sum);
    }
}

// A packed RGBA byte image in memory that the loops below write directly.
VImage newImage(int wide, int high) {
    VipsImage* image = vips_image_new_memory();
    vips_image_init_fields(image, wide, high, kBands, VIPS_FORMAT_UCHAR, VIPS_CODING_NONE,
                           VIPS_INTERPRETATION_sRGB, 1.0, 1.0);
    if (vips_image_write_prepare(image) != 0) {
        g_object_unref(image);
        throw vips::VError();
    }
    return VImage(image);
}

template <class T>
const T* rowOf(const VImage& image, int y) {
    return reinterpret_cast<const T*>(VIPS_IMAGE_ADDR(image.get_image(), 0, y));
}

uint8_t* rowOf(VImage& image, int y) {
    return VIPS_IMAGE_ADDR(image.get_image(), 0, y);
}

// Runs body(begin, end) over rows [0, count) on all cores: previews are rebuilt on every drag
// event, and libvips only parallelises its own operations. The rows go in chunks of at least
// 64, several per core, taken in turn, so a core busy with other work simply takes fewer. A
// helper's exception is rethrown here.
template <class Body>
void inParallel(int count, Body body) {
    const int cores = std::clamp(int(std::thread::hardware_concurrency()), 1, 8);
    const int chunks = std::clamp(count / 64, 1, 4 * cores);
    const int workers = std::min(cores, chunks);
    std::atomic<int> next = 0;
    std::vector<std::exception_ptr> errors(workers);
    auto run = [&](int worker) {
        try {
            for (int chunk = next++; chunk < chunks; chunk = next++) {
                body(int(int64_t(count) * chunk / chunks),
                     int(int64_t(count) * (chunk + 1) / chunks));
            }
        } catch (...) {
            errors[worker] = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> helpers;
        for (int worker = 1; worker < workers; ++worker) helpers.emplace_back(run, worker);
        run(0);
    }
    for (const std::exception_ptr& error : errors) {
        if (error) std::rethrow_exception(error);
    }
}

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
    const int top =
        clampedInt(std::round((imageHigh - (double(rect.y) + rect.height)) * perPointY));
    const int bottom = clampedInt(std::round((imageHigh - rect.y) * perPointY));
    return {left, top, right - left, bottom - top};
}

double lanczos3(double x) {
    if (x == 0) return 1;
    if (std::abs(x) >= kLanczosLobes) return 0;
    const double px = std::numbers::pi * x;
    return kLanczosLobes * std::sin(px) * std::sin(px / kLanczosLobes) / (px * px);
}

// For each output sample: the first of `count` consecutive source samples and their
// normalised Lanczos3 weights. Pixel centres are aligned and the kernel widens when reducing,
// as libvips' reduce does, so both directions agree.
struct Taps {
    int count = 1;
    std::vector<int> first;
    std::vector<Float4> weight;
};

Taps lanczosTaps(int inLength, int outLength) {
    Taps taps;
    taps.first.resize(outLength);
    if (inLength == outLength) {
        for (int i = 0; i < outLength; ++i) taps.first[i] = i;
        taps.weight.assign(outLength, Float4{} + 1.0f);
        return taps;
    }
    const double step = double(inLength) / outLength;
    const double stretch = std::max(1.0, step);
    const double support = kLanczosLobes * stretch;
    // Sources strictly within the support of a centre: never more than ceil(2 * support).
    taps.count = int(std::ceil(2 * support));
    taps.weight.resize(size_t(outLength) * taps.count);
    std::vector<double> weights(taps.count);
    for (int i = 0; i < outLength; ++i) {
        const double centre = (i + 0.5) * step - 0.5;
        const int first = int(std::floor(centre - support)) + 1;
        double sum = 0;
        for (int t = 0; t < taps.count; ++t) {
            weights[t] = lanczos3((first + t - centre) / stretch);
            sum += weights[t];
        }
        taps.first[i] = first;
        for (int t = 0; t < taps.count; ++t) {
            taps.weight[size_t(i) * taps.count + t] = Float4{} + float(weights[t] / sum);
        }
    }
    return taps;
}

// Resamples rows across into float RGBA; the source row is copied into a buffer padded with
// its edge pixels so that every tap run is contiguous.
template <class In>
class RowResampler {
public:
    RowResampler(const VImage& source, const Taps& taps, int outWide)
        : _source(source), _taps(taps), _outWide(outWide) {
        const int wide = source.width();
        _padLeft = std::max(0, -taps.first.front());
        const int padRight = std::max(0, taps.first.back() + taps.count - wide);
        _padded.resize(size_t(_padLeft + wide + padRight) * kBands);
    }

    void resample(int y, float* target) {
        const int wide = _source.width();
        const In* row = rowOf<In>(_source, y);
        float* start = _padded.data() + size_t(_padLeft) * kBands;
        for (int x = 0; x < wide; ++x) store4(start + x * kBands, load4(row + x * kBands));
        const Float4 first = load4(start);
        const Float4 last = load4(start + size_t(wide - 1) * kBands);
        for (float* p = _padded.data(); p < start; p += kBands) store4(p, first);
        for (float* p = start + size_t(wide) * kBands; p < _padded.data() + _padded.size();
             p += kBands) {
            store4(p, last);
        }
        acrossRow(start, _taps.first.data(), _taps.weight.data(), _taps.count, _outWide, target);
    }

private:
    const VImage& _source;
    const Taps& _taps;
    int _outWide;
    int _padLeft = 0;
    std::vector<float> _padded;
};

// Resampled rows kept while the output moves down, so each source row is resampled across
// once per thread.
class RowWindow {
public:
    RowWindow(int slots, size_t rowLength)
        : _rows(size_t(slots) * rowLength), _held(slots, -1), _rowLength(rowLength) {}

    template <class Make>
    const float* row(int y, Make make) {
        const size_t slot = size_t(y) % _held.size();
        float* data = _rows.data() + slot * _rowLength;
        if (_held[slot] != y) {
            make(y, data);
            _held[slot] = y;
        }
        return data;
    }

private:
    std::vector<float> _rows;
    std::vector<int> _held;
    size_t _rowLength;
};

void storeRow(const float* sum, int wide, bool premultiplied, uint8_t* target) {
    if (!premultiplied) {
        for (int x = 0; x < wide; ++x) store4(target + x * kBands, load4(sum + x * kBands));
        return;
    }
    for (int x = 0; x < wide; ++x) {
        const float* pixel = sum + size_t(x) * kBands;
        uint8_t* out = target + size_t(x) * kBands;
        const uint8_t alpha = toByte(pixel[3]);
        const float unweight = alpha == 0 ? 0.0f : 255.0f / std::min(pixel[3], 255.0f);
        for (int b = 0; b < 3; ++b) out[b] = toByte(pixel[b] * unweight);
        out[3] = alpha;
    }
}

// Lanczos3 from `source` (already reduced down to at most outHigh rows) to outWide x outHigh:
// across by any factor, down only enlarging. libvips enlarges only through interpolators
// (cubic at best), and its horizontal reduce is several times slower than this.
template <class In>
VImage resampled(const VImage& source, int outWide, int outHigh, bool premultiplied) {
    const Taps across = lanczosTaps(source.width(), outWide);
    const Taps down = lanczosTaps(source.height(), outHigh);
    VImage out = newImage(outWide, outHigh);
    const size_t rowLength = size_t(outWide) * kBands;
    const int lastRow = source.height() - 1;
    inParallel(outHigh, [&](int begin, int end) {
        RowResampler<In> rows(source, across, outWide);
        RowWindow window(down.count + 1, rowLength);
        auto make = [&](int y, float* target) { rows.resample(y, target); };
        std::vector<float> sum(rowLength);
        std::vector<const float*> tapRows(down.count);
        for (int y = begin; y < end; ++y) {
            const Float4* weight = down.weight.data() + size_t(y) * down.count;
            for (int t = 0; t < down.count; ++t) {
                tapRows[t] = window.row(std::clamp(down.first[y] + t, 0, lastRow), make);
            }
            weightedRows(tapRows.data(), weight, down.count, rowLength, sum.data());
            storeRow(sum.data(), outWide, premultiplied, rowOf(out, y));
        }
    });
    return out;
}

// The rows reduced by libvips, whose vertical Lanczos reduce is vectorised. The exact factor
// (not a rounded one) keeps output centres on input centres and the height exactly outHigh.
VImage reducingRows(VImage image, int outHigh) {
    double factor = double(image.height()) / outHigh;
    if (factor > kMaxLanczosReduction) {
        image = image.shrinkv(int(factor / 2), VImage::option()->set("ceil", true));
        factor = double(image.height()) / outHigh;
    }
    return image.reducev(factor,
                         VImage::option()->set("kernel", VIPS_KERNEL_LANCZOS3)->set("gap", 0.0));
}

// `region` (bytes) stretched to exactly outWide x outHigh, edges extended outward. Colour is
// weighted by alpha while resampling unless the region is opaque, so transparent pixels do
// not darken their neighbours.
VImage stretching(const VImage& region, int outWide, int outHigh, bool opaque) {
    if (outWide == region.width() && outHigh == region.height()) return region.copy_memory();
    if (opaque) {
        const VImage rows = outHigh < region.height() ? reducingRows(region, outHigh) : region;
        return resampled<uint8_t>(rows.copy_memory(), outWide, outHigh, false);
    }
    VImage weighted = region.premultiply();
    if (outHigh < weighted.height()) weighted = reducingRows(weighted, outHigh);
    return resampled<float>(weighted.copy_memory(), outWide, outHigh, true);
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

// Luma of a row of RGBA bytes, colour weighted by alpha unless opaque. Four pixels at a time
// are turned from RGBA vectors into R, G, B and A vectors.
void lumaRow(const uint8_t* row, int wide, bool opaque, float* target) {
    const Float4 opaqueAlpha = Float4{} + 255.0f;
    int x = 0;
    for (; x + 4 <= wide; x += 4) {
        const uint8_t* p = row + x * kBands;
        const Float4 p0 = load4(p), p1 = load4(p + 4), p2 = load4(p + 8), p3 = load4(p + 12);
        const Float4 rg01 = __builtin_shufflevector(p0, p1, 0, 4, 1, 5);
        const Float4 rg23 = __builtin_shufflevector(p2, p3, 0, 4, 1, 5);
        const Float4 ba01 = __builtin_shufflevector(p0, p1, 2, 6, 3, 7);
        const Float4 ba23 = __builtin_shufflevector(p2, p3, 2, 6, 3, 7);
        const Float4 red = __builtin_shufflevector(rg01, rg23, 0, 1, 4, 5);
        const Float4 green = __builtin_shufflevector(rg01, rg23, 2, 3, 6, 7);
        const Float4 blue = __builtin_shufflevector(ba01, ba23, 0, 1, 4, 5);
        const Float4 alpha = opaque ? opaqueAlpha : __builtin_shufflevector(ba01, ba23, 2, 3, 6, 7);
        store4(target + x,
               (kLumaRed * red + kLumaGreen * green + kLumaBlue * blue) * (alpha / 255.0f));
    }
    for (; x < wide; ++x) {
        const uint8_t* p = row + x * kBands;
        const float weight = opaque ? 1.0f : p[3] / 255.0f;
        target[x] = weight * (kLumaRed * p[0] + kLumaGreen * p[1] + kLumaBlue * p[2]);
    }
}

std::vector<Float4> gaussian(double sigma) {
    const int radius = int(std::ceil(3 * sigma));
    std::vector<Float4> weights(2 * radius + 1);
    double sum = 0;
    for (int k = -radius; k <= radius; ++k) sum += std::exp(-k * k / (2 * sigma * sigma));
    for (int k = -radius; k <= radius; ++k) {
        weights[k + radius] = Float4{} + float(std::exp(-k * k / (2 * sigma * sigma)) / sum);
    }
    return weights;
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
        qWarning("marigold: crop and scale refused: %d x %d pixels from %d x %d is too large",
                 outWide, outHigh, region.wide, region.high);
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

// An unsharp mask on luma only: the detail (luma minus its gaussian blur, sigma 1.7 px),
// times the sharpness, is added equally to R, G and B, so hue is kept and alpha untouched.
// Transparent images are sharpened premultiplied so their empty pixels add no dark halo.
// Written out rather than chained from libvips arithmetic, which took several times longer.
Image sharpening(const Image& image, float sharpness) {
    if (image.isNull() || !(sharpness > 0)) return image;
    return guarded("sharpening", [&] {
        const VImage& pixels = image.pixels();
        const int wide = pixels.width();
        const int high = pixels.height();
        const bool opaque = image.isOpaque();
        const std::vector<Float4> weights = gaussian(kSharpenSigma);
        const int taps = int(weights.size());
        const int radius = taps / 2;
        // Rows of whole vectors, so that the blur loops need no scalar tail.
        const size_t stride = (size_t(wide) + 3) / 4 * 4;

        VImage out = newImage(wide, high);
        inParallel(high, [&](int begin, int end) {
            // Luma blurred across, for the rows the vertical blur is passing over.
            std::vector<float> padded(stride + 2 * radius);
            std::vector<const float*> shifted(taps);
            for (int k = 0; k < taps; ++k) shifted[k] = padded.data() + k;
            auto blurAcross = [&](int y, float* target) {
                float* luma = padded.data() + radius;
                lumaRow(rowOf<uint8_t>(pixels, y), wide, opaque, luma);
                std::fill_n(padded.begin(), radius, luma[0]);
                std::fill(padded.begin() + radius + wide, padded.end(), luma[wide - 1]);
                weightedRows(shifted.data(), weights.data(), taps, stride, target);
            };
            RowWindow window(taps + 1, stride);
            std::vector<float> blurred(stride);
            std::vector<float> luma(stride);
            std::vector<const float*> tapRows(taps);
            for (int y = begin; y < end; ++y) {
                for (int k = -radius; k <= radius; ++k) {
                    tapRows[k + radius] = window.row(std::clamp(y + k, 0, high - 1), blurAcross);
                }
                weightedRows(tapRows.data(), weights.data(), taps, stride, blurred.data());
                const uint8_t* row = rowOf<uint8_t>(pixels, y);
                lumaRow(row, wide, opaque, luma.data());
                uint8_t* target = rowOf(out, y);
                for (int x = 0; x < wide; ++x) {
                    const uint8_t* p = row + x * kBands;
                    const Float4 pixel = load4(p);
                    const float detail = sharpness * (luma[x] - blurred[x]);
                    uint8_t* o = target + x * kBands;
                    const uint8_t alpha = p[3];
                    if (opaque) {
                        store4(o, pixel + Float4{detail, detail, detail, 0});
                    } else if (alpha == 0) {
                        std::copy_n(p, kBands, o);
                    } else {
                        for (int b = 0; b < 3; ++b) {
                            const float weighted =
                                std::clamp(p[b] * alpha / 255.0f + detail, 0.0f, float(alpha));
                            o[b] = toByte(weighted * 255.0f / alpha);
                        }
                        o[3] = alpha;
                    }
                }
            }
        });
        return Image::fromRgba(out, opaque).withSize(image.size());
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
