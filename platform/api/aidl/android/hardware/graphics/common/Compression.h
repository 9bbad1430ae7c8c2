#pragma once

#include <cstdint>

namespace aidl::android::hardware::graphics::common {

/** Standard compressions. */
enum class Compression : int64_t {
    NONE = 0,
    DISPLAY_STREAM_COMPRESSION = 1,
};

}  // namespace aidl::android::hardware::graphics::common
