#pragma once

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <thread>
#include <vector>
#include <vips/vips8>

namespace marigold::bitmap {

// Packed RGBA buffers and the loops over them that the resampler and the sharpener share.

constexpr int kBands = 4;

inline uint8_t toByte(float value) {
    return uint8_t(std::clamp(value + 0.5f, 0.0f, 255.0f));
}

// One RGBA pixel (or four samples) as a vector of four floats, so that the loops below use
// SIMD registers at the build's plain optimisation level (GCC and Clang vector extensions).
using Float4 = float __attribute__((vector_size(16)));

inline Float4 load4(const float* p) {
    Float4 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline void store4(float* p, Float4 v) {
    std::memcpy(p, &v, sizeof v);
}

// Compilers turn portable byte-to-float vector conversions into one scalar conversion per
// lane, which dominated the loops; SSE2 (every x86-64) does each in a few instructions.
#if defined(__SSE2__)
inline Float4 load4(const uint8_t* p) {
    int32_t packed;
    std::memcpy(&packed, p, sizeof packed);
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_cvtsi32_si128(packed);
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero));
}

// Rounded to nearest and clamped, as toByte (the packs saturate).
inline void store4(uint8_t* p, Float4 v) {
    const __m128i words = _mm_cvttps_epi32(v + 0.5f);
    const __m128i shorts = _mm_packs_epi32(words, words);
    const int32_t packed = _mm_cvtsi128_si32(_mm_packus_epi16(shorts, shorts));
    std::memcpy(p, &packed, sizeof packed);
}
#else
inline Float4 load4(const uint8_t* p) {
    return Float4{float(p[0]), float(p[1]), float(p[2]), float(p[3])};
}

inline void store4(uint8_t* p, Float4 v) {
    for (int b = 0; b < 4; ++b) p[b] = toByte(v[b]);
}
#endif

// target[k] = sum over t of weight[t] * sources[t][k], for k < length (a multiple of 4).
void weightedRows(const float* const* sources, const Float4* weight, int count, size_t length,
                  float* target);

// One row resampled across: output pixel x is the sum over t < count of weights[x * count + t]
// times the pixel first[x] + t of `padded` (RGBA floats).
void acrossRow(const float* padded, const int* first, const Float4* weights, int count, int outWide,
               float* target);

// A packed RGBA byte image in memory that the loops write directly.
vips::VImage newImage(int wide, int high);

template <class T>
const T* rowOf(const vips::VImage& image, int y) {
    return reinterpret_cast<const T*>(VIPS_IMAGE_ADDR(image.get_image(), 0, y));
}

inline uint8_t* rowOf(vips::VImage& image, int y) {
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

}  // namespace marigold::bitmap
