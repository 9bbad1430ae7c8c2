#include "outputs/YuvRows.h"

#include <algorithm>
#include <limits>

namespace quen::reprocess {
namespace {

constexpr int kChromaSteps = 16;  // of an interpolated sample, in one of the plane

/** Rounds a sample to its type. */
template <typename Sample>
Sample rounded(float value) {
    constexpr float kMost = std::numeric_limits<Sample>::max();
    return static_cast<Sample>(std::min(std::max(value, 0.0f), kMost) + 0.5f);
}

/** The matrix of JPEG's full-range YUV. */
template <typename Sample>
void convert(uint8_t const* luma, uint16_t const* cb, uint16_t const* cr, uint32_t width,
             Sample* out) {
    constexpr float kScale = std::numeric_limits<Sample>::max() / 255.0f;
    constexpr float kChroma = kScale / kChromaSteps;
    for (uint32_t x = 0; x < width; ++x, out += 3) {
        float const y = kScale * static_cast<float>(luma[x]);
        float const blue = kChroma * static_cast<float>(int{cb[x]} - 128 * kChromaSteps);
        float const red = kChroma * static_cast<float>(int{cr[x]} - 128 * kChromaSteps);
        out[0] = rounded<Sample>(y + 1.402f * red);
        out[1] = rounded<Sample>(y - 0.344136f * blue - 0.714136f * red);
        out[2] = rounded<Sample>(y + 1.772f * blue);
    }
}

}  // namespace

YuvRows::YuvRows(uint8_t const* planes, uint32_t width, uint32_t height, int bits)
    : mPlanes(planes),
      mWidth(width),
      mHeight(height),
      mBits(bits),
      mBetween(width / 2),
      mCb(width),
      mCr(width) {}

void YuvRows::read(uint32_t row, uint8_t* out) {
    size_t const pixels = size_t{mWidth} * mHeight;
    interpolate(mPlanes + pixels, row, mCb);
    interpolate(mPlanes + pixels * 5 / 4, row, mCr);
    uint8_t const* const luma = mPlanes + size_t{row} * mWidth;
    if (mBits == 8) {
        convert(luma, mCb.data(), mCr.data(), mWidth, out);
    } else {
        convert(luma, mCb.data(), mCr.data(), mWidth, reinterpret_cast<uint16_t*>(out));
    }
}

/** Three parts of the nearest sample and one of the next, down and across. */
void YuvRows::interpolate(uint8_t const* plane, uint32_t row, std::vector<uint16_t>& out) {
    uint32_t const columns = mWidth / 2;
    uint32_t const near = row / 2;
    uint32_t const last = mHeight / 2 - 1;
    uint32_t const next = row % 2 == 0 ? near - (near > 0 ? 1 : 0) : std::min(near + 1, last);
    uint8_t const* const nearRow = plane + size_t{near} * columns;
    uint8_t const* const nextRow = plane + size_t{next} * columns;
    uint16_t* const between = mBetween.data();
    for (uint32_t x = 0; x < columns; ++x) {
        between[x] = static_cast<uint16_t>(3 * nearRow[x] + nextRow[x]);
    }
    out[0] = static_cast<uint16_t>(4 * between[0]);
    for (uint32_t x = 0; x + 1 < columns; ++x) {
        out[2 * x + 1] = static_cast<uint16_t>(3 * between[x] + between[x + 1]);
        out[2 * x + 2] = static_cast<uint16_t>(between[x] + 3 * between[x + 1]);
    }
    out[mWidth - 1] = static_cast<uint16_t>(4 * between[columns - 1]);
}

}  // namespace quen::reprocess
