#include "core/Document.h"

#include "processing/ImageProcessor.h"

namespace marigold {

Document::Document(QObject* parent) : QObject(parent) {}

const Image& Document::previewImage() const {
    if (_previewImage.isNull() && !_origImage.isNull()) {
        _previewImage = ImageProcessor::scaleImage(_origImage, {350, 350});
    }
    return _previewImage;
}

void Document::setImage(const Image& original) {
    _origImage = original;
    _previewImage = Image();
    _rotation = 0;
    setDisplayImage(original, true);
}

void Document::setDisplayImage(const Image& image, bool deselect) {
    _image = image;
    _changed();
    if (deselect && !_marquee.deselected()) {
        _marquee.deselect();
        Q_EMIT marqueeChanged();
    }
    Q_EMIT imageChanged();
}

void Document::setRotation(double degrees) {
    _rotation = degrees;
    _changed();
}

void Document::setEditedImage(const Image& original, const Image& image, double degrees) {
    _origImage = original;
    _previewImage = Image();
    _rotation = degrees;
    setDisplayImage(image, false);
}

void Document::setSourcePath(const QString& path) {
    _sourcePath = path;
    _changed();
    Q_EMIT sourcePathChanged(path);
}

void Document::setName(const QString& name) {
    if (name == _name) return;
    _name = name;
    _changed();
    Q_EMIT nameChanged(name);
}

void Document::setMarquee(const Marquee& marquee) {
    _marquee = marquee;
    _changed();
    Q_EMIT marqueeChanged();
}

void Document::setScaleFactor(float factor) {
    _scaleFactor = factor;
    _changed();
    Q_EMIT scaleFactorChanged();
}

bool Document::hasSelection() const {
    return hasImage() && !_marquee.deselected();
}

RectF Document::cropRect() const {
    const SizeF size = _image.size();
    return _marquee.rect({0, 0, size.width, size.height});
}

CropPlan Document::cropPlan() const {
    if (!hasSelection()) return {};
    return planCrop(cropRect(), _scaleFactor);
}

}  // namespace marigold
