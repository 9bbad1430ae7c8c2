#pragma once

namespace aidl::android::hardware::graphics::common {

/** How bright a picture gets, in nits. */
class Cta861_3 {
  public:
    float maxContentLightLevel = 0;
    float maxFrameAverageLightLevel = 0;
};

}  // namespace aidl::android::hardware::graphics::common
