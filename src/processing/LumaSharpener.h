#pragma once

#include <vips/vips8>

namespace marigold::bitmap {

// An unsharp mask on luma only: the detail (luma minus its gaussian blur, sigma 1.7 px),
// times the sharpness, is added equally to R, G and B, so hue is kept and alpha untouched.
// Transparent images are sharpened premultiplied so their empty pixels add no dark halo.
// Written out rather than chained from libvips arithmetic, which took several times longer.
vips::VImage lumaSharpening(const vips::VImage& pixels, bool opaque, float sharpness);

}  // namespace marigold::bitmap
