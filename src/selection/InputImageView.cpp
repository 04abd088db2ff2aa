#include "selection/InputImageView.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <cmath>

#include "platform/UndoManager.h"
#include "processing/BitmapOps.h"
#include "processing/ImageProcessor.h"
#include "selection/ArrowKeys.h"

namespace marigold {

namespace {
constexpr float kMargin = 8;
const SizeF kPreviewBox{350, 350};
}  // namespace

InputImageView::InputImageView(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

PointF InputImageView::_viewPoint(QPointF widgetPoint) const {
    return {float(widgetPoint.x()), float(height() - widgetPoint.y())};
}

QRectF InputImageView::_widgetRect(RectF r) const {
    return QRectF(r.x, height() - r.y - r.height, r.width, r.height);
}

RectF InputImageView::imageBounds() const {
    if (_displayImage.isNull()) return {};
    const float iw = _displayImage.size().width, ih = _displayImage.size().height;
    const float vw = float(width()), vh = float(height());
    if (vw >= iw + 2 * kMargin && vh >= ih + 2 * kMargin) {
        return {(vw - iw) / 2, (vh - ih) / 2, iw, ih};
    }
    const float a = iw / ih, v = vw / vh;
    if (a == v) return {kMargin, kMargin, vw - 2 * kMargin, vh - 2 * kMargin};
    if (a < v) {
        const float h = vh - 2 * kMargin, w = h * a;
        return {(vw - w) / 2, kMargin, w, h};
    }
    const float w = vw - 2 * kMargin, h = w / a;
    return {kMargin, (vh - h) / 2, w, h};
}

void InputImageView::setImage(const Image& image) {
    _origImage = image;
    _previewImage = ImageProcessor::scaleImage(image, kPreviewBox);
    setDisplayImage(image);
    if (_sizeTextField) {
        _sizeTextField->setText(
            _displayImage.isNull()
                ? QString()
                : QStringLiteral("%1 x %2")
                      .arg(std::lround(_displayImage.size().width))
                      .arg(std::lround(_displayImage.size().height)));
    }
    if (_delegate) _delegate->resetControls();
    if (window()->isVisible()) {
        window()->raise();
        window()->activateWindow();
    }
}

void InputImageView::setDisplayImage(const Image& image, bool shouldDeselect) {
    _displayImage = image;
    _pixmap = QPixmap();
    if (shouldDeselect) _marquee.deselect();
    if (_delegate) _delegate->updatePreview();
    update();
    _updateCursor();
}

void InputImageView::setMarquee(const Marquee& marquee) {
    if (_delegate) {
        const Marquee restore = _isMouseDown ? _marqueeAtMouseDown : _marquee;
        QPointer<InputImageView> self(this);
        _delegate->undoManager().registerUndo([self, restore] {
            if (self) self->setMarquee(restore);
        });
        _delegate->undoManager().setActionName(tr("Crop Selection"));
    }
    _marquee = marquee;
    _applyActualSizeScale();
    update();
    if (_delegate) _delegate->updatePreview();
}

void InputImageView::editMarqueeWithoutUndo(const Marquee& marquee) {
    _marquee = marquee;
    update();
    _updateCursor();
}

RectF InputImageView::cropRect() const {
    const SizeF size = _displayImage.size();
    return _marquee.rect({0, 0, size.width, size.height});
}

void InputImageView::setDrawCrossHair(bool on) {
    _drawCrossHair = on;
    update();
}

void InputImageView::_applyActualSizeScale() {
    if (!_delegate || !_constraint || !_constraint->actualSize()) return;
    const SizeF size = _displayImage.size();
    _delegate->setScaleFactorWithoutUndo(_constraint->scaleFactorForImageSize(
        size.width, size.height, _marquee.width(), _marquee.height()));
}

const QPixmap& InputImageView::_displayPixmap() {
    const RectF bounds = imageBounds();
    const qreal ratio = devicePixelRatioF();
    // Never more pixels than the image has: the view does not enlarge.
    const int w = std::min(_displayImage.pixelsWide(), int(std::lround(bounds.width * ratio)));
    const int h = std::min(_displayImage.pixelsHigh(), int(std::lround(bounds.height * ratio)));
    if (w <= 0 || h <= 0) {
        _pixmap = QPixmap();
    } else if (_pixmap.width() != w || _pixmap.height() != h) {
        const Image level = _displayImage.levelWithAtLeast(w, h);
        const Image fitted = (level.pixelsWide() == w && level.pixelsHigh() == h)
                                 ? level
                                 : bitmap::scaling(level, {float(w), float(h)});
        _pixmap = QPixmap::fromImage(fitted.toQImage());
    }
    return _pixmap;
}

bool InputImageView::_crossHairWanted() const { return _drawCrossHair != _optionKeyDown; }

void InputImageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    if (_displayImage.isNull()) return;
    const RectF bounds = imageBounds();
    const QPixmap& pixmap = _displayPixmap();
    if (!pixmap.isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawPixmap(_widgetRect(bounds), pixmap, QRectF(pixmap.rect()));
    }
    const RectF selection = _marquee.rect(bounds);
    if (!selection.isEmpty()) {
        painter.setPen(QPen(Qt::green, 0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(_widgetRect(selection));
    }
    if (_crossHairWanted() && bounds.contains(_cursorPoint) && _state != Moving &&
        !_marquee.containsPoint(_cursorPoint, bounds)) {
        painter.setPen(QPen(Qt::red, 0));
        const QRectF b = _widgetRect(bounds);
        const qreal x = _cursorPoint.x, y = height() - _cursorPoint.y;
        painter.drawLine(QPointF(x, b.top()), QPointF(x, b.bottom()));
        painter.drawLine(QPointF(b.left(), y), QPointF(b.right(), y));
    }
}

void InputImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    _updateCursor();
}

void InputImageView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    _isMouseDown = true;
    _marqueeAtMouseDown = _marquee;
    _marquee.setAspectHeight(_constraint ? _constraint->ratioHeight() : 0,
                             _constraint ? _constraint->ratioWidth() : 0);
    const PointF p = _viewPoint(event->position());
    _downPoint = p;
    _cursorPoint = p;
    const RectF bounds = imageBounds();
    if (_marquee.pointIsNearCorner(p, bounds)) {
        _state = Resizing;
    } else if (_marquee.containsPoint(p, bounds)) {
        _state = Moving;
    } else {
        _marquee.setStartAndEndPoint(p, bounds);
        _state = Resizing;
        update();
    }
    _updateCursor();
}

void InputImageView::_mouseDragged(PointF p) {
    const RectF bounds = imageBounds();
    if (_state == Moving) {
        _marquee.translateFromPoint(_downPoint, p, bounds);
        _downPoint = p;
    } else if (_state == Resizing) {
        _marquee.setEndPoint(p, bounds);
        _applyActualSizeScale();
    }
    if (_state != Idle && _delegate && _delegate->livePreview()) _delegate->updatePreviewFast(true);
    update();
    _updateCursor();
}

void InputImageView::mouseMoveEvent(QMouseEvent* event) {
    const PointF p = _viewPoint(event->position());
    if (_isMouseDown) {
        _cursorPoint = p;
        _mouseDragged(p);
        return;
    }
    _cursorPoint = p;
    _mouseInside = imageBounds().contains(p);
    if (_mouseInside) _optionKeyDown = event->modifiers().testFlag(Qt::AltModifier);
    update();
    _updateCursor();
}

void InputImageView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !_isMouseDown) return;
    const PointF p = _viewPoint(event->position());
    _cursorPoint = p;
    const RectF bounds = imageBounds();
    if (_state == Resizing) {
        _marquee.setEndPoint(p, bounds);
    } else if (_state == Moving) {
        _marquee.translateFromPoint(_downPoint, p, bounds);
    }
    _state = Idle;
    // setMarquee records the undo step (restoring the selection from before the press) and
    // computes the full preview once.
    setMarquee(_marquee);
    _isMouseDown = false;
    if (_delegate) _delegate->setUserResizable(false);
    _updateCursor();
}

void InputImageView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Alt) {
        _optionKeyDown = true;
        update();
    }
    if (!arrowkeys::isArrowKey(event->key())) {
        event->accept();
        return;
    }
    const PointF t = arrowkeys::translation(event->key(), event->modifiers());
    // A nudge is deliberately not undoable, unlike pointer edits.
    _marquee.translateFromPoint({0, 0}, t, imageBounds());
    _updateCursor();
    if (_delegate) _delegate->updatePreview();
    update();
}

void InputImageView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Alt) {
        _optionKeyDown = false;
        update();
    }
    event->accept();
}

void InputImageView::enterEvent(QEnterEvent* event) {
    _cursorPoint = _viewPoint(event->position());
    _mouseInside = imageBounds().contains(_cursorPoint);
    // Take the keyboard so the arrow keys nudge the selection under the pointer.
    if (isActiveWindow()) setFocus(Qt::MouseFocusReason);
    update();
}

void InputImageView::leaveEvent(QEvent*) {
    _mouseInside = false;
    _cursorPoint = {-1, -1};
    update();
}

void InputImageView::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (!urls.isEmpty() && urls.first().isLocalFile()) event->acceptProposedAction();
}

void InputImageView::dropEvent(QDropEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile() || !_delegate) return;
    if (_delegate->openFile(urls.first().toLocalFile())) event->acceptProposedAction();
}

CursorKind InputImageView::cursorKindAt(PointF p) const {
    const RectF bounds = imageBounds();
    if (_state == Resizing) {
        const PointF s = _marquee.startPoint(), e = _marquee.endPoint();
        const bool sameSense = (s.x < e.x && s.y < e.y) || (s.x > e.x && s.y > e.y);
        return bounds.contains(p) ? (sameSense ? CursorKind::DiagUp : CursorKind::DiagDown)
                                  : CursorKind::Arrow;
    }
    if (_state == Moving) return bounds.contains(p) ? CursorKind::ClosedHand : CursorKind::Arrow;
    // Later areas lie over earlier ones: knobs over the selection over the image.
    if (_marquee.upperLeftKnob(bounds).contains(p) || _marquee.lowerRightKnob(bounds).contains(p))
        return CursorKind::DiagDown;
    if (_marquee.upperRightKnob(bounds).contains(p) || _marquee.lowerLeftKnob(bounds).contains(p))
        return CursorKind::DiagUp;
    if (_marquee.rect(bounds).contains(p)) return CursorKind::OpenHand;
    if (bounds.contains(p)) return CursorKind::Cross;
    return CursorKind::Arrow;
}

void InputImageView::_updateCursor() {
    if (_displayImage.isNull()) {
        unsetCursor();
        return;
    }
    setCursor(cursorFor(cursorKindAt(_cursorPoint)));
}

}  // namespace marigold
