#include "processing/ImageProcessor.h"

#include <QDebug>
#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

#include "processing/BitmapOps.h"

namespace marigold {

namespace {

int pixelsAtLeast(double length) {
    return int(std::clamp(std::ceil(length), 1.0, double(std::numeric_limits<int>::max())));
}

}  // namespace

void ImageProcessor::setFastPreviewLimit(int maxPixelsWide, int maxPixelsHigh) {
    _fastLimitWide = std::max(maxPixelsWide, 1);
    _fastLimitHigh = std::max(maxPixelsHigh, 1);
}

Image ImageProcessor::cropImage(const Image& image, RectF rect, float scale, float sharpness,
                                bool fast) const {
    const CropPlan plan = planCrop(rect, scale);
    if (image.isNull() || plan.isEmpty()) return {};
    try {
        return fast ? _fastOutput(image, plan) : _fullOutput(image, plan, sharpness);
    } catch (const std::exception& error) {
        // Only building the source's reduced copies can throw; the bitmap helpers do not.
        qWarning("marigold: preview failed: %s", error.what());
        return {};
    }
}

// Always from full resolution: a reduced copy would shift the output by up to half a pixel
// of that copy, and reducing costs a bounded amount per source pixel anyway.
Image ImageProcessor::_fullOutput(const Image& image, const CropPlan& plan, float sharpness) const {
    const SizeF size{float(plan.outputWide), float(plan.outputHigh)};
    const Image output = bitmap::croppingAndScaling(image, plan.rounded, size);
    return _framed(bitmap::sharpening(output, sharpness), _borderThickness);
}

// Draws at most the fast-preview limit, from the smallest reduced copy of the source in which
// the selection still has as many pixels as are drawn, and labels the result with the full
// output size. Without a reduction this equals the full path minus sharpening.
Image ImageProcessor::_fastOutput(const Image& image, const CropPlan& plan) const {
    const double fit = std::min(
        {1.0, double(_fastLimitWide) / plan.outputWide, double(_fastLimitHigh) / plan.outputHigh});
    const int wide = std::max(1, int(std::lround(plan.outputWide * fit)));
    const int high = std::max(1, int(std::lround(plan.outputHigh * fit)));
    const Image level = image.levelWithAtLeast(
        pixelsAtLeast(wide * double(image.size().width) / plan.rounded.width),
        pixelsAtLeast(high * double(image.size().height) / plan.rounded.height));
    const Image output =
        bitmap::croppingAndScaling(level, plan.rounded, {float(wide), float(high)});
    if (fit >= 1) return _framed(output, _borderThickness);
    // The border keeps its share of the picture at the reduced size.
    const int thickness =
        _borderThickness > 0 ? std::max(1, int(std::lround(_borderThickness * fit))) : 0;
    return _framed(output, thickness).withSize({float(plan.outputWide), float(plan.outputHigh)});
}

Image ImageProcessor::_framed(const Image& output, int thickness) const {
    if (!_borderOn || thickness <= 0) return output;
    return bitmap::bordered(output, thickness, _borderColor);
}

Image ImageProcessor::scaleImage(const Image& image, SizeF box) {
    const SizeF size = image.size();
    if (image.isNull() || (box.width >= size.width && box.height >= size.height)) return image;
    const SizeF fitted = sizeToFit(size, box);
    if (!(fitted.width > 0) || !(fitted.height > 0)) return {};
    // The pixels are the fitted size rounded; the image keeps the exact fitted size.
    const int wide = std::max(1, int(std::lround(fitted.width)));
    const int high = std::max(1, int(std::lround(fitted.height)));
    try {
        // A reduced copy with twice the pixels needed gives the same Lanczos result, cheaply.
        const Image level = image.levelWithAtLeast(2 * wide, 2 * high);
        return bitmap::scaling(level, {float(wide), float(high)}).withSize(fitted);
    } catch (const std::exception& error) {
        qWarning("marigold: thumbnail failed: %s", error.what());
        return {};
    }
}

}  // namespace marigold
