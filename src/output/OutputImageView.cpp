#include "output/OutputImageView.h"

#include <QPainter>
#include <QScrollArea>
#include <cmath>

#include "processing/BitmapOps.h"

namespace marigold {

OutputImageView::OutputImageView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize OutputImageView::sizeHint() const {
    if (_scaling != ProportionallyDown && !_image.isNull()) {
        return QSize(int(std::lround(_image.size().width)), int(std::lround(_image.size().height)));
    }
    return QWidget::sizeHint();
}

void OutputImageView::setImage(const Image& image) {
    _image = image;
    _pixmap = QPixmap();
    _updateFrame();
    const int w = image.isNull() ? 0 : int(std::lround(image.size().width));
    const int h = image.isNull() ? 0 : int(std::lround(image.size().height));
    Q_EMIT pixelSizeChanged(w, h);
    clearCache();
    update();
}

void OutputImageView::setImageScaling(int scaling) {
    if (scaling == _scaling) return;
    _scaling = scaling;
    _pixmap = QPixmap();
    _updateFrame();
    update();
}

void OutputImageView::_updateFrame() {
    // Actual pixels: the view is as large as the image and its scroll area scrolls it;
    // shrink to fit: the view fills the scroll area.
    auto* scroll = qobject_cast<QScrollArea*>(parentWidget() ? parentWidget()->parentWidget()
                                                             : nullptr);
    if (scroll) scroll->setWidgetResizable(_scaling == ProportionallyDown || _image.isNull());
    if (_scaling != ProportionallyDown && !_image.isNull()) resize(sizeHint());
}

void OutputImageView::clearCache() {
    if (_filesizeLabel) _filesizeLabel->clear();
}

QSize OutputImageView::displayPixelLimit() const {
    // The visible area, not the current image: the next output may be larger than this one.
    const QSize area = parentWidget() ? parentWidget()->size() : size();
    const qreal ratio = devicePixelRatioF();
    return QSize(std::max(1, int(std::ceil(area.width() * ratio))),
                 std::max(1, int(std::ceil(area.height() * ratio))));
}

QRectF OutputImageView::imageRect() const {
    if (_image.isNull()) return {};
    const qreal iw = _image.size().width, ih = _image.size().height;
    if (_scaling != ProportionallyDown) return QRectF(0, 0, iw, ih);
    // Shrink to fit, never enlarge, centred.
    const qreal scale = std::min({1.0, width() / iw, height() / ih});
    const qreal w = iw * scale, h = ih * scale;
    return QRectF((width() - w) / 2, (height() - h) / 2, w, h);
}

const QPixmap& OutputImageView::_displayPixmap(QSize devicePixels) {
    const int w = std::min(devicePixels.width(), _image.pixelsWide());
    const int h = std::min(devicePixels.height(), _image.pixelsHigh());
    if (w <= 0 || h <= 0) {
        _pixmap = QPixmap();
    } else if (_pixmap.width() != w || _pixmap.height() != h) {
        const Image fitted = (w == _image.pixelsWide() && h == _image.pixelsHigh())
                                 ? _image
                                 : bitmap::scaling(_image.levelWithAtLeast(w, h),
                                                   {float(w), float(h)});
        _pixmap = QPixmap::fromImage(fitted.toQImage());
    }
    return _pixmap;
}

void OutputImageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    if (_image.isNull()) return;
    const QRectF target = imageRect();
    const qreal ratio = devicePixelRatioF();
    const QPixmap& pixmap = _displayPixmap(
        QSize(int(std::lround(target.width() * ratio)), int(std::lround(target.height() * ratio))));
    if (pixmap.isNull()) return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
}

}  // namespace marigold
