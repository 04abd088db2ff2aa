#include <benchmark/benchmark.h>

#include <QDir>
#include <QTemporaryDir>

#include "core/AppController.h"
#include "core/MainWindow.h"
#include "output/OutputImageView.h"
#include "selection/InputImageView.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// A 24-megapixel photograph-like JPEG, written once per run.
const QString& photoPath() {
    static QTemporaryDir dir;
    static const QString path =
        test::writeJpeg(test::photoLikeImage(6000, 4000), dir.path(), QStringLiteral("24mp.jpg"));
    return path;
}

struct Session {
    QTemporaryDir dir;
    Defaults defaults{dir.filePath(QStringLiteral("settings.ini"))};
    AppController controller{defaults};
    MainWindow window{controller};
    Session() {
        window.resize(1400, 900);
        window.show();
        controller.applicationDidFinishLaunching();
    }
};

void BM_OpenJpegUntilDisplayed(benchmark::State& state) {
    Session session;
    const QString path = photoPath();
    for (auto _ : state) {
        if (!session.controller.openFile(path)) state.SkipWithError("open failed");
        session.window.inputView()->repaint();
    }
}
BENCHMARK(BM_OpenJpegUntilDisplayed)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_InputPaintDuringDrag(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    InputImageView& view = *session.window.inputView();
    view.repaint();
    const RectF b = view.imageBounds();
    Marquee marquee;
    int frame = 0;
    for (auto _ : state) {
        // A selection that grows a little each frame, as under a dragging pointer.
        const float f = 0.2f + 0.6f * float(frame++ % 100) / 100;
        marquee.setStartAndEndPoint({b.x + 10, b.y + 10}, b);
        marquee.setEndPoint({b.x + b.width * f, b.y + b.height * f}, b);
        view.editMarqueeWithoutUndo(marquee);
        view.repaint();
    }
}
BENCHMARK(BM_InputPaintDuringDrag)->Unit(benchmark::kMillisecond)->UseRealTime();

// The whole fast path as the view drives it while dragging: selection change, controller,
// processor, output view.
void BM_DragFrameWithLivePreview(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    InputImageView& view = *session.window.inputView();
    const RectF b = view.imageBounds();
    Marquee marquee;
    int frame = 0;
    for (auto _ : state) {
        const float f = 0.2f + 0.75f * float(frame++ % 100) / 100;
        marquee.setStartAndEndPoint({b.x + 5, b.y + 5}, b);
        marquee.setEndPoint({b.x + b.width * f, b.y + b.height * f}, b);
        view.editMarqueeWithoutUndo(marquee);
        session.controller.updatePreviewFast(true);
        view.repaint();
        session.window.outputView()->repaint();
    }
}
BENCHMARK(BM_DragFrameWithLivePreview)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
