#pragma once

#include <cstdint>

namespace android::hardware::graphics::common::V1_2 {

/** Pixel formats, as much as cameras use of them; the values are those of V1_0. */
enum class PixelFormat : int32_t {
    RGBA_8888 = 0x1,
    YCRCB_420_SP = 0x11,
    RAW16 = 0x20,
    BLOB = 0x21,
    IMPLEMENTATION_DEFINED = 0x22,
    YCBCR_420_888 = 0x23,
    RAW10 = 0x25,
    RAW12 = 0x26,
    YV12 = 0x32315659,
};

/** What a buffer is for, as bits; the CPU's two are numbers in their masks. */
enum class BufferUsage : uint64_t {
    CPU_READ_NEVER = 0,
    CPU_READ_RARELY = 2,
    CPU_READ_OFTEN = 3,
    CPU_READ_MASK = 0xF,
    CPU_WRITE_NEVER = 0 << 4,
    CPU_WRITE_RARELY = 2 << 4,
    CPU_WRITE_OFTEN = 3 << 4,
    CPU_WRITE_MASK = 0xF << 4,
    CAMERA_OUTPUT = 1 << 17,
    CAMERA_INPUT = 1 << 18,
};

}  // namespace android::hardware::graphics::common::V1_2
