#include "selection/Marquee.h"

#include <algorithm>
#include <cmath>

namespace marigold {

namespace {

float clampUnit(float v) {
    if (v < 0) return 0;
    if (v > 1) return 1;
    return v;
}

PointF lowerLeft(PointF a, PointF b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y)};
}
PointF upperRight(PointF a, PointF b) {
    return {std::max(a.x, b.x), std::max(a.y, b.y)};
}

PointF toView(PointF normalised, RectF bounds) {
    return {normalised.x * bounds.width + bounds.x, normalised.y * bounds.height + bounds.y};
}

}  // namespace

void Marquee::setAspectHeight(float height, float width) {
    _aspectHeight = height;
    _aspectWidth = width;
}

float Marquee::width() const {
    return std::max(_startPoint.x, _endPoint.x) - std::min(_startPoint.x, _endPoint.x);
}

float Marquee::height() const {
    return std::max(_startPoint.y, _endPoint.y) - std::min(_startPoint.y, _endPoint.y);
}

SizeF Marquee::size() const {
    return {width(), height()};
}

QString Marquee::description() const {
    return QString::asprintf("(%f, %f, %f, %f)", double(_startPoint.x), double(_startPoint.y),
                             double(_endPoint.x), double(_endPoint.y));
}

PointF Marquee::convertPoint(PointF p, RectF bounds) {
    return {(p.x - bounds.x) / bounds.width, (p.y - bounds.y) / bounds.height};
}

RectF Marquee::rect(RectF bounds) const {
    const PointF origin = toView(lowerLeft(_startPoint, _endPoint), bounds);
    return {origin.x, origin.y, width() * bounds.width, height() * bounds.height};
}

void Marquee::setStartAndEndPoint(PointF viewPoint, RectF bounds) {
    _startPoint = convertPoint(viewPoint, bounds);
    _endPoint = _startPoint;
}

void Marquee::setStartPoint(PointF viewPoint, RectF bounds) {
    _startPoint = convertPoint(viewPoint, bounds);
}

void Marquee::setEndPoint(PointF viewPoint, RectF bounds) {
    const PointF converted = convertPoint(viewPoint, bounds);
    const float ex = clampUnit(converted.x);
    const float ey = clampUnit(converted.y);
    // Written as "both positive" so that a NaN aspect also counts as free.
    if (!(_aspectHeight > 0 && _aspectWidth > 0)) {
        _endPoint = {ex, ey};
        return;
    }
    // The ratio is held in view points, which are proportional to image pixels.
    const double ratio = double(_aspectHeight) / double(_aspectWidth);
    const double dh = std::fabs(double(ey) - double(_startPoint.y)) * double(bounds.height);
    const double dw = std::fabs(double(ex) - double(_startPoint.x)) * double(bounds.width);
    const double quotient = dh / dw;
    if (quotient > ratio) {
        const double h = (dw / double(bounds.height)) * ratio;
        const double sy = _startPoint.y;
        _endPoint = {ex, float(ey > _startPoint.y ? sy + h : sy - h)};
    } else if (ratio > quotient) {
        const double w = (dh / double(bounds.width)) / ratio;
        const double sx = _startPoint.x;
        _endPoint = {float(ex > _startPoint.x ? sx + w : sx - w), ey};
    }
    // Otherwise the drag already has the ratio (or is 0/0): the old end point stays on purpose.
}

RectF Marquee::rectTranslatedFromPoint(PointF from, PointF to, RectF bounds) const {
    RectF r = rect(bounds);
    r.x += to.x - from.x;
    r.y += to.y - from.y;
    // Upper clamps last: a selection larger than the bounds ends flush with the far edge.
    if (r.x < bounds.x) r.x = bounds.x;
    if (r.y < bounds.y) r.y = bounds.y;
    if (r.x > bounds.x + bounds.width - r.width) r.x = bounds.x + bounds.width - r.width;
    if (r.y > bounds.y + bounds.height - r.height) r.y = bounds.y + bounds.height - r.height;
    return r;
}

void Marquee::translateFromPoint(PointF from, PointF to, RectF bounds) {
    const RectF r = rectTranslatedFromPoint(from, to, bounds);
    _startPoint = convertPoint({r.x, r.y}, bounds);
    _endPoint = convertPoint({r.x + r.width, r.y + r.height}, bounds);
}

void Marquee::selectAll() {
    _startPoint = {0, 0};
    _endPoint = {1, 1};
}

void Marquee::deselect() {
    _startPoint = {0, 0};
    _endPoint = {0, 0};
}

Marquee Marquee::mirrored(bool horizontally) const {
    Marquee result = *this;
    if (deselected()) return result;
    if (horizontally) {
        result._startPoint.x = 1 - _startPoint.x;
        result._endPoint.x = 1 - _endPoint.x;
    } else {
        result._startPoint.y = 1 - _startPoint.y;
        result._endPoint.y = 1 - _endPoint.y;
    }
    return result;
}

bool Marquee::deselected() const {
    return _startPoint == _endPoint;
}

bool Marquee::containsPoint(PointF viewPoint, RectF bounds) const {
    const PointF p = convertPoint(viewPoint, bounds);
    const PointF lo = lowerLeft(_startPoint, _endPoint);
    const PointF hi = upperRight(_startPoint, _endPoint);
    return lo.x < p.x && p.x < hi.x && lo.y < p.y && p.y < hi.y;
}

bool Marquee::pointIsNearCorner(PointF viewPoint, RectF bounds) {
    const PointF lo = lowerLeft(_startPoint, _endPoint);
    const PointF hi = upperRight(_startPoint, _endPoint);
    // Knobs overlap on a tiny selection; this order decides which corner is grabbed.
    if (lowerLeftKnob(bounds).contains(viewPoint)) {
        _startPoint = hi;
    } else if (lowerRightKnob(bounds).contains(viewPoint)) {
        _startPoint = {lo.x, hi.y};
    } else if (upperLeftKnob(bounds).contains(viewPoint)) {
        _startPoint = {hi.x, lo.y};
    } else if (upperRightKnob(bounds).contains(viewPoint)) {
        _startPoint = lo;
    } else {
        return false;
    }
    return true;
}

bool Marquee::pointIsNearPoint(PointF a, PointF b) {
    const float dx = a.x - b.x;
    const float dy = a.y - b.y;
    const float squared = dx * dx + dy * dy;
    return squared < 0.0015;
}

RectF Marquee::lowerLeftKnob(RectF bounds) const {
    return knobAroundPoint(toView(lowerLeft(_startPoint, _endPoint), bounds));
}

RectF Marquee::lowerRightKnob(RectF bounds) const {
    const PointF lo = lowerLeft(_startPoint, _endPoint);
    const PointF hi = upperRight(_startPoint, _endPoint);
    return knobAroundPoint(toView({hi.x, lo.y}, bounds));
}

RectF Marquee::upperLeftKnob(RectF bounds) const {
    const PointF lo = lowerLeft(_startPoint, _endPoint);
    const PointF hi = upperRight(_startPoint, _endPoint);
    return knobAroundPoint(toView({lo.x, hi.y}, bounds));
}

RectF Marquee::upperRightKnob(RectF bounds) const {
    return knobAroundPoint(toView(upperRight(_startPoint, _endPoint), bounds));
}

RectF Marquee::knobAroundPoint(PointF p) {
    return {p.x - 5, p.y - 5, 10, 10};
}

}  // namespace marigold
