#include "processing/CropGeometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace marigold {

namespace {

// Halves away from zero, as std::round does; done in double so float inputs round exactly.
float roundedAway(float value) {
    return float(std::round(double(value)));
}

int toPixels(float length) {
    const double rounded = std::round(double(length));
    return int(std::min(rounded, double(std::numeric_limits<int>::max())));
}

}  // namespace

float aspectRatio(float width, float height) {
    return width / height;
}

RectF roundRect(RectF rect) {
    return {roundedAway(rect.x), roundedAway(rect.y), roundedAway(rect.width),
            roundedAway(rect.height)};
}

CropPlan planCrop(RectF rect, float scale) {
    CropPlan plan;
    plan.rounded = roundRect(rect);
    const float width = plan.rounded.width;
    const float height = plan.rounded.height;
    // No area or no scale means no output; the 10-pixel minimum below must not revive a zero
    // scale, and negative or not-a-number ones are nonsense, as is a rectangle nowhere.
    if (!(width > 0) || !(height > 0) || !(scale > 0) || !std::isfinite(plan.rounded.x) ||
        !std::isfinite(plan.rounded.y)) {
        return plan;
    }

    float s = scale;
    float outWide = width * s;
    if (outWide < 10) {
        outWide = 10;
        s = 10 / width;
    }
    float outHigh = height * s;
    if (outHigh < 10) {
        outHigh = 10;
        s = 10 / height;
        outWide = width * s;
    }
    plan.outputWide = toPixels(outWide);
    plan.outputHigh = toPixels(outHigh);
    return plan;
}

RectF largestCentredCrop(float wide, float high, double ratioWide, double ratioHigh) {
    double width = wide;
    double height = wide * ratioHigh / ratioWide;
    if (height > high) {
        height = high;
        width = high * ratioWide / ratioHigh;
    }
    return {float((wide - width) / 2), float((high - height) / 2), float(width), float(height)};
}

std::optional<SizedCrop> exactSizeCrop(int wide, int high, int outWide, int outHigh) {
    const RectF largest = largestCentredCrop(float(wide), float(high), outWide, outHigh);
    const auto centred = [wide, high](double width, double height) {
        return RectF{float(std::floor((wide - width) / 2)), float(std::floor((high - height) / 2)),
                     float(width), float(height)};
    };
    // Rounding the height to whole pixels can put the planned height a pixel off; a region a
    // little narrower rounds the other way. Enlargements need the most tries.
    constexpr int kTries = 64;
    const int widest = std::max(1, int(std::floor(largest.width)));
    for (int width = widest; width >= std::max(1, widest - kTries); --width) {
        const double height =
            std::clamp(std::round(double(width) * outHigh / outWide), 1.0, double(high));
        const SizedCrop tried{centred(width, height), float(double(outWide) / width)};
        const CropPlan plan = planCrop(tried.rect, tried.scale);
        if (plan.outputWide == outWide && plan.outputHigh == outHigh) return tried;
    }
    return std::nullopt;
}

SizeF sizeToFit(SizeF size, SizeF box) {
    if (box.width >= size.width && box.height >= size.height) return size;
    const float aspect = aspectRatio(size.width, size.height);
    if (aspect <= aspectRatio(box.width, box.height)) return {box.height * aspect, box.height};
    return {box.width, box.width / aspect};
}

}  // namespace marigold
