#include "SelectionOverlay.h"

#include <QKeyEvent>
#include <QPainter>
#include <cstdlib>

#include "X11Capture.h"

SelectionOverlay::SelectionOverlay(const QImage& frozen, QPoint origin, bool pickWindow,
                                   bool noFrame)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::X11BypassWindowManagerHint),
      _frozen(frozen),
      _origin(origin),
      _pickWindow(pickWindow),
      _noFrame(noFrame) {
    setAccessibleName(pickWindow ? tr("Click a window to capture it")
                                 : tr("Drag over the region to capture"));
    setCursor(pickWindow ? Qt::PointingHandCursor : Qt::CrossCursor);
    setMouseTracking(pickWindow);
    const qreal ratio = frozen.devicePixelRatio();
    setGeometry(QRect(origin / ratio, frozen.size() / ratio));
}

void SelectionOverlay::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    // No window manager gives the focus to a window that bypasses it: it is taken.
    activateWindow();
    grabKeyboard();
    grabMouse();
}

QRect SelectionOverlay::_spanned(QPoint from, QPoint to) {
    return QRect(QPoint(std::min(from.x(), to.x()), std::min(from.y(), to.y())),
                 QSize(std::abs(to.x() - from.x()), std::abs(to.y() - from.y())));
}

QPoint SelectionOverlay::_devicePoint(QPointF widgetPoint) const {
    return (widgetPoint * _frozen.devicePixelRatio()).toPoint();
}

QRect SelectionOverlay::_windowUnder(QPointF widgetPoint) const {
    const QRect window =
        x11capture::windowAt(_devicePoint(widgetPoint) + _origin, _noFrame, unsigned(winId()));
    return window.translated(-_origin).intersected(_frozen.rect());
}

void SelectionOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawImage(rect(), _frozen);
    // Everything but the region is dimmed, so the choice reads at a glance.
    QRegion dimmed(rect());
    const qreal ratio = _frozen.devicePixelRatio();
    const QRect shown(_region.topLeft() / ratio, _region.size() / ratio);
    if (!_region.isNull()) dimmed -= shown;
    painter.setClipRegion(dimmed);
    painter.fillRect(rect(), QColor(0, 0, 0, 110));
    painter.setClipping(false);
    if (!_region.isNull()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1));
        painter.drawRect(shown.adjusted(0, 0, -1, -1));
    }
}

void SelectionOverlay::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT chosen({});
        return;
    }
    QWidget::keyPressEvent(event);
}

void SelectionOverlay::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (_pickWindow) {
        _region = _windowUnder(event->position());
        return;
    }
    _dragging = true;
    _start = _devicePoint(event->position());
    _region = QRect();
    update();
}

void SelectionOverlay::mouseMoveEvent(QMouseEvent* event) {
    if (_pickWindow) {
        _region = _windowUnder(event->position());
    } else if (_dragging) {
        _region = _spanned(_start, _devicePoint(event->position()));
    }
    update();
}

void SelectionOverlay::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (_pickWindow) {
        if (!_region.isEmpty()) Q_EMIT chosen(_region);
        return;
    }
    _dragging = false;
    const QRect region = _spanned(_start, _devicePoint(event->position()));
    // A click without a drag selects nothing; the person can drag again.
    if (region.width() > 1 && region.height() > 1) Q_EMIT chosen(region.intersected(_frozen.rect()));
}
