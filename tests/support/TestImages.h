#pragma once

#include <QString>

#include "platform/Image.h"

namespace marigold::test {

// A w x h image whose pixel (x, y) (y-down, as stored) is
// (x % 256, y % 256, (x + y) % 256, 255): every pixel tells where it came from.
Image gradientImage(int w, int h);

// RGBA of pixel (x, y), y-down.
struct Rgba {
    int r, g, b, a;
    friend bool operator==(const Rgba&, const Rgba&) = default;
};
Rgba pixelAt(const Image& image, int x, int y);

// |a - b| per sample, as ints.
vips::VImage difference(const vips::VImage& a, const vips::VImage& b);

// A photograph-like test picture (smooth shading plus fine detail), deterministic.
Image photoLikeImage(int w, int h);

// Writes the image as a JPEG (quality 90) and returns the path inside `dir`.
QString writeJpeg(const Image& image, const QString& dir, const QString& name);

}  // namespace marigold::test
