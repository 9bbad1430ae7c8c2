#pragma once

namespace aidl::android::hardware::graphics::common {

/** A colour by its CIE 1931 coordinates. */
class XyColor {
  public:
    float x = 0;
    float y = 0;
};

}  // namespace aidl::android::hardware::graphics::common
