#pragma once

#include <cstdint>

namespace aidl::android::hardware::graphics::common {

/** Standard positions of chroma samples. */
enum class ChromaSiting : int64_t {
    NONE = 0,  ///< no 4:2:0 picture
    UNKNOWN = 1,
    SITED_INTERSTITIAL = 2,
    COSITED_HORIZONTAL = 3,
};

}  // namespace aidl::android::hardware::graphics::common
