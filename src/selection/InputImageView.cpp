#include "selection/InputImageView.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <cmath>

#include "core/Document.h"
#include "processing/BitmapOps.h"
#include "selection/ArrowKeys.h"

namespace marigold {

namespace {
constexpr float kMargin = 8;
}  // namespace

InputImageView::InputImageView(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void InputImageView::setDocument(const Document* document) {
    if (_document) _document->disconnect(&_connections);
    _document = document;
    if (document) {
        connect(document, &Document::imageChanged, &_connections, [this] { _imageChanged(); });
        connect(document, &Document::marqueeChanged, &_connections, [this] {
            update();
            _updateCursor();
            _describeSelection();
        });
    }
    _imageChanged();
}

void InputImageView::_imageChanged() {
    _pixmap = QPixmap();
    update();
    _updateCursor();
    _describeSelection();
}

void InputImageView::_describeSelection() {
    const CropPlan plan = _document ? _document->cropPlan() : CropPlan();
    if (plan.rounded.width <= 0 || plan.rounded.height <= 0) {
        setAccessibleDescription(_hasImage() ? tr("No selection") : QString());
        return;
    }
    // Counted from the top-left, as people and pixel editors count.
    const RectF r = plan.rounded;
    const float top = _document->image().size().height - r.y - r.height;
    setAccessibleDescription(tr("Selection %1 × %2 pixels at %3, %4")
                                 .arg(r.width)
                                 .arg(r.height)
                                 .arg(r.x)
                                 .arg(top));
}

bool InputImageView::_hasImage() const {
    return _document && _document->hasImage();
}

Marquee InputImageView::_marquee() const {
    return _document ? _document->marquee() : Marquee();
}

PointF InputImageView::_viewPoint(QPointF widgetPoint) const {
    return flipY(PointF{float(widgetPoint.x()), float(widgetPoint.y())}, height());
}

QRectF InputImageView::_widgetRect(RectF viewRect) const {
    const RectF r = flipY(viewRect, height());
    return QRectF(r.x, r.y, r.width, r.height);
}

RectF InputImageView::imageBounds() const {
    if (!_hasImage()) return {};
    const float iw = _document->image().size().width, ih = _document->image().size().height;
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

void InputImageView::setDrawCrossHair(bool on) {
    _drawCrossHair = on;
    update();
}

void InputImageView::_applyActualSizeScale(const Marquee& marquee) {
    if (!_delegate || !_constraint || !_constraint->actualSize() || !_hasImage()) return;
    const SizeF size = _document->image().size();
    _delegate->setScaleFactorWithoutUndo(_constraint->scaleFactorForImageSize(
        size.width, size.height, marquee.width(), marquee.height()));
}

const QPixmap& InputImageView::_displayPixmap() {
    const RectF bounds = imageBounds();
    const qreal ratio = devicePixelRatioF();
    // Never more pixels than the image has: the view does not enlarge.
    const Image& image = _document->image();
    const int w = std::min(image.pixelsWide(), int(std::lround(bounds.width * ratio)));
    const int h = std::min(image.pixelsHigh(), int(std::lround(bounds.height * ratio)));
    if (w <= 0 || h <= 0) {
        _pixmap = QPixmap();
    } else if (_pixmap.width() != w || _pixmap.height() != h) {
        const Image level = image.levelWithAtLeast(w, h);
        const Image fitted = (level.pixelsWide() == w && level.pixelsHigh() == h)
                                 ? level
                                 : bitmap::scaling(level, {float(w), float(h)});
        _pixmap = QPixmap::fromImage(fitted.toQImage());
    }
    return _pixmap;
}

bool InputImageView::_crossHairWanted() const {
    return _drawCrossHair != _optionKeyDown;
}

void InputImageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    if (!_hasImage()) return;
    const RectF bounds = imageBounds();
    const QPixmap& pixmap = _displayPixmap();
    if (!pixmap.isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawPixmap(_widgetRect(bounds), pixmap, QRectF(pixmap.rect()));
    }
    const Marquee marquee = _marquee();
    const RectF selection = marquee.rect(bounds);
    if (!selection.isEmpty()) {
        painter.setPen(QPen(Qt::green, 0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(_widgetRect(selection));
    }
    if (_crossHairWanted() && bounds.contains(_cursorPoint) && _state != Moving &&
        !marquee.containsPoint(_cursorPoint, bounds)) {
        painter.setPen(QPen(Qt::red, 0));
        const QRectF b = _widgetRect(bounds);
        const PointF at = flipY(_cursorPoint, height());
        painter.drawLine(QPointF(at.x, b.top()), QPointF(at.x, b.bottom()));
        painter.drawLine(QPointF(b.left(), at.y), QPointF(b.right(), at.y));
    }
}

void InputImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    _updateCursor();
}

void InputImageView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !_hasImage()) return;
    _isMouseDown = true;
    _marqueeAtMouseDown = _marquee();
    Marquee marquee = _marqueeAtMouseDown;
    marquee.setAspectHeight(_constraint ? _constraint->ratioHeight() : 0,
                            _constraint ? _constraint->ratioWidth() : 0);
    const PointF p = _viewPoint(event->position());
    _downPoint = p;
    _cursorPoint = p;
    const RectF bounds = imageBounds();
    if (marquee.pointIsNearCorner(p, bounds)) {
        _state = Resizing;
    } else if (marquee.containsPoint(p, bounds)) {
        _state = Moving;
    } else {
        marquee.setStartAndEndPoint(p, bounds);
        _state = Resizing;
    }
    if (_delegate && marquee != _marqueeAtMouseDown) _delegate->dragMarquee(marquee);
    _updateCursor();
}

Marquee InputImageView::_draggedTo(PointF p) const {
    Marquee marquee = _marquee();
    const RectF bounds = imageBounds();
    if (_state == Moving) {
        marquee.translateFromPoint(_downPoint, p, bounds);
    } else if (_state == Resizing) {
        marquee.setEndPoint(p, bounds);
    }
    return marquee;
}

void InputImageView::mouseMoveEvent(QMouseEvent* event) {
    const PointF p = _viewPoint(event->position());
    _cursorPoint = p;
    if (_isMouseDown && _state != Idle) {
        const Marquee marquee = _draggedTo(p);
        _downPoint = p;
        if (_state == Resizing) _applyActualSizeScale(marquee);
        if (_delegate) {
            // The document's change repaints the view and sets the cursor.
            _delegate->dragMarquee(marquee);
            return;
        }
    } else if (imageBounds().contains(p)) {
        _optionKeyDown = event->modifiers().testFlag(Qt::AltModifier);
    }
    update();
    _updateCursor();
}

void InputImageView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !_isMouseDown) return;
    const PointF p = _viewPoint(event->position());
    _cursorPoint = p;
    const Marquee marquee = _draggedTo(p);
    _state = Idle;
    _isMouseDown = false;
    _applyActualSizeScale(marquee);
    // One undo step for the whole gesture, back to the selection from before the press.
    if (_delegate) _delegate->finishMarqueeDrag(_marqueeAtMouseDown, marquee);
    _updateCursor();
}

void InputImageView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Alt) {
        _optionKeyDown = true;
        update();
    }
    if (!arrowkeys::isArrowKey(event->key()) || !_hasImage()) {
        event->accept();
        return;
    }
    Marquee marquee = _marquee();
    marquee.translateFromPoint({0, 0}, arrowkeys::translation(event->key(), event->modifiers()),
                               imageBounds());
    if (_delegate) _delegate->nudgeMarquee(marquee);
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
    // Take the keyboard so the arrow keys nudge the selection under the pointer.
    if (isActiveWindow()) setFocus(Qt::MouseFocusReason);
    update();
}

void InputImageView::leaveEvent(QEvent*) {
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
    const Marquee marquee = _marquee();
    if (_state == Resizing) {
        const PointF s = marquee.startPoint(), e = marquee.endPoint();
        const bool sameSense = (s.x < e.x && s.y < e.y) || (s.x > e.x && s.y > e.y);
        return bounds.contains(p) ? (sameSense ? CursorKind::DiagUp : CursorKind::DiagDown)
                                  : CursorKind::Arrow;
    }
    if (_state == Moving) return bounds.contains(p) ? CursorKind::ClosedHand : CursorKind::Arrow;
    // Later areas lie over earlier ones: knobs over the selection over the image.
    if (marquee.upperLeftKnob(bounds).contains(p) || marquee.lowerRightKnob(bounds).contains(p))
        return CursorKind::DiagDown;
    if (marquee.upperRightKnob(bounds).contains(p) || marquee.lowerLeftKnob(bounds).contains(p))
        return CursorKind::DiagUp;
    if (marquee.rect(bounds).contains(p)) return CursorKind::OpenHand;
    if (bounds.contains(p)) return CursorKind::Cross;
    return CursorKind::Arrow;
}

void InputImageView::_updateCursor() {
    if (!_hasImage()) {
        unsetCursor();
        return;
    }
    setCursor(cursorFor(cursorKindAt(_cursorPoint)));
}

}  // namespace marigold
