#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "jpeg/ExifTransplant.h"
#include "jpeg/JpegContext.h"
#include "output/ImageEncoders.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// A 24-megapixel encoder output and a camera-like source (EXIF with a thumbnail and a turned
// orientation, and a comment), as a full-size export with "PreserveExif" 1 has them.
struct Files {
    QTemporaryDir dir;
    std::string source;
    Bytes encoded;
    bool ok = false;

    Files() {
        source = dir.filePath("source.jpg").toStdString();
        // Quality 92: a file of more than 10 MB, as cameras write them.
        const QByteArray data = encodeJpeg(test::photoLikeImage(6000, 4000), 92);
        encoded.assign(data.begin(), data.end());
        const std::string thumb = dir.filePath("thumb.jpg").toStdString();
        const std::string command =
            "convert -size 640x480 gradient:red-blue '" + source +
            "' && convert -size 160x120 "
            "gradient: '" +
            thumb +
            "' && exiftool -q -overwrite_original -Make=Bench "
            "-Model=B1 -Orientation#=6 -ISO=200 -ExposureTime=1/125 -FNumber=4 -Comment=bench "
            "'-ThumbnailImage<=" +
            thumb + "' '" + source + "'";
        ok = !data.isEmpty() && std::system(command.c_str()) == 0;
    }
};

Files& files() {
    static Files f;
    return f;
}

// The transplant as the output writer runs it for each size-limit attempt: the source's
// EXIF block carried into the encoded bytes, the orientation tag then set upright.
void transplantInMemory(benchmark::State& state) {
    Files& f = files();
    if (!f.ok) state.SkipWithError("could not make the files");
    const Bytes source = readAll(f.source);
    for (auto _ : state) {
        auto out = transplantExifUpright(source, f.encoded);
        if (!out) state.SkipWithError("transplant failed");
        benchmark::DoNotOptimize(out);
    }
    state.counters["output bytes"] = double(f.encoded.size());
}
BENCHMARK(transplantInMemory)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

// Filling the information record stops at the start of scan, so a large file costs no more
// than a small one.
void parseLargeFile(benchmark::State& state) {
    Files& f = files();
    if (!f.ok) state.SkipWithError("could not make the files");
    const std::string path = f.dir.filePath("large.jpg").toStdString();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(f.encoded.data()), std::streamsize(f.encoded.size()));
    JpegContext context;
    for (auto _ : state) {
        if (!context.parseFile(path)) state.SkipWithError("parseFile failed");
        context.discardData();
    }
    state.counters["MB"] = double(f.encoded.size()) / (1024 * 1024);
}
BENCHMARK(parseLargeFile)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

}  // namespace
