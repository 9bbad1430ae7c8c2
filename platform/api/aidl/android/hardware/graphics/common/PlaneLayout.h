#pragma once

#include <cstdint>
#include <vector>

#include <aidl/android/hardware/graphics/common/PlaneLayoutComponent.h>

namespace aidl::android::hardware::graphics::common {

/** Where one plane of a buffer lies, and what its samples consist of. */
class PlaneLayout {
  public:
    std::vector<PlaneLayoutComponent> components;
    int64_t offsetInBytes = 0;  ///< of the first sample, from the start of the buffer
    int64_t sampleIncrementInBits = 0;
    int64_t strideInBytes = 0;
    int64_t widthInSamples = 0;
    int64_t heightInSamples = 0;
    int64_t totalSizeInBytes = 0;
    int64_t horizontalSubsampling = 0;  ///< picture pixels per sample
    int64_t verticalSubsampling = 0;
};

}  // namespace aidl::android::hardware::graphics::common
