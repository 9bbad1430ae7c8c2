#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace quen::host::isp {

/** A rectangle of pixels. */
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

inline bool operator==(PixelRect const& a, PixelRect const& b) {
    return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

/** Width or height of a 4:2:0 chroma plane; rounded up, so that odd pictures keep their edge. */
constexpr int chromaSize(int lumaSize) {
    return (lumaSize + 1) / 2;
}

/**
 * A full-range BT.601 4:2:0 picture in memory, chroma sited in the middle of its four luma samples.
 * Owns nothing.
 *
 * Chroma is either planar (chromaStep 1) or interleaved (chromaStep 2, cb and cr one byte apart).
 */
struct YuvPicture {
    int width = 0;
    int height = 0;
    uint8_t* y = nullptr;
    uint8_t* cb = nullptr;
    uint8_t* cr = nullptr;
    size_t lumaStride = 0;
    size_t chromaStride = 0;
    size_t chromaStep = 0;

    bool isPlanar() const { return chromaStep == 1; }
    bool isNv12() const { return chromaStep == 2 && cr == cb + 1; }
    bool isNv21() const { return chromaStep == 2 && cb == cr + 1; }
};

/** An NV12 picture that owns its memory, uninitialised. */
class OwnedYuvPicture {
  public:
    OwnedYuvPicture(int width, int height);

    YuvPicture const& view() const { return mView; }

  private:
    std::unique_ptr<uint8_t[]> mBytes;
    YuvPicture mView;
};

/** How the samples of a raw image lie in memory. */
enum class RawLayout {
    Packed10,  ///< Bayer, four 10-bit samples in five bytes: the high bytes, then the low bits
    Words16,   ///< Bayer, little-endian words
    Rgb48,     ///< linear RGB, three little-endian words a pixel
};

/** A raw image in memory. Owns nothing. */
struct RawPicture {
    int width = 0;   ///< pixels
    int height = 0;  ///< pixels
    uint8_t const* data = nullptr;
    size_t stride = 0;  ///< bytes from row to row
    RawLayout layout = RawLayout::Words16;
    int bits = 10;  ///< depth of a sample; larger words are clipped to the maximum

    bool isBayer() const { return layout != RawLayout::Rgb48; }
};

/** Bytes of one row of a raw image, without padding. */
size_t rawRowBytes(RawLayout layout, int width);

/** The part of a 4:2:0 picture inside a rectangle, whose corner is moved to even pixels. */
YuvPicture cropped(YuvPicture const& picture, PixelRect const& rect);

}  // namespace quen::host::isp
