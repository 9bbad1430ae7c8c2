#pragma once

#include <cstdint>

namespace aidl::android::hardware::graphics::common {

/** An area of a buffer, its right column and bottom row excluded. */
class Rect {
  public:
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
};

}  // namespace aidl::android::hardware::graphics::common
