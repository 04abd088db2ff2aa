#pragma once

// Marigold's own geometry: 32-bit floats, origin at the lower-left, y upward.
// Qt and libvips are y-down; the one conversion lives where a crop rectangle
// meets pixel rows (processing/BitmapOps).

namespace marigold {

struct PointF {
    float x = 0;
    float y = 0;
    friend bool operator==(const PointF&, const PointF&) = default;
};

struct SizeF {
    float width = 0;
    float height = 0;
    friend bool operator==(const SizeF&, const SizeF&) = default;
};

struct RectF {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    friend bool operator==(const RectF&, const RectF&) = default;

    float maxX() const { return x + width; }
    float maxY() const { return y + height; }
    bool isEmpty() const { return !(width > 0) || !(height > 0); }
    // The platform's usual test: lower and left edges inside, upper and right outside.
    bool contains(PointF p) const { return p.x >= x && p.x < x + width && p.y >= y && p.y < y + height; }
};

}  // namespace marigold
