#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include "output/ImageEncoders.h"
#include "platform/ImageLoader.h"
#include "support/TestImages.h"

using namespace marigold;
using vips::VImage;

namespace {

// A 24-megapixel opaque output, as a full-size export of a camera picture gives.
const Image& output() {
    static const Image image = test::photoLikeImage(6000, 4000);
    return image;
}

void encodeJpegOurs(benchmark::State& state) {
    const Image& image = output();
    for (auto _ : state) {
        const QByteArray data = encodeJpeg(image, 80);
        if (data.isEmpty()) state.SkipWithError("encodeJpeg failed");
        state.counters["bytes"] = double(data.size());
    }
}
BENCHMARK(encodeJpegOurs)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

// The reference: libvips alone on the same pixels, already RGB and in memory, with the
// options our encoder uses (quality 80, no metadata).
void encodeJpegPlainVips(benchmark::State& state) {
    const VImage rgb =
        output().pixels().extract_band(0, VImage::option()->set("n", 3)).copy_memory();
    for (auto _ : state) {
        VipsBlob* blob = rgb.jpegsave_buffer(VImage::option()->set("Q", 80)->set("strip", true));
        size_t length = 0;
        vips_blob_get(blob, &length);
        state.counters["bytes"] = double(length);
        vips_area_unref(VIPS_AREA(blob));
    }
}
BENCHMARK(encodeJpegPlainVips)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);

}  // namespace

namespace {

// A 2000 x 1500 picture with a photograph's mix of smooth areas, edges and grain (the
// synthetic test picture is mostly noise, which no JPEG limit suits), made by ImageMagick.
const Image& photograph() {
    static const Image image = [] {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("photo.png"));
        const QString command = QStringLiteral(
            "convert -seed 1 -size 1000x750 plasma:fractal -blur 0x2 -modulate 100,60 "
            "-resize 200% -attenuate 0.25 +noise Gaussian -depth 8 '%1'").arg(path);
        if (std::system(qPrintable(command)) != 0) return Image();
        return loadImageFile(path).image;
    }();
    return image;
}

// The size-limit search from quality 100, as a save or an export with a limit runs it; the
// counters tell how many attempts it took.
void sizeLimitedJpeg(benchmark::State& state) {
    const Image& image = photograph();
    if (image.isNull()) state.SkipWithError("ImageMagick could not make the picture");
    const QString path = QStringLiteral("/dev/null");
    for (auto _ : state) {
        std::vector<JpegAttempt> trace;
        if (!writeToJPEGFile(image, path, 100, int(state.range(0)), {}, &trace)) {
            state.SkipWithError("no quality fitted");
        }
        state.counters["attempts"] = double(trace.size());
        state.counters["quality"] = trace.empty() ? 0 : trace.back().quality;
    }
}
BENCHMARK(sizeLimitedJpeg)
    ->Arg(50)->Arg(100)->Arg(200)->Arg(500)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

}  // namespace
