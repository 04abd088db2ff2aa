#include "processing/LumaSharpener.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "processing/PixelLoops.h"
#include "processing/RowWindow.h"

namespace marigold::bitmap {

namespace {

using vips::VImage;

constexpr double kSharpenSigma = 1.7;
constexpr float kLumaRed = 0.222f;
constexpr float kLumaGreen = 0.707f;
constexpr float kLumaBlue = 0.071f;

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

VImage lumaSharpening(const VImage& pixels, bool opaque, float sharpness) {
    const int wide = pixels.width();
    const int high = pixels.height();
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
    return out;
}

}  // namespace marigold::bitmap
