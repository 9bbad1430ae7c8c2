#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/isp/buffers/Picture.h"

namespace quen::host::isp {

/** Side of an MCU of a 4:2:0 JPEG, in pixels. */
constexpr int kMcuSide = 16;

/**
 * Encodes pictures to complete JPEG files with a restart marker after every MCU row, so that the
 * files of slices of one picture can be joined. Not thread-safe.
 */
class JpegSliceEncoder {
  public:
    /** @param width of the pictures */
    explicit JpegSliceEncoder(int width);

    /**
     * @param exif content of the APP1 segment; none when empty
     * @return size of the file; 0 when it does not fit into `capacity`, or cannot be encoded
     */
    size_t encode(YuvPicture const& picture, int quality, std::vector<uint8_t> const& exif,
                  uint8_t* target, size_t capacity);

  private:
    void fillMcuRow(YuvPicture const& picture, int firstRow);

    int mPaddedWidth;                   ///< pixels, a multiple of kMcuSide
    std::unique_ptr<uint8_t[]> mBytes;  ///< one MCU row: luma, cb, cr
    uint8_t* mLumaRows[kMcuSide];       ///< in mBytes, or in the picture
    uint8_t* mCbRows[kMcuSide / 2];
    uint8_t* mCrRows[kMcuSide / 2];
};

}  // namespace quen::host::isp
