#include "processing/LanczosResampler.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "processing/PixelLoops.h"
#include "processing/RowWindow.h"

namespace marigold::bitmap {

namespace {

using vips::VImage;

// libvips' Lanczos kernel has a bounded number of taps; steeper reductions of the rows first
// average whole blocks, leaving the kernel a factor of at least 2 so the result looks the same.
constexpr double kMaxLanczosReduction = 100;
constexpr double kLanczosLobes = 3;

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

}  // namespace

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

}  // namespace marigold::bitmap
