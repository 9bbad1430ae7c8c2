#pragma once

#include <cstdint>

namespace aidl::android::hardware::graphics::common {

/** How a buffer is blended with what is below it. */
enum class BlendMode : int32_t {
    INVALID = 0,
    NONE = 1,
    PREMULTIPLIED = 2,
    COVERAGE = 3,
};

}  // namespace aidl::android::hardware::graphics::common
