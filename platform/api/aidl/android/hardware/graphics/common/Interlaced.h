#pragma once

#include <cstdint>

namespace aidl::android::hardware::graphics::common {

/** Standard kinds of interlacing. */
enum class Interlaced : int64_t {
    NONE = 0,
    TOP_BOTTOM = 1,
    RIGHT_LEFT = 2,
};

}  // namespace aidl::android::hardware::graphics::common
