#pragma once

#include <cstdint>

namespace aidl::android::hardware::graphics::common {

/** How to interpret sample values as colours; the values that cameras use. */
enum class Dataspace : int32_t {
    UNKNOWN = 0,
    ARBITRARY = 1,
    DEPTH = 0x1000,
    SENSOR = 0x1001,
    SRGB = 0x8810000,
    JFIF = 0x8C20000,
    BT2020 = 0x8C60000,
    DISPLAY_P3 = 0x88A0000,
    BT2020_PQ = 0x9C60000,
    BT709 = 0x10C10000,
    BT601_625 = 0x10C20000,
    BT601_525 = 0x10C40000,
};

}  // namespace aidl::android::hardware::graphics::common
