#include "processing/PixelLoops.h"

namespace marigold::bitmap {

// The two loops that take most of a preview's time are also built for AVX2 with FMA (eight
// floats per instruction) and picked when the program loads if the CPU has them.
#if defined(__x86_64__) && defined(__GNUC__)
#define MARIGOLD_SIMD_CLONES __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define MARIGOLD_SIMD_CLONES
#endif

namespace {

using vips::VImage;

// Two RGBA pixels. Only ever a local: as a parameter it would change with the clone's ABI.
using Float8 = float __attribute__((vector_size(32)));

}  // namespace

// Several independent sums are kept so that each addition does not wait on the one before.
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

// Pairs of taps fill eight lanes.
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

}  // namespace marigold::bitmap
