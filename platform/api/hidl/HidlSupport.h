#pragma once

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <type_traits>

#include <hidl/details/Handle.h>
#include <hidl/details/String.h>
#include <hidl/details/Vector.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

namespace android {

namespace hidl::base::V1_0 {
struct IBase;
}  // namespace hidl::base::V1_0

namespace hardware {

/** Is notified of the death of a service that it is linked to. */
struct hidl_death_recipient : public virtual RefBase {
    /**
     * Called when the service has died, on a thread of the service's side.
     *
     * @param cookie as it was linked with
     */
    virtual void serviceDied(uint64_t cookie,
                             wp<::android::hidl::base::V1_0::IBase> const& who) = 0;
};

/** Bits of an enumeration, as a plain integer. */
template <typename T>
using hidl_bitfield = std::underlying_type_t<T>;

namespace details {

/** A number in hexadecimal: "0x7", and "0" for zero. */
template <typename T, typename = std::enable_if_t<std::is_arithmetic_v<T>>>
std::string toHexString(T value, bool prefix = true) {
    std::ostringstream text;
    if (prefix) {
        text << std::showbase;
    }
    // A character type would print as one.
    text << std::hex << +value;
    return text.str();
}

}  // namespace details

/** An array of a fixed size in a record; initially zero, which the phone does not promise. */
template <typename T, size_t SIZE>
class hidl_array {
  public:
    static constexpr size_t size() { return SIZE; }

    T* data() { return mItems; }
    T const* data() const { return mItems; }
    T& operator[](size_t index) { return mItems[index]; }
    T const& operator[](size_t index) const { return mItems[index]; }

  private:
    T mItems[SIZE] = {};
};

}  // namespace hardware
}  // namespace android
