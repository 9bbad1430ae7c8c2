#pragma once

#include <cstdint>

namespace quentest {

// Android HAL pixel formats.
inline constexpr int32_t kNv21 = 0x11;
inline constexpr int32_t kRaw16 = 0x20;
inline constexpr int32_t kBlob = 0x21;
inline constexpr int32_t kPrivate = 0x22;  // what the platform chooses
inline constexpr int32_t kYuv = 0x23;
inline constexpr int32_t kRaw10 = 0x25;

/** Bytes of a tuning-data buffer. */
inline constexpr uint32_t kTuningBytes = 0x1fa400;

}  // namespace quentest
