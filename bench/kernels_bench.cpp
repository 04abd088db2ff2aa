#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <utility>

#include "platform/PyramidLevel.h"
#include "processing/LanczosResampler.h"
#include "processing/LumaSharpener.h"
#include "support/TestImages.h"

using namespace marigold;
using vips::VImage;

// Each hand-written pixel kernel beside the same job done by libvips on the same pixels, so
// that the output shows why the kernel exists. Every libvips run first checks that it makes
// our size and nearly our pixels, and shows the difference as maxDiff and meanDiff.

namespace {

constexpr float kSharpness = 0.4f;  // the factory setting

// A 24-megapixel opaque photograph, made once.
const VImage& photo() {
    static const VImage pixels = test::photoLikeImage(6000, 4000).pixels();
    return pixels;
}

// The full preview of that photograph, which is what gets sharpened.
const VImage& preview() {
    static const VImage pixels = bitmap::stretching(photo(), 2000, 1333, true);
    return pixels;
}

// Centre-aligned Lanczos3 with the kernel widened when reducing, edges copied, as ours; the
// exact factors make libvips land on exactly wide x high.
VImage resampledByVips(const VImage& source, int wide, int high) {
    return source
        .reduce(double(source.width()) / wide, double(source.height()) / high,
                VImage::option()->set("kernel", VIPS_KERNEL_LANCZOS3)->set("gap", 0.0))
        .copy_memory();
}

// Our sharpening arithmetic chained from libvips operations. The gaussian keeps taps down to
// 0.001 of its peak so that it has our 13 taps; the 0.5 makes the cast round as ours does.
VImage lumaSharpenedByVips(const VImage& rgba, double sharpness) {
    const VImage rgb = rgba.extract_band(0, VImage::option()->set("n", 3));
    const VImage luma = rgb.recomb(VImage::new_matrixv(3, 1, 0.222, 0.707, 0.071));
    const VImage blurred = luma.gaussblur(
        1.7, VImage::option()->set("precision", VIPS_PRECISION_FLOAT)->set("min_ampl", 0.001));
    const VImage detail = (luma - blurred).linear(sharpness, 0.5);
    return (rgb + detail).cast(VIPS_FORMAT_UCHAR).bandjoin(rgba[3]).copy_memory();
}

// libvips' own unsharp mask, on L* in its 16-bit Lab, with the same gain in flat and busy
// areas; a different operation, so its difference from ours is for information only.
VImage sharpenedByVips(const VImage& rgba, double sharpness) {
    return rgba
        .sharpen(VImage::option()->set("sigma", 1.7)->set("m1", sharpness)->set("m2", sharpness))
        .copy_memory();
}

// Shows how far the baseline is from ours; false (the run skipped) unless the size is ours
// and no sample is off by more than `tolerance`.
bool comparable(benchmark::State& state, const VImage& ours, const VImage& theirs, int tolerance) {
    if (theirs.width() != ours.width() || theirs.height() != ours.height() ||
        theirs.bands() != ours.bands()) {
        state.SkipWithError(("libvips made " + std::to_string(theirs.width()) + " x " +
                             std::to_string(theirs.height()) + ", not our size")
                                .c_str());
        return false;
    }
    const VImage difference = test::difference(ours, theirs);
    const double largest = difference.max();
    state.counters["maxDiff"] = largest;
    state.counters["meanDiff"] = difference.avg();
    if (largest > tolerance) {
        state.SkipWithError("libvips pixels differ from ours beyond the tolerance");
        return false;
    }
    return true;
}

using Job = std::function<VImage()>;

// Once untimed first, as the baseline's check does, so that neither pays for making inputs.
void runOurs(benchmark::State& state, const Job& ours) {
    ours();
    for (auto _ : state) benchmark::DoNotOptimize(ours());
}

void runBaseline(benchmark::State& state, const Job& ours, const Job& theirs, int tolerance) {
    if (!comparable(state, ours(), theirs(), tolerance)) return;
    for (auto _ : state) benchmark::DoNotOptimize(theirs());
}

void add(const std::string& name, const Job& ours) {
    benchmark::RegisterBenchmark(name.c_str(), runOurs, ours)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void add(const std::string& name, const Job& ours, const Job& theirs, int tolerance) {
    benchmark::RegisterBenchmark(name.c_str(), runBaseline, ours, theirs, tolerance)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

const bool registered = [] {
    // The full preview and the drag preview of a whole 24-megapixel photograph.
    for (const auto& [wide, high] : {std::pair{2000, 1333}, std::pair{1000, 667}}) {
        const std::string name = "resample/" + std::to_string(wide) + "x" + std::to_string(high);
        const Job ours = [=] { return bitmap::stretching(photo(), wide, high, true); };
        const Job theirs = [=] { return resampledByVips(photo(), wide, high); };
        add(name + "/ours", ours);
        add(name + "/libvips", ours, theirs, 2);
    }

    const Job sharpenOurs = [] { return bitmap::lumaSharpening(preview(), true, kSharpness); };
    const Job sharpenChained = [] { return lumaSharpenedByVips(preview(), kSharpness); };
    const Job sharpenOwn = [] { return sharpenedByVips(preview(), kSharpness); };
    add("sharpen/2000x1333/ours", sharpenOurs);
    add("sharpen/2000x1333/libvips", sharpenOurs, sharpenChained, 1);
    add("sharpen/2000x1333/libvips-sharpen", sharpenOurs, sharpenOwn, 255);  // any difference

    // The first reduced copy of a newly opened 24-megapixel photograph.
    const Job halveOurs = [] { return halveRgba(photo(), true); };
    const Job halveTheirs = [] { return photo().shrink(2, 2).copy_memory(); };
    add("halve/6000x4000/ours", halveOurs);
    add("halve/6000x4000/libvips", halveOurs, halveTheirs, 1);
    return true;
}();

}  // namespace
