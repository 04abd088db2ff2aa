// The document controller's selection commands, the preview they drive and the output size
// typed or stepped in pixels.
#include <cmath>

#include "core/AppController.h"
#include "core/AppControllerTemplates.h"

namespace marigold {

namespace {

// Never below this, whatever the pane: a fast preview still has to show the picture.
constexpr int kMinPreviewPixels = 64;

}  // namespace

// --- preview ----------------------------------------------------------------------------------

std::function<Image()> AppController::_outputRenderer(bool fast) const {
    // The fast path never sharpens: the settings are not even read for it.
    const float sharpnessNow = !fast && sharpen() ? sharpness() : 0.0f;
    return [processor = _imageProcessor, image = _document.image(), rect = _document.cropRect(),
            scale = scaleFactor(), sharpnessNow,
            fast] { return processor.cropImage(image, rect, scale, sharpnessNow, fast); };
}

Image AppController::_renderOutput(bool fast) const {
    return _outputRenderer(fast)();
}

void AppController::setPreviewPixelLimit(QSize devicePixels) {
    _imageProcessor.setFastPreviewLimit(std::max(devicePixels.width(), kMinPreviewPixels),
                                        std::max(devicePixels.height(), kMinPreviewPixels));
}

bool AppController::hasOutput() const {
    const CropPlan plan = _document.cropPlan();
    return !plan.isEmpty() && !plan.isTooLarge();
}

void AppController::updatePreviewFast(bool fast) {
    if (_document.hasSelection() && std::isnan(scaleFactor())) setScaleFactor(1.0f);
    const CropPlan plan = _document.cropPlan();
    Image preview;
    QString message;
    if (plan.isTooLarge()) {
        message =
            tr("%1 × %2 pixels is too large an output.\nMarigold makes at most %3 megapixels.")
                .arg(plan.outputWide)
                .arg(plan.outputHigh)
                .arg(kMaxOutputPixels / 1'000'000);
    } else if (!plan.isEmpty()) {
        preview = _renderOutput(fast);
    }
    _showPlannedSize(plan);
    clearCache();
    Q_EMIT previewChanged(preview, message);
    // A full preview ends an edit: the file a save would write is made for its size.
    if (!fast && !preview.isNull()) _scheduleLiveFile();
}

void AppController::updatePreview() {
    updatePreviewFast(false);
}

// --- output size in pixels ---------------------------------------------------------------------

// The fields show the size the output file will have, whatever the preview holds.
void AppController::_showPlannedSize(const CropPlan& plan) {
    _pixelWidth = plan.outputWide;
    _pixelHeight = plan.outputHigh;
    Q_EMIT pixelSizeChanged();
}

void AppController::setPixelWidth(int width) {
    _pixelWidth = width;
    Q_EMIT pixelSizeChanged();
}

void AppController::setPixelHeight(int height) {
    _pixelHeight = height;
    Q_EMIT pixelSizeChanged();
}

// The scale that makes `cropPixels` (a side of the selection as the pipeline rounds it) come
// out as exactly `pixels`; nothing changes when that is the size the output already has.
void AppController::_scaleToPixels(int pixels, float cropPixels, int current) {
    if (_document.hasSelection() && pixels > 0 && pixels != current) {
        setScaleFactor(float(pixels) / cropPixels);
        _later(100, [this] { updatePreview(); });
    }
    // Whatever was typed, the fields end showing the size the output now has.
    _showPlannedSize(_document.cropPlan());
}

void AppController::pixelWidthChanged() {
    const CropPlan plan = _document.cropPlan();
    _scaleToPixels(_pixelWidth, plan.rounded.width, plan.outputWide);
}

void AppController::pixelHeightChanged() {
    const CropPlan plan = _document.cropPlan();
    _scaleToPixels(_pixelHeight, plan.rounded.height, plan.outputHigh);
}

void AppController::scaleImageByPixels(int step) {
    const float w = float(_pixelWidth), h = float(_pixelHeight);
    if (!(w > 0 && h > 0)) return;
    if (step == 0) {
        // Re-derive the scale from the longer side; a square uses the height.
        if (w <= h) {
            pixelHeightChanged();
        } else {
            pixelWidthChanged();
        }
        return;
    }
    if (w <= h) {
        const float newHeight = std::trunc(h + float(step));
        setPixelHeight(int(newHeight));
        setPixelWidth(int(std::trunc(newHeight * w / h)));
    } else {
        const float newWidth = std::trunc(w + float(step));
        setPixelWidth(int(newWidth));
        setPixelHeight(int(std::trunc(newWidth * h / w)));
    }
}

// --- selection ---------------------------------------------------------------------------------

void AppController::setMarquee(const Marquee& marquee) {
    _registerUndo(_document.marquee(), &AppController::setMarquee, tr("Crop Selection"));
    _document.setMarquee(marquee);
    updatePreview();
}

void AppController::selectAll() {
    Marquee all = _document.marquee();
    all.selectAll();
    setMarquee(all);
    setUserResizable(false);
}

void AppController::deselect() {
    Marquee none = _document.marquee();
    none.deselect();
    setMarquee(none);
    setUserResizable(false);
}

void AppController::dragMarquee(const Marquee& marquee) {
    _document.setMarquee(marquee);
    if (livePreview()) updatePreviewFast(true);
}

void AppController::finishMarqueeDrag(const Marquee& before, const Marquee& after) {
    _registerUndo(before, &AppController::setMarquee, tr("Crop Selection"));
    _document.setMarquee(after);
    updatePreview();
    setUserResizable(false);
}

void AppController::nudgeMarquee(const Marquee& marquee) {
    _document.setMarquee(marquee);
    updatePreview();
}

}  // namespace marigold
