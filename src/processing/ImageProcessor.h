#pragma once

#include <QColor>

#include "platform/Geometry.h"
#include "platform/Image.h"
#include "processing/CropGeometry.h"

namespace marigold {

// The one image-operation object. Every operation is a pure function of its arguments and
// of the border fields; none changes its argument.
class ImageProcessor {
public:
    void setBorderOn(bool on) { _borderOn = on; }
    void setBorderThickness(int thickness) { _borderThickness = thickness; }
    void setBorderColor(const QColor& color) { _borderColor = color; }
    // Stored only: crop and thumbnail always resample at high quality.
    void setInterpolation(int level) { _interpolation = level; }

    // Largest pixel size the fast path renders; the result keeps the logical size of the
    // whole output but holds at most this many pixels (it is only looked at, never saved).
    void setFastPreviewLimit(int maxPixelsWide, int maxPixelsHigh);

    // `rect` is in the source's own coordinates (points == pixels, origin lower-left, y up).
    // Returns the cropped, scaled, optionally sharpened and bordered output, or a null image
    // when it would have no pixels. No side shorter than 10 pixels.
    Image cropImage(const Image& image, RectF rect, float scale, float sharpness, bool fast) const;

    // No larger than `box`, keeping the aspect; the very same image when it already fits.
    static Image scaleImage(const Image& image, SizeF box);

    // Turned by `degrees` (counter-clockwise) onto a canvas just large enough, the corners
    // transparent; whole quarter turns move pixels without resampling. Null when the canvas
    // would be larger than kMaxOutputPixels.
    static Image rotateImage(const Image& image, double degrees);
    // The same picture, shown sooner: for a large picture the turn of its half-size copy is
    // ready at once and the full one is made on another thread, as a large file is opened.
    static Image rotateImageShownFirst(const Image& image, double degrees);
    static Image flipImageHorizontal(const Image& image);
    static Image flipImageVertical(const Image& image);
    // Opaque grey: rint(0.222 R + 0.707 G + 0.071 B) in double precision.
    static Image desaturate(const Image& image);

private:
    Image _fullOutput(const Image& image, const CropPlan& plan, float sharpness) const;
    Image _fastOutput(const Image& image, const CropPlan& plan) const;
    Image _framed(const Image& output, int thickness) const;

    bool _borderOn = false;
    int _borderThickness = 0;
    QColor _borderColor;
    int _interpolation = 0;
    int _fastLimitWide = 1000;
    int _fastLimitHigh = 1000;
};

}  // namespace marigold
