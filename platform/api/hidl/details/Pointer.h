#pragma once

#include <cstdint>

namespace android::hardware {

namespace details {

/** Logs a fatal line under the runtime's tag and aborts. */
[[noreturn]] void fatal(char const* text);

/** A pointer as records carry it: 8 bytes wide on every machine. */
template <typename T>
class hidl_pointer {
  public:
    hidl_pointer() : mWide(0) {}
    hidl_pointer(T* pointer) : hidl_pointer() { mPointer = pointer; }
    hidl_pointer& operator=(T* pointer) {
        mPointer = pointer;
        return *this;
    }
    operator T*() const { return mPointer; }
    T* operator->() const { return mPointer; }

  private:
    union {
        T* mPointer;
        uint64_t mWide;
    };
};

}  // namespace details

}  // namespace android::hardware
