#pragma once

// Marigold's own geometry: 32-bit floats, origin at the lower-left, y upward. Qt and libvips
// count rows downward; flipY below is the one conversion between the two.

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
    bool contains(PointF p) const {
        return p.x >= x && p.x < x + width && p.y >= y && p.y < y + height;
    }
};

// Whole pixels counted from the top-left corner, rows downward, as pictures are stored and
// as the command line takes a crop.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

// The same rectangle or point measured from the other edge of an area `height` high: y-up
// becomes y-down and back. Every change of direction goes through these two.
inline RectF flipY(RectF rect, double height) {
    return {rect.x, float(height - (double(rect.y) + rect.height)), rect.width, rect.height};
}

inline PointF flipY(PointF point, double height) {
    return {point.x, float(height - point.y)};
}

}  // namespace marigold
