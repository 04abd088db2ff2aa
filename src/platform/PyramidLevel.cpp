#include "platform/PyramidLevel.h"

#include <cstdint>

namespace marigold {

namespace {

// Calls block(top-left, top-right, bottom-left, bottom-right, out) for every output pixel.
template <typename Block>
void forEachBlock(const uint8_t* src, int w, int h, uint8_t* dst, Block block) {
    const int ow = w / 2, oh = h / 2;
    const size_t stride = size_t(w) * 4;
    for (int y = 0; y < oh; ++y) {
        const uint8_t* r0 = src + size_t(2 * y) * stride;
        const uint8_t* r1 = r0 + stride;
        uint8_t* out = dst + size_t(y) * ow * 4;
        for (int x = 0; x < ow; ++x) {
            block(r0 + 8 * x, r0 + 8 * x + 4, r1 + 8 * x, r1 + 8 * x + 4, out + 4 * x);
        }
    }
}

void halveOpaque(const uint8_t* src, int w, int h, uint8_t* dst) {
    forEachBlock(
        src, w, h, dst,
        [](const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* d, uint8_t* out) {
            for (int i = 0; i < 4; ++i) out[i] = uint8_t((a[i] + b[i] + c[i] + d[i] + 2) >> 2);
        });
}

void halveWeighted(const uint8_t* src, int w, int h, uint8_t* dst) {
    forEachBlock(
        src, w, h, dst,
        [](const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* d, uint8_t* out) {
            const int alpha = a[3] + b[3] + c[3] + d[3];
            for (int i = 0; i < 3; ++i) {
                const int weighted = a[i] * a[3] + b[i] * b[3] + c[i] * c[3] + d[i] * d[3];
                out[i] = alpha ? uint8_t((weighted + alpha / 2) / alpha) : 0;
            }
            out[3] = uint8_t((alpha + 2) >> 2);
        });
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
