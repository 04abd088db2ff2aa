#pragma once

#include <QString>

#include "platform/Geometry.h"

namespace marigold {

// The crop selection: two corner points normalised to the displayed image (0..1 across its
// width and height, y upward) and an optional aspect constraint. A plain value: copy it to
// keep it. Every operation that meets screen positions takes `bounds`, the rectangle the image
// is drawn in (view points), and converts through it.
class Marquee {
public:
    Marquee() = default;  // all zero: deselected, unconstrained

    void setMarquee(const Marquee& other) { *this = other; }

    PointF startPoint() const { return _startPoint; }
    PointF endPoint() const { return _endPoint; }
    float aspectHeight() const { return _aspectHeight; }
    float aspectWidth() const { return _aspectWidth; }
    // Takes effect at the next end-point change; the current rectangle is left alone.
    void setAspectHeight(float height, float width);

    float width() const;
    float height() const;
    SizeF size() const;
    QString description() const;  // "(%f, %f, %f, %f)": start.x, start.y, end.x, end.y

    static PointF convertPoint(PointF p, RectF bounds);
    RectF rect(RectF bounds) const;

    void setStartAndEndPoint(PointF viewPoint, RectF bounds);
    void setStartPoint(PointF viewPoint, RectF bounds);
    // Clamped to the image, then held to the aspect constraint; the held result is not clamped
    // again, so a start outside [0, 1] can give an end outside it too.
    void setEndPoint(PointF viewPoint, RectF bounds);
    void translateFromPoint(PointF from, PointF to, RectF bounds);
    RectF rectTranslatedFromPoint(PointF from, PointF to, RectF bounds) const;
    void selectAll();
    void deselect();
    // The same selection over the picture mirrored left to right (or top to bottom).
    Marquee mirrored(bool horizontally) const;
    bool deselected() const;

    bool containsPoint(PointF viewPoint, RectF bounds) const;
    // True on a corner knob; re-anchors the start point at the opposite corner.
    bool pointIsNearCorner(PointF viewPoint, RectF bounds);
    static bool pointIsNearPoint(PointF a, PointF b);

    RectF lowerLeftKnob(RectF bounds) const;
    RectF lowerRightKnob(RectF bounds) const;
    RectF upperLeftKnob(RectF bounds) const;
    RectF upperRightKnob(RectF bounds) const;
    static RectF knobAroundPoint(PointF p);

    friend bool operator==(const Marquee&, const Marquee&) = default;

private:
    PointF _startPoint;
    PointF _endPoint;
    float _aspectHeight = 0;
    float _aspectWidth = 0;
};

}  // namespace marigold
