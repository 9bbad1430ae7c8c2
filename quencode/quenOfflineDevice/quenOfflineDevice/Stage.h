#pragma once

#include <cstddef>

/** The two things a device can be configured for, as texts: they are compared and logged as such.
 */
inline constexpr char kStageRawToYuv[] = "RAW2YUV";
inline constexpr char kStageYuvToJpeg[] = "YUV2JPEG";

/** Bytes of a device object's stage text. */
inline constexpr size_t kStageBytes = 10;
