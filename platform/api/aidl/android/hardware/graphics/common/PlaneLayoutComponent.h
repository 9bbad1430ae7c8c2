#pragma once

#include <cstdint>

#include <aidl/android/hardware/graphics/common/ExtendableType.h>

namespace aidl::android::hardware::graphics::common {

/** One component of a plane's samples. */
class PlaneLayoutComponent {
  public:
    ExtendableType type;
    int64_t offsetInBits = 0;  ///< from the start of the sample
    int64_t sizeInBits = 0;
};

}  // namespace aidl::android::hardware::graphics::common
