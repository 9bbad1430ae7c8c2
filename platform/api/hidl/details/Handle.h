#pragma once

#include <cstdint>

#include <cutils/native_handle.h>
#include <hidl/details/Pointer.h>

namespace android::hardware {

/**
 * A native handle in a record. Constructed from a native handle it points at it; a copy duplicates
 * the descriptors and owns the duplicate, and aborts when that fails.
 */
class hidl_handle {
  public:
    hidl_handle() = default;
    hidl_handle(native_handle_t const* handle) : mHandle(handle) {}
    hidl_handle(hidl_handle const& other) { clone(other); }
    hidl_handle(hidl_handle&& other) noexcept { take(other); }
    ~hidl_handle() { dispose(); }

    hidl_handle& operator=(hidl_handle const& other) {
        if (this != &other) {
            dispose();
            clone(other);
        }
        return *this;
    }
    hidl_handle& operator=(hidl_handle&& other) noexcept {
        if (this != &other) {
            dispose();
            take(other);
        }
        return *this;
    }
    hidl_handle& operator=(native_handle_t const* handle) {
        setTo(const_cast<native_handle_t*>(handle), false);
        return *this;
    }

    /**
     * Replaces the handle. Closes and deletes the old one when it was owned, even when it is the
     * same.
     *
     * @param shouldOwn whether `handle` is to be closed and deleted with this object
     */
    void setTo(native_handle_t* handle, bool shouldOwn = false) {
        dispose();
        mHandle = handle;
        mOwnsHandle = shouldOwn;
    }

    native_handle_t const* getNativeHandle() const { return mHandle; }
    native_handle_t const* operator->() const { return mHandle; }
    operator native_handle_t const*() const { return mHandle; }

  private:
    void clone(hidl_handle const& other) {
        if (other.mHandle != nullptr) {
            cloneHandle(other.mHandle);
        }
    }
    void take(hidl_handle& other) {
        mHandle = other.mHandle;
        mOwnsHandle = other.mOwnsHandle;
        other.mHandle = nullptr;
        other.mOwnsHandle = false;
    }
    void dispose() {
        if (mOwnsHandle) {
            deleteHandle();
        }
        mHandle = nullptr;
        mOwnsHandle = false;
    }
    void cloneHandle(native_handle_t const* handle);
    void deleteHandle();

    details::hidl_pointer<native_handle_t const> mHandle;
    bool mOwnsHandle = false;
    [[maybe_unused]] uint8_t mPad[7] = {};
};

static_assert(sizeof(hidl_handle) == 16, "wrong size");
static_assert(alignof(hidl_handle) == 8, "wrong alignment");

}  // namespace android::hardware
