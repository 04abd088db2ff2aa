#include "selection/CenteringScrollArea.h"

#include <QEvent>
#include <QScrollBar>

#include "selection/ControlArithmetic.h"

namespace marigold {

namespace {

SizeF sizeOf(QSize size) {
    return {float(size.width()), float(size.height())};
}

}  // namespace

CenteringScrollArea::CenteringScrollArea(QWidget* parent) : QScrollArea(parent) {}

QPoint CenteringScrollArea::documentOrigin() const {
    return widget() ? -widget()->pos() : QPoint();
}

QPoint CenteringScrollArea::constrainScrollPoint(QPoint proposed) const {
    if (!widget()) return proposed;
    const PointF p =
        controls::constrainScrollPoint({float(proposed.x()), float(proposed.y())},
                                       sizeOf(widget()->size()), sizeOf(viewport()->size()));
    return {int(p.x), int(p.y)};
}

void CenteringScrollArea::centerDocument() {
    if (!widget()) return;
    const QPoint current(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const PointF p = controls::centerDocument({float(current.x()), float(current.y())},
                                              sizeOf(widget()->size()), sizeOf(viewport()->size()));
    _scrollTo({int(p.x), int(p.y)});
}

// The scroll bars hold the origin of a document larger than the viewport; a smaller one
// has no range to scroll and is placed at its centred origin instead.
void CenteringScrollArea::_scrollTo(QPoint origin) {
    const QPoint accepted = constrainScrollPoint(origin);
    if (accepted.x() >= 0) horizontalScrollBar()->setValue(accepted.x());
    if (accepted.y() >= 0) verticalScrollBar()->setValue(accepted.y());
    if (widget()->pos() != -accepted) widget()->move(-accepted);
}

// Qt places the document itself after each of these; the centring rule then has the last
// word.
bool CenteringScrollArea::event(QEvent* event) {
    const bool handled = QScrollArea::event(event);
    if (event->type() == QEvent::LayoutRequest) centerDocument();
    return handled;
}

bool CenteringScrollArea::eventFilter(QObject* watched, QEvent* event) {
    const bool handled = QScrollArea::eventFilter(watched, event);
    // Qt moves the document back to its own place whenever it lays it out again, even when
    // nothing changed size: every move is answered.
    const bool placed = event->type() == QEvent::Resize || event->type() == QEvent::Move;
    if (watched == widget() && placed) centerDocument();
    return handled;
}

void CenteringScrollArea::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    centerDocument();
}

void CenteringScrollArea::scrollContentsBy(int dx, int dy) {
    QScrollArea::scrollContentsBy(dx, dy);
    centerDocument();
}

}  // namespace marigold
