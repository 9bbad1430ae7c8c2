#pragma once

#include <cstdint>
#include <string>

namespace aidl::android::hardware::graphics::common {

/** A value of an enumeration that others may add to: whose name it is, and the value it has there.
 */
class ExtendableType {
  public:
    std::string name;
    int64_t value = 0;
};

}  // namespace aidl::android::hardware::graphics::common
