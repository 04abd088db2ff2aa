#pragma once

#include <future>
#include <memory>
#include <vips/vips8>

#include <QImage>

#include "platform/Geometry.h"

namespace marigold {

// The one image type: 8-bit RGBA (straight alpha), sRGB, pixels held in memory by libvips.
// Images never change; operations return new ones, so copies share pixels freely.
//
// Like the document model's images, an Image has a size in points that is normally its
// pixel size; a reduced preview keeps the size of the image it stands for while holding
// fewer pixels.
class Image {
public:
    Image() = default;

    // Takes any libvips image, converts it to 8-bit RGBA sRGB and renders it into memory.
    static Image fromVips(const vips::VImage& any);
    // An image whose full-resolution pixels (already normalised) are still being decoded on
    // another thread; `halfLevel` is its first reduced level, usable at once. Everything
    // but reading the full-resolution pixels proceeds without waiting for the decode.
    static Image fromPendingDecode(int pixelsWide, int pixelsHigh,
                                   std::shared_future<vips::VImage> pending,
                                   const vips::VImage& halfLevel, bool opaque);
    // Any libvips image as 8-bit RGBA sRGB pixels in memory; `opaque` tells whether the
    // source had no alpha.
    static vips::VImage normalisedPixels(const vips::VImage& any, bool* opaque);
    // Pixels already RGBA uchar sRGB (as the processing operations make them); rendered
    // into memory. Size in points = pixel size.
    static Image fromRgba(const vips::VImage& rgba, bool opaque);
    // A copy of a Qt image (any format, converted to sRGB when it declares another colour
    // space). Size in points = pixel size, whatever resolution the QImage declares. Opaque
    // unless some pixel actually has alpha below 255.
    static Image fromQImage(const QImage& image);

    bool isNull() const { return !_data; }
    explicit operator bool() const { return !isNull(); }

    int pixelsWide() const;
    int pixelsHigh() const;
    SizeF size() const;
    Image withSize(SizeF size) const;
    // False when some pixel may be transparent; resampling must then weight by alpha.
    bool isOpaque() const;

    // The RGBA uchar sRGB pixels, y-down as libvips keeps them (waits for a pending decode).
    const vips::VImage& pixels() const;
    QImage toQImage() const;

    // The smallest reduced copy (halving per level, level 0 = this image) that still has at
    // least `minPixelsWide` x `minPixelsHigh` pixels; levels are made on first use and shared
    // by all copies of this image.
    Image levelWithAtLeast(int minPixelsWide, int minPixelsHigh) const;
    // How many times smaller the pixels of `levelWithAtLeast` are than this image's.
    int levelFactorFor(int minPixelsWide, int minPixelsHigh) const;

private:
    struct Source;
    struct Data;
    explicit Image(std::shared_ptr<Data> data) : _data(std::move(data)) {}
    std::shared_ptr<Data> _data;
};

}  // namespace marigold
