#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <system/graphics.h>

namespace quen {

/** The two things a device can be configured for, as texts: they are compared and logged as such.
 */
inline constexpr char kStageRawToYuv[] = "RAW2YUV";
inline constexpr char kStageYuvToJpeg[] = "YUV2JPEG";

/** Bytes of a device object's stage text. */
inline constexpr size_t kStageBytes = 10;

/** The stage that a first output of a format asks for. */
inline char const* stageOf(int32_t firstOutputFormat) {
    return firstOutputFormat == HAL_PIXEL_FORMAT_BLOB ? kStageYuvToJpeg : kStageRawToYuv;
}

inline bool isRawToYuv(char const* stage) {
    return strcmp(stage, kStageRawToYuv) == 0;
}

inline bool isYuvToJpeg(char const* stage) {
    return strcmp(stage, kStageYuvToJpeg) == 0;
}

}  // namespace quen
