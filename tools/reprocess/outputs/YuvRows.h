#pragma once

#include <vector>

#include "outputs/PixelRows.h"

namespace quen::reprocess {

/**
 * The rows of a full-range I420 picture in RGB. Colours between the chroma samples, which lie in
 * the middle of 2 x 2 pixels, are interpolated as decoders of JPEG do. Samples are rounded once,
 * to the bits asked for: those of 16 bits keep what interpolation and matrix add to the 8 of YUV.
 * Not thread-safe.
 */
class YuvRows final : public PixelRows {
  public:
    /**
     * @param planes packed; must outlive the object
     * @param width, height even
     * @param bits 8 or 16
     */
    YuvRows(uint8_t const* planes, uint32_t width, uint32_t height, int bits);

    uint32_t width() const override { return mWidth; }
    uint32_t height() const override { return mHeight; }
    int bits() const override { return mBits; }
    void read(uint32_t row, uint8_t* out) override;

  private:
    void interpolate(uint8_t const* plane, uint32_t row, std::vector<uint16_t>& out);

    uint8_t const* const mPlanes;
    uint32_t const mWidth;
    uint32_t const mHeight;
    int const mBits;
    std::vector<uint16_t> mBetween;  // a row of chroma, between two rows of its plane
    std::vector<uint16_t> mCb;       // of each pixel of a row, 16 times as fine
    std::vector<uint16_t> mCr;
};

}  // namespace quen::reprocess
