#pragma once

#include <cstdint>

namespace android::hardware::graphics::common::V1_0 {

/** Pixel formats, as much as cameras use of them. */
enum class PixelFormat : int32_t {
    RGBA_8888 = 0x1,
    YCRCB_420_SP = 0x11,  ///< NV21
    RAW16 = 0x20,
    BLOB = 0x21,  ///< bytes: width is their number, height 1
    IMPLEMENTATION_DEFINED = 0x22,
    YCBCR_420_888 = 0x23,
    RAW10 = 0x25,
    RAW12 = 0x26,
    YV12 = 0x32315659,
};

}  // namespace android::hardware::graphics::common::V1_0
