#include "processing/RotationGeometry.h"

#include <cmath>
#include <numbers>

namespace marigold {

RotatedCanvas rotatedCanvas(SizeF image, double degrees) {
    const double w = image.width, h = image.height, d = degrees;
    const auto trig = [](double a, double* c, double* s) {
        const double radians = std::numbers::pi * a / 180;
        *c = std::cos(radians);
        *s = std::sin(radians);
    };
    double c = 0, s = 0;
    const auto canvas = [](double width, double height, double tx, double ty) {
        return RotatedCanvas{{float(width), float(height)}, {float(tx), float(ty)}};
    };
    if (d >= 0 && d <= 90) {
        trig(d, &c, &s);
        return canvas(w * c + h * s, w * s + h * c, h * s * c, -h * s * s);
    }
    if (d >= 90 && d <= 180) {
        trig(d - 90, &c, &s);
        return canvas(w * s + h * c, w * c + h * s, -w * s * s, -(w * c * s + h));
    }
    if (d >= -90 && d <= 0) {
        trig(-d, &c, &s);
        return canvas(w * c + h * s, w * s + h * c, -w * s * s, w * s * c);
    }
    trig(-90 - d, &c, &s);
    return canvas(w * s + h * c, w * c + h * s, -w - h * s * c, -h * s * s);
}

bool isQuarterTurn(double degrees) {
    return std::isfinite(degrees) && std::fmod(degrees, 90.0) == 0.0;
}

}  // namespace marigold
