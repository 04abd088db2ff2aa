#pragma once

#include <vips/vips8>

namespace marigold::bitmap {

// `region` (bytes) stretched to exactly outWide x outHigh, edges extended outward. Colour is
// weighted by alpha while resampling unless the region is opaque, so transparent pixels do
// not darken their neighbours.
vips::VImage stretching(const vips::VImage& region, int outWide, int outHigh, bool opaque);

}  // namespace marigold::bitmap
