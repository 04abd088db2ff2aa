#pragma once

#include <optional>

#include "platform/Geometry.h"

namespace marigold {

// The most pixels an output (or a region read for one) may have: 2^28, a gigabyte of RGBA.
// Larger requests come from nonsense scales and are refused rather than left to exhaust
// memory or run for minutes.
inline constexpr long long kMaxOutputPixels = 1LL << 28;

float aspectRatio(float width, float height);

// Each of x, y, width, height rounded to nearest, halves away from zero, independently.
RectF roundRect(RectF rect);

// The output pixel size of a crop: rounded rectangle times scale, no side under 10 pixels
// (height wins), rounded. Zero size when the rounded rectangle or the scale is empty.
struct CropPlan {
    RectF rounded;  // source region, points == pixels, lower-left origin
    int outputWide = 0;
    int outputHigh = 0;
    bool isEmpty() const { return outputWide <= 0 || outputHigh <= 0; }
    bool isTooLarge() const { return (long long)outputWide * outputHigh > kMaxOutputPixels; }
};
CropPlan planCrop(RectF rect, float scale);

// The largest region of the ratio `ratioWide` : `ratioHigh` centred in a picture `wide` x
// `high`, unrounded.
RectF largestCentredCrop(float wide, float high, double ratioWide, double ratioHigh);

// A whole-pixel region centred in a picture `wide` x `high`, and the scale, that make an
// output of exactly `outWide` x `outHigh` (each at least 10): the largest such region, or
// within a few pixels of it, since one scale serves both sides of a region of whole pixels.
// None when the picture is too small for it: a ratio whose short side would be a pixel or
// two cannot be enlarged to an exact size.
struct SizedCrop {
    RectF rect;
    float scale = 0;
};
std::optional<SizedCrop> exactSizeCrop(int wide, int high, int outWide, int outHigh);

// The thumbnail size of `scaleImage`: `size` when it fits `box`, otherwise fitted, unrounded.
SizeF sizeToFit(SizeF size, SizeF box);

}  // namespace marigold
