#include "support/TestImages.h"

#include <QDir>

namespace marigold::test {

Image gradientImage(int w, int h) {
    vips::VImage xy = vips::VImage::xyz(w, h);
    vips::VImage x = xy[0], y = xy[1];
    vips::VImage rgb = vips::VImage::bandjoin({x % 256, y % 256, (x + y) % 256, x * 0 + 255});
    return Image::fromRgba(rgb.cast(VIPS_FORMAT_UCHAR)
                               .copy(vips::VImage::option()->set(
                                   "interpretation", VIPS_INTERPRETATION_sRGB)),
                           true);
}

Rgba pixelAt(const Image& image, int x, int y) {
    const std::vector<double> p = image.pixels().getpoint(x, y);
    return {int(p[0]), int(p[1]), int(p[2]), int(p[3])};
}

vips::VImage difference(const vips::VImage& a, const vips::VImage& b) {
    return (a.cast(VIPS_FORMAT_INT) - b.cast(VIPS_FORMAT_INT)).abs();
}

Image photoLikeImage(int w, int h) {
    vips::VImage xy = vips::VImage::xyz(w, h);
    vips::VImage x = xy[0] * (1.0 / w), y = xy[1] * (1.0 / h);
    // Smooth sky-to-ground shading, a sinusoidal texture and fixed-seed noise for detail.
    vips::VImage noise = vips::VImage::gaussnoise(
        w, h, vips::VImage::option()->set("sigma", 18.0)->set("mean", 0.0)->set("seed", 7));
    vips::VImage texture = ((xy[0] * 0.21).sin() + (xy[1] * 0.17).cos()) * 20;
    vips::VImage r = x * 120 + y * 60 + 40 + texture + noise;
    vips::VImage g = (1 - y) * 140 + 50 + texture * 0.5 + noise;
    vips::VImage b = (1 - y) * 200 + x * 30 + noise * 0.7;
    vips::VImage rgb = vips::VImage::bandjoin({r, g, b, r * 0 + 255});
    return Image::fromRgba(rgb.cast(VIPS_FORMAT_UCHAR)
                               .copy(vips::VImage::option()->set(
                                   "interpretation", VIPS_INTERPRETATION_sRGB)),
                           true);
}

QString writeJpeg(const Image& image, const QString& dir, const QString& name) {
    const QString path = QDir(dir).filePath(name);
    image.pixels().extract_band(0, vips::VImage::option()->set("n", 3))
        .jpegsave(path.toLocal8Bit().constData(), vips::VImage::option()->set("Q", 90));
    return path;
}

}  // namespace marigold::test
