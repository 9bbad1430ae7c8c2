#pragma once

#include <cstdint>

/**
 * The metadata tags that the library reads and writes. Items are int32 unless noted.
 */
namespace quen::tag {

// Set by the client, about the capture.
inline constexpr uint32_t currentMode = 0xc0030014;  // int64, bit set
inline constexpr uint32_t engineerMode = 0xc0030022;
inline constexpr uint32_t fusion = 0xc0030092;
inline constexpr uint32_t cameraId = 0xc0030099;
inline constexpr uint32_t isDualSlave = 0xc00300a0;           // QUEN_CONTROL_ISDUALSLAVE
inline constexpr uint32_t requestNo = 0xc00300a2;             // QUEN_CONTROL_REQUESTNO
inline constexpr uint32_t isFastDisplayRequest = 0xc00300a4;  // QUEN_CONTROL_ISFASTDISPLAYREQUEST
inline constexpr uint32_t currentUiMode = 0xc0080001;
inline constexpr uint32_t sceneMode = 0xc0090002;
inline constexpr uint32_t forDepth = 0xc00c000a;
inline constexpr uint32_t cropRegionSat =
        0xc00c0012;  // QUEN_PARAMETER_CROP_REGION_SAT, four int32: a rectangle
inline constexpr uint32_t bufferIndex3A = 0xc00c0018;
inline constexpr uint32_t feedbackTuningMode = 0xc00e0032;  // QUEN_FEEDBACK_TUNNINGMODE

// Set for the ISP.
inline constexpr uint32_t ispFeatureHint = 0x00010038;  // list of feature codes
inline constexpr uint32_t cropAppRegion =
        0x000d0000;  // MTK_SCALER_CROP_APP_REGION; raw: four int32; JPEG: one rectangle
inline constexpr uint32_t needMsnr = 0x800b000b;
inline constexpr uint32_t rawInputStage = 0x800b000c;
inline constexpr uint32_t tuningMode = 0x800b000e;
inline constexpr uint32_t rawBitDepth = 0x800b001b;
inline constexpr uint32_t ispCameraId = 0xc0000005;

// Tuning data carried in the metadata itself, as bytes.
inline constexpr uint32_t rawTuningData = 0x800b0016;
inline constexpr uint32_t yuvTuningData = 0x800b0017;

}  // namespace quen::tag
