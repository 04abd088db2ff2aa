// The document controller's commands that change the picture itself: turning, mirroring and
// greying. The picture as opened is what changes; the shown one is always it turned by the
// document's angle.
#include <cmath>

#include "core/AppController.h"
#include "core/AppControllerTemplates.h"
#include "core/WindowSide.h"
#include "processing/RotationGeometry.h"
#include "selection/ControlArithmetic.h"

namespace marigold {

void AppController::setRotation(double degrees) {
    const Image turned = ImageProcessor::rotateImageShownFirst(_document.origImage(), degrees);
    if (_document.hasImage() && turned.isNull()) {
        if (_window) _window->showNotice(tr("Turned that far, the picture would be too large."));
        return;
    }
    Q_EMIT rotationChanged(degrees);
    _registerUndo(rotation(), &AppController::setRotation, tr("Rotate"));
    _document.setRotation(degrees);
    if (!_document.hasImage()) return;
    _document.setDisplayImage(turned, true);
    updatePreview();
}

void AppController::rotateImage90(bool left) {
    rotateImageFine(left ? 90.0 : -90.0);
}

void AppController::rotateImageCW() {
    setRotation(controls::closestRotationTick(rotation() - 22.5001));
}

void AppController::rotateImageCCW() {
    setRotation(controls::closestRotationTick(rotation() + 22.5001));
}

void AppController::rotateImageFine(double degrees) {
    // Kept within -180 to 180, where the angle lives.
    setRotation(std::remainder(rotation() + degrees, 360.0));
}

void AppController::setPreviewRotation(double degrees) {
    if (!_document.hasImage()) return;
    const Image turned = ImageProcessor::rotateImage(_document.previewImage(), degrees);
    if (turned.isNull()) return;
    // Drawn where the whole picture turned would be: the copy stands in at that size.
    const SizeF size = _document.origImage().size();
    _document.setDisplayImage(turned.withSize(rotatedCanvas(size, degrees).size), true);
    updatePreview();
}

void AppController::flipHorizontal() {
    _flip(true);
}

void AppController::flipVertical() {
    _flip(false);
}

// The mirror of the shown picture is the mirror of the picture as opened, turned the other
// way: nothing is resampled twice, and the selection stays over the same part.
void AppController::_flip(bool horizontally) {
    if (!_document.hasImage()) return;
    _registerUndo(horizontally, &AppController::_flip,
                  horizontally ? tr("Flip Horizontal") : tr("Flip Vertical"));
    const auto flip =
        horizontally ? &ImageProcessor::flipImageHorizontal : &ImageProcessor::flipImageVertical;
    const Marquee selection = _document.marquee().mirrored(horizontally);
    _document.setEditedImage(flip(_document.origImage()), flip(_document.image()), -rotation());
    _document.setMarquee(selection);
    Q_EMIT rotationChanged(rotation());
    updatePreview();
}

void AppController::desaturate() {
    if (!_document.hasImage()) return;
    _setOpenedImage(ImageProcessor::desaturate(_document.origImage()));
}

// Undo brings back the picture that was replaced, and redo the grey one.
void AppController::_setOpenedImage(Image original) {
    _registerUndo(_document.origImage(), &AppController::_setOpenedImage, tr("Desaturate"));
    _document.setEditedImage(original, ImageProcessor::rotateImage(original, rotation()),
                             rotation());
    updatePreview();
}

}  // namespace marigold
