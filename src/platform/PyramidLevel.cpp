#include "platform/PyramidLevel.h"

#include <cstdint>

namespace marigold {

namespace {

void halveOpaque(const uint8_t* src, int w, int h, uint8_t* dst) {
    const int ow = w / 2, oh = h / 2;
    const size_t stride = size_t(w) * 4;
    for (int y = 0; y < oh; ++y) {
        const uint8_t* r0 = src + size_t(2 * y) * stride;
        const uint8_t* r1 = r0 + stride;
        uint8_t* out = dst + size_t(y) * ow * 4;
        for (int x = 0; x < ow * 4; x += 4) {
            const int i = 2 * x;
            for (int c = 0; c < 4; ++c) {
                out[x + c] = uint8_t((r0[i + c] + r0[i + 4 + c] + r1[i + c] + r1[i + 4 + c] + 2) >> 2);
            }
        }
    }
}

void halveWeighted(const uint8_t* src, int w, int h, uint8_t* dst) {
    const int ow = w / 2, oh = h / 2;
    const size_t stride = size_t(w) * 4;
    for (int y = 0; y < oh; ++y) {
        const uint8_t* r0 = src + size_t(2 * y) * stride;
        const uint8_t* r1 = r0 + stride;
        uint8_t* out = dst + size_t(y) * ow * 4;
        for (int x = 0; x < ow; ++x) {
            const uint8_t* p[4] = {r0 + 8 * x, r0 + 8 * x + 4, r1 + 8 * x, r1 + 8 * x + 4};
            const int alpha = p[0][3] + p[1][3] + p[2][3] + p[3][3];
            for (int c = 0; c < 3; ++c) {
                const int weighted =
                    p[0][c] * p[0][3] + p[1][c] * p[1][3] + p[2][c] * p[2][3] + p[3][c] * p[3][3];
                out[4 * x + c] = alpha ? uint8_t((weighted + alpha / 2) / alpha) : 0;
            }
            out[4 * x + 3] = uint8_t((alpha + 2) >> 2);
        }
    }
}

}  // namespace

vips::VImage halveRgba(const vips::VImage& rgba, bool opaque) {
    const int w = rgba.width(), h = rgba.height();
    const int ow = w / 2, oh = h / 2;
    VipsImage* out = vips_image_new_memory();
    vips_image_init_fields(out, ow, oh, 4, VIPS_FORMAT_UCHAR, VIPS_CODING_NONE,
                           VIPS_INTERPRETATION_sRGB, 1.0, 1.0);
    if (vips_image_write_prepare(out)) {
        g_object_unref(out);
        throw vips::VError();
    }
    const auto* src = static_cast<const uint8_t*>(vips_image_get_data(rgba.get_image()));
    auto* dst = reinterpret_cast<uint8_t*>(VIPS_IMAGE_ADDR(out, 0, 0));
    if (opaque) {
        halveOpaque(src, w, h, dst);
    } else {
        halveWeighted(src, w, h, dst);
    }
    return vips::VImage(out);
}

}  // namespace marigold
