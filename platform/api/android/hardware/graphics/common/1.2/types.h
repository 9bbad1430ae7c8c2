#pragma once

#include <cstdint>

namespace android::hardware::graphics::common::V1_2 {

/** Pixel formats; the values of V1_0 are the same. */
enum class PixelFormat : int32_t {
    RGBA_8888 = 0x1,
    RGBX_8888 = 0x2,
    RGB_888 = 0x3,
    RGB_565 = 0x4,
    BGRA_8888 = 0x5,
    YCBCR_422_SP = 0x10,
    YCRCB_420_SP = 0x11,  ///< NV21
    YCBCR_422_I = 0x14,
    RGBA_FP16 = 0x16,
    RAW16 = 0x20,
    BLOB = 0x21,  ///< bytes: `width` of them, height 1
    IMPLEMENTATION_DEFINED = 0x22,
    YCBCR_420_888 = 0x23,
    RAW_OPAQUE = 0x24,
    RAW10 = 0x25,
    RAW12 = 0x26,
    RGBA_1010102 = 0x2B,
    DEPTH_16 = 0x30,
    DEPTH_24 = 0x31,
    DEPTH_24_STENCIL_8 = 0x32,
    DEPTH_32F = 0x33,
    DEPTH_32F_STENCIL_8 = 0x34,
    STENCIL_8 = 0x35,
    YCBCR_P010 = 0x36,
    HSV_888 = 0x37,
    Y8 = 0x20203859,
    Y16 = 0x20363159,
    YV12 = 0x32315659,
};

/** Uses of a buffer, as bits; those of the CPU are numbers within their masks. */
enum class BufferUsage : uint64_t {
    CPU_READ_MASK = 0xF,
    CPU_READ_NEVER = 0,
    CPU_READ_RARELY = 2,
    CPU_READ_OFTEN = 3,
    CPU_WRITE_MASK = 0xF << 4,
    CPU_WRITE_NEVER = 0 << 4,
    CPU_WRITE_RARELY = 2 << 4,
    CPU_WRITE_OFTEN = 3 << 4,
    GPU_TEXTURE = 1 << 8,
    GPU_RENDER_TARGET = 1 << 9,
    COMPOSER_OVERLAY = 1 << 11,
    COMPOSER_CLIENT_TARGET = 1 << 12,
    PROTECTED = 1 << 14,
    COMPOSER_CURSOR = 1 << 15,
    VIDEO_ENCODER = 1 << 16,
    CAMERA_OUTPUT = 1 << 17,
    CAMERA_INPUT = 1 << 18,
    RENDERSCRIPT = 1 << 20,
    VIDEO_DECODER = 1 << 22,
    SENSOR_DIRECT_DATA = 1 << 23,
    GPU_DATA_BUFFER = 1 << 24,
    GPU_CUBE_MAP = 1 << 25,
    GPU_MIPMAP_COMPLETE = 1 << 26,
    HW_IMAGE_ENCODER = 1 << 27,
    VENDOR_MASK = 0xFull << 28,
    VENDOR_MASK_HI = 0xFFFFull << 48,
};

// Combinations are plain bits, as hidl_bitfield has them.
constexpr uint64_t operator|(BufferUsage left, BufferUsage right) {
    return static_cast<uint64_t>(left) | static_cast<uint64_t>(right);
}
constexpr uint64_t operator|(BufferUsage left, uint64_t right) {
    return static_cast<uint64_t>(left) | static_cast<uint64_t>(right);
}
constexpr uint64_t operator|(uint64_t left, BufferUsage right) {
    return static_cast<uint64_t>(left) | static_cast<uint64_t>(right);
}
constexpr uint64_t& operator|=(uint64_t& bits, BufferUsage usage) {
    return bits = bits | usage;
}
constexpr uint64_t operator&(BufferUsage left, BufferUsage right) {
    return static_cast<uint64_t>(left) & static_cast<uint64_t>(right);
}
constexpr uint64_t operator&(BufferUsage left, uint64_t right) {
    return static_cast<uint64_t>(left) & static_cast<uint64_t>(right);
}
constexpr uint64_t operator&(uint64_t left, BufferUsage right) {
    return static_cast<uint64_t>(left) & static_cast<uint64_t>(right);
}
constexpr uint64_t& operator&=(uint64_t& bits, BufferUsage usage) {
    return bits = bits & usage;
}

}  // namespace android::hardware::graphics::common::V1_2
