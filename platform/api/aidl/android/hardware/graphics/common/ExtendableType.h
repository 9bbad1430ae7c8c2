#pragma once

#include <cstdint>
#include <string>

namespace aidl::android::hardware::graphics::common {

/** A value of an extendable enumeration: the enumeration's name, and the value in it. */
class ExtendableType {
  public:
    std::string name;
    int64_t value = 0;
};

}  // namespace aidl::android::hardware::graphics::common
