#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMouseEvent>
#include <QTemporaryDir>

#include "core/AppController.h"
#include "core/MainWindow.h"
#include "output/BackgroundOutputWriter.h"
#include "output/OutputImageView.h"
#include "platform/AtomicFile.h"
#include "platform/DefaultsKeys.h"
#include "selection/InputImageView.h"
#include "support/TestImages.h"

using namespace marigold;

namespace {

// A 24-megapixel photograph-like JPEG, written once per run; with `orientation` 6 it is stored
// on its side, as a camera held upright stores it, and is shown turned.
QString photoPath(int orientation = 1) {
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("24mp-%1.jpg").arg(orientation));
    if (!QFileInfo::exists(path)) {
        vips::VImage rgb = test::photoLikeImage(6000, 4000)
                               .pixels()
                               .extract_band(0, vips::VImage::option()->set("n", 3));
        rgb = rgb.copy();
        rgb.set(VIPS_META_ORIENTATION, orientation);
        rgb.jpegsave(path.toLocal8Bit().constData(), vips::VImage::option()->set("Q", 90));
    }
    return path;
}

// The selection under a dragging pointer at a given frame: anchored near the lower-left
// corner, growing a little every frame.
Marquee dragFrame(RectF b, int frame) {
    const float f = 0.2f + 0.75f * float(frame % 100) / 100;
    Marquee marquee;
    marquee.setStartAndEndPoint({b.x + 5, b.y + 5}, b);
    marquee.setEndPoint({b.x + b.width * f, b.y + b.height * f}, b);
    return marquee;
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
        // What the event loop does before a person can drag: the panes are laid out and the
        // preview learns how many pixels the output pane shows.
        QCoreApplication::processEvents();
    }
};

void BM_OpenJpegUntilDisplayed(benchmark::State& state) {
    Session session;
    const QString path = photoPath(int(state.range(0)));
    for (auto _ : state) {
        if (!session.controller.openFile(path)) state.SkipWithError("open failed");
        InputImageView& view = *session.window.inputView();
        QImage target(view.size(), QImage::Format_ARGB32_Premultiplied);
        view.render(&target);
        // The full-size decode finishes in the background after the picture is shown; let
        // it finish outside the measurement so the next open does not compete with it.
        state.PauseTiming();
        session.controller.document().image().pixels();
        state.ResumeTiming();
    }
}
// Upright as stored (1), and stored on its side (6): turning must not slow the display.
BENCHMARK(BM_OpenJpegUntilDisplayed)->Arg(1)->Arg(6)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_InputPaintDuringDrag(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    InputImageView& view = *session.window.inputView();
    // Rendering into an image runs the real paint code; the offscreen window would not.
    QImage target(view.size(), QImage::Format_ARGB32_Premultiplied);
    view.render(&target);
    int frame = 0;
    // The selection alone: no preview is made while dragging without live preview.
    session.defaults.setBool(keys::DefLivePreview, false);
    for (auto _ : state) {
        session.controller.dragMarquee(dragFrame(view.imageBounds(), frame++));
        view.render(&target);
    }
}
BENCHMARK(BM_InputPaintDuringDrag)->Unit(benchmark::kMillisecond)->UseRealTime();

// The whole fast path as the view drives it while dragging: selection change, controller,
// processor, output view.
void BM_DragFrameWithLivePreview(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    InputImageView& view = *session.window.inputView();
    QImage inputTarget(view.size(), QImage::Format_ARGB32_Premultiplied);
    QImage outputTarget(session.window.outputView()->size(), QImage::Format_ARGB32_Premultiplied);
    int frame = 0;
    for (auto _ : state) {
        session.controller.dragMarquee(dragFrame(view.imageBounds(), frame++));
        view.render(&inputTarget);
        session.window.outputView()->render(&outputTarget);
    }
}
BENCHMARK(BM_DragFrameWithLivePreview)->Unit(benchmark::kMillisecond)->UseRealTime();

// The drag while the file a save would write is encoded on the writer's thread: a 24 MP PNG,
// started again whenever one finishes, so every frame competes with an encoder.
void BM_DragFrameWhileWritingInBackground(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    InputImageView& view = *session.window.inputView();
    QImage inputTarget(view.size(), QImage::Format_ARGB32_Premultiplied);
    QImage outputTarget(session.window.outputView()->size(), QImage::Format_ARGB32_Premultiplied);
    const Image source = session.controller.document().image();
    BackgroundOutputWriter writer;
    OutputSettings png;
    png.format = PngFormat;
    quint64 generation = 0;
    int writes = 0;
    int frame = 0;
    for (auto _ : state) {
        if (!writer.isWriting(generation)) {
            writer.start({++generation, [source] { return source; },
                          session.dir.filePath(QStringLiteral("background.png")), png});
            ++writes;
        }
        session.controller.dragMarquee(dragFrame(view.imageBounds(), frame++));
        view.render(&inputTarget);
        session.window.outputView()->render(&outputTarget);
    }
    state.counters["writes"] = writes;
}
BENCHMARK(BM_DragFrameWhileWritingInBackground)->Unit(benchmark::kMillisecond)->UseRealTime();

// A selection of 4000 x 3000 of the 24 MP photograph at 50 %: a 2000 x 1500 output.
Marquee selectionAt(float offset) {
    const RectF bounds{0, 0, 6000, 4000};
    Marquee marquee;
    marquee.setStartAndEndPoint({offset, offset}, bounds);
    marquee.setEndPoint({offset + 4000, offset + 3000}, bounds);
    return marquee;
}

// From the mouse release that ends a selection drag until the size label shows the size of
// the file a save would write (the full preview included), without a limit (0) and with a
// 200 KB one.
void BM_LiveSizeAfterRelease(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    session.controller.document().image().pixels();
    session.controller.setMarquee(selectionAt(0));
    session.controller.setScaleFactor(0.5f);
    if (state.range(0) > 0) {
        session.defaults.setBool(keys::DefLimitFilesize, true);
        session.defaults.setInteger(keys::DefFilesizeLimit, int(state.range(0)));
    }
    int frame = 0;
    for (auto _ : state) {
        const Marquee before = session.controller.document().marquee();
        const Marquee after = selectionAt(float(++frame % 2) * 8);
        session.controller.finishMarqueeDrag(before, after);
        while (session.controller.filesizeText().isEmpty()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        }
    }
    if (session.controller.pixelWidth() != 2000 || session.controller.pixelHeight() != 1500) {
        state.SkipWithError("the output is not 2000 x 1500");
    }
    state.SetLabel(session.controller.filesizeText().toStdString());
}
BENCHMARK(BM_LiveSizeAfterRelease)->Arg(0)->Arg(200)->Unit(benchmark::kMillisecond)->UseRealTime();

// Saving once the live file is in: the save reuses it (Arg 1), against copying the same file
// alone (Arg 0), which is what the save cannot avoid.
void BM_SaveReusingTheLiveFile(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    session.controller.setMarquee(selectionAt(0));
    session.controller.setScaleFactor(0.5f);
    session.controller.updatePreview();
    while (session.controller.filesizeText().isEmpty()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    }
    const QString target = session.dir.filePath(QStringLiteral("saved.jpg"));
    const QString live = session.controller.writeTmpFile();
    for (auto _ : state) {
        if (state.range(0) == 1) {
            session.controller.savePanelDidEnd(true, target);
        } else {
            copyFileAtomically(live, target);
        }
    }
    if (session.controller.writeTmpFile() != live) state.SkipWithError("the file was written anew");
}
BENCHMARK(BM_SaveReusingTheLiveFile)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// The final turn of a 24 MP picture by 30 degrees, from the command until the input view has
// drawn it.
void BM_RotateUntilDisplayed(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    session.controller.document().image().pixels();
    InputImageView& view = *session.window.inputView();
    QImage target(view.size(), QImage::Format_ARGB32_Premultiplied);
    double angle = 30;
    for (auto _ : state) {
        session.controller.setRotation(angle);
        view.render(&target);
        // The full-size turn finishes in the background after the picture is shown; let it
        // finish outside the measurement so the next turn does not compete with it.
        state.PauseTiming();
        session.controller.document().image().pixels();
        state.ResumeTiming();
        angle = -angle;
    }
}
BENCHMARK(BM_RotateUntilDisplayed)->Unit(benchmark::kMillisecond)->UseRealTime();

// One step of a rotation-slider drag over a 24 MP picture: the small copy turned and drawn.
void BM_RotationPreviewFrame(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    InputImageView& view = *session.window.inputView();
    QImage target(view.size(), QImage::Format_ARGB32_Premultiplied);
    session.controller.setPreviewRotation(1);
    int step = 0;
    for (auto _ : state) {
        session.controller.setPreviewRotation(double(++step % 170));
        view.render(&target);
    }
}
BENCHMARK(BM_RotationPreviewFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

// One pointer move of a selection drag through the input view's own event handling, free
// (Arg 0) and held to the 640 x 480 size preset (Arg 1), which also sets the scale each move.
void BM_PointerDragFrame(benchmark::State& state) {
    Session session;
    session.controller.openFile(photoPath());
    session.controller.ratioController().setSelectedPreset(state.range(0) == 1 ? 2 : -1);
    InputImageView& view = *session.window.inputView();
    QImage inputTarget(view.size(), QImage::Format_ARGB32_Premultiplied);
    QImage outputTarget(session.window.outputView()->size(), QImage::Format_ARGB32_Premultiplied);
    const QRectF area = view.rect();
    const auto send = [&view](QEvent::Type type, QPointF at) {
        QMouseEvent event(type, at, view.mapToGlobal(at), Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(&view, &event);
    };
    send(QEvent::MouseButtonPress, area.center() - QPointF(150, 100));
    int frame = 0;
    for (auto _ : state) {
        const double f = double(++frame % 100) / 100;
        send(QEvent::MouseMove, area.center() + QPointF(20 + 120 * f, 10 + 90 * f));
        view.render(&inputTarget);
        session.window.outputView()->render(&outputTarget);
    }
    send(QEvent::MouseButtonRelease, area.center());
    state.counters["outputWidth"] = session.controller.pixelWidth();
}
BENCHMARK(BM_PointerDragFrame)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
