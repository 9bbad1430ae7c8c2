#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

namespace {

constexpr size_t kRowAlignment = 64;

/** Rounds up to the row alignment. */
size_t aligned(size_t bytes) {
    return (bytes + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
}

}  // namespace

// Left uninitialised: every byte is written before it is read, and zeroing a large picture costs
// time.
OwnedYuvPicture::OwnedYuvPicture(int width, int height) {
    size_t const stride = aligned(2 * static_cast<size_t>(chromaSize(width)));
    size_t const lumaBytes = stride * static_cast<size_t>(height);
    size_t const chromaBytes = stride * static_cast<size_t>(chromaSize(height));
    mBytes.reset(new uint8_t[lumaBytes + chromaBytes]);
    mView.width = width;
    mView.height = height;
    mView.y = mBytes.get();
    mView.cb = mBytes.get() + lumaBytes;
    mView.cr = mView.cb + 1;
    mView.lumaStride = stride;
    mView.chromaStride = stride;
    mView.chromaStep = 2;
}

size_t rawRowBytes(RawLayout layout, int width) {
    size_t const pixels = static_cast<size_t>(width);
    switch (layout) {
        case RawLayout::Packed10:
            return (pixels * 10 + 7) / 8;
        case RawLayout::Words16:
            return pixels * 2;
        case RawLayout::Rgb48:
            return pixels * 6;
    }
    return 0;
}

YuvPicture cropped(YuvPicture const& picture, PixelRect const& rect) {
    size_t const column = static_cast<size_t>(rect.x / 2);
    size_t const row = static_cast<size_t>(rect.y / 2);
    YuvPicture part = picture;
    part.width = rect.width;
    part.height = rect.height;
    part.y += 2 * row * picture.lumaStride + 2 * column;
    part.cb += row * picture.chromaStride + column * picture.chromaStep;
    part.cr += row * picture.chromaStride + column * picture.chromaStep;
    return part;
}

}  // namespace quen::host::isp
