#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include "core/AppController.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// A 24-megapixel photograph opened from a JPEG and wholly selected, as the scale controls
// meet it; the preview pane is 1000 x 1000 device pixels.
struct OpenPhoto {
    QTemporaryDir dir;
    Defaults defaults{dir.filePath(QStringLiteral("settings.ini"))};
    AppController controller{defaults};

    OpenPhoto() {
        controller.setPreviewPixelLimit(QSize(1000, 1000));
        controller.openFile(test::writeJpeg(test::photoLikeImage(6000, 4000), dir.path(),
                                            QStringLiteral("photo.jpg")));
        controller.selectAll();
    }
};

OpenPhoto& photo() {
    static OpenPhoto open;
    return open;
}

// One wheel click on the scale slider: the output size fields change, nothing is drawn.
void scaleWheelClick(benchmark::State& state) {
    AppController& controller = photo().controller;
    int step = 10;
    for (auto _ : state) {
        controller.scaleImageByPixels(step);
        step = -step;
    }
    state.counters["outputWidth"] = controller.pixelWidth();
}
BENCHMARK(scaleWheelClick)->Unit(benchmark::kMicrosecond);

// One pointer move while the scale slider is dragged: a fast preview.
void scaleDragFrame(benchmark::State& state) {
    AppController& controller = photo().controller;
    float factor = 0.5f;
    for (auto _ : state) {
        controller.dragScaleFactor(factor);
        factor = factor == 0.5f ? 0.51f : 0.5f;
    }
    state.counters["outputWidth"] = controller.pixelWidth();
}
BENCHMARK(scaleDragFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

// Letting the slider go: the undo step, then the full preview the release asks for.
void scaleDragRelease(benchmark::State& state) {
    AppController& controller = photo().controller;
    float factor = 0.5f;
    for (auto _ : state) {
        const float before = factor;
        factor = factor == 0.5f ? 0.51f : 0.5f;
        controller.finishScaleDrag(before, factor);
        controller.updatePreview();
        controller.undoManager().removeAllActions();
    }
}
BENCHMARK(scaleDragRelease)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
