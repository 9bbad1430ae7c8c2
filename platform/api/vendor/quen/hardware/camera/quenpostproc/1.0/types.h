#pragma once

#include <cstdint>

namespace vendor::quen::hardware::camera::quenpostproc::V1_0 {

/** Status of a request, as reported to its client. */
enum class Status : uint32_t {
    OK = 0,
    ILLEGAL_ARGUMENT = 1,
    RESOURCE_ERROR = 2,
    REQUEST_ERROR = 3,
    REQUEST_STREAM_ID_ERROR = 4,
    RESULT_ERROR = 5,
    INTERNAL_ERROR = 7,
};

}  // namespace vendor::quen::hardware::camera::quenpostproc::V1_0
