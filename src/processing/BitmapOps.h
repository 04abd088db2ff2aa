#pragma once

#include <QColor>
#include <QtGlobal>
#include <exception>
#include <optional>

#include "platform/Geometry.h"
#include "platform/Image.h"

namespace marigold::bitmap {

// The bitmap helpers the pipeline is built from. Rectangles are in the image's own
// coordinates with the origin at the lower-left (y up); this file is the one place where
// they meet libvips' pixel rows.

// libvips errors, failed allocations and failed threads become the project's "no result"
// here, in one place.
template <class Make>
Image guarded(const char* operation, Make make) {
    try {
        return make();
    } catch (const std::exception& error) {
        qWarning("marigold: %s failed: %s", operation, error.what());
    }
    return {};
}

// A new fully transparent w x h image (sizes truncated toward zero); null when either is 0.
Image withSize(SizeF size);

// The region `rect` of `image` stretched over a new `size` bitmap with Lanczos3 resampling
// (pixel centres aligned, edges extended); parts of `rect` outside the image contribute
// transparency (or `background`). Null for an empty size or one beyond kMaxOutputPixels.
Image croppingAndScaling(const Image& image, RectF rect, SizeF size,
                         std::optional<QColor> background = std::nullopt);
Image scaling(const Image& image, SizeF size, std::optional<QColor> background = std::nullopt);

// Luminance unsharp mask (radius about 1.7 px) adding `sharpness` times the luma detail
// (0.4 adds 40%); 0 or less returns the image unchanged.
Image sharpening(const Image& image, float sharpness);

// A frame `thickness` pixels wide drawn inside the edges; the size does not change.
Image bordered(const Image& image, int thickness, const QColor& color);

Image rotatingClockwise(const Image& image);
Image rotatingCounterClockwise(const Image& image);
Image rotating180(const Image& image);

// Pixel (x, y) counted from the first row of the bitmap data. With exactly 3 colour
// samples: rint(0.222 R + 0.707 G + 0.071 B); otherwise the first byte. 0 outside the bitmap.
int brightnessAt(const vips::VImage& bitmap, int x, int y);

}  // namespace marigold::bitmap
