#include "output/OutputImageView.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QUrl>
#include <cmath>

#include "output/FittedRect.h"
#include "output/OutputViewDelegate.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"
#include "processing/BitmapOps.h"
#include "processing/ImageProcessor.h"

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
    _tmpPath.clear();
    _updateFrame();
    update();
}

void OutputImageView::setMessage(const QString& message) {
    _message = message;
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
    auto* scroll =
        qobject_cast<QScrollArea*>(parentWidget() ? parentWidget()->parentWidget() : nullptr);
    if (scroll) scroll->setWidgetResizable(_scaling == ProportionallyDown || _image.isNull());
    if (_scaling != ProportionallyDown && !_image.isNull()) resize(sizeHint());
}

void OutputImageView::mousePressEvent(QMouseEvent* event) {
    // Ends any text editing first, so an edited field applies before the file is written.
    if (QWidget* focused = window()->focusWidget()) focused->clearFocus();
    if (event->button() != Qt::LeftButton) return;
    _pressPosition = event->position();
    _dragPending = true;
    _tmpPath = _delegate && !_image.isNull() ? _delegate->writeTmpFile() : QString();
}

void OutputImageView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    _dragPending = false;
    if (_tmpPath.isEmpty() || !_doubleClickTarget) return;
    if (FileReceiver* target = _doubleClickTarget()) target->sendFile(_tmpPath);
}

void OutputImageView::mouseMoveEvent(QMouseEvent* event) {
    if (!_dragPending || !(event->buttons() & Qt::LeftButton)) return;
    if ((event->position() - _pressPosition).manhattanLength() <
        QApplication::startDragDistance()) {
        return;
    }
    _dragPending = false;
    if (_image.isNull()) return;
    if (_tmpPath.isEmpty()) {
        if (_delegate) _delegate->alertIfLimitTooLow();
    } else {
        _dragFile();
    }
    setToolTip(QString());
}

void OutputImageView::_dragFile() {
    const bool orderBack = _delegate && _delegate->defaults().boolForKey(keys::DefAutoOrderBack);
    const bool orderFront = _delegate && _delegate->defaults().boolForKey(keys::DefAutoOrderFront);
    QWidget* frame = window();
    if (orderBack) {
        frame->lower();
        frame->setWindowOpacity(0.5);
    }
    auto* data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(_tmpPath)});
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    const Image icon = ImageProcessor::scaleImage(_image, {64, 64});
    drag->setPixmap(QPixmap::fromImage(icon.toQImage()));
    // The pointer sits 30 points right of and 5 points above the icon's lower-left corner.
    drag->setHotSpot(QPoint(30, int(std::lround(icon.size().height)) - 5));
    drag->exec(Qt::CopyAction, Qt::CopyAction);
    if (orderFront) {
        frame->raise();
        frame->activateWindow();
    }
    frame->setWindowOpacity(1.0);
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
    const QSizeF size(_image.size().width, _image.size().height);
    if (_scaling != ProportionallyDown) return QRectF(QPointF(0, 0), size);
    return fittedRect(size, QRectF(rect()));
}

const QPixmap& OutputImageView::_displayPixmap(QSize devicePixels) {
    const int w = std::min(devicePixels.width(), _image.pixelsWide());
    const int h = std::min(devicePixels.height(), _image.pixelsHigh());
    if (w <= 0 || h <= 0) {
        _pixmap = QPixmap();
    } else if (_pixmap.width() != w || _pixmap.height() != h) {
        const Image fitted =
            (w == _image.pixelsWide() && h == _image.pixelsHigh())
                ? _image
                : bitmap::scaling(_image.levelWithAtLeast(w, h), {float(w), float(h)});
        _pixmap = QPixmap::fromImage(fitted.toQImage());
    }
    return _pixmap;
}

void OutputImageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    if (_image.isNull()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap,
                         _message);
        return;
    }
    const QRectF target = imageRect();
    const qreal ratio = devicePixelRatioF();
    const QPixmap& pixmap = _displayPixmap(
        QSize(int(std::lround(target.width() * ratio)), int(std::lround(target.height() * ratio))));
    if (pixmap.isNull()) return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
}

}  // namespace marigold
