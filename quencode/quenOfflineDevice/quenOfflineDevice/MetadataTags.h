#pragma once

#include <cstdint>

/**
 * The metadata tags that the library reads and writes. Items are int32 where nothing else is said.
 */
namespace tag {

// What the client tells of a capture.
inline constexpr uint32_t kCurrentMode = 0xc0030014;  // int64, bit set
inline constexpr uint32_t kEngineerMode = 0xc0030022;
inline constexpr uint32_t kFusion = 0xc0030092;
inline constexpr uint32_t kCameraId = 0xc0030099;
inline constexpr uint32_t kIsDualSlave = 0xc00300a0;
inline constexpr uint32_t kRequestNo = 0xc00300a2;
inline constexpr uint32_t kIsFastDisplayRequest = 0xc00300a4;
inline constexpr uint32_t kCurrentUiMode = 0xc0080001;
inline constexpr uint32_t kSceneMode = 0xc0090002;
inline constexpr uint32_t kForDepth = 0xc00c000a;
inline constexpr uint32_t kCropRegionSat = 0xc00c0012;  // four int32: a rectangle
inline constexpr uint32_t k3ABufferIndex = 0xc00c0018;
inline constexpr uint32_t kFeedbackTuningMode = 0xc00e0032;

// What the ISP is told.
inline constexpr uint32_t kIspFeatureHint = 0x00010038;  // list of feature codes
inline constexpr uint32_t kCropAppRegion = 0x000d0000;   // raw: four int32; JPEG: one rectangle
inline constexpr uint32_t kNeedMsnr = 0x800b000b;
inline constexpr uint32_t kRawInputStage = 0x800b000c;
inline constexpr uint32_t kTuningMode = 0x800b000e;
inline constexpr uint32_t kRawBitDepth = 0x800b001b;
inline constexpr uint32_t kIspCameraId = 0xc0000005;

// Tuning data carried in the metadata itself, as bytes.
inline constexpr uint32_t kRawTuningData = 0x800b0016;
inline constexpr uint32_t kYuvTuningData = 0x800b0017;

}  // namespace tag
