#include <benchmark/benchmark.h>

#include "processing/ImageProcessor.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// A 24-megapixel photograph, made once.
const Image& photo() {
    static const Image image = test::photoLikeImage(6000, 4000);
    return image;
}

// The same pixels without any reduced copies made yet.
Image photoWithoutPyramid() {
    return Image::fromRgba(photo().pixels(), photo().isOpaque());
}

struct Selection {
    RectF rect;  // lower-left origin
    float scale;
};

const Selection kFastSelections[] = {
    {{0, 0, 6000, 4000}, 1},        // whole image: 6000 x 4000, drawn at 1000 x 667
    {{1500, 1000, 3000, 2000}, 1},  // 3000 x 2000, drawn at 1000 x 667
    {{2750, 1750, 500, 500}, 2},    // 1000 x 1000, drawn as is
};

const Selection kFullSelections[] = {
    {{0, 0, 6000, 4000}, 1.0f / 3},  // 2000 x 1333
    {{333, 0, 5334, 4000}, 0.375f},  // 2000 x 1500
};

ImageProcessor previewProcessor() {
    ImageProcessor processor;
    processor.setFastPreviewLimit(1000, 1000);
    return processor;
}

void fastPreview(benchmark::State& state) {
    const Selection& selection = kFastSelections[state.range(0)];
    const ImageProcessor processor = previewProcessor();
    processor.cropImage(photo(), selection.rect, selection.scale, 0.4f, true);  // warm pyramid
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            processor.cropImage(photo(), selection.rect, selection.scale, 0.4f, true));
    }
}
BENCHMARK(fastPreview)
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);

// The first fast preview of a newly opened image also builds its reduced copies.
void fastPreviewBuildingPyramid(benchmark::State& state) {
    const Selection& selection = kFastSelections[0];
    const ImageProcessor processor = previewProcessor();
    for (auto _ : state) {
        state.PauseTiming();
        const Image fresh = photoWithoutPyramid();
        state.ResumeTiming();
        benchmark::DoNotOptimize(
            processor.cropImage(fresh, selection.rect, selection.scale, 0.4f, true));
    }
}
BENCHMARK(fastPreviewBuildingPyramid)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

void fullPreviewSharpened(benchmark::State& state) {
    const Selection& selection = kFullSelections[state.range(0)];
    const ImageProcessor processor = previewProcessor();
    photo();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            processor.cropImage(photo(), selection.rect, selection.scale, 0.4f, false));
    }
}
BENCHMARK(fullPreviewSharpened)
    ->DenseRange(0, 1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

// The input view's 350 x 350 stand-in, made whenever its image changes (pyramid warm).
void thumbnail(benchmark::State& state) {
    ImageProcessor::scaleImage(photo(), {350, 350});
    for (auto _ : state) benchmark::DoNotOptimize(ImageProcessor::scaleImage(photo(), {350, 350}));
}
BENCHMARK(thumbnail)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);

}  // namespace
