#pragma once

#include <cstdint>

namespace aidl::android::hardware::graphics::common {

/** Standard kinds of components. */
enum class PlaneLayoutComponentType : int64_t {
    Y = 1 << 0,
    CB = 1 << 1,
    CR = 1 << 2,
    R = 1 << 10,
    G = 1 << 11,
    B = 1 << 12,
    RAW = 1 << 20,
    A = 1 << 30,
};

}  // namespace aidl::android::hardware::graphics::common
