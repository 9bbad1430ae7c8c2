#pragma once

#include <aidl/android/hardware/graphics/common/XyColor.h>

namespace aidl::android::hardware::graphics::common {

/** The display that a picture was mastered on. */
class Smpte2086 {
  public:
    XyColor primaryRed;
    XyColor primaryGreen;
    XyColor primaryBlue;
    XyColor whitePoint;
    float maxLuminance = 0;  ///< nits
    float minLuminance = 0;  ///< nits
};

}  // namespace aidl::android::hardware::graphics::common
