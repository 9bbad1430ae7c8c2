#include "device_copy/ByteLoop.h"

namespace quenbench {

namespace {

uint8_t const* copyPlane(uint8_t const* source, size_t used, uint8_t* plane, size_t samples,
                         size_t stride, size_t rows) {
    for (size_t row = 0; row < rows; ++row) {
        for (size_t i = 0; i < samples; ++i) {
            plane[row * stride + i] = i < used ? *source++ : uint8_t{0};
        }
    }
    return source;
}

}  // namespace

void copyByteByByte(uint8_t const* source, size_t width, size_t height,
                    android_ycbcr const& target) {
    auto* const cb = static_cast<uint8_t*>(target.cb);
    auto* const cr = static_cast<uint8_t*>(target.cr);
    source = copyPlane(source, width, static_cast<uint8_t*>(target.y), target.ystride,
                       target.ystride, height);
    size_t const used = width / 2;
    size_t const samples = target.ystride / 2;
    size_t const rows = height / 2;
    if (target.chroma_step == 1) {
        source = copyPlane(source, used, cb, samples, target.cstride, rows);
        copyPlane(source, used, cr, samples, target.cstride, rows);
        return;
    }
    for (size_t row = 0; row < rows; ++row) {
        for (size_t i = 0; i < samples; ++i) {
            size_t const place = row * target.cstride + i * target.chroma_step;
            cr[place] = i < used ? *source++ : uint8_t{0};
            cb[place] = i < used ? *source++ : uint8_t{0};
        }
    }
}

}  // namespace quenbench
