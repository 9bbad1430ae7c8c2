#pragma once

// What the text that hidl-gen writes asks of libhidl beyond platform/api. Nothing here calls it.

#include <array>
#include <string>

namespace android::hardware {

template <typename T>
std::string toString(T const& value);

namespace details {

struct i_tag;

template <typename Enum>
constexpr std::array<Enum, 0> hidl_enum_values;

}  // namespace details
}  // namespace android::hardware
