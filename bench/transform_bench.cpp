#include <benchmark/benchmark.h>

#include "processing/ImageProcessor.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// The 24-megapixel picture every operation here is run on, made once.
const Image& photo() {
    static const Image image = test::photoLikeImage(6000, 4000);
    return image;
}

// Ours (Arg 0) against the plain libvips operation on the same pixels (Arg 1), each made
// into pixels in memory as the document holds them.
void BM_RotateFree30(benchmark::State& state) {
    for (auto _ : state) {
        if (state.range(0) == 0) {
            benchmark::DoNotOptimize(ImageProcessor::rotateImage(photo(), 30));
        } else {
            benchmark::DoNotOptimize(photo().pixels().rotate(30).copy_memory());
        }
    }
}
BENCHMARK(BM_RotateFree30)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_QuarterTurn(benchmark::State& state) {
    for (auto _ : state) {
        if (state.range(0) == 0) {
            benchmark::DoNotOptimize(ImageProcessor::rotateImage(photo(), -90));
        } else {
            benchmark::DoNotOptimize(photo().pixels().rot90().copy_memory());
        }
    }
}
BENCHMARK(BM_QuarterTurn)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FlipHorizontal(benchmark::State& state) {
    for (auto _ : state) {
        if (state.range(0) == 0) {
            benchmark::DoNotOptimize(ImageProcessor::flipImageHorizontal(photo()));
        } else {
            benchmark::DoNotOptimize(
                photo().pixels().flip(VIPS_DIRECTION_HORIZONTAL).copy_memory());
        }
    }
}
BENCHMARK(BM_FlipHorizontal)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// libvips' nearest equivalent is a 3 x 3 recombination with the same weights, rounded.
void BM_Desaturate(benchmark::State& state) {
    const vips::VImage weights =
        vips::VImage::new_from_memory(std::vector<double>{0.222, 0.707, 0.071}.data(),
                                      3 * sizeof(double), 3, 1, 1, VIPS_FORMAT_DOUBLE);
    for (auto _ : state) {
        if (state.range(0) == 0) {
            benchmark::DoNotOptimize(ImageProcessor::desaturate(photo()));
        } else {
            benchmark::DoNotOptimize(photo()
                                         .pixels()
                                         .extract_band(0, vips::VImage::option()->set("n", 3))
                                         .recomb(weights.copy_memory())
                                         .rint()
                                         .cast(VIPS_FORMAT_UCHAR)
                                         .copy_memory());
        }
    }
}
BENCHMARK(BM_Desaturate)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
