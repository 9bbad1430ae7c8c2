#pragma once

#include <cstdint>

/** The metadata tags that the ISP reads or writes. */
namespace quen::host::isp::tag {

constexpr uint32_t kJpegOrientation = 0x00070003;  ///< int32, degrees
constexpr uint32_t kJpegQuality = 0x00070004;      ///< byte
constexpr uint32_t kCropRegion = 0x000d0000;       ///< int32 x 4: x, y, width, height
constexpr uint32_t kTuningMode = 0x800b000e;       ///< int32
constexpr uint32_t kRawBitDepth = 0x800b001b;      ///< int32

}  // namespace quen::host::isp::tag
